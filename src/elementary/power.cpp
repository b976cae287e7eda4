// Powers with integer exponents, by products in pairs of doubles.
#include <cmath>
#include <cstdint>
#include <cstdlib>

#include "elementary/approximation.h"
#include "elementary/exact.h"
#include "elementary/functions.h"

namespace sarnum {
namespace {

/// The largest n for which x^n and its factors are in 2^±900, where no product of pairs overflows
/// or loses bits below the normal numbers.
unsigned largest_ordinary_exponent(double x) {
  const auto field = static_cast<int>(std::bit_cast<std::uint64_t>(x) >> 52 & 0x7ff);
  return 900U / static_cast<unsigned>(std::abs(field - 1023) + 1);
}

/// Each of the n − 1 products that make x^n has a relative error below 2^−103.
double nearest_power(DoubleDouble power, double x, unsigned n) {
  return nearest({power.hi, power.lo, n * 0x1p-103 * std::abs(power.hi)},
                 [=] { return exact::integer_power(x, n); });
}

double extreme_power(double x, unsigned n) {
  if (x != 0.0 && std::isfinite(x)) {
    return exact::integer_power(x, n);
  }
  return n % 2 == 0 ? x * x : x;
}

}  // namespace

void integer_powers(double x, double* powers, unsigned largest) {
  const unsigned largest_ordinary = largest_ordinary_exponent(x);
  DoubleDouble power{1.0, 0.0};
  powers[0] = 1.0;
  for (unsigned n = 1; n <= largest; ++n) {
    if (n <= largest_ordinary) {
      power = power * x;
      powers[n] = nearest_power(power, x, n);
    } else {
      powers[n] = extreme_power(x, n);
    }
  }
}

double integer_power(double x, unsigned n) {
  if (n == 0) {
    return 1.0;
  }
  if (n > largest_ordinary_exponent(x)) {
    return extreme_power(x, n);
  }
  DoubleDouble power{1.0, 0.0};
  DoubleDouble square{x, 0.0};
  for (unsigned rest = n; rest > 1; rest /= 2) {
    power = rest % 2 == 1 ? power * square : power;
    square = square * square;
  }
  return nearest_power(power * square, x, n);
}

}  // namespace sarnum
