#include "fft/plan.h"

#include "numeric/pi.h"

namespace sarnum {

template <class Real>
Plan<Real>::Plan(int m) : m_(m), level_(level_in_use()) {
  const std::size_t n = std::size_t{1} << m;
  const LaneOrder by_lanes{m, lane_exponent<Real>(level_, m)};
  groups_ = std::make_unique_for_overwrite<Real[]>(2 * LaneOrder{m, 0}.vectors());
  LaneOrder{m, 0}.fill(groups_.get(), [n](std::size_t angle) {
    return twiddle_at(pi * 2.0, static_cast<int>(angle), static_cast<int>(n));
  });
  if (by_lanes.v != 0) {
    lanes_ = std::make_unique_for_overwrite<Real[]>(n);
    by_lanes.fill(lanes_.get(), [this](std::size_t angle) {
      return (*this)(LaneOrder{m_, 0}.vector_of(angle));
    });
    return;
  }
  for_each_exchange(m, [this](int, int) { ++exchange_count_; });
  exchanges_ = std::make_unique_for_overwrite<Exchange[]>(exchange_count_);
  Exchange* next = exchanges_.get();
  for_each_exchange(m, [&next](int i, int j) {
    *next++ = {static_cast<unsigned>(i), static_cast<unsigned>(j)};
  });
}

template class Plan<float>;
template class Plan<double>;

}  // namespace sarnum
