// Sum and mean: one chain of dependent additions, as their order is part of the result.
#include "numeric/ask_ahead.h"
#include "sarnum/numeric/statistics.h"

double Sum_mass(double* a, int n) {
  double sum = 0.0;
  sarnum::in_order(
      n, [&](std::size_t i) { sum += a[i]; }, a);
  return sum;
}

double Mean(double* a, int n) {
  return Sum_mass(a, n) / static_cast<double>(n);
}
