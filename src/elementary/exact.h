// The exact path: functions to more than 200 bits, by integer arithmetic, rounded once.
//
// It serves arguments whose result the fast paths leave undecided, and those outside their ranges.
// The relative error before rounding is below 2^−190. The hardest arguments published for functions
// of one argument need some 160 bits; exact results, and those beside simple values, each function
// takes care of. For pairs of arguments there is no such list: a result could come within 2^−190
// of a rounding boundary, as one in 2^136 would by chance, and be wrong by one unit.
#pragma once

namespace sarnum::exact {

/// sin(x + quarter_turns·π/2) for finite x ≠ 0.
double sine(double x, unsigned quarter_turns);
/// For |x| < 2^11, x ≠ 0.
double exponential(double x);
/// 10^x for |x| < 2^10.
double power_of_ten(double x);
/// @param approximation  of the result, within 2^−40 of it.
double logarithm(double x, double approximation);
double decimal_logarithm(double x, double approximation);
/// The angle of the point (x, y), both finite and not 0.
double arc_tangent(double y, double x, double approximation);
/// For |x| < 1.
double arc_cosine(double x, double approximation);
/// x^n for finite x.
double integer_power(double x, unsigned n);

}  // namespace sarnum::exact
