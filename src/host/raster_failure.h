// Why a raster layer failed, as a host may tell it. The suite's interface has no place for it, so a
// host that declares neither of these functions is silent.
#pragma once

#include "sarnum/host/host.h"

#if !defined(SARNUM_HOST_HEADER)
#include "sarnum/host/standalone.h"
#endif

namespace sarnum::host {

namespace silent {
inline const char* raster_failure() noexcept {
  return "";
}
inline void clear_raster_failure() noexcept {}
}  // namespace silent

// A name of the host's own comes before one that a using-directive brings.
using namespace silent;

}  // namespace sarnum::host
