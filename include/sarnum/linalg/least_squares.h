/// @file
/// Polynomials fitted to samples by least squares, through the normal equations.
///
/// The normal equations square the condition number of the problem: bring the coordinates to the
/// range −1 … 1 or so before a fit of degree 2 or more, or digits are lost. No routine
/// detects a singular fit: ask the coefficients whether they are finite, and mind that rounding may
/// leave large ones instead. Calls with different outputs may run on any number of threads.
///
/// Mathematics: G. H. Golub and C. F. Van Loan, "Matrix Computations", 4th ed. 2013, section 5.3.
#ifndef SARNUM_LINALG_LEAST_SQUARES_H
#define SARNUM_LINALG_LEAST_SQUARES_H

#include "sarnum/export.h"

/// Solves up to five equations by elimination without a search for pivots.
///
/// A pivot that is exactly zero is repaired: later rows are added to its row, one after another,
/// until it is not zero. A pivot that is only small is used as it is, so that accuracy may be lost
/// where Solve_System() keeps it.
///
/// @param n  order, 1 … 5. Below 1 there is nothing to do and 1 is returned; above 5 the result is
///           −1 and nothing is written.
/// @param a  n rows of five doubles, the first n of each used; only read.
/// @param b  right-hand side, n doubles; overwritten with what elimination makes of it, also when
///           −1 is returned.
/// @param x  n outputs; may be b.
/// @return 1; −1 when no later row repairs a zero pivot (x is not written). The last pivot is not
///         tested: when it is zero, the result is 1 and x has infinities or NaN.
SARNUM_API int lin_yr(int n, double (*const a)[5], double* b, double* x);

/// Fits y ≈ c[0] + c[1]·x + … + c[m−1]·x^(m−1).
///
/// The sums of powers and their system are those of the textbook, solved by lin_yr(). Its result is
/// not looked at. With too few different x, c stays as it was where a zero pivot cannot be repaired
/// (m = 3, all x equal to 1), is not finite where the last pivot is zero (m = 2, all x equal to 1;
/// m = 1 and no samples), and is large where rounding keeps a pivot from zero.
///
/// @param m      number of coefficients, 1 … 5; otherwise nothing is done.
/// @param count  number of samples; none for count ≤ 0.
/// @param y, x   values and where they were taken, count doubles each. Mind the order.
/// @param c      m outputs.
SARNUM_API void mnk(int m, int count, double* y, double* x, double* c);

/// Fits a polynomial in two variables of a total degree up to 4 to scattered samples.
///
/// The terms are, by total degree t = 0 … D and in it q = 0 … t, v^q·u^(t−q):
/// 1, u, v, u², u·v, v², u³, u²·v, u·v², v³, … (CLagrangeInterpolation2D has **another order**).
/// The normal equations are solved as Solve_System() does; too few samples, or samples on a curve
/// that the terms cannot tell apart, give infinities, NaN or large values in c.
///
/// **Every call keeps storage for ever**: 8·(M·count + M·(M + 1) + M) bytes, where
/// M = (D + 1)(D + 2)/2 is the number of terms; 14 040, say, for 100 samples and D = 4. (A leak
/// checker of g++ or clang is told to pass over it.) A program that fits often had better use
/// CLagrangeInterpolation2D.
///
/// @param degree  D, 0 … 4; otherwise nothing is done and nothing kept.
/// @param count   number of samples; none for count ≤ 0 (c is then NaN).
/// @param z       sample values.
/// @param u, v    sample coordinates.
/// @param c       M outputs. Untouched when storage cannot be had; such a call keeps nothing.
SARNUM_API void mnk2(int degree, int count, double* z, double* u, double* v, double* c);

#endif
