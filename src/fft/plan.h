// The twiddles of one length for any number of transforms at a time.
//
// They are the values of the process-wide tables, in the orders that the kernels read: for a line
// and for the columns of an image. Where there are no kernels, a list of exchanges takes the place
// of the former.
#pragma once

#include <cmath>
#include <cstddef>
#include <memory>
#include <new>
#include <optional>
#include <type_traits>

#include "fft/transform.h"

namespace sarnum {

/// What results are multiplied by.
enum class Scaling { none, by_length, by_root };

template <class Real>
Real scale_of(Scaling scaling, int m) {
  if (scaling == Scaling::none) {
    return 1;
  }
  const Real inverse = inverse_length<Real>(m);
  // The root of an exact power of two: one rounding.
  return scaling == Scaling::by_length ? inverse : std::sqrt(inverse);
}

/// A source of twiddles for transform(), of lines of 2^m elements.
template <class Real>
class Plan {
 public:
  /// Throws std::bad_alloc.
  explicit Plan(int m);

  int exponent() const { return m_; }
  const Level& level() const { return level_; }

  Twiddle<Real> operator()(std::size_t group) const {
    return {groups_[2 * group], groups_[2 * group + 1]};
  }

  template <class Samples>
  void permute(Samples x) const {
    for (std::size_t i = 0; i < exchange_count_; ++i) {
      exchange(x, exchanges_[i].first, exchanges_[i].second);
    }
  }

  std::optional<KernelTwiddles<Real>> for_kernels() const {
    return lanes_ != nullptr ? std::optional(view(lanes_.get())) : std::nullopt;
  }

  std::optional<KernelTwiddles<Real>> for_columns() const {
    const bool is_served = level_.vector_bytes != 0 && m_ >= least_column_exponent;
    return is_served ? std::optional(view(groups_.get())) : std::nullopt;
  }

 private:
  struct Exchange {
    unsigned first;
    unsigned second;
  };

  KernelTwiddles<Real> view(const Real* lanes) const { return {lanes, groups_.get(), 2, 1}; }

  int m_;
  const Level& level_;
  std::unique_ptr<Real[]> groups_;
  std::unique_ptr<Real[]> lanes_;  ///< null where there is no kernel for lines
  std::size_t exchange_count_ = 0;
  std::unique_ptr<Exchange[]> exchanges_;
};

extern template class Plan<float>;
extern template class Plan<double>;

/// Transforms elements that adjoin each other, in the precision of the plan throughout.
template <Direction direction, class Real, class Samples>
void transform(const Plan<Real>& plan, Scaling scaling, Samples x) {
  transform<Arithmetic<Real, Real>, direction>(x, plan.exponent(), plan,
                                               scale_of<Real>(scaling, plan.exponent()));
}

}  // namespace sarnum
