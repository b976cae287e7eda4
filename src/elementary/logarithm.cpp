// Logarithms: x = 2^k·m, a table of logarithms for a short approximation of 1/m, and a series for
// what their product differs from 1.
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

/// The doubles from 0.6855… to twice that fall into 128 intervals. 1 is in the middle of one, so
/// that near 1 nothing cancels.
constexpr std::uint64_t interval = std::uint64_t{1} << 45;
constexpr std::uint64_t at_1 = std::bit_cast<std::uint64_t>(1.0);
constexpr std::uint64_t lowest = at_1 - 80 * interval - interval / 2;
constexpr std::uint64_t exponent_and_sign = ~std::uint64_t{0} << 52;

struct Entry {
  double inverse;          ///< of the interval's middle, a multiple of 2^−10
  DoubleDouble logarithm;  ///< −log inverse, the head a multiple of 2^−42
};

/// log x by the series of 2·artanh s, s = (x − 1)/(x + 1), for |s| < 0.19.
constexpr DoubleDouble logarithm_by_series(double x) {
  const DoubleDouble s = DoubleDouble{x - 1.0, 0.0} / (x + 1.0);
  const DoubleDouble square = s * s;
  DoubleDouble sum{0.0, 0.0};
  for (int k = 45; k > 0; k -= 2) {
    sum = sum * square + DoubleDouble{2.0, 0.0} / k;
  }
  return sum * s;
}

constexpr auto entries = [] {
  std::array<Entry, 128> table{};
  for (std::size_t i = 0; i < table.size(); ++i) {
    const auto middle = std::bit_cast<double>(lowest + interval * i + interval / 2);
    const double inverse = static_cast<int>(1024.0 / middle + 0.5) / 1024.0;
    const DoubleDouble logarithm = -logarithm_by_series(inverse);
    const double head = (logarithm.hi + 0x1.8p10) - 0x1.8p10;
    table[i] = {inverse, {head, (logarithm.hi - head) + logarithm.lo}};
  }
  return table;
}();

/// Not NaN, infinite, negative or 0.
constexpr bool has_logarithm(double x) {
  constexpr double infinity = std::numeric_limits<double>::infinity();
  return std::bit_cast<std::uint64_t>(x) - 1 < std::bit_cast<std::uint64_t>(infinity) - 1;
}

double special_logarithm(double x) {
  return x == 0.0                            ? -std::numeric_limits<double>::infinity()
         : std::isnan(x) || !std::signbit(x) ? x + x
                                             : std::numeric_limits<double>::quiet_NaN();
}

}  // namespace

// m is rounded to 22 bits, which times the inverse are exact, less 1 too, and then have 25 bits at
// most: z = z1 + z2, |z| < 2^−7.8, z1² exact, |z2| ≤ |z1|/2 unless z1 is 0. The table's heads and k
// times that of log 2 are multiples of 2^−42 below 2^10: base + z1 is exact.
//
//   log x = base + z1 + z2 − z1²/2 − z2·(z1 + z2/2) + z³·(1/3 − z/4 + … + z⁶/9) + low parts.
// The product with z³ has nine roundings (three of z in z³, two of products there, three of the
// polynomial and the last product) and three as part of sums: 12u·|z|³/3,
// at most 2^−66.6·|z|. That of z2 < 2^−21.5 has 4u·2^−21.5·|z|, the series left out is below
// u·|z|³/60, and the low parts, which are below 2^−33·|base| and right to 2^−96 and k·2^−98, err by
// 2^−86·|base|.
Approximation approximate_logarithm(double x) {
  constexpr DoubleDouble ln_2{0x1.62e42fefa38p-1, 0x1.ef35793c7673p-45};
  const bool is_subnormal = is_between(x, 0.0, std::numeric_limits<double>::min());
  const auto bits = std::bit_cast<std::uint64_t>(is_subnormal ? x * 0x1p54 : x);
  const std::uint64_t above = bits - lowest;
  const double k =
      static_cast<double>(static_cast<std::int64_t>(above) >> 52) - (is_subnormal ? 54.0 : 0.0);
  const Entry& entry = entries[above / interval % entries.size()];
  const std::uint64_t m = bits - (above & exponent_and_sign);
  const auto upper = std::bit_cast<double>((m + (std::uint64_t{1} << 30)) >> 31 << 31);
  const double lower = std::bit_cast<double>(m) - upper;

  const double z1 = upper * entry.inverse - 1.0;
  const double z2 = lower * entry.inverse;
  const double z = z1 + z2;
  const double z_squared = z * z;
  const double series =
      z * z_squared *
      (((1.0 / 3 - z * (1.0 / 4)) + z_squared * (1.0 / 5 - z * (1.0 / 6))) +
       z_squared * z_squared * ((1.0 / 7 - z * (1.0 / 8)) + z_squared * (1.0 / 9)));
  const double base = k * ln_2.hi + entry.logarithm.hi;
  const auto sum = fast_two_sum(base + z1, z2);
  const auto value = fast_two_sum(sum.hi, -0.5 * z1 * z1);
  const double low = (k * ln_2.lo + entry.logarithm.lo) - z2 * (z1 + 0.5 * z2);
  return {value.hi, (value.lo + (sum.lo + low)) + series,
          0x1.8p-67 * std::abs(z) + 0x1p-84 * std::abs(base)};
}

double logarithm(double x) {
  if (!has_logarithm(x)) [[unlikely]] {
    return special_logarithm(x);
  }
  const Approximation value = approximate_logarithm(x);
  return nearest(value, [&] { return exact::logarithm(x, value.rounded()); });
}

// The product of the heads is exact; the rest, 2^−26 of it, errs by 2^−78.
Approximation approximate_decimal_logarithm(double x) {
  constexpr DoubleDouble inverse_of_ln_10 =
      with_short_head({0x1.bcb7b1526e50ep-2, 0x1.95355baaafad3p-57});
  const Approximation natural = approximate_logarithm(x);
  const auto parts = split(natural.hi);
  const double low = parts.lo + natural.lo;
  const auto value =
      fast_two_sum(parts.hi * inverse_of_ln_10.hi,
                   low * inverse_of_ln_10.hi + (parts.hi + low) * inverse_of_ln_10.lo);
  return {value.hi, value.lo, 0.5 * natural.error + 0x1p-77 * std::abs(value.hi)};
}

double decimal_logarithm(double x) {
  if (!has_logarithm(x)) [[unlikely]] {
    return special_logarithm(x);
  }
  const Approximation value = approximate_decimal_logarithm(x);
  return nearest(value, [&] { return exact::decimal_logarithm(x, value.rounded()); });
}

}  // namespace sarnum
