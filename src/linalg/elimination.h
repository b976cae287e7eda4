// Gaussian elimination with pivots by successive exchange: the one form that the solution of
// systems, the determinant and the inverse share. Indices count from 0 here.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace sarnum {

/// Exchanges row i with each later row, in turn, whose element in column j is larger in magnitude
/// than the one row i has by then; over the columns first … end − 1.
template <class Element>
void exchange_for_pivot(Element* a, std::size_t rows, std::size_t stride, std::size_t i,
                        std::size_t j, std::size_t first, std::size_t end) {
  Element* const pivot_row = a + i * stride;
  for (std::size_t k = i + 1; k < rows; ++k) {
    Element* const row = a + k * stride;
    if (std::abs(static_cast<double>(row[j])) > std::abs(static_cast<double>(pivot_row[j]))) {
      std::swap_ranges(pivot_row + first, pivot_row + end, row + first);
    }
  }
}

/// row −= factor·other, element by element. The rows do not overlap.
inline void subtract_multiple(double* __restrict row, const double* __restrict other, double factor,
                              std::size_t count) {
  for (std::size_t c = 0; c < count; ++c) {
    row[c] -= factor * other[c];
  }
}

/// Subtracts multiples of the pivot row from the `rows` rows below it, so that the first column
/// becomes zero but for rounding. With factor_at, a row's multiplier is left in its column of that
/// number.
template <std::size_t factor_at = 0>
void eliminate_column(double* pivot_row, std::size_t stride, std::size_t rows,
                      std::size_t columns) {
  const double pivot = pivot_row[0];
  double* row = pivot_row + stride;
  const auto factor_of = [&](double* of) {
    const double factor = of[0] / pivot;
    if constexpr (factor_at != 0) {
      of[factor_at] = factor;
    }
    return factor;
  };
  // Two rows at a time: short rows end before their loop has got going.
  for (; rows >= 2; rows -= 2, row += 2 * stride) {
    const double* __restrict const other = pivot_row;
    double* __restrict const first = row;
    double* __restrict const second = row + stride;
    const double first_factor = factor_of(first);
    const double second_factor = factor_of(second);
    for (std::size_t c = 0; c < columns; ++c) {
      first[c] -= first_factor * other[c];
      second[c] -= second_factor * other[c];
    }
  }
  if (rows == 1) {
    subtract_multiple(row, pivot_row, factor_of(row), columns);
  }
}

enum class ZeroPivot { divides, stops };

/// Eliminates below the diagonal. Elements there become rounding residues, by the same formula as
/// the others, because callers are given the matrix back.
/// @return false when a zero pivot stopped it.
bool eliminate_plainly(double* a, std::size_t stride, std::size_t rows, std::size_t columns,
                       ZeroPivot zero_pivot);

/// The same, large matrices by blocks.
bool eliminate(double* a, std::size_t rows, std::size_t columns, ZeroPivot zero_pivot);

/// Solves n equations, an n × (n + 1) matrix with the right-hand side in its last column. The
/// solution replaces the diagonal.
void solve_onto_diagonal(double* a, std::size_t n);

}  // namespace sarnum
