/// @file
/// Vectors of n doubles: norm, sum, difference, products, angle.
///
/// Sums start from 0 and add their terms one after another in ascending order, in double, whatever
/// the CPU. Element-wise functions read the inputs of element i and write out[i] before they go on
/// to i + 1: `out` may be an input, and where it overlaps one at an offset, later elements see
/// what has been written. For n ≤ 0 nothing is read or written, and a sum is 0. No function
/// allocates; all may run on any number of threads with disjoint outputs.
#ifndef SARNUM_NUMERIC_VECTORS_H
#define SARNUM_NUMERIC_VECTORS_H

#include "sarnum/export.h"

/// Euclidean norm sqrt(v[0]² + … + v[n−1]²), without scaling: it overflows to infinity, or
/// underflows, where the sum of squares does (elements beyond about 1e154 or below 1e-154).
SARNUM_API double Magnitude(double* v, int n);

/// out[i] = a[i] + b[i].
SARNUM_API void Vec_Add(double* a, double* b, double* out, int n);

/// out[i] = a[i] − b[i].
SARNUM_API void Vec_Sub(double* a, double* b, double* out, int n);

/// out[i] = c·v[i]. The constant comes first.
SARNUM_API void Const_Multiply(double c, double* v, double* out, int n);

/// Dot product a[0]·b[0] + … + a[n−1]·b[n−1].
SARNUM_API double Scalar_Multiply(double* a, double* b, int n);

/// Angle between two vectors in radians, acos(a·b / (|a|·|b|)).
///
/// The quotient is not limited to [−1, 1]: for parallel or opposite vectors it may round beyond,
/// which gives NaN. Where that matters, limit the quotient of Scalar_Multiply and Magnitude
/// yourself.
/// @return NaN for a vector of length zero.
SARNUM_API double Angle(double* a, double* b, int n);

/// Cross product a × b of two vectors of three elements.
///
/// out[0], out[1], out[2] are assigned in this order, and then all three once more from what the
/// inputs hold by then. Where `out` is `a` or `b`, the result is therefore that of two passes in
/// place and not the cross product: give it an array of its own.
SARNUM_API void Cross(double* a, double* b, double* out);

/// out[i] = v[i]/|v|: a division for each element, by a norm computed before any is written.
/// Where the norm is 0, elements that are 0 become NaN; other elements, which have squares that
/// underflow, become infinite.
SARNUM_API void Normalize(double* v, double* out, int n);

#endif
