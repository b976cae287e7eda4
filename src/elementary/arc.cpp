// Angles: the quotient's nearest multiple c of 1/128, a table for arc tangents of those, and a
// short series for the tangent of the rest, (u − c·v)/(v + c·u).
#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>

#include "elementary/approximation.h"
#include "elementary/exact.h"
#include "elementary/functions.h"

namespace sarnum {
namespace {

constexpr double pi = 0x1.921fb54442d18p+1;
constexpr DoubleDouble quarters[] = {
    {0.0, 0.0}, {pi / 2, 0x1.1a62633145c07p-54}, {pi, 0x1.1a62633145c07p-53}};  // multiples of π/2

/// atan(k/128) for k = 0 … 128: each is the one before plus the arc tangent of
/// 128/(128² + k·(k + 1)), by the series. The error grows by less than 2^−104 a step and stays
/// below 2^−97.
constexpr auto arcs = [] {
  std::array<DoubleDouble, 129> table{};
  for (int k = 0; k < 128; ++k) {
    const DoubleDouble tangent = DoubleDouble{128.0, 0.0} / (128.0 * 128.0 + k * (k + 1.0));
    const DoubleDouble square = -(tangent * tangent);
    DoubleDouble sum{0.0, 0.0};
    for (int n = 17; n > 0; n -= 2) {
      sum = sum * square + DoubleDouble{1.0, 0.0} / n;
    }
    const auto i = static_cast<std::size_t>(k);
    table[i + 1] = table[i] + sum * tangent;
  }
  return table;
}();

double with_sign(double magnitude, double sign) {
  return std::signbit(sign) ? -magnitude : magnitude;
}

/// Where a coordinate is NaN, infinite or 0.
double special_arc_tangent(double y, double x) {
  if (std::isnan(x) || std::isnan(y)) {
    return x + y;
  }
  const bool is_left = std::signbit(x);
  if (y == 0.0 || (std::isinf(x) && !std::isinf(y))) {
    return with_sign(is_left ? pi : 0.0, y);
  }
  if (std::isinf(x)) {
    return with_sign(is_left ? 0x1.2d97c7f3321d2p+1 : pi / 4, y);  // 3π/4
  }
  return with_sign(pi / 2, y);
}

constexpr bool is_ordinary(double x) {
  return is_between(x, 0x1p-430, 0x1p430);
}

/// Where a coordinate is very large or very small.
double extreme_arc_tangent(double y, double x) {
  const double scale = std::max(std::abs(x), std::abs(y)) > 1.0 ? 0x1p-600 : 0x1p700;
  if (is_ordinary(x * scale) && is_ordinary(y * scale)) {
    const Approximation value = approximate_arc_tangent({y * scale, 0.0}, {x * scale, 0.0});
    return nearest(value, [&] { return exact::arc_tangent(y, x, value.hi); });
  }
  const bool is_flat = std::abs(y) < std::abs(x);
  const double approximation = is_flat && x > 0.0 ? y / x : with_sign(is_flat ? pi : pi / 2, y);
  return exact::arc_tangent(y, x, approximation);
}

}  // namespace

// c has 8 bits, and halves of u and v 26 and 27: the products with them are exact. So is u − c·v1,
// as u is within a factor of 2 of it (c is 0 for quotients up to 1/256). The quotient is found to
// 26 bits, q1, by one division, and the rest, q2, from the remainder. Roundings of terms that are
// 2^−26 of u, v or their quotient make an error below 2^−76·(c + |q|).
//
// atan q = q − q³/3 + … + q⁹/9, |q| < 2^−7.9. The series has seven roundings (three of q in q³, two
// of products there, the polynomial and the last product) and four as part of sums: 11u·|q|³/3.
// q¹¹/11 is below u·|q|³/600, and the rest loses less than 2^−100 of the result.
Approximation approximate_arc_tangent(DoubleDouble y, DoubleDouble x) {
  const double sign = std::signbit(y.hi) ? -1.0 : 1.0;
  const bool is_left = std::signbit(x.hi);
  const DoubleDouble up = std::signbit(y.hi) ? -y : y;
  const DoubleDouble across = is_left ? -x : x;
  const bool is_steep = up.hi > across.hi;
  const DoubleDouble u{is_steep ? across.hi : up.hi, is_steep ? across.lo : up.lo};
  const DoubleDouble v{is_steep ? up.hi : across.hi, is_steep ? up.lo : across.lo};
  // The angle is a multiple of π/2, plus or minus the one of (v, u).
  const DoubleDouble& quarter = quarters[is_steep ? 1 : is_left ? 2 : 0];
  const double direction = is_steep == is_left ? 1.0 : -1.0;

  constexpr double short_parts = 0x1.8p45;  // adding this leaves a multiple of 1/128
  const double shifted = u.hi / v.hi + short_parts;
  const double c = shifted - short_parts;
  const DoubleDouble& arc = arcs[std::bit_cast<std::uint64_t>(shifted) % 256];
  const auto u_parts = split(u.hi);
  const auto v_parts = split(v.hi);
  const double rest = u.hi - c * v_parts.hi;
  const double rest_low = (u.lo - c * v.lo) - c * v_parts.lo;
  const double divisor = v.hi + c * u.hi;
  const double divisor_low =
      (((v.hi - divisor) + c * u_parts.hi) + c * u_parts.lo) + (v.lo + c * u.lo);
  const auto divisor_parts = split(divisor);
  const double inverse = 1.0 / divisor;
  const double q1 = split((rest + rest_low) * inverse).hi;
  const double remainder =
      ((rest - q1 * divisor_parts.hi) - q1 * divisor_parts.lo) + (rest_low - q1 * divisor_low);
  const double q2 = remainder * inverse;

  const double q = q1 + q2;
  const double square = q * q;
  const double series =
      q * square *
      ((-1.0 / 3 + square * (1.0 / 5)) + square * square * (-1.0 / 7 + square * (1.0 / 9)));
  const auto sum = fast_two_sum(arc.hi, q1);
  const auto value = fast_two_sum(quarter.hi, direction * sum.hi);
  const double low = (value.lo + quarter.lo) + direction * (sum.lo + (arc.lo + q2));
  return {sign * value.hi, sign * (low + direction * series),
          0x1.2p-51 * std::abs(q) * square + 0x1p-76 * (c + std::abs(q)) + 0x1p-100 * value.hi};
}

// 1 − x² = (1 − x)·(1 + x), and its root, are right to 2^−100.
Approximation approximate_arc_cosine(double x) {
  const auto less = fast_two_sum(1.0, -x);
  const auto more = fast_two_sum(1.0, x);
  const auto product = two_product(less.hi, more.hi);
  const double product_low = product.lo + (less.hi * more.lo + less.lo * more.hi);
  const double root = std::sqrt(product.hi);
  const auto square = two_product(root, root);
  const double root_low = 0.5 * (((product.hi - square.hi) - square.lo) + product_low) / root;
  return approximate_arc_tangent({root, root_low}, {x, 0.0});
}

double arc_tangent(double y, double x) {
  if (is_ordinary(x) && is_ordinary(y)) [[likely]] {
    const Approximation value = approximate_arc_tangent({y, 0.0}, {x, 0.0});
    return nearest(value, [&] { return exact::arc_tangent(y, x, value.hi); });
  }
  const bool is_special = x == 0.0 || y == 0.0 || !std::isfinite(x) || !std::isfinite(y);
  return is_special ? special_arc_tangent(y, x) : extreme_arc_tangent(y, x);
}

double arc_cosine(double x) {
  if (is_between(x, 0x1p-57, 1.0)) [[likely]] {
    const Approximation value = approximate_arc_cosine(x);
    return nearest(value, [&] { return exact::arc_cosine(x, value.hi); });
  }
  if (is_between(x, 0.0, 1.0)) {
    return pi / 2;  // which is more than 2^−57 away from a rounding boundary
  }
  if (x == 1.0 || x == -1.0) {
    return x > 0.0 ? 0.0 : pi;
  }
  return std::isnan(x) ? x + x : std::numeric_limits<double>::quiet_NaN();
}

}  // namespace sarnum
