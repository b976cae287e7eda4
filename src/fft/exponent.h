// From a size to the exponent of the power of two that holds it.
#pragma once

#include <cmath>
#include <limits>

namespace sarnum {

/// ceil(log(n) / log(2)) in double, as an int: the formula's value also where the quotient
/// rounds above an integer, and the least int for n ≤ 0, where the logarithm is not finite.
inline int ceil_power_of_two(int n) {
  if (n <= 0) {
    return std::numeric_limits<int>::min();
  }
  return static_cast<int>(std::ceil(std::log(static_cast<double>(n)) / std::log(2.0)));
}

}  // namespace sarnum
