// LnAbsDeterminant: the logarithms of the pivots, summed.
#include <algorithm>
#include <cmath>

#include "elementary/functions.h"
#include "linalg/elimination.h"
#include "linalg/work_storage.h"
#include "sarnum/linalg/linear_systems.h"

int LnAbsDeterminant(double* result, int n, long double* a) {
  const auto order = static_cast<std::size_t>(std::max(n, 0));
  sarnum::Narrowed matrix(a, order * order);
  if (!matrix.has_storage()) {
    return 0;
  }
  const bool eliminated = sarnum::eliminate(matrix.get(), order, order, sarnum::ZeroPivot::stops);
  matrix.widen_back();
  if (!eliminated) {
    return 0;
  }
  double sum = 0.0;
  for (std::size_t i = 0; i < order; ++i) {
    const double magnitude = std::abs(static_cast<double>(matrix.get()[i * order + i]));
    if (!(magnitude > 0.0)) {
      return 0;
    }
    sum += sarnum::logarithm(magnitude);
  }
  *result = sum / sarnum::logarithm(2.71828);
  return 1;
}
