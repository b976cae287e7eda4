// Factors as the update reads them. Not for the sources of levels: it calls the standard library.
#pragma once

#include <algorithm>

#include "linalg/kernels/update.h"

namespace sarnum {

/// The rows that so many fill up.
constexpr std::size_t whole_tiles(std::size_t rows) {
  return (rows + tile_rows - 1) / tile_rows * tile_rows;
}

/// Packs sign·from[r·row_step + k·step] as factor (r, k).
template <class Real>
void pack_factors(double* to, const Real* from, std::ptrdiff_t row_step, std::ptrdiff_t step,
                  std::size_t rows, std::size_t depth, double sign) {
  for (std::size_t r = 0; r < whole_tiles(rows); ++r) {
    const Real* const row = from + static_cast<std::ptrdiff_t>(std::min(r, rows - 1)) * row_step;
    double* const packed = to + r / tile_rows * tile_rows * depth + r % tile_rows;
    for (std::size_t k = 0; k < depth; ++k) {
      packed[k * tile_rows] =
          sign * static_cast<double>(row[static_cast<std::ptrdiff_t>(k) * step]);
    }
  }
}

}  // namespace sarnum
