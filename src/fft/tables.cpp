// Building and releasing the process-wide tables.
//
// Arrays are released only when a larger m than ever before comes, which is what callers count
// on: a table pointer of theirs stays valid from one length to a smaller one. Each array carries
// a few entries of slack beyond those that are filled. The kernels' own copies of the twiddles are
// derived last: they are no part of a call's success.
#include "sarnum/fft/tables.h"

#include <type_traits>

#include "fft/bit_reversal.h"
#include "fft/radix2.h"
#include "fft/table_state.h"
#include "numeric/pi.h"

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
void KernelTable<Real>::fill(const Level& level, int m, const TableArray<double>& cosine,
                             const TableArray<double>& sine) {
  const std::size_t n = std::size_t{1} << m;
  const LaneOrder order{m, lane_exponent<Real>(level, m)};
  v_ = 0;
  if (order.v == 0 || !entries_.reserve(n + 2 * order.vectors())) {
    return;
  }
  Real* const table = &entries_[0];
  order.fill(table, [&](std::size_t angle) { return Twiddle<double>{cosine[angle], sine[angle]}; });
  for (std::size_t group = 0; group < order.vectors(); ++group) {
    table[n + 2 * group] = table[order.cosine_of(group)];
    table[n + 2 * group + 1] = table[order.cosine_of(group) + order.lanes()];
  }
  v_ = order.v;
}

}  // namespace sarnum

namespace {

constexpr std::size_t slack = 16;

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

  for (std::size_t i = 0; i <= n; ++i) {
    tables.bit_reversal[i] = sarnum::reverse_low_bits(static_cast<int>(i), m);
  }
  for (std::size_t i = 0; i < n / 2; ++i) {
    const auto twiddle =
        sarnum::twiddle_at(sarnum::pi * 2.0, static_cast<int>(i), static_cast<int>(n));
    tables.cosine[i] = twiddle.c;
    tables.sine[i] = twiddle.s;
  }
  tables.swap_count = 0;
  sarnum::for_each_exchange(m, [&](int, int) { ++tables.swap_count; });
  if (!tables.swap_pairs.reserve(2 * static_cast<std::size_t>(tables.swap_count) + slack)) {
    return 4;
  }
  std::size_t end = 0;
  sarnum::for_each_exchange(m, [&](int i, int j) {
    tables.swap_pairs[end++] = i;
    tables.swap_pairs[end++] = j;
  });
  const sarnum::Level& level = sarnum::level_in_use();
  tables.double_kernels.fill(level, m, tables.cosine, tables.sine);
  tables.float_kernels.fill(level, m, tables.cosine, tables.sine);
  tables.ready_exponent = m;
  return 0;
}

void delete_ibitr() {
  sarnum::table_state.release();
}
