// From a size to the exponent of the power of two that holds it.
#pragma once

#include <bit>
#include <limits>

namespace sarnum {

/// ceil(log(n) / log(2)) in double, as an int: the least int for n ≤ 0, where the logarithm is not
/// finite, and the formula's value also where the quotient rounds above an integer.
///
/// With logarithms that are the nearest doubles, the quotient grows with n, so that its values at
/// 2^k and beside it decide all others: it rounds above k for no power but 2^29, and to k for no
/// other number.
constexpr int ceil_power_of_two(int n) {
  if (n <= 0) {
    return std::numeric_limits<int>::min();
  }
  return n == 1 << 29 ? 30 : static_cast<int>(std::bit_width(static_cast<unsigned>(n) - 1U));
}

}  // namespace sarnum
