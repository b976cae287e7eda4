// Circular cross-correlation at one lag. The first sequence is walked in runs up to its end, so
// that no index is reduced term by term; the order of the terms is that of the second sequence.
#include "sarnum/numeric/correlation.h"

#include <algorithm>
#include <cmath>

namespace {

/// Calls run(k, j, count) for each run of pairs (k, j), (k + 1, j + 1) … of the two sequences, j
/// ascending. A lag that is not accepted has none.
template <class Run>
void for_each_run(int n1, int n2, int s, const Run& run) {
  if (n1 < 1 || n2 < 1 || s > n1 - 1 || s < 1 - n2) {
    return;
  }
  int k = s % n1;
  if (k < 0) {
    k += n1;
  }
  for (int j = 0; j < n2;) {
    const int count = std::min(n1 - k, n2 - j);
    run(k, j, count);
    j += count;
    k = 0;
  }
}

}  // namespace

double Correl(double* a, double* b, int n1, int n2, int s) {
  double sum = 0.0;
  for_each_run(n1, n2, s, [&](int k, int j, int count) {
    for (int i = 0; i < count; ++i) {
      sum += a[k + i] * b[j + i];
    }
  });
  return sum;
}

double Correl(double* re1, double* im1, double* re2, double* im2, int n1, int n2, int s) {
  double re = 0.0;
  double im = 0.0;
  for_each_run(n1, n2, s, [&](int k, int j, int count) {
    for (int i = 0; i < count; ++i) {
      const double x = re1[k + i];
      const double y = im1[k + i];
      const double u = re2[j + i];
      const double v = im2[j + i];
      re += x * u + y * v;
      im += y * u - x * v;
    }
  });
  return std::sqrt(im * im + re * re);
}
