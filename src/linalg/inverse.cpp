// MatrixInversion: Gauss–Jordan elimination of the matrix beside the identity.
//
// Exchanges of rows leave out the last column: results depend on it, as the header explains. Of the
// left half only what later steps read is kept up to date.
#include <algorithm>

#include "linalg/elimination.h"
#include "linalg/work_storage.h"
#include "sarnum/linalg/linear_systems.h"

int MatrixInversion(int n, long double* a, long double* inverse) {
  const auto order = static_cast<std::size_t>(std::max(n, 0));
  const std::size_t columns = 2 * order;
  sarnum::WorkStorage<double> work(order * columns);
  double* const w = work.get();
  if (w == nullptr) {
    return 0;
  }
  for (std::size_t i = 0; i < order; ++i) {
    double* const row = w + i * columns;
    for (std::size_t j = 0; j < order; ++j) {
      row[j] = static_cast<double>(a[i * order + j]);
    }
    std::fill_n(row + order, order, 0.0);
    row[order + i] = 1.0;
  }
  if (!sarnum::eliminate(w, order, columns, columns - 1, sarnum::ZeroPivot::stops)) {
    return 0;
  }
  for (std::size_t i = order; i-- > 0;) {
    const double pivot = w[i * columns + i];
    if (pivot == 0.0) {
      return 0;
    }
    double* const right = w + i * columns + order;
    for (std::size_t c = 0; c < order; ++c) {
      right[c] /= pivot;
    }
    for (std::size_t j = i; j-- > 0;) {
      double* const row = w + j * columns;
      sarnum::subtract_multiple(row + order, right, row[i], order);
    }
  }
  for (std::size_t i = 0; i < order; ++i) {
    std::copy_n(w + i * columns + order, order, inverse + i * order);
  }
  return 1;
}
