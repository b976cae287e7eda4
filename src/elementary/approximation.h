// Fast paths: a value in two doubles, an error bound, and Ziv's test whether they decide the
// nearest double (A. Ziv, "Fast evaluation of elementary mathematical functions with correctly
// rounded last bit", ACM TOMS 17, 1991).
//
// In the derivations of bounds u is 2^−53, by which a rounding to nearest errs at most, relatively.
#pragma once

#include <bit>
#include <cstdint>

#include "elementary/double_double.h"

namespace sarnum {

/// The exact value is within hi + (lo ± error), where both of these sums are rounded.
struct Approximation {
  double hi;
  double lo;
  double error;

  double rounded() const { return hi + lo; }
};

/// The nearest double to what is approximated, from exact() where that is undecided.
template <class Exact>
double nearest(const Approximation& value, const Exact& exact) {
  const double least = value.hi + (value.lo - value.error);
  const double most = value.hi + (value.lo + value.error);
  if (least == most) [[likely]] {
    return least;
  }
  return exact();
}

/// least ≤ |x| < end, by integers, so that a NaN raises nothing.
constexpr bool is_between(double x, double least, double end) {
  const auto magnitude = [](double y) { return std::bit_cast<std::uint64_t>(y) << 1; };
  return magnitude(x) - magnitude(least) < magnitude(end) - magnitude(least);
}

/// hi with at most 26 bits, so that its product with 26 others is exact.
constexpr DoubleDouble with_short_head(DoubleDouble x) {
  const auto parts = halves(x.hi);
  return {parts.hi, parts.lo + x.lo};
}

/// x as the sum of its upper 26 bits and the other 27.
inline DoubleDouble split(double x) {
  const auto upper =
      std::bit_cast<double>(std::bit_cast<std::uint64_t>(x) & ~std::uint64_t{0x7ffffff});
  return {upper, x - upper};
}

/// a·x, with a relative error below 3·2^−106 (Joldes, Muller, Popescu 2017, algorithm 8).
constexpr DoubleDouble operator*(DoubleDouble a, double x) {
  const auto high = two_product(a.hi, x);
  return fast_two_sum(high.hi, high.lo + a.lo * x);
}

/// a / x for an x > 0, with a relative error below 2^−100.
constexpr DoubleDouble operator/(DoubleDouble a, double x) {
  const double quotient = a.hi / x;
  const auto product = two_product(quotient, x);
  return fast_two_sum(quotient, ((a.hi - product.hi) - product.lo + a.lo) / x);
}

// What the fast paths compute, for tests of their bounds; each states its range.

/// sin(x + quarter_turns·π/2) for |x| < 3000.
Approximation approximate_sine(double x, unsigned quarter_turns);
/// exp(x.hi + x.lo) for |x.hi| < 640 and |x.lo| < 2^−43.
Approximation approximate_exponential(DoubleDouble x);
/// 10^x for |x| < 277.
Approximation approximate_power_of_ten(double x);
/// For a positive finite x.
Approximation approximate_logarithm(double x);
Approximation approximate_decimal_logarithm(double x);
/// The angle of the point (x, y) for |x.hi| and |y.hi| in 2^±400.
Approximation approximate_arc_tangent(DoubleDouble y, DoubleDouble x);
/// For 2^−57 ≤ |x| < 1.
Approximation approximate_arc_cosine(double x);

}  // namespace sarnum
