// Twiddle factors of the transforms that need no process-wide tables.
//
// The factor of a group of butterflies depends on the number of the group alone: group g of
// every stage uses the angle 2π·r/N, where r is g with its m − 1 bits reversed. N/2 factors
// therefore serve all stages, and each stage uses the first ones of them in group order.
#pragma once

#include <cmath>
#include <cstddef>
#include <memory>
#include <new>
#include <utility>

#include "fft/bit_reversal.h"

namespace sarnum {

/// e^(−ix) of a forward transform is c − i·s.
template <class Real>
struct Twiddle {
  Real c;
  Real s;
};

/// Cosine and sine of the angle 2π·r/N, in Real throughout and in this order of operations:
/// the values of all transforms rest on it.
template <class Real>
Twiddle<Real> twiddle_at(Real two_pi, int r, int n) {
  const Real x = two_pi * static_cast<Real>(r) / static_cast<Real>(n);
  return {std::cos(x), std::sin(x)};
}

/// The twiddles of length 2^m in group order, each computed once. When there is no storage for
/// them they are computed at each use: slower, the same values.
template <class Real>
class Twiddles {
 public:
  /// @param m  0 … 30.
  Twiddles(Real two_pi, int m) : two_pi_(two_pi), m_(m) {
    const std::size_t count = (std::size_t{1} << m) / 2;
    std::unique_ptr<Twiddle<Real>[]> table(new (std::nothrow) Twiddle<Real>[count]);
    if (table != nullptr) {
      for (std::size_t group = 0; group < count; ++group) {
        table[group] = compute(group);
      }
      table_ = std::move(table);
    }
  }

  int exponent() const { return m_; }

  Twiddle<Real> operator()(std::size_t group) const {
    return table_ != nullptr ? table_[group] : compute(group);
  }

 private:
  Twiddle<Real> compute(std::size_t group) const {
    return twiddle_at(two_pi_, reverse_low_bits(static_cast<int>(group), m_ - 1), 1 << m_);
  }

  Real two_pi_;
  int m_;
  std::unique_ptr<Twiddle<Real>[]> table_;
};

}  // namespace sarnum
