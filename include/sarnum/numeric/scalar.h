/// @file
/// Functions of one or two doubles. All are pure: they may be called from any thread. Logarithms,
/// exponentials and arc tangents are the same doubles on every system: the nearest to the exact
/// ones, but for the reserve that docs/numbers.md states.
///
/// Comparisons are IEEE comparisons, so that a NaN makes every "greater than" false; each
/// function says what that gives.
#ifndef SARNUM_NUMERIC_SCALAR_H
#define SARNUM_NUMERIC_SCALAR_H

#include "sarnum/export.h"

/// a if b > a, otherwise b: the smaller of two. On a tie, zeros of different sign included, and
/// when either is NaN, it is b.
SARNUM_API double Min(double a, double b);

/// a if a > b, otherwise b: the larger of two. On a tie, and when either is NaN, it is b.
SARNUM_API double Max(double a, double b);

/// a if |b| > |a|, otherwise b: the one nearer to zero, with its sign. On a tie, and when either
/// is NaN, it is b.
SARNUM_API double Min_ABS(double a, double b);

/// a if |a| > |b|, otherwise b: the one farther from zero, with its sign. On a tie, and when
/// either is NaN, it is b.
SARNUM_API double Max_ABS(double a, double b);

/// 1 if x ≥ 0, otherwise −1. Never 0: zero of either sign gives 1, NaN gives −1.
SARNUM_API int Sign(double x);

/// The square x·x. (Despite its name it is no root.)
SARNUM_API double Qrt(double x);

/// The cube (x·x)·x.
SARNUM_API double Cube(double x);

/// x to the power y for positive x, as exp(y·log x). Its error grows with y·log x: Power(2, 10)
/// need not be 1024 exactly. Use std::pow for integral powers and for x ≤ 0.
/// @return NaN for x ≤ 0, for NaN, and where y·log x is 0·infinity (std::pow gives 1 there).
SARNUM_API double Power(double x, double y);

/// Degrees to radians, (deg·π)/180.
SARNUM_API double Radians(double deg);

/// Radians to degrees, (rad·180)/π.
SARNUM_API double Degrees(double rad);

/// Remainder of a/b, lifted into [0, b), to rounding, for a positive divisor.
///
/// r = a − trunc(a/b)·b, plus b when r is not ≥ 0. A negative divisor keeps the same rule and is
/// no true modulo: Modulus(5, -3) is 2, but Modulus(-5, -3) is -5.
///
/// The remainder is formed from rounded values: it loses digits as |a/b| grows, and is infinite
/// where a/b overflows. For |a/b| of about 13 and more it may lie outside [0, b), on either side,
/// by up to |a|·2^−52: Modulus(-4.81, 0.37) is −2^−53. A remainder so close below zero that adding
/// b rounds gives b itself. For the exact one take std::fmod, plus b where that is negative.
/// @return NaN when b is 0 or an argument is not finite.
SARNUM_API double Modulus(double a, double b);

/// An angle in radians, normalised to [0, 2π) by the steps of Modulus(a, 6.283185307179586), with
/// the same reservations: of an angle of 1e10 about six decimals are left, of 1e17 none.
/// @return NaN when a is not finite.
SARNUM_API double Fmod2p(double a);

/// Direction of the point (x, y) in radians, in [0, 2π): atan2(y, x), plus 2π where that is
/// negative. −0 stays −0. An angle so close below zero that adding 2π rounds gives 2π itself.
SARNUM_API double AcTan(double y, double x);

/// Base-2 logarithm, not rounded: log(x / 2^k)/log(2) + k, with the k halvings that bring x down
/// to 2 or less. Exact for powers of two from 1 up.
/// @return −infinity for 0, NaN for negative numbers and NaN, +infinity for +infinity.
SARNUM_API double Power_of_two(double x);

/// The power of two at or above x, at least 2: the size of an FFT buffer for x samples.
///
/// For x ≤ 1 it is 2. Otherwise e = log(x)/log(2): where e has no fraction it is x itself, else
/// 2 shifted left by (trunc(e) mod 32) in a signed 32-bit integer. Two things follow:
/// - Sizes above 2^30 are out of reach: the shift gives −2147483648 for 2^30 < x < 2^31 and 0 for
///   2^31 < x < 2^32, and starts anew at 2 above that. (+infinity is returned as it is.)
/// - The test is made on a rounded quotient, not on the bits of x: a power of two whose quotient
///   is not exactly integral goes to the next one (2^29 gives 2^30), and a neighbour
///   whose quotient rounds to an integer is returned as it is. CFFTClass::CeilPowerOfTwo goes by
///   the same quotient.
/// @return 2 for NaN.
SARNUM_API double Add_to_Power_of_2(double x);

#endif
