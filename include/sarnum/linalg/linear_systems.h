/// @file
/// Dense linear systems, determinants and inverses by Gaussian elimination.
///
/// Matrices are row-major without padding, and rows and columns are numbered from 1: element (i, j)
/// of a matrix of C columns is a[(i − 1)·C + (j − 1)]. Mind that
/// - rows are exchanged successively, not once (see ChangeRow_IJ);
/// - LnAbsDeterminant() is not quite a natural logarithm;
/// - the last column of MatrixInversion() is a wrong one after most row exchanges.
/// Each declaration says how to get the usual result.
///
/// The arithmetic is that of 64-bit doubles at every step, also where `long double` is wider:
/// elements are rounded to double when a routine begins, and what it leaves are doubles
/// (ChangeRow_IJ apart, which only moves elements). Where `long double` is wider, that takes
/// storage of 8 bytes per element; MatrixInversion takes 16 on every platform. Small matrices take
/// none. If the storage cannot be allocated, nothing is done. From order 64 on a routine also
/// allocates about 800 bytes per row, for speed; without these it is slower.
///
/// Calls on different matrices may run on any number of threads.
///
/// Mathematics: G. H. Golub and C. F. Van Loan, "Matrix Computations", 4th ed. 2013, chapter 3.
#ifndef SARNUM_LINALG_LINEAR_SYSTEMS_H
#define SARNUM_LINALG_LINEAR_SYSTEMS_H

#include "sarnum/export.h"

/// Brings a pivot into row i by successive exchange.
///
/// Each row k = i + 1 … n in turn is exchanged with row i, over columns i … n + 1, when its element
/// in column j is larger in magnitude than the one row i has by then. Row i ends with the largest,
/// the first of equals; a NaN is larger than nothing and smaller than nothing. Each row that
/// was there takes the place of the one that displaced it: the lower rows come out in another order
/// than after one exchange with the maximum.
///
/// @param i, j  row and column of the pivot, from 1. Outside 1 … n and 1 … n + 1 nothing is done.
/// @param n     number of equations.
/// @param a     n × (n + 1) matrix, changed in place. Elements are compared as doubles and moved as
///              they are.
SARNUM_API void ChangeRow_IJ(int i, int j, int n, long double* a);

/// Solves n linear equations by elimination with the pivots of ChangeRow_IJ().
///
/// No pivot is tested: a singular system gives infinities or NaN, or large values where rounding
/// kept a pivot from being zero. Ask the solution whether it is finite.
///
/// @param n  number of unknowns; nothing is done for n ≤ 0.
/// @param a  n × (n + 1) matrix, the right-hand side in its last column. It is consumed: it holds
///           the eliminated system afterwards, with rounding residues below the diagonal and the
///           solution in place of the diagonal.
/// @param x  n outputs; may lie inside a.
/// Without storage (see above) a and x stay as they are.
SARNUM_API void Solve_System(int n, long double* a, long double* x);

/// Logarithm of the absolute determinant, which does not overflow where the determinant would.
///
/// *result is Σ ln|pivot| / ln(2.71828), so 1.0000006727 times the natural logarithm, because
/// 2.71828 is not quite e. For the natural logarithm multiply by std::log(2.71828). The sign of the
/// determinant is not computed.
///
/// @param result  written only when 1 is returned.
/// @param n       order. For n ≤ 0 the determinant is 1 and *result 0.
/// @param a       n × n matrix, consumed: it holds what was eliminated, also when 0 is returned.
/// @return 1; 0 when a pivot is exactly zero or, after the elimination, an element of the diagonal
///         is not a number; also without storage (a is then as it was).
SARNUM_API int LnAbsDeterminant(double* result, int n, long double* a);

/// Inverse by elimination to both sides.
///
/// **The last column is that of the inverse only when no exchange of rows moved row n.** The
/// exchanges leave out the last column of the identity beside the matrix; column n of the result is
/// therefore column p of the true inverse, where p is the original number of the row that ended
/// last. (Columns 1 … n − 1 are right.) For the true inverse border the matrix with a row and a
/// column of the identity, n + 1 in all, and take the upper left n × n of the result: the added row
/// is never exchanged.
///
/// @param n        order; for n ≤ 0 nothing is written and 1 is returned.
/// @param a        n × n matrix, only read.
/// @param inverse  n × n output; may be a. Written only when 1 is returned.
/// @return 1; 0 when a pivot is exactly zero or there is no storage. A pivot that is not a number
///         goes through and makes elements of the result NaN.
SARNUM_API int MatrixInversion(int n, long double* a, long double* inverse);

#endif
