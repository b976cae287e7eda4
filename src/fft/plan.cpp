#include "fft/plan.h"

namespace sarnum {

template <class Real>
Plan<Real>::Plan(int m) : m_(m), level_(level_in_use()) {
  const std::size_t n = std::size_t{1} << m;
  const LaneOrder by_groups{m, 0};
  const LaneOrder by_lanes{m, lane_exponent<Real>(level_, m)};
  groups_ = std::make_unique_for_overwrite<Real[]>(2 * by_groups.vectors());
  if (by_lanes.v != 0) {
    lanes_ = std::make_unique_for_overwrite<Real[]>(n);
    by_lanes.fill_from_doubles(lanes_.get());
    for (std::size_t group = 0; group < by_groups.vectors(); ++group) {
      const Real* const cosine = lanes_.get() + by_lanes.cosine_of(group);
      groups_[2 * group] = cosine[0];
      groups_[2 * group + 1] = cosine[by_lanes.lanes()];
    }
    return;
  }
  by_groups.fill_from_doubles(groups_.get());
  exchange_count_ = static_cast<std::size_t>(exchange_count(m));
  exchanges_ = std::make_unique_for_overwrite<Exchange[]>(exchange_count_);
  Exchange* next = exchanges_.get();
  for_each_exchange(m, [&next](int i, int j) {
    *next++ = {static_cast<unsigned>(i), static_cast<unsigned>(j)};
  });
}

template class Plan<float>;
template class Plan<double>;

}  // namespace sarnum
