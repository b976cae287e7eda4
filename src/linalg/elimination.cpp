#include "linalg/elimination.h"

#include "linalg/blocked_elimination.h"

namespace sarnum {

bool eliminate_plainly(double* a, std::size_t stride, std::size_t rows, std::size_t columns,
                       ZeroPivot zero_pivot) {
  for (std::size_t k = 0; k + 1 < rows; ++k) {
    exchange_for_pivot(a, rows, stride, k, k, k, columns);
    double* const pivot_row = a + k * stride + k;
    if (zero_pivot == ZeroPivot::stops && pivot_row[0] == 0.0) {
      return false;
    }
    eliminate_column(pivot_row, stride, rows - k - 1, columns - k);
  }
  return true;
}

bool eliminate(double* a, std::size_t rows, std::size_t columns, ZeroPivot zero_pivot) {
  std::size_t k = 0;
  if (BlockedElimination::pays(rows)) {
    BlockedElimination blocks(a, columns, rows);
    while (blocks.has_storage() && BlockedElimination::pays(rows - k) &&
           blocks.factor_panel(zero_pivot)) {
      blocks.exchange_rows(blocks.next(), columns);
      blocks.update(blocks.next(), columns);
      k = blocks.next();
    }
  }
  // A panel that met a zero pivot is as it was: the plain form leaves the matrix as it stops.
  return eliminate_plainly(a + k * columns + k, columns, rows - k, columns - k, zero_pivot);
}

void solve_onto_diagonal(double* a, std::size_t n) {
  const std::size_t columns = n + 1;
  eliminate(a, n, columns, ZeroPivot::divides);
  for (std::size_t i = n; i-- > 0;) {
    double* const row = a + i * columns;
    double value = row[n];
    for (std::size_t j = n; j-- > i + 1;) {
      value -= row[j] * a[j * columns + j];
    }
    row[i] = value / row[i];
  }
}

}  // namespace sarnum
