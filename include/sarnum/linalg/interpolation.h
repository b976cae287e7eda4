/// @file
/// A value over a plane: a polynomial fitted to scattered samples, and the plane through three
/// points.
///
/// **Copies of a CLagrangeInterpolation2D share its arrays: never destroy both.** Hand it on by
/// reference or pointer.
#ifndef SARNUM_LINALG_INTERPOLATION_H
#define SARNUM_LINALG_INTERPOLATION_H

#include "sarnum/export.h"

/// Polynomial z(x, y) of all terms up to a total degree P, fitted by least squares when the object
/// is made.
///
/// The terms are, by total degree t = 0 … P and in it j = 0 … t, x^j·y^(t−j):
/// 1, y, x, y², x·y, x², y³, … (mnk2() has **another order**). Powers are the nearest doubles to
/// the exact ones, and v^0 is 1, also of NaN. The fit keeps sums of powers up to 2P: bring the
/// coordinates to the range −1 … 1 or so first.
///
/// **Copying and assignment copy the fields as they are, pointers included.** Both objects then
/// share their arrays, and only one of them may be destroyed; the arrays that the target of an
/// assignment had are lost.
///
/// An object does not change once made; any number of threads may evaluate it.
///
/// Mathematics: G. H. Golub and C. F. Van Loan, "Matrix Computations", 4th ed. 2013, section 5.3.
class SARNUM_API CLagrangeInterpolation2D {
 public:
  /// Fits the samples; look at GetSuccessFlag() afterwards.
  ///
  /// The order is never reduced. With fewer samples than terms, or samples on a curve that the
  /// terms cannot tell apart, the normal equations are singular and the coefficients infinite, NaN
  /// or large, while the flag is 1: have more than N = (P + 1)(P + 2)/2 samples, and ask a value
  /// whether it is finite.
  ///
  /// @param order  P. The fit takes storage of about 8·N² bytes, 41 kB for P = 10. Outside the
  ///               contract: a negative order has N by the same formula, all constant terms; an
  ///               order whose (P + 2)(P + 1) is beyond int gets no terms and flag 0.
  /// @param count  number of samples; for count ≤ 0 the flag is 0 and values are NaN. (An order
  ///               of −1 or −2 has no terms: values are 0, and the flag is 1 for count ≥ 0.)
  /// @param x, y, z  coordinates and values, count doubles each; only read, and not kept.
  CLagrangeInterpolation2D(int order, int count, double* x, double* y, double* z);
  /// Shallow, see above.
  CLagrangeInterpolation2D(const CLagrangeInterpolation2D&);
  /// Shallow, see above.
  CLagrangeInterpolation2D& operator=(const CLagrangeInterpolation2D&);
  ~CLagrangeInterpolation2D();

  /// @return P as given, whatever became of the fit.
  int GetPolynomOrder();

  /// @return 1 when there were samples and storage; it says nothing about the quality of the fit.
  int GetSuccessFlag();

  /// The polynomial at a point: terms summed in their order, from 0.0. The flag is not looked at.
  /// @return 0 when there are no terms, NaN when there was no storage for the fit.
  double GetInterpolatedValue(double x, double y);

  // To read; only the coefficients may be changed as well.
  double* coefficients;     ///< one for each of the N terms; owned
  double* secondExponents;  ///< power of y in each term; owned
  double* firstExponents;   ///< power of x in each term; owned
  int reservedCount;        ///< 0, not used
  int order;                ///< P
  int termCount;            ///< N
  int successFlag;          ///< what GetSuccessFlag() gives

 private:
  void CalculateCoefficients(int count, double* x, double* y, double* z);
};

/// The plane z = a·x + b·y + c through three points, by Cramer's rule.
///
/// The fourth corner is never read. A rectangle whose corners do not lie in one plane gets the
/// plane of the first three.
///
/// @return 1; 0, with a, b and c untouched, when the points' determinant is exactly zero (they lie
///         on one line). Points close to a line give large coefficients.
SARNUM_API int GetRectInterpolationCoefficients(double* a, double* b, double* c, double x1,
                                                double y1, double z1, double x2, double y2,
                                                double z2, double x3, double y3, double z3,
                                                double x4, double y4, double z4);

#endif
