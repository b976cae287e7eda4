// Weighting windows and the Bessel function that one of them needs. Phases and factors differ from
// window to window on purpose; the header has them side by side.
#include "sarnum/numeric/windows.h"

#include <cmath>

#include "elementary/functions.h"

namespace {

/// 2π·i/n.
double phase(int i, int n) {
  return static_cast<double>(i) * 6.283185307179586 / static_cast<double>(n);
}

}  // namespace

double Hanning(int i, int n) {
  return 1.0 - sarnum::cosine(phase(i, n));
}

double Hamming(double alpha, int i, int n) {
  return sarnum::cosine(phase(i, n)) * (1.0 - alpha) + alpha;
}

double Kaiser(double beta, int i, int n) {
  const double half = static_cast<double>(n) * 0.5;
  const double t = (static_cast<double>(i) - half) / half;
  return Bessel_NULL(std::sqrt(1.0 - t * t) * beta) / Bessel_NULL(beta);
}

double Bessel_NULL(double x) {
  // From here on factorials are infinite; only where a caller rounds towards zero or downwards do
  // they stay finite, and an infinite power would keep the terms large for ever.
  constexpr int most_terms = 171;
  const double quarter_square = x * x * 0.25;
  double sum = 1.0;
  double power = 1.0;
  double factorial = 1.0;
  double term = 0.0;
  int k = 1;
  do {
    power *= quarter_square;
    factorial *= k;
    ++k;
    term = power / factorial / factorial;
    sum += term;
  } while (std::abs(term) > 1e-8 && k <= most_terms);
  return sum;
}
