// Reversal of the low bits of an index: the order in which a radix-2 transform without
// reordering leaves its results, and in which it takes its twiddles.
#pragma once

#include <algorithm>

namespace sarnum {

/// The low `bits` bits of x, reversed. Defined for every argument: the count is taken as
/// unsigned, and beyond 63 steps the result no longer changes (only copies of the sign of x
/// arrive), so a huge count ends early.
inline int reverse_low_bits(int x, int bits) {
  const unsigned steps = std::min(static_cast<unsigned>(bits), 64U);
  unsigned reversed = 0;
  for (unsigned step = 0; step < steps; ++step) {
    reversed = 2 * reversed + (static_cast<unsigned>(x) & 1U);
    x >>= 1;
  }
  return static_cast<int>(reversed);
}

}  // namespace sarnum
