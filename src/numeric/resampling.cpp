// Linear resampling to another number of samples.
#include "sarnum/numeric/statistics.h"

void Scale(double* in, double* out, int nIn, int nOut) {
  if (nIn < 1 || nOut < 0) {
    return;
  }
  if (nOut < 2) {  // the step would be a division by zero
    out[0] = in[0];
    return;
  }
  const double step = static_cast<double>(nIn - 1) / static_cast<double>(nOut - 1);
  for (int j = 0; j < nOut; ++j) {
    const double x = static_cast<double>(j) * step;
    const int k = static_cast<int>(x);
    out[j] = (in[k + 1] - in[k]) * (x - k) + in[k];
  }
}
