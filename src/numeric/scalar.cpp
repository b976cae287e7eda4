// Functions of one or two doubles. The comparisons and the order of operations are written out as
// the header states them: which argument a tie or a NaN selects is part of the result.
#include "sarnum/numeric/scalar.h"

#include <cmath>
#include <cstdint>
#include <limits>
#include <numbers>

#include "elementary/functions.h"

namespace {

// In digits, as the header states the formulas.
constexpr double pi = 3.141592653589793;
constexpr double two_pi = 6.283185307179586;

/// 2 shifted left by trunc(exponent) mod 32 in 32 bits, where the top bit is a sign.
/// @param exponent  0 … 1024, or NaN, which shifts by nothing.
double two_shifted_left(double exponent) {
  const std::uint32_t count = exponent >= 0.0 ? static_cast<std::uint32_t>(exponent) : 0U;
  return static_cast<double>(static_cast<std::int32_t>(2U << (count % 32U)));
}

}  // namespace

double Min(double a, double b) {
  return b > a ? a : b;
}

double Max(double a, double b) {
  return a > b ? a : b;
}

double Min_ABS(double a, double b) {
  return std::abs(b) > std::abs(a) ? a : b;
}

double Max_ABS(double a, double b) {
  return std::abs(a) > std::abs(b) ? a : b;
}

int Sign(double x) {
  return x >= 0.0 ? 1 : -1;
}

double Qrt(double x) {
  return x * x;
}

double Cube(double x) {
  return x * x * x;
}

double Power(double x, double y) {
  return x > 0.0 ? sarnum::exponential(y * sarnum::logarithm(x))
                 : std::numeric_limits<double>::quiet_NaN();
}

double Radians(double deg) {
  return deg * pi / 180.0;
}

double Degrees(double rad) {
  return rad * 180.0 / pi;
}

double Modulus(double a, double b) {
  const double remainder = a - std::trunc(a / b) * b;
  return remainder >= 0.0 ? remainder : remainder + b;
}

double Fmod2p(double a) {
  return Modulus(a, two_pi);
}

double AcTan(double y, double x) {
  const double angle = sarnum::arc_tangent(y, x);
  return angle < 0.0 ? angle + two_pi : angle;
}

double Power_of_two(double x) {
  if (x > std::numeric_limits<double>::max()) {
    return x;  // halving would never bring infinity down
  }
  double count = 0.0;
  while (x > 2.0) {
    x *= 0.5;
    count += 1.0;
  }
  return sarnum::logarithm(x) / std::numbers::ln2 + count;
}

double Add_to_Power_of_2(double x) {
  if (x <= 1.0) {
    return 2.0;
  }
  const double exponent = sarnum::logarithm(x) / std::numbers::ln2;
  double whole = 0.0;
  if (std::modf(exponent, &whole) == 0.0) {
    return x;
  }
  return two_shifted_left(exponent);
}
