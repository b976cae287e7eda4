// Loops over long arrays, once and in order.
//
// The processor's own prefetching ends at each page of 4 KiB, so that a plain loop over an array
// in memory waits at every page. A hint two pages ahead spares much of that; it changes no value,
// and costs nothing that can be measured where the array is in a cache.
#pragma once

#include <algorithm>
#include <cstddef>

namespace sarnum {

/// Elements in a cache line: one hint serves so many.
constexpr std::size_t line_size = 64 / sizeof(double);

/// Asks for the memory two pages after element i of an array, or for its last.
inline void ask_ahead([[maybe_unused]] const double* array, [[maybe_unused]] std::size_t i,
                      [[maybe_unused]] std::size_t count) {
#if !defined(SARNUM_PLAIN_FORMS)
  constexpr std::size_t distance = 1024;  // doubles in 8 KiB
  // Into the second-level cache: the first has too few misses under way to keep memory busy.
  __builtin_prefetch(array + std::min(i + distance, count - 1), 0, 2);
#endif
}

/// Calls body(i) for i = 0 … n − 1, in ascending order, where body reads element i of each array.
template <class Body, class... Arrays>
void in_order(int n, const Body& body, const Arrays*... arrays) {
  constexpr std::size_t block = 2 * line_size;  // a loop yet, which the compiler vectorises
  const std::size_t count = n > 0 ? static_cast<std::size_t>(n) : 0;
  std::size_t i = 0;
  for (; i + block <= count; i += block) {
    for (std::size_t k = i; k < i + block; k += line_size) {
      (ask_ahead(arrays, k, count), ...);
    }
    for (std::size_t k = i; k < i + block; ++k) {
      body(k);
    }
  }
  for (; i < count; ++i) {
    body(i);
  }
}

}  // namespace sarnum
