// Functions whose values are the same on every machine, by every compiler and C library.
//
// Each gives the double nearest to the exact result, ties to even: a fast path in pairs of doubles
// decides all but one argument in some ten thousand, and integers of 256 bits the rest (exact.h).
// Only sums, products, quotients and square roots of doubles are used, which IEEE 754 fixes, and
// integers. Zeros, infinities, NaN and subnormal numbers are treated as annex F of the C standard
// says; a NaN comes back as a NaN. They expect rounding to nearest and subnormal numbers.
#pragma once

namespace sarnum {

double sine(double x);
double cosine(double x);
double exponential(double x);
double power_of_ten(double x);
double logarithm(double x);
double decimal_logarithm(double x);
/// The angle of the point (x, y), in −π … π.
double arc_tangent(double y, double x);
double arc_cosine(double x);

/// powers[e] = x^e for e = 0 … largest.
void integer_powers(double x, double* powers, unsigned largest);
double integer_power(double x, unsigned n);

}  // namespace sarnum
