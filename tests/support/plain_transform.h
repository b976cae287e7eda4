// Oracles for the transforms: the radix-2 definition written down as plainly as it reads, and a
// discrete Fourier transform in a wider type.
#pragma once

#include <cmath>
#include <complex>
#include <cstddef>
#include <random>
#include <utility>
#include <vector>

#if __LDBL_MANT_DIG__ == 53
#include <quadmath.h>
#endif

namespace oracle {

inline int reversed(int x, int bits) {
  int r = 0;
  for (int b = 0; b < bits; ++b) {
    r |= ((x >> b) & 1) << (bits - 1 - b);
  }
  return r;
}

/// Radix-2 transform of re, im (2^m elements), in place and unscaled. Angles, sines and cosines are
/// computed in `Angle`, butterflies in `Computed`; each result is rounded to `Rounded` on its way
/// into the arrays.
template <class Angle, class Computed, class Rounded, class Stored>
void radix2(Stored* re, Stored* im, int m, bool inverse) {
  const Angle two_pi = static_cast<Angle>(std::acos(-1.0)) * Angle{2};
  const int n = 1 << m;
  const auto rounded = [](Computed v) { return static_cast<Stored>(static_cast<Rounded>(v)); };
  for (int half = n / 2; half > 0; half /= 2) {
    for (int j = 0; j < n; j += 2 * half) {
      const int r = reversed(j / half, m);
      const Angle x = two_pi * static_cast<Angle>(r) / static_cast<Angle>(n);
      const auto c = static_cast<Computed>(std::cos(x));
      const auto s = static_cast<Computed>(inverse ? -std::sin(x) : std::sin(x));
      for (int i = 0; i < half; ++i) {
        const int a = j + i, b = a + half;
        const Computed t_re = Computed{re[b]} * c + Computed{im[b]} * s;
        const Computed t_im = Computed{im[b]} * c - Computed{re[b]} * s;
        re[b] = rounded(Computed{re[a]} - t_re);
        im[b] = rounded(Computed{im[a]} - t_im);
        re[a] = rounded(Computed{re[a]} + t_re);
        im[a] = rounded(Computed{im[a]} + t_im);
      }
    }
  }
  for (int i = 0; i <= n; ++i) {
    const int j = reversed(i, m);
    if (j > i) {
      std::swap(re[i], re[j]);
      std::swap(im[i], im[j]);
    }
  }
}

/// What has more digits than a double. Of long double as short as that there are no functions.
#if __LDBL_MANT_DIG__ == 53
using Wide = __float128;
inline std::complex<Wide> at_angle(Wide angle) {
  return {cosq(angle), sinq(angle)};
}
inline const Wide pi = acosq(Wide{-1});
#else
using Wide = long double;
inline std::complex<Wide> at_angle(Wide angle) {
  return std::polar(Wide{1}, angle);
}
inline const Wide pi = std::acos(Wide{-1});
#endif

using Exact = std::vector<std::complex<Wide>>;

/// The discrete Fourier transform of every `stride`-th of some samples, by even and odd ones:
/// another order than the definition above has.
inline void exact_transform(const Exact::value_type* in, std::size_t stride, std::size_t n,
                            Wide turn, Exact::value_type* out) {
  if (n == 1) {
    *out = *in;
    return;
  }
  exact_transform(in, 2 * stride, n / 2, turn, out);
  exact_transform(in + stride, 2 * stride, n / 2, turn, out + n / 2);
  for (std::size_t k = 0; k < n / 2; ++k) {
    const Wide angle = turn * static_cast<Wide>(k) / static_cast<Wide>(n);
    const auto turned = at_angle(angle) * out[k + n / 2];
    out[k + n / 2] = out[k] - turned;
    out[k] += turned;
  }
}

inline Exact exact_transform(const Exact& line, bool inverse) {
  Exact all(line.size());
  const Wide turn = (inverse ? 2 : -2) * pi;
  exact_transform(line.data(), 1, line.size(), turn, all.data());
  return all;
}

template <class Stored>
Exact complex_line(const std::vector<Stored>& line) {
  Exact values;
  for (std::size_t i = 0; i < line.size() / 2; ++i) {
    values.emplace_back(line[i], line[line.size() / 2 + i]);
  }
  return values;
}

/// ‖actual − expected‖ / ‖expected‖; both begin at frequency `first`.
inline double relative_error(const Exact& actual, const Exact& expected, std::size_t first = 0) {
  Wide difference = 0, norm = 0;
  for (std::size_t k = 0; k < actual.size(); ++k) {
    const auto& right = expected[(k + first) % expected.size()];
    difference += std::norm(actual[k] - right);
    norm += std::norm(right);
  }
  return std::sqrt(static_cast<double>(difference / norm));
}

/// Normally distributed numbers, the same in every run of a test.
template <class Stored>
std::vector<Stored> random_values(std::size_t n, unsigned seed) {
  std::mt19937_64 engine(seed);
  std::normal_distribution<double> normal;
  std::vector<Stored> values(n);
  for (Stored& value : values) {
    value = static_cast<Stored>(normal(engine));
  }
  return values;
}

}  // namespace oracle
