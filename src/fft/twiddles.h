// Twiddle factors of the transforms that need no process-wide tables.
//
// The factor of a group of butterflies depends on the number of the group alone: group g of
// every stage uses the angle 2π·r/N, where r is g with its m − 1 bits reversed. N/2 factors
// therefore serve all stages, and each stage uses the first ones of them in group order.
#pragma once

#include <cstddef>
#include <memory>
#include <new>
#include <optional>

#include "elementary/twiddles.h"
#include "fft/bit_reversal.h"
#include "fft/kernels/level.h"

namespace sarnum {

enum class Direction { forward, inverse };

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

  /// Where the cosine of a group stands; its sine stands lanes() further on.
  std::size_t cosine_of(std::size_t group) const {
    const std::size_t vector = group & (vectors() - 1);
    const auto lane = reverse_low_bits(static_cast<int>(group >> (m - 1 - v)), v);
    return 2 * lanes() * vector + static_cast<std::size_t>(lane);
  }

  /// Computes the twiddles into a table of 2·lanes()·vectors() entries.
  void fill(double* table) const { twiddle_level_in_use().double_lanes(table, m, v); }
  void fill(float* table) const { twiddle_level_in_use().float_lanes(table, m, v); }

  /// The twiddles in double, rounded to Real.
  void fill_from_doubles(double* table) const { fill(table); }
  void fill_from_doubles(float* table) const { twiddle_level_in_use().rounded_lanes(table, m, v); }
};

/// The twiddles of length 2^m, each computed once, in the order for the level in use. When there is
/// no storage for them they are computed at each use: slower, the same values.
template <class Real>
class Twiddles {
 public:
  /// For a line of 2^m elements, m in 0 … 30.
  explicit Twiddles(int m) : Twiddles(LaneOrder{m, lane_exponent<Real>(level_in_use(), m)}) {}

  /// In a given order.
  explicit Twiddles(LaneOrder order) : level_(level_in_use()), order_(order) {
    table_.reset(new (std::nothrow) Real[2 * order_.lanes() * order_.vectors()]);
    if (table_ != nullptr) {
      order_.fill(table_.get());
    }
  }

  int exponent() const { return order_.m; }

  /// The forward twiddle of a group.
  Twiddle<Real> operator()(std::size_t group) const {
    if (table_ == nullptr) {
      const int angle = reverse_low_bits(static_cast<int>(group), order_.m - 1);
      return twiddle_at<Real>(order_.m, static_cast<std::size_t>(angle));
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

  const Level& level_;
  LaneOrder order_;
  std::unique_ptr<Real[]> table_;
};

}  // namespace sarnum
