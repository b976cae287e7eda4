#include "numeric/pi.h"

#include <cmath>

namespace sarnum {

const double pi = std::acos(-1.0);

}  // namespace sarnum
