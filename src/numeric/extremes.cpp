// Extremes of an array and where they stand: one scan, in lanes.
//
// The definition is a loop that replaces the running extreme where an element is strictly more
// extreme. Compilers keep it scalar, because it carries an index and because NaNs and signed zeros
// forbid to reorder it. Yet two facts determine the element that wins, and lanes can find both: its
// value is the most extreme of all elements that are not NaN, and the first element equal to that
// value stands in the first block that improved on all blocks before it. So the blocks are scanned
// in lanes for their extreme alone, and only the winning block is searched for the position.
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "numeric/ask_ahead.h"
#include "sarnum/numeric/statistics.h"

namespace {

#if !defined(SARNUM_PLAIN_FORMS)
// The vectors that every x86-64 has; g++ takes wider ones apart into single elements.
constexpr std::size_t lane_count = 2;
using Lanes [[gnu::vector_size(lane_count * sizeof(double))]] = double;
using LaneBits [[gnu::vector_size(lane_count * sizeof(double))]] = std::int64_t;

// A comparison waits for the one before it: independent chains of them overlap.
constexpr std::size_t chain_count = 4;
constexpr std::size_t group_size = chain_count * lane_count;
#else
constexpr std::size_t group_size = 8;
#endif
// Long enough that reducing the lanes at its end is little beside it, short enough that searching
// the one block that won, which is a scalar loop, is little beside scanning a row of an image.
constexpr std::size_t block_size = 64 * group_size;

/// What is compared: elements, or their absolute values.
struct Value {
  static double of(double x) { return x; }
#if !defined(SARNUM_PLAIN_FORMS)
  static void take(Lanes&) {}
#endif
};

struct AbsoluteValue {
  static double of(double x) { return std::abs(x); }
#if !defined(SARNUM_PLAIN_FORMS)
  static void take(Lanes& x) {
    x = reinterpret_cast<Lanes>(reinterpret_cast<LaneBits>(x) & INT64_MAX);
  }
#endif
};

/// Which of two keys is the more extreme. A NaN never is; m stays where they are equal.
struct Smallest {
  template <class Keys>
  static void improve(Keys& m, const Keys& x) {
    m = m > x ? x : m;
  }
};

struct Largest {
  template <class Keys>
  static void improve(Keys& m, const Keys& x) {
    m = x > m ? x : m;
  }
};

/// The most extreme key of n elements and of `extreme`, which is not NaN.
/// @param available  elements from a[0] to the end of the array.
template <class Order, class Key>
double block_extreme(const double* a, std::size_t n, [[maybe_unused]] std::size_t available,
                     double extreme) {
  std::size_t i = 0;
#if !defined(SARNUM_PLAIN_FORMS)
  Lanes chains[chain_count];
  for (Lanes& chain : chains) {
    chain = Lanes{extreme, extreme};
  }
  for (; i + group_size <= n; i += group_size) {
    sarnum::ask_ahead(a, i, available);
    for (std::size_t c = 0; c < chain_count; ++c) {
      Lanes keys;
      std::memcpy(&keys, a + i + c * lane_count, sizeof keys);
      Key::take(keys);
      Order::improve(chains[c], keys);
    }
  }
  for (const Lanes& chain : chains) {
    Order::improve(extreme, static_cast<double>(chain[0]));
    Order::improve(extreme, static_cast<double>(chain[1]));
  }
#endif
  for (; i < n; ++i) {
    Order::improve(extreme, Key::of(a[i]));
  }
  return extreme;
}

/// Position of the first extreme; 0 for n < 2 and where a[0] is NaN.
template <class Order, class Key = Value>
int first_extreme(const double* a, int n) {
  if (n < 2 || std::isnan(a[0])) {
    return 0;
  }
  const auto count = static_cast<std::size_t>(n);
  double extreme = Key::of(a[0]);
  std::size_t winner = 0;
  for (std::size_t begin = 0; begin < count; begin += block_size) {
    const std::size_t available = count - begin;
    const std::size_t size = std::min(block_size, available);
    const double best = block_extreme<Order, Key>(a + begin, size, available, extreme);
    if (best != extreme) {
      extreme = best;
      winner = begin;
    }
  }
  while (Key::of(a[winner]) != extreme) {
    ++winner;
  }
  return static_cast<int>(winner);
}

double element_or_zero(const double* a, int n, int position) {
  return n > 0 ? a[position] : 0.0;
}

}  // namespace

double Min_mass(double* a, int n) {
  return element_or_zero(a, n, first_extreme<Smallest>(a, n));
}

double Max_mass(double* a, int n) {
  return element_or_zero(a, n, first_extreme<Largest>(a, n));
}

double Min_mass_ABS(double* a, int n) {
  return element_or_zero(a, n, Min_mass_ABS_index(a, n));
}

double Max_mass_ABS(double* a, int n) {
  return element_or_zero(a, n, Max_mass_ABS_index(a, n));
}

int Min_mass_index(double* /*a*/, int n) {
  return n < 2 ? 0 : n - 1;
}

int Max_mass_index(double* a, int n) {
  return first_extreme<Largest>(a, n);
}

int Min_mass_ABS_index(double* a, int n) {
  return first_extreme<Smallest, AbsoluteValue>(a, n);
}

int Max_mass_ABS_index(double* a, int n) {
  return first_extreme<Largest, AbsoluteValue>(a, n);
}
