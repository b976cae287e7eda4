// Gaussian elimination with pivots by successive exchange: the one form that the solution of
// systems, the determinant and the inverse share. Indices count from 0 here.
//
// Templates, so that they run on callers' matrices in place where long double has 64 bits.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace sarnum {

/// Exchanges row i with each later row, in turn, whose element in column j is larger in magnitude
/// than the one row i has by then; over the columns first … end − 1.
template <class Element>
void exchange_for_pivot(Element* a, std::size_t rows, std::size_t columns, std::size_t i,
                        std::size_t j, std::size_t first, std::size_t end) {
  Element* const pivot_row = a + i * columns;
  for (std::size_t k = i + 1; k < rows; ++k) {
    Element* const row = a + k * columns;
    if (std::abs(static_cast<double>(row[j])) > std::abs(static_cast<double>(pivot_row[j]))) {
      std::swap_ranges(pivot_row + first, pivot_row + end, row + first);
    }
  }
}

/// row −= factor·other, element by element. The rows do not overlap.
template <class Real>
void subtract_multiple(Real* __restrict row, const Real* __restrict other, Real factor,
                       std::size_t count) {
  for (std::size_t c = 0; c < count; ++c) {
    row[c] -= factor * other[c];
  }
}

enum class ZeroPivot { divides, stops };

/// Eliminates the first `rows` columns below the diagonal. Columns from `exchanged` on stay where
/// they are when rows are exchanged. Elements below the diagonal become rounding residues, by the
/// same formula as the others, because callers are given the matrix back.
/// @return false when a zero pivot stopped it.
template <class Real>
bool eliminate(Real* a, std::size_t rows, std::size_t columns, std::size_t exchanged,
               ZeroPivot zero_pivot) {
  for (std::size_t k = 0; k + 1 < rows; ++k) {
    exchange_for_pivot(a, rows, columns, k, k, k, exchanged);
    const Real* const pivot_row = a + k * columns;
    const Real pivot = pivot_row[k];
    if (zero_pivot == ZeroPivot::stops && pivot == 0) {
      return false;
    }
    for (std::size_t r = k + 1; r < rows; ++r) {
      Real* const row = a + r * columns;
      subtract_multiple(row + k, pivot_row + k, row[k] / pivot, columns - k);
    }
  }
  return true;
}

/// Solves n equations, an n × (n + 1) matrix with the right-hand side in its last column. The
/// solution replaces the diagonal.
template <class Real>
void solve_onto_diagonal(Real* a, std::size_t n) {
  const std::size_t columns = n + 1;
  eliminate(a, n, columns, columns, ZeroPivot::divides);
  for (std::size_t i = n; i-- > 0;) {
    Real* const row = a + i * columns;
    Real value = row[n];
    for (std::size_t j = n; j-- > i + 1;) {
      value -= row[j] * a[j * columns + j];
    }
    row[i] = value / row[i];
  }
}

}  // namespace sarnum
