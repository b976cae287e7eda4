// Two-dimensional transforms of rasters given as row pointers, as the classic members and the C
// interface share them.
#pragma once

#include <cstddef>
#include <optional>

#include "fft/plan.h"
#include "parallel.h"

namespace sarnum {

/// Size of a raster with both sides padded to powers of two.
struct PaddedSize {
  int row_exponent;
  int column_exponent;

  std::size_t columns() const { return std::size_t{1} << row_exponent; }
  std::size_t rows() const { return std::size_t{1} << column_exponent; }
  /// What Progress counts: rows and columns.
  std::size_t units() const { return columns() + rows(); }
};

/// What is transformed, and where to.
struct RasterRows {
  const void* const* source;  ///< `height` rows of `width` pixels of `type`
  std::size_t width;
  std::size_t height;
  int type;  ///< of no known type: the source is not read, and what the target holds is transformed
  void* const* target;  ///< rows of complex pixels, as many and as long as the padded size says
};

// Progress gets 0 units when the storage is there, then one for each row and each column.

/// Forward, divided by the lengths. Elements are float, with all butterflies rounded from double,
/// or double.
/// @param centre  1: frequency zero comes out in the middle.
template <class Real>
Outcome forward_raster(const RasterRows& rows, const PaddedSize& size, int centre, const Run& run);

/// Inverse, not scaled, all butterflies rounded to float.
template <class Real>
Outcome inverse_raster(const RasterRows& rows, const PaddedSize& size, const Run& run);

/// Every row and every column by a plan.
template <class Real>
Outcome planned_raster(const RasterRows& rows, const Plan<Real>& row_plan,
                       const Plan<Real>& column_plan, Direction direction, Scaling scaling,
                       const Run& run);

}  // namespace sarnum
