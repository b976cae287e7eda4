#include "linalg/kernels/update.h"

#include "instruction_set.h"

namespace sarnum {

#if !defined(SARNUM_PLAIN_FORMS)
extern const UpdateLevel update_level_baseline;
#if defined(__x86_64__)
extern const UpdateLevel update_level_avx2;
extern const UpdateLevel update_level_avx512;
#endif
#endif

namespace {

constexpr UpdateLevel scalar = {"scalar", nullptr};

constexpr Levels<UpdateLevel>::List tables = {
    &scalar,
#if !defined(SARNUM_PLAIN_FORMS)
    &update_level_baseline,
#if defined(__x86_64__)
    &update_level_avx2,
    &update_level_avx512,
#endif
#endif
};
constinit Levels<UpdateLevel> levels(tables);

}  // namespace

std::span<const UpdateLevel* const> runnable_update_levels() {
  return levels.runnable();
}

const UpdateLevel& update_level_in_use() {
  return levels.in_use();
}

void force_update_level(const UpdateLevel* level) {
  levels.force(level);
}

}  // namespace sarnum
