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

/// Taylor's series of the arc sine at a multiple of 1/128.
struct ArcSine {
  DoubleDouble value;
  DoubleDouble slope;  ///< the head with at most 26 bits
  double terms[7];     ///< the factors of t² … t⁸
};

/// At c = k/128 for k = 0 … 64. By (1 − x²)·f'' = x·f' the slope at c + t, Σ g_n·tⁿ, has
/// (1 − c²)·(n + 1)·g_(n+1) = (2n + 1)·c·g_n + n·g_(n−1), and at t = 1/128 it is that of the next
/// c.
constexpr auto arc_sines = [] {
  std::array<ArcSine, 65> table{};
  DoubleDouble value{0.0, 0.0};
  DoubleDouble slope{1.0, 0.0};
  for (int k = 0; k <= 64; ++k) {
    ArcSine& entry = table[static_cast<std::size_t>(k)];
    entry.value = value;
    entry.slope = with_short_head(slope);
    DoubleDouble term = slope;
    DoubleDouble before{0.0, 0.0};
    double power = 1.0;
    for (int n = 0; n < 20; ++n) {
      if (n > 0) {
        slope = slope + term * power;
        if (n <= 7) {
          entry.terms[n - 1] = term.hi / (n + 1);
        }
      }
      power /= 128.0;
      value = value + (term * power) / (n + 1);
      const DoubleDouble next = (term * ((2 * n + 1) * k * 128.0) + before * (n * 16384.0)) /
                                ((16384.0 - k * k) * (n + 1));
      before = term;
      term = next;
    }
  }
  return table;
}();

/// acos x = quarter + factor·asin z, for x > 0 and x < 0 each.
struct Way {
  DoubleDouble quarter;
  double factor;
  double half_if_root;
};
constexpr Way ways[] = {{quarters[1], -1.0, 0.0},
                        {quarters[1], 1.0, 0.0},
                        {quarters[0], 2.0, 0.5},
                        {quarters[2], -2.0, 0.5}};

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

/// No product of the fast path comes near the subnormal numbers.
constexpr bool is_ordinary(double x) {
  return is_between(x, 0x1p-150, 0x1p150);
}

/// Where a coordinate is very large or very small.
double extreme_arc_tangent(double y, double x) {
  const auto field = [](double of) { return std::bit_cast<std::uint64_t>(of) >> 52 & 0x7ff; };
  const std::uint64_t most = std::max(field(x), field(y));
  if (most - std::min(field(x), field(y)) < 300) {
    const auto scale = std::bit_cast<double>((2046 - std::min<std::uint64_t>(most, 2045)) << 52);
    const Approximation value = approximate_arc_tangent({y * scale, 0.0}, {x * scale, 0.0});
    return nearest(value, [&] { return exact::arc_tangent(y, x, value.rounded()); });
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

// acos x = π/2 − asin x up to 1/2; beyond, 2·asin z or π − 2·asin z of z = √((1 − |x|)/2). The root
// is computed for all x and z is the lesser one: a branch would take longer. (1 − |x|)/2 is exact
// beyond 1/2, and with a root's upper 26 bits h and lower 27 bits l so is (1 − |x|)/2 − h² − 2·h·l.
//
// For z = c + t, c the nearest multiple of 1/128, t is exact, and so are products of halves of t
// with the slope's head of 26 bits. Of the rest of the line, which is 2^−25·|t|, five roundings
// lose 2^−75·|t| ≤ 2^−75·z. The root's low part is below u·z: its product with the slope's low
// part, 2^−26, is left out. Sums with arcs and quarters lose less than 2^−99.
//
// |t| ≤ 2^−8. The series has nine roundings (of t², a factor, the polynomial, two of products and
// the like of smaller terms), two as part of sums, and lacks u of it where the root's low part
// changes it; the terms left out, from t⁹ on, are below 2u of it: 14u, and twice that for 2·asin z.
Approximation approximate_arc_cosine(double x) {
  const double magnitude = std::abs(x);
  const double half = 0.5 - 0.5 * magnitude;
  const double root = std::sqrt(half);
  const auto parts = split(root);
  const double remainder =
      ((half - parts.hi * parts.hi) - 2.0 * parts.hi * parts.lo) - parts.lo * parts.lo;
  const double z = std::min(root, magnitude);
  const auto& [quarter, factor, half_if_root] = ways[2 * (magnitude > 0.5) + std::signbit(x)];

  constexpr double short_parts = 0x1.8p45;  // adding this leaves a multiple of 1/128
  const double shifted = z + short_parts;
  const ArcSine& at = arc_sines[std::bit_cast<std::uint64_t>(shifted) % 128];
  const double t = z - (shifted - short_parts);
  const auto t_parts = split(t);
  const double t2 = t * t;
  const auto& a = at.terms;
  const double series = t2 * (((a[0] + t * a[1]) + t2 * (a[2] + t * a[3])) +
                              t2 * t2 * ((a[4] + t * a[5]) + t2 * a[6]));
  const auto arc = fast_two_sum(at.value.hi, at.slope.hi * t_parts.hi);
  const double low = arc.lo + ((at.value.lo + (at.slope.hi * t_parts.lo + at.slope.lo * t)) +
                               (at.slope.hi + 2.0 * t * a[0]) * (half_if_root * remainder / root));
  const auto value = fast_two_sum(quarter.hi, factor * arc.hi);
  return {value.hi, (value.lo + quarter.lo) + factor * (low + series),
          0x1.cp-49 * std::abs(series) + (0x1p-74 * z + 0x1p-98)};
}

double arc_tangent(double y, double x) {
  if (is_ordinary(x) && is_ordinary(y)) [[likely]] {
    const Approximation value = approximate_arc_tangent({y, 0.0}, {x, 0.0});
    return nearest(value, [&] { return exact::arc_tangent(y, x, value.rounded()); });
  }
  const bool is_special = x == 0.0 || y == 0.0 || !std::isfinite(x) || !std::isfinite(y);
  return is_special ? special_arc_tangent(y, x) : extreme_arc_tangent(y, x);
}

double arc_cosine(double x) {
  if (is_between(x, 0x1p-57, 1.0)) [[likely]] {
    const Approximation value = approximate_arc_cosine(x);
    return nearest(value, [&] { return exact::arc_cosine(x, value.rounded()); });
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
