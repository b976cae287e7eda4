// Sine and cosine: x = n·π/512 + r, a table for the first and short series for the second.
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>

#include "elementary/approximation.h"
#include "elementary/exact.h"
#include "elementary/functions.h"

namespace sarnum {
namespace {

/// sin(n·π/512) for n = 0 … 256, from the angle π/512 by the addition theorem: the error grows by
/// less than 2^−103 a step and stays below 2^−95.
constexpr auto sines = [] {
  constexpr DoubleDouble cosine_of_step{0x1.fffd8858e8a92p-1, 0x1.359c71883bcf7p-55};
  constexpr DoubleDouble sine_of_step{0x1.921f0fe670071p-8, 0x1.ab967fe6b7a9bp-64};
  std::array<DoubleDouble, 257> table{};
  DoubleDouble c{1.0, 0.0};
  DoubleDouble s{0.0, 0.0};
  for (std::size_t n = 0; n <= 128; ++n) {
    table[n] = with_short_head(s);
    table[256 - n] = with_short_head(c);
    const DoubleDouble next = c * cosine_of_step + -(s * sine_of_step);
    s = s * cosine_of_step + c * sine_of_step;
    c = next;
  }
  return table;
}();

double sine(double x, unsigned quarter_turns) {
  if (is_between(x, 0x1p-27, 3000.0)) [[likely]] {
    return nearest(approximate_sine(x, quarter_turns),
                   [=] { return exact::sine(x, quarter_turns); });
  }
  if (is_between(x, 0.0, 1.0)) {
    return quarter_turns == 0 ? x : 1.0;  // x³/6 and x²/2 are below half a unit in the last place
  }
  return std::isfinite(x) ? exact::sine(x, quarter_turns) : x - x;
}

}  // namespace

// |n| < 2^19. Of π/512 the first two parts have 33 bits: n·first and n·second are exact, and so is
// x − n·first, for x is within a factor of 2 of n·first. n·third errs by |n|·(2^−126 + 2^−127)
// with the part's own error, the low part of r by another |n|·2^−126.
//
// With |r| ≤ π/1024 = 2^−8.34, S the sine and C the cosine of the multiple:
//   sin = S + C·r + S·(−r²/2 + r⁴/24 − r⁶/720) + C·(−r³/6 + r⁵/120 − r⁷/5040).
// S and C have heads of 26 bits, and r is a multiple of 2^−34 plus a rest: of S + C·r nothing above
// 2^−79·(|S| + |C·r|) is lost. The product of S has seven roundings (two of r in r², and those of
// r², the polynomial, S and two products) and three as part of sums: 10u·r²/2·|S|. The product of
// C has 12u·r²/6·|C·r|. The terms left out, r⁸/40320 and r⁹/362880, are below u·r²/2000, and what
// the low part of r, below |n|·2^−76.7, would change in r²/2·S is below |n|·2^−85·|S|.
Approximation approximate_sine(double x, unsigned quarter_turns) {
  constexpr double first = 0x1.921fb544p-8;
  constexpr double second = 0x1.0b4611a6p-42;
  constexpr double third = 0x1.3198a2e037073p-77;
  constexpr double integers = 0x1.8p52;     // adding this leaves an integer in the lowest bits
  constexpr double short_parts = 0x1.8p18;  // or a multiple of 2^−34
  const double shifted = x * 0x1.45f306dc9c883p+7 + integers;
  const double n = shifted - integers;
  const auto position = std::bit_cast<std::uint64_t>(shifted) + 256 * quarter_turns;
  const bool is_descending = (position & 256) != 0;
  const std::size_t at = is_descending ? 256 - (position & 255) : position & 255;
  const DoubleDouble s = sines[at];
  const DoubleDouble c = sines[256 - at];
  const double slope = is_descending ? -1.0 : 1.0;
  const double sign = (position & 512) != 0 ? -1.0 : 1.0;

  const auto r = two_sum(slope * (x - n * first), -slope * (n * second));
  const double r_low = r.lo - slope * (n * third);
  const double r_short = (r.hi + short_parts) - short_parts;
  const double r2 = r.hi * r.hi;
  const double of_s = r2 * (-1.0 / 2 + r2 * (1.0 / 24 - r2 * (1.0 / 720)));
  const double of_c = r.hi * r2 * (-1.0 / 6 + r2 * (1.0 / 120 - r2 * (1.0 / 5040)));
  const double linear = c.hi * r_short;
  const auto sum = fast_two_sum(s.hi, linear);
  const auto value = fast_two_sum(sum.hi, c.hi * (r.hi - r_short));
  const double rest =
      ((s.hi + s.lo) * of_s + (c.hi + c.lo) * of_c) + (s.lo + (c.lo * r.hi + c.hi * r_low));
  return {sign * value.hi, sign * (value.lo + (sum.lo + rest)),
          (s.hi + std::abs(linear)) * (0x1.5p-51 * r2 + (0x1p-78 + 0x1p-85 * std::abs(n))) +
              0x1p-124 * std::abs(n)};
}

double sine(double x) {
  return sine(x, 0);
}

double cosine(double x) {
  return sine(x, 1);
}

}  // namespace sarnum
