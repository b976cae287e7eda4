// Building and releasing the process-wide tables.
//
// Arrays are released only when a larger m than ever before comes, which is what callers count
// on: a table pointer of theirs stays valid from one length to a smaller one. Each array carries
// a few entries of slack beyond those that are filled. The kernels' own copies of the twiddles are
// derived last: they are no part of a call's success.
#include "sarnum/fft/tables.h"

#include <algorithm>
#include <type_traits>

#include "fft/bit_reversal.h"
#include "fft/radix2.h"
#include "fft/table_state.h"

namespace sarnum {

constinit TableState table_state;
static_assert(std::is_trivially_destructible_v<TableState>, "nothing destroys it");

void TableState::release() {
  ready_exponent.reset();
  bit_reversal.release();
  cosine.release();
  sine.release();
  swap_pairs.release();
  double_kernels.release();
  float_kernels.release();
}

template <class Real>
void KernelTable<Real>::fill(const Level& level, int m) {
  const std::size_t n = std::size_t{1} << m;
  const LaneOrder order{m, lane_exponent<Real>(level, m)};
  v_ = 0;
  if (order.v == 0 || !entries_.reserve(n + 2 * order.vectors())) {
    return;
  }
  Real* const table = &entries_[0];
  order.fill_from_doubles(table);
  for (std::size_t group = 0; group < order.vectors(); ++group) {
    table[n + 2 * group] = table[order.cosine_of(group)];
    table[n + 2 * group + 1] = table[order.cosine_of(group) + order.lanes()];
  }
  v_ = order.v;
}

}  // namespace sarnum

namespace {

constexpr std::size_t slack = 16;

/// The reversals of 0 … 2^m over m bits: each power of two doubles what stands there.
void fill_bit_reversals(int* reversal, int m) {
  reversal[0] = 0;
  for (int b = 0; b < m; ++b) {
    const int top = 1 << (m - 1 - b);
    std::transform(reversal, reversal + (1 << b), reversal + (1 << b),
                   [top](int low) { return low + top; });
  }
  reversal[std::size_t{1} << m] = 0;
}

/// The pairs of an index and its reversal, if that is greater. Each index is written, and the next
/// one takes its place where it was not to be kept: the slack has room for the last.
void fill_swap_pairs(int* pairs, const int* reversal, std::size_t n) {
  for (std::size_t i = 0; i < n; ++i) {
    pairs[0] = static_cast<int>(i);
    pairs[1] = reversal[i];
    pairs += reversal[i] > static_cast<int>(i) ? 2 : 0;
  }
}

}  // namespace

int ibitr(int x, int bits) {
  return sarnum::reverse_low_bits(x, bits);
}

int init_ibitr(int m) {
  if (!sarnum::is_transform_exponent(m)) {
    return 1;
  }
  sarnum::TableState& tables = sarnum::table_state;
  if (m > tables.largest_exponent) {
    tables.largest_exponent = m;
    tables.release();
  }
  tables.ready_exponent.reset();
  const std::size_t n = std::size_t{1} << m;
  if (!tables.bit_reversal.reserve(n + slack)) {
    return 1;
  }
  if (!tables.cosine.reserve(n / 2 + slack)) {
    return 2;
  }
  if (!tables.sine.reserve(n / 2 + slack)) {
    return 3;
  }

  fill_bit_reversals(&tables.bit_reversal[0], m);
  sarnum::twiddle_level_in_use().in_order(&tables.cosine[0], &tables.sine[0], m);
  tables.swap_count = sarnum::exchange_count(m);
  if (!tables.swap_pairs.reserve(2 * static_cast<std::size_t>(tables.swap_count) + slack)) {
    return 4;
  }
  fill_swap_pairs(&tables.swap_pairs[0], &tables.bit_reversal[0], n);
  const sarnum::Level& level = sarnum::level_in_use();
  tables.double_kernels.fill(level, m);
  tables.float_kernels.fill(level, m);
  tables.ready_exponent = m;
  return 0;
}

void delete_ibitr() {
  sarnum::table_state.release();
}
