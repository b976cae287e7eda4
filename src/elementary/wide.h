// Numbers of 256 bits, by integers alone: the arithmetic of the exact path.
//
// Sums and products drop what lies behind the last bit. A product, or a sum of terms of one sign,
// has a relative error below 2^−254; a difference has an error below 2^−255 of its larger term.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace sarnum {

/// ±m·2^exponent with m in [1/2, 1), its most significant word first; or 0, where all words are 0.
struct Wide {
  static constexpr std::size_t words = 8;
  static constexpr int bits = 32 * words;

  Wide() = default;
  /// Exact, of a finite x.
  Wide(double x);
  constexpr Wide(const std::array<std::uint32_t, words>& digits, std::int64_t power)
      : m(digits), exponent(power) {}

  bool is_zero() const { return m[0] == 0; }
  bool is_negligible_beside(const Wide& x) const {
    return is_zero() || exponent < x.exponent - bits;
  }
  /// The nearest double: ties to even, infinity beyond the largest, subnormal numbers rounded once.
  double nearest() const;

  std::array<std::uint32_t, words> m{};
  std::int64_t exponent = 0;
  bool is_negative = false;
};

Wide operator-(Wide x);
Wide operator+(const Wide& a, const Wide& b);
Wide operator-(const Wide& a, const Wide& b);
Wide operator*(const Wide& a, const Wide& b);
Wide operator/(const Wide& x, std::uint32_t divisor);
/// x·2^power.
Wide scaled(Wide x, std::int64_t power);

/// The number of words·32 bits that stands in `digits`, as a fraction below 1, times 2^exponent.
template <std::size_t count>
Wide normalised(const std::array<std::uint32_t, count>& digits, std::int64_t exponent,
                bool is_negative) {
  Wide result;
  std::size_t first = 0;
  while (first < count && digits[first] == 0) {
    ++first;
  }
  if (first == count) {
    return result;
  }
  int shift = 0;
  while ((digits[first] << shift) >> 31 == 0) {
    ++shift;
  }
  const auto word = [&](std::size_t i) { return std::uint64_t{i < count ? digits[i] : 0}; };
  for (std::size_t i = 0; i < Wide::words; ++i) {
    result.m[i] =
        static_cast<std::uint32_t>((word(first + i) << 32 | word(first + i + 1)) << shift >> 32);
  }
  result.exponent = exponent - static_cast<std::int64_t>(32 * first) - shift;
  result.is_negative = is_negative;
  return result;
}

}  // namespace sarnum
