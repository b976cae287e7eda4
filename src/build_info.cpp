#include "sarnum/build_info.h"

namespace sarnum {

BuildInfo build_info() noexcept {
#if defined(__x86_64__) || defined(_M_X64)
  return {SARNUM_VERSION, "x86-64"};
#else
  return {SARNUM_VERSION, "generic"};
#endif
}

}  // namespace sarnum
