// Which levels there are, and which of them this CPU can run.
#include "fft/kernels/level.h"

#include "instruction_set.h"

namespace sarnum {

#if !defined(SARNUM_PLAIN_FORMS)
extern const Level level_baseline;
#if defined(__x86_64__)
extern const Level level_avx2;
extern const Level level_avx512;
#endif
#endif

namespace {

constexpr Level level_scalar = {"scalar", 0, {}, {}, {}, {}, {}, {}, {}, {}, {}, {}};

constexpr Levels<Level>::List tables = {
    &level_scalar,
#if !defined(SARNUM_PLAIN_FORMS)
    &level_baseline,
#if defined(__x86_64__)
    &level_avx2,
    &level_avx512,
#endif
#endif
};

}  // namespace

constinit Levels<Level> levels(tables);

const Level& level_in_use() {
  return levels.in_use();
}

}  // namespace sarnum
