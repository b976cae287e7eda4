// Which levels of the update there are, and which of them this CPU can run.
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

}  // namespace

constinit Levels<UpdateLevel> update_levels(tables);

const UpdateLevel& update_level_in_use() {
  return update_levels.in_use();
}

}  // namespace sarnum
