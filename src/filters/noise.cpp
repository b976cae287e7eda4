// Normally distributed noise from the C library's generator, which programs seed.
#include "sarnum/filters/noise.h"

#include <cmath>
#include <cstdlib>

double Noise_normal(double mean, double variance) {
  double sum = 0.0;
  for (int draw = 0; draw < 20; ++draw) {
    sum += static_cast<double>(std::rand()) / static_cast<double>(RAND_MAX);
  }
  // Twenty uniform numbers have the mean 10 and the variance 20/12.
  const double standard = (sum - 10.0) / std::sqrt(1.6666666666666667);
  return standard * std::sqrt(variance) + mean;
}
