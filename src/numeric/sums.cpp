// Sum and mean: one chain of dependent additions, as their order is part of the result.
#include "sarnum/numeric/statistics.h"

double Sum_mass(double* a, int n) {
  double sum = 0.0;
  for (int i = 0; i < n; ++i) {
    sum += a[i];
  }
  return sum;
}

double Mean(double* a, int n) {
  return Sum_mass(a, n) / static_cast<double>(n);
}
