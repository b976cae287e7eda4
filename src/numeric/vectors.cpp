// Vectors of doubles. The sums are chains of dependent additions, as their order is part of the
// result. The element-wise loops are left to the compiler's vectoriser, which checks at run time
// that the arrays do not overlap: where they do, the plain loop gives the recurrence. (clang takes
// an output that is an input for an overlap, too; g++ does not.)
#include "sarnum/numeric/vectors.h"

#include <cmath>

#include "elementary/functions.h"
#include "numeric/ask_ahead.h"

double Magnitude(double* v, int n) {
  return std::sqrt(Scalar_Multiply(v, v, n));
}

void Vec_Add(double* a, double* b, double* out, int n) {
  for (int i = 0; i < n; ++i) {
    out[i] = a[i] + b[i];
  }
}

void Vec_Sub(double* a, double* b, double* out, int n) {
  for (int i = 0; i < n; ++i) {
    out[i] = a[i] - b[i];
  }
}

void Const_Multiply(double c, double* v, double* out, int n) {
  for (int i = 0; i < n; ++i) {
    out[i] = c * v[i];
  }
}

double Scalar_Multiply(double* a, double* b, int n) {
  double sum = 0.0;
  sarnum::in_order(
      n, [&](std::size_t i) { sum += a[i] * b[i]; }, a, b);
  return sum;
}

double Angle(double* a, double* b, int n) {
  return sarnum::arc_cosine(Scalar_Multiply(a, b, n) / (Magnitude(a, n) * Magnitude(b, n)));
}

void Cross(double* a, double* b, double* out) {
  for (int pass = 0; pass < 2; ++pass) {
    out[0] = a[1] * b[2] - b[1] * a[2];
    out[1] = b[0] * a[2] - a[0] * b[2];
    out[2] = b[1] * a[0] - a[1] * b[0];
  }
}

void Normalize(double* v, double* out, int n) {
  const double norm = Magnitude(v, n);
  for (int i = 0; i < n; ++i) {
    out[i] = v[i] / norm;
  }
}
