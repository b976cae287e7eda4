#include "elementary/wide.h"

#include <algorithm>
#include <bit>
#include <tuple>

namespace sarnum {

Wide::Wide(double x) {
  const auto all = std::bit_cast<std::uint64_t>(x);
  const std::uint64_t fraction = all & 0xfffffffffffff;
  const auto field = static_cast<int>(all >> 52 & 0x7ff);
  const std::uint64_t integer = field == 0 ? fraction : fraction | std::uint64_t{1} << 52;
  *this = normalised(
      std::array{static_cast<std::uint32_t>(integer >> 32), static_cast<std::uint32_t>(integer)},
      std::max(field, 1) - 1075 + 64, all >> 63 != 0);
}

double Wide::nearest() const {
  if (exponent > 1024) {
    return std::bit_cast<double>(std::uint64_t{is_negative ? 0xfffU : 0x7ffU} << 52);
  }
  // Bits of the result: fewer than 53 below the least normal number, 2^−1022.
  const std::int64_t kept = is_zero() ? -1 : std::min<std::int64_t>(53, exponent + 1074);
  std::uint64_t result = 0;
  if (kept >= 0) {
    const std::uint64_t top = std::uint64_t{m[0]} << 32 | m[1];
    const std::uint64_t integer = kept == 0 ? 0 : top >> (64 - kept);
    const std::uint64_t rest = top << kept;
    const std::uint64_t half = std::uint64_t{1} << 63;
    const bool is_more = std::any_of(m.begin() + 2, m.end(), [](auto word) { return word != 0; });
    const bool rounds_up = rest > half || (rest == half && (is_more || integer % 2 == 1));
    // The leading bit of the integer and a carry both add to the field of the exponent.
    const std::int64_t field = std::max<std::int64_t>(exponent + 1021, 0);
    result = (static_cast<std::uint64_t>(field) << 52) + integer + (rounds_up ? 1 : 0);
  }
  return std::bit_cast<double>(result | std::uint64_t{is_negative} << 63);
}

Wide operator-(Wide x) {
  x.is_negative = !x.is_negative;
  return x;
}

Wide operator+(const Wide& a, const Wide& b) {
  const auto magnitude = [](const Wide& x) { return std::tie(x.exponent, x.m); };
  if (b.is_zero() || a.is_zero()) {
    return a.is_zero() ? b : a;
  }
  if (magnitude(a) < magnitude(b)) {
    return b + a;
  }
  // A word in front for the carry, and one behind for what b has there.
  constexpr std::size_t count = Wide::words + 2;
  const auto shift = static_cast<std::uint64_t>(a.exponent - b.exponent);
  const auto word_of_b = [&](std::size_t i) {
    return std::uint64_t{i < Wide::words ? b.m[i] : 0};  // before the first one, too: i wraps
  };
  std::array<std::uint32_t, count> digits{};
  std::int64_t carry = 0;
  for (std::size_t i = count; i-- > 1;) {
    const std::size_t from = i - 1 - static_cast<std::size_t>(shift / 32);
    const std::uint64_t shifted = (word_of_b(from - 1) << 32 | word_of_b(from)) >> shift % 32;
    const std::int64_t term = static_cast<std::uint32_t>(shifted);
    carry += (i <= Wide::words ? a.m[i - 1] : 0) + (a.is_negative == b.is_negative ? term : -term);
    digits[i] = static_cast<std::uint32_t>(carry);
    carry >>= 32;
  }
  digits[0] = static_cast<std::uint32_t>(carry);
  return normalised(digits, a.exponent + 32, a.is_negative);
}

Wide operator-(const Wide& a, const Wide& b) {
  return a + -b;
}

Wide operator*(const Wide& a, const Wide& b) {
  std::array<std::uint32_t, 2 * Wide::words> digits{};
  for (std::size_t i = Wide::words; i-- > 0;) {
    std::uint64_t carry = 0;
    for (std::size_t j = Wide::words; j-- > 0;) {
      carry += std::uint64_t{a.m[i]} * b.m[j] + digits[i + j + 1];
      digits[i + j + 1] = static_cast<std::uint32_t>(carry);
      carry >>= 32;
    }
    digits[i] = static_cast<std::uint32_t>(carry);
  }
  return normalised(digits, a.exponent + b.exponent, a.is_negative != b.is_negative);
}

Wide operator/(const Wide& x, std::uint32_t divisor) {
  std::array<std::uint32_t, Wide::words + 1> digits{};
  std::uint64_t remainder = 0;
  for (std::size_t i = 0; i < digits.size(); ++i) {
    remainder = remainder << 32 | (i < Wide::words ? x.m[i] : 0);
    digits[i] = static_cast<std::uint32_t>(remainder / divisor);
    remainder %= divisor;
  }
  return normalised(digits, x.exponent, x.is_negative);
}

Wide scaled(Wide x, std::int64_t power) {
  x.exponent += power;
  return x;
}

}  // namespace sarnum
