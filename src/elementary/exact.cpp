#include "elementary/exact.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>

#include "elementary/wide.h"

namespace sarnum::exact {
namespace {

// Truncated digits, from mpmath 1.3.
constexpr Wide half_pi({0xc90fdaa2, 0x2168c234, 0xc4c6628b, 0x80dc1cd1, 0x29024e08, 0x8a67cc74,
                        0x020bbea6, 0x3b139b22},
                       1);
constexpr Wide ln_2({0xb17217f7, 0xd1cf79ab, 0xc9e3b398, 0x03f2f6af, 0x40f34326, 0x7298b62d,
                     0x8a0d175b, 0x8baafa2b},
                    0);
constexpr Wide ln_10({0x935d8ddd, 0xaaa8ac16, 0xea56d62b, 0x82d30a28, 0xe28fecf9, 0xda5df90e,
                      0x83c61e82, 0x01f02d72},
                     2);
constexpr Wide inverse_of_ln_10({0xde5bd8a9, 0x37287195, 0x355baaaf, 0xad33dc32, 0x3ee34602,
                                 0x45c9a202, 0x3a3f2d44, 0xf78ea53c},
                                -1);

/// The binary digits of 2/π behind the point.
constexpr std::uint32_t two_over_pi[] = {
    0xa2f9836e, 0x4e441529, 0xfc2757d1, 0xf534ddc0, 0xdb629599, 0x3c439041, 0xfe5163ab, 0xdebbc561,
    0xb7246e3a, 0x424dd2e0, 0x06492eea, 0x09d1921c, 0xfe1deb1c, 0xb129a73e, 0xe88235f5, 0x2ebb4484,
    0xe99c7026, 0xb45f7e41, 0x3991d639, 0x835339f4, 0x9c845f8b, 0xbdf9283b, 0x1ff897ff, 0xde05980f,
    0xef2f118b, 0x5a0a6d1f, 0x6d367ecf, 0x27cb09b7, 0x4f463f66, 0x9e5fea2d, 0x7527bac7, 0xebe5f17b,
    0x3d0739f7, 0x8a5292ea, 0x6bfb5fb1, 0x1f8d5d08, 0x56033046, 0xfc7b6bab, 0xf0cfbc20, 0x9af4361d,
    0xa9e39161, 0x5ee61b08, 0x6599855f, 0x14a06840};

struct Reduced {
  Wide angle;  ///< in −π/4 … π/4
  unsigned quarter_turns;
};

/// A finite x less a multiple of π/2 (Payne and Hanek 1983).
///
/// |x| = M·2^e with an integer M of 53 bits. Digits of 2/π whose products with it are multiples of
/// 4, whole turns, are left out; 14 words follow, so that of the product's fraction 448 − 34 − 53
/// bits are right. It is never below 2^−62 (Muller, Elementary Functions, 2016, 11.3.2).
Reduced reduced(double x) {
  if (std::abs(x) < 0.75) {
    return {x, 0};
  }
  constexpr int taken = 14;
  constexpr int count = taken + 2;
  const auto all = std::bit_cast<std::uint64_t>(x);
  const std::uint64_t integer = (all & 0xfffffffffffff) | std::uint64_t{1} << 52;
  const int e = static_cast<int>(all >> 52 & 0x7ff) - 1075;
  const int first = std::max(e - 2, 0) / 32;
  std::array<std::uint32_t, count> digits{};
  for (const int half : {0, 1}) {  // of the integer, the lower first
    const std::uint64_t factor = static_cast<std::uint32_t>(integer >> 32 * half);
    std::uint64_t carry = 0;
    for (int i = taken; i-- > -1;) {
      std::uint32_t& digit = digits[static_cast<std::size_t>(i + 2 - half)];
      carry += digit + (i < 0 ? 0 : factor * two_over_pi[first + i]);
      digit = static_cast<std::uint32_t>(carry);
      carry >>= 32;
    }
  }
  const int point = 32 * (first + taken) - e;  // so many bits lie behind it
  const auto bit = [&](int place) {
    return digits[static_cast<std::size_t>(count - 1 - place / 32)] >> place % 32 & 1;
  };
  unsigned quarter_turns = bit(point) + 2 * bit(point + 1);
  const bool is_above_half = bit(point - 1) != 0;
  for (int place = point; place < 32 * count; ++place) {
    digits[static_cast<std::size_t>(count - 1 - place / 32)] &= ~(std::uint32_t{1} << place % 32);
  }
  Wide fraction = normalised(digits, 32 * count - point, false);
  if (is_above_half) {
    fraction = fraction - Wide(1.0);
    ++quarter_turns;
  }
  fraction = fraction * half_pi;
  return x < 0 ? Reduced{-fraction, 0U - quarter_turns} : Reduced{fraction, quarter_turns};
}

struct EvenAndOdd {
  Wide even, odd;
};

/// The even and the odd terms of the series of e^t: cosh t and sinh t, or with alternating signs
/// cos t and sin t. For |t| below 4, where cancellation costs less than 8 bits.
EvenAndOdd series(const Wide& t, bool alternates) {
  Wide square = t * t;
  square.is_negative = alternates;
  Wide even = 1.0;
  Wide odd = t;
  EvenAndOdd sums{even, odd};
  for (std::uint32_t k = 1; !even.is_negligible_beside(1.0); k += 2) {
    even = even * square / (k * (k + 1));
    odd = odd * square / ((k + 1) * (k + 2));
    sums = {sums.even + even, sums.odd + odd};
  }
  return sums;
}

/// For |x| < 2^11.
Wide exponential(const Wide& x) {
  const double power_of_two = std::trunc(x.nearest() * 1.4426950408889634);
  const auto [even, odd] = series(x - power_of_two * ln_2, false);
  return scaled(even + odd, static_cast<std::int64_t>(power_of_two));
}

/// Where y is within 2^−40 of log x: y + log(x·e^−y), of which six terms are left.
Wide logarithm(const Wide& x, double y) {
  const Wide rest = x * exponential(-Wide(y)) - 1.0;
  Wide sum;
  for (std::uint32_t k = 6; k > 0; --k) {
    sum = rest * (Wide(1.0) / k - sum);
  }
  return sum + y;
}

/// 1/√x for x > 0, by Newton's method: each step doubles the number of right bits.
Wide inverse_square_root(const Wide& x) {
  const std::int64_t half_power = x.exponent / 2;
  const Wide near_1 = scaled(x, -2 * half_power);
  Wide root = 1.0 / std::sqrt(near_1.nearest());
  for (int step = 0; step < 3; ++step) {
    root = root + scaled(root * (Wide(1.0) - near_1 * root * root), -1);
  }
  return scaled(root, -half_power);
}

/// The angle of (x, y), which is at the approximation plus arcsin d: three terms of that are left.
Wide arc_tangent(const Wide& y, const Wide& x, double approximation) {
  const auto [c, s] = series(approximation, true);
  const Wide d = (y * c - x * s) * inverse_square_root(x * x + y * y);
  const Wide square = d * d;
  return (square * square * 3.0 / 40 + square / 6 + 1.0) * d + approximation;
}

}  // namespace

double sine(double x, unsigned quarter_turns) {
  const Reduced at = reduced(x);
  const unsigned quarter = at.quarter_turns + quarter_turns;
  const auto [c, s] = series(at.angle, true);
  const Wide& value = quarter % 2 == 0 ? s : c;
  return (quarter / 2 % 2 == 0 ? value : -value).nearest();
}

double exponential(double x) {
  return exponential(Wide(x)).nearest();
}

double power_of_ten(double x) {
  // 10^23 is half-way between two doubles.
  return x >= 0 && x <= 23 && std::trunc(x) == x ? integer_power(10.0, static_cast<unsigned>(x))
                                                 : exponential(x * ln_10).nearest();
}

double logarithm(double x, double approximation) {
  return logarithm(Wide(x), approximation).nearest();
}

double decimal_logarithm(double x, double approximation) {
  return (logarithm(Wide(x), approximation * 2.302585092994046) * inverse_of_ln_10).nearest();
}

double arc_tangent(double y, double x, double approximation) {
  Wide angle = arc_tangent(Wide(y), Wide(x), approximation);
  if (angle.exponent < -60) {
    // Nearer to y/x than the digits show, but less: where y/x is half-way between two subnormal
    // numbers the lower one is nearest. Otherwise y/x is 2^−108 of itself away from a boundary.
    angle = angle - scaled(angle, -200);
  }
  return angle.nearest();
}

double arc_cosine(double x, double approximation) {
  const Wide square_of_sine = Wide(1.0) - Wide(x) * x;
  const Wide sine = square_of_sine * inverse_square_root(square_of_sine);
  return arc_tangent(sine, x, approximation).nearest();
}

double integer_power(double x, unsigned n) {
  // Exact where the result has few digits, so that a tie is one.
  Wide result = 1.0;
  for (Wide square = x; n > 0; n /= 2, square = square * square) {
    if (n % 2 == 1) {
      result = result * square;
    }
  }
  return result.nearest();
}

}  // namespace sarnum::exact
