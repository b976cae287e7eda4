// Circular cross-correlation at one lag. The first sequence is walked in runs up to its end, so
// that no index is reduced term by term; the order of the terms is that of the second sequence.
#include "sarnum/numeric/correlation.h"

#include <algorithm>
#include <cmath>

#include "numeric/ask_ahead.h"

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
    const double* const first = a + k;
    const double* const second = b + j;
    sarnum::in_order(
        count, [&](std::size_t i) { sum += first[i] * second[i]; }, first, second);
  });
  return sum;
}

double Correl(double* re1, double* im1, double* re2, double* im2, int n1, int n2, int s) {
  double re = 0.0;
  double im = 0.0;
  for_each_run(n1, n2, s, [&](int k, int j, int count) {
    const auto add = [&, x = re1 + k, y = im1 + k, u = re2 + j, v = im2 + j](std::size_t i) {
      re += x[i] * u[i] + y[i] * v[i];
      im += y[i] * u[i] - x[i] * v[i];
    };
    sarnum::in_order(count, add, re1 + k, im1 + k, re2 + j, im2 + j);
  });
  return std::sqrt(im * im + re * re);
}
