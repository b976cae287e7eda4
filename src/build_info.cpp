#include "sarnum/build_info.h"

#include "fft/kernels/level.h"

namespace sarnum {

BuildInfo build_info() noexcept {
  return {SARNUM_VERSION, level_in_use().name};
}

}  // namespace sarnum
