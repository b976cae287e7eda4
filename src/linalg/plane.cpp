// GetRectInterpolationCoefficients: the plane through three points, by Cramer's rule.
#include "sarnum/linalg/interpolation.h"

int GetRectInterpolationCoefficients(double* a, double* b, double* c, double x1, double y1,
                                     double z1, double x2, double y2, double z2, double x3,
                                     double y3, double z3, double /*x4*/, double /*y4*/,
                                     double /*z4*/) {
  const double determinant = y1 * x3 + x1 * y2 + x2 * y3 - y2 * x3 - y1 * x2 - x1 * y3;
  if (determinant == 0.0) {
    return 0;
  }
  const double for_a = z1 * y2 + y1 * z3 + z2 * y3 - y2 * z3 - y1 * z2 - z1 * y3;
  const double for_b = x1 * z2 + z1 * x3 + x2 * z3 - z2 * x3 - z1 * x2 - x1 * z3;
  const double for_c =
      y1 * x3 * z2 + x1 * y2 * z3 + x2 * y3 * z1 - y2 * x3 * z1 - y1 * x2 * z3 - x1 * y3 * z2;
  *a = for_a / determinant;
  *b = for_b / determinant;
  *c = for_c / determinant;
  return 1;
}
