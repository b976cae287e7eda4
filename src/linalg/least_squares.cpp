// lin_yr, and mnk, which fits polynomials in one variable with it.
#include "sarnum/linalg/least_squares.h"

#include <algorithm>

namespace {

constexpr int largest_order = 5;

}  // namespace

int lin_yr(int n, double (*const a)[5], double* b, double* x) {
  if (n > largest_order) {
    return -1;
  }
  if (n < 1) {
    return 1;
  }
  double w[largest_order][largest_order];
  for (int i = 0; i < n; ++i) {
    std::copy_n(a[i], n, w[i]);
  }
  for (int k = 0; k + 1 < n; ++k) {
    for (int j = k + 1; w[k][k] == 0.0; ++j) {
      if (j == n) {
        return -1;
      }
      for (int c = k; c < n; ++c) {
        w[k][c] += w[j][c];
      }
      b[k] += b[j];
    }
    for (int r = k + 1; r < n; ++r) {
      const double factor = w[r][k] / w[k][k];
      for (int c = k + 1; c < n; ++c) {
        w[r][c] -= factor * w[k][c];
      }
      b[r] -= factor * b[k];
    }
  }
  for (int i = n - 1; i >= 0; --i) {
    double sum = 0.0;
    for (int j = n - 1; j > i; --j) {
      sum += w[i][j] * x[j];
    }
    x[i] = (b[i] - sum) / w[i][i];
  }
  return 1;
}

void mnk(int m, int count, double* y, double* x, double* c) {
  if (m < 1 || m > largest_order) {
    return;
  }
  double power_sums[2 * largest_order] = {};
  double moments[largest_order] = {};
  for (int i = 0; i < count; ++i) {
    double power = 1.0;
    double moment = y[i];
    for (int k = 0; k < 2 * m; ++k) {
      if (k < m) {
        moments[k] += moment;
        moment *= x[i];
      }
      power_sums[k] += power;
      power *= x[i];
    }
  }
  double normal[largest_order][largest_order];
  for (int r = 0; r < m; ++r) {
    std::copy_n(power_sums + r, m, normal[r]);
  }
  lin_yr(m, normal, moments, c);
}
