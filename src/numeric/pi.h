// The module-wide π, set when the library is loaded.
#pragma once

namespace sarnum {

extern const double pi;

}  // namespace sarnum
