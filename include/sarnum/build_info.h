/// @file
/// What this build of the library is: for reports and error messages.
#ifndef SARNUM_BUILD_INFO_H
#define SARNUM_BUILD_INFO_H

#include "sarnum/export.h"

namespace sarnum {

/// What build_info() tells.
struct BuildInfo {
  const char* version;          ///< "major.minor.patch"
  const char* instruction_set;  ///< level the numerical kernels run at on this CPU
};

/// Version and instruction-set level of the loaded library. The texts live as
/// long as the library is loaded. Any thread may ask at any time.
SARNUM_API BuildInfo build_info() noexcept;

}  // namespace sarnum

#endif
