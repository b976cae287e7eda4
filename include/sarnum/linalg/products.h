/// @file
/// Products of vectors, element by element, and of dense matrices. Calls with different outputs may
/// run on any number of threads.
#ifndef SARNUM_LINALG_PRODUCTS_H
#define SARNUM_LINALG_PRODUCTS_H

#include "sarnum/export.h"

/// out[i] = a[i]·b[i] for i = 0 … n − 1; nothing for n ≤ 0. out may be a or b.
SARNUM_API void Vector_Multiply(double* a, double* b, double* out, int n);

/// Matrix product C = A·B, row-major without padding.
///
/// Elements are rounded to double first, and each sum runs over l = 1 … k in this order, from 0.0,
/// in doubles (also where `long double` is wider). The product is formed apart: C may be A or B, or
/// overlap them.
///
/// @param A  m × k, only read.
/// @param B  k × n, only read.
/// @param C  m × n. Untouched for m ≤ 0 or n ≤ 0, and when the storage (at most 8 bytes an element
///           of A, B and the product) cannot be had. All zeros for k ≤ 0.
SARNUM_API void Matrix_Multiply(long double* A, long double* B, long double* C, int m, int k,
                                int n);

#endif
