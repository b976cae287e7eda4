// Every one-dimensional transform of the library in one table, with what it promises: tests of
// values and accuracy run over all of them.
#pragma once

#include <sarnum/sarnum.h>

#include <cmath>
#include <vector>

#include "plain_transform.h"

namespace forms {

/// The plain definition that a form follows, and the bound of its relative error divided by √m: a
/// twentieth to a fifth above the largest measured.
template <class Real>
struct Arithmetic {
  void (*radix2)(Real* re, Real* im, int m, bool inverse);
  double accuracy;
};

/// A transform, as one of a split pair.
template <class Real>
struct Form {
  const char* name;
  Arithmetic<Real> arithmetic;
  bool inverse;
  bool divides;
  bool centred;
  void (*transform)(Real* re, Real* im, int m);

  /// The plain definition of the same.
  void define(Real* re, Real* im, int m) const {
    for (int i = 1; centred && i < 1 << m; i += 2) {
      re[i] = -re[i];
      im[i] = -im[i];
    }
    arithmetic.radix2(re, im, m, inverse);
    for (int i = 0; divides && i < 1 << m; ++i) {
      re[i] /= static_cast<Real>(1 << m);
      im[i] /= static_cast<Real>(1 << m);
    }
  }
};

/// A transform of an interleaved array, on a split pair.
template <void (*transform)(float*, int)>
void interleaved(float* re, float* im, int m) {
  std::vector<float> data;
  const int n = m >= 0 && m < 20 ? 1 << m : 0;
  for (int i = 0; i < n; ++i) {
    data.insert(data.end(), {re[i], im[i]});
  }
  transform(data.data(), m);
  for (int i = 0; i < n; ++i) {
    re[i] = data[2 * static_cast<std::size_t>(i)];
    im[i] = data[2 * static_cast<std::size_t>(i) + 1];
  }
}

template <class Real>
std::vector<Form<Real>> all();

template <>
inline std::vector<Form<double>> all<double>() {
  const Arithmetic<double> in_double{oracle::radix2<double, double, double>, 0x1.8p-53};
  const Arithmetic<double> rounded{oracle::radix2<double, double, float>, 0x1p-25};
  return {
      {"fft", in_double, false, false, false, fft},
      {"ifft", rounded, true, false, false, ifft},
      {"fft_Fast", in_double, false, false, false, fft_Fast},
      {"ifft_Fast", in_double, true, true, false, ifft_Fast},
      {"member fft", in_double, false, false, false, [](auto... x) { CFFTClass().fft(x...); }},
      {"member ifft", rounded, true, false, false, [](auto... x) { CFFTClass().ifft(x...); }},
      {"fft_new 1", in_double, false, false, true, [](auto... x) { CFFTClass().fft_new(x..., 1); }},
      {"fft_new 0", in_double, false, false, false,
       [](auto... x) { CFFTClass().fft_new(x..., 0); }},
  };
}

template <>
inline std::vector<Form<float>> all<float>() {
  const Arithmetic<float> rounded{oracle::radix2<double, double, float>, 0x1p-25};
  const Arithmetic<float> in_float{oracle::radix2<float, float, float>, 0x1p-23};
  const Arithmetic<float> by_table{oracle::radix2<double, float, float>, 0x1.8p-25};
  return {
      {"fft", in_float, false, false, false, fft},
      {"ifft", in_float, true, true, false, ifft},
      {"fft interleaved", in_float, false, false, false, interleaved<fft>},
      {"ifft interleaved", in_float, true, true, false, interleaved<ifft>},
      {"fft_Fast", by_table, false, false, false, fft_Fast},
      {"ifft_Fast", by_table, true, true, false, ifft_Fast},
      {"fft_Fast interleaved", by_table, false, false, false, interleaved<fft_Fast>},
      {"ifft_Fast interleaved", by_table, true, true, false, interleaved<ifft_Fast>},
      {"member fft", rounded, false, false, false, [](auto... x) { CFFTClass().fft(x...); }},
      {"member ifft", rounded, true, false, false, [](auto... x) { CFFTClass().ifft(x...); }},
      {"fft_new 1", rounded, false, false, true, [](auto... x) { CFFTClass().fft_new(x..., 1); }},
      {"fft_new -1", rounded, false, false, false,
       [](auto... x) { CFFTClass().fft_new(x..., -1); }},
  };
}

}  // namespace forms
