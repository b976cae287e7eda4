// Oracles for the transforms: the radix-2 definition written down as plainly as it reads, and a
// discrete Fourier transform in a wider type.
#pragma once

#include <cmath>
#include <complex>
#include <cstddef>
#include <random>
#include <utility>
#include <vector>

#if __LDBL_MANT_DIG__ == 113
using Quad = long double;
#else
// Of libquadmath, whose header not every compiler finds.
using Quad = __float128;
extern "C" Quad cosq(Quad) noexcept;
extern "C" Quad sinq(Quad) noexcept;
extern "C" Quad acosq(Quad) noexcept;
#endif

namespace oracle {

inline int reversed(int x, int bits) {
  int r = 0;
  for (int b = 0; b < bits; ++b) {
    r |= ((x >> b) & 1) << (bits - 1 - b);
  }
  return r;
}

inline std::complex<Quad> at_angle_in_quad(Quad angle) {
#if __LDBL_MANT_DIG__ == 113
  return {std::cos(angle), std::sin(angle)};
#else
  return {cosq(angle), sinq(angle)};
#endif
}

/// Cosines and sines of the angles 2π·r/n for r < n/2, the angles computed in `Angle` and what is
/// asked for rounded to it from more digits. Kept for calls to come: they take long.
template <class Angle>
const std::vector<std::complex<Angle>>& twiddles(int m) {
  static std::vector<std::complex<Angle>> kept[31];
  auto& all = kept[m];
  const Angle two_pi = static_cast<Angle>(std::acos(-1.0)) * Angle{2};
  const int n = 1 << m;
  for (int r = static_cast<int>(all.size()); r < n / 2; ++r) {
    const auto exact = at_angle_in_quad(two_pi * static_cast<Angle>(r) / static_cast<Angle>(n));
    all.emplace_back(static_cast<Angle>(exact.real()), static_cast<Angle>(exact.imag()));
  }
  return all;
}

/// Radix-2 transform of re, im (2^m elements), in place and unscaled. Angles, sines and cosines are
/// computed in `Angle`, butterflies in `Computed`; each result is rounded to `Rounded` on its way
/// into the arrays.
template <class Angle, class Computed, class Rounded, class Stored>
void radix2(Stored* re, Stored* im, int m, bool inverse) {
  const int n = 1 << m;
  const auto rounded = [](Computed v) { return static_cast<Stored>(static_cast<Rounded>(v)); };
  for (int half = n / 2; half > 0; half /= 2) {
    for (int j = 0; j < n; j += 2 * half) {
      const auto w = twiddles<Angle>(m)[static_cast<std::size_t>(reversed(j / half, m))];
      const auto c = static_cast<Computed>(w.real());
      const auto s = static_cast<Computed>(inverse ? -w.imag() : w.imag());
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
using Wide = Quad;
inline std::complex<Wide> at_angle(Wide angle) {
  return at_angle_in_quad(angle);
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
