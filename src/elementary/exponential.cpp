// Exponentials: x = n·(log 2)/128 + r, a table for the first and a short series for the second.
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>

#include "elementary/approximation.h"
#include "elementary/exact.h"
#include "elementary/functions.h"

namespace sarnum {
namespace {

/// 2^(i/128) for i = 0 … 127, the heads with at most 26 bits. The error grows by less than 2^−103
/// a step and stays below 2^−96.
constexpr auto roots = [] {
  constexpr DoubleDouble step{0x1.0163da9fb3335p+0, 0x1.b61299ab8cdb7p-54};
  std::array<DoubleDouble, 128> table{};
  DoubleDouble power{1.0, 0.0};
  for (DoubleDouble& entry : table) {
    entry = with_short_head(power);
    power = power * step;
  }
  return table;
}();

}  // namespace

// |n| < 2^18. Of (log 2)/128 the first part has 34 bits: n·first is exact, and so is x − n·first,
// for x is within a factor of 2 of it. The second part errs by 2^−96 and its product with n by
// 2^−78: together below 2^−76.
//
// With |r| ≤ (log 2)/256 = 2^−8.53, e^r = 1 + r + p, p = r²·(1/2 + r/6 + … + r⁴/720). Two roundings
// of r in r², and those of r², the polynomial, T, two products and four as part of sums, are
// 11u·r²/2; the series left out, r⁷/5040, is below u·r²/4. T has a head of 26 bits and r is a
// multiple of 2^−34 plus a rest: of T·(1 + r) nothing above 2^−78 is lost.
Approximation approximate_exponential(DoubleDouble x) {
  constexpr double first = 0x1.62e42fef8p-8;
  constexpr double second = 0x1.1cf79abc9e3b4p-43;
  constexpr double integers = 0x1.8p52;     // adding this leaves an integer in the lowest bits
  constexpr double short_parts = 0x1.8p18;  // or a multiple of 2^−34
  const double shifted = x.hi * 0x1.71547652b82fep+7 + integers;
  const double n = shifted - integers;
  const auto position = std::bit_cast<std::uint64_t>(shifted);
  // n/128 rounded down, in the field of the exponent.
  const double scale = std::bit_cast<double>((position << 45 & ~std::uint64_t{0} << 52) +
                                             std::bit_cast<std::uint64_t>(1.0));
  const double head = roots[position % 128].hi * scale;
  const double tail = roots[position % 128].lo * scale;

  const double r_high = x.hi - n * first;
  const double r_low = x.lo - n * second;
  const double r = r_high + r_low;
  const double r2 = r * r;
  const double p =
      r2 * ((1.0 / 2 + r * (1.0 / 6)) + r2 * ((1.0 / 24 + r * (1.0 / 120)) + r2 * (1.0 / 720)));
  const double r_short = (r_high + short_parts) - short_parts;
  const auto value = fast_two_sum(head, head * r_short);
  const double rest = tail + (tail * r_high + head * (r_high - r_short));
  return {value.hi, (value.lo + rest) + (head + tail) * (r_low + p),
          (0x1.8p-51 * r2 + 0x1p-75) * head};
}

double exponential(double x) {
  if (is_between(x, 0x1p-54, 640.0)) [[likely]] {
    return nearest(approximate_exponential({x, 0.0}), [=] { return exact::exponential(x); });
  }
  if (is_between(x, 0.0, 1.0)) {
    return 1.0;
  }
  if (is_between(x, 1.0, 1024.0)) {
    return exact::exponential(x);
  }
  return std::isnan(x) ? x + x : std::signbit(x) ? 0.0 : std::numeric_limits<double>::infinity();
}

Approximation approximate_power_of_ten(double x) {
  constexpr DoubleDouble ln_10{0x1.26bb1bbb55516p+1, -0x1.f48ad494ea3e9p-53};
  return approximate_exponential(ln_10 * x);
}

double power_of_ten(double x) {
  if (is_between(x, 0x1p-56, 277.0)) [[likely]] {
    return nearest(approximate_power_of_ten(x), [=] { return exact::power_of_ten(x); });
  }
  if (is_between(x, 0.0, 1.0)) {
    return 1.0;
  }
  return is_between(x, 1.0, 1024.0) ? exact::power_of_ten(x) : exponential(x);
}

}  // namespace sarnum
