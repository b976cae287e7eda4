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
#include <optional>

#include "fft/bit_reversal.h"
#include "fft/kernels/level.h"

namespace sarnum {

enum class Direction { forward, inverse };

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

/// Where the kernels want the twiddles of length 2^m when a vector has 2^v lanes. A vector holds
/// adjacent angles, cosines before sines, and vectors stand in the bit-reversed order of their
/// angles: the first lanes of the vectors are then the twiddles of the groups 0, 1, 2, … (all
/// that is needed before the last v stages), and each of the last v stages reads whole vectors one
/// after another. With v = 0 this is the order of the groups.
struct LaneOrder {
  int m;
  int v;

  std::size_t lanes() const { return std::size_t{1} << v; }
  std::size_t vectors() const { return ((std::size_t{1} << m) / 2) >> v; }

  /// The vector that holds the i-th lanes() angles.
  std::size_t vector_of(std::size_t i) const {
    return static_cast<std::size_t>(reverse_low_bits(static_cast<int>(i), m - 1 - v));
  }

  /// Where the cosine of a group stands; its sine stands lanes() further on.
  std::size_t cosine_of(std::size_t group) const {
    const std::size_t vector = group & (vectors() - 1);
    const auto lane = reverse_low_bits(static_cast<int>(group >> (m - 1 - v)), v);
    return 2 * lanes() * vector + static_cast<std::size_t>(lane);
  }

  /// @param table      2·lanes()·vectors() entries to fill.
  /// @param twiddle_at the twiddle of an angle, by index.
  template <class Real, class TwiddleAt>
  void fill(Real* table, const TwiddleAt& twiddle_at) const {
    // By ascending angles: sines and cosines branch by their size, which a CPU then foresees.
    for (std::size_t i = 0; i < vectors(); ++i) {
      Real* const vector = table + 2 * lanes() * vector_of(i);
      for (std::size_t lane = 0; lane < lanes(); ++lane) {
        const auto twiddle = twiddle_at(i * lanes() + lane);
        vector[lane] = static_cast<Real>(twiddle.c);
        vector[lanes() + lane] = static_cast<Real>(twiddle.s);
      }
    }
  }
};

/// The twiddles of length 2^m, each computed once, in the order for the level in use. When there is
/// no storage for them they are computed at each use: slower, the same values.
template <class Real>
class Twiddles {
 public:
  /// For a line of 2^m elements, m in 0 … 30.
  Twiddles(Real two_pi, int m)
      : Twiddles(two_pi, LaneOrder{m, lane_exponent<Real>(level_in_use(), m)}) {}

  /// In a given order.
  Twiddles(Real two_pi, LaneOrder order) : two_pi_(two_pi), level_(level_in_use()), order_(order) {
    table_.reset(new (std::nothrow) Real[2 * order_.lanes() * order_.vectors()]);
    if (table_ != nullptr) {
      order_.fill(table_.get(), [this](std::size_t angle) { return compute(angle); });
    }
  }

  int exponent() const { return order_.m; }

  /// The forward twiddle of a group.
  Twiddle<Real> operator()(std::size_t group) const {
    if (table_ == nullptr) {
      return compute(
          static_cast<std::size_t>(reverse_low_bits(static_cast<int>(group), order_.m - 1)));
    }
    const Real* const cosine = table_.get() + order_.cosine_of(group);
    return {cosine[0], cosine[order_.lanes()]};
  }

  /// Brings the results of the plain form into natural order.
  template <class Samples>
  void permute(Samples x) const {
    permute_bit_reversed(x, order_.m);
  }

  const Level& level() const { return level_; }

  /// What the kernels of the level read for a line, if there is one for this length.
  std::optional<KernelTwiddles<Real>> for_kernels() const {
    return table_ != nullptr && order_.v != 0 ? std::optional(view()) : std::nullopt;
  }

  /// What they read for columns, whose stages all go by groups.
  std::optional<KernelTwiddles<Real>> for_columns() const {
    const bool is_served = level_.vector_bytes != 0 && order_.m >= least_column_exponent;
    return is_served && table_ != nullptr && order_.v == 0 ? std::optional(view()) : std::nullopt;
  }

 private:
  KernelTwiddles<Real> view() const {
    return {table_.get(), table_.get(), 2 * order_.lanes(), order_.lanes()};
  }

  Twiddle<Real> compute(std::size_t angle) const {
    return twiddle_at(two_pi_, static_cast<int>(angle), 1 << order_.m);
  }

  Real two_pi_;
  const Level& level_;
  LaneOrder order_;
  std::unique_ptr<Real[]> table_;
};

}  // namespace sarnum
