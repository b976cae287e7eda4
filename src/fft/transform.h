// A whole transform by the fastest form there is for it: a kernel of the level in use, or the plain
// form. Both give the same values.
#pragma once

#include <optional>

#include "fft/kernels/level.h"
#include "fft/radix2.h"

namespace sarnum {

// run_kernel() runs the kernel for an arithmetic and a layout, which multiplies results by `scale`.

inline void run_kernel(const Level& level, Arithmetic<double, double>, bool, SplitSamples<double> x,
                       int m, const KernelTwiddles<double>& w, double scale) {
  level.double_split(x.re, x.im, m, w, scale);
}

inline void run_kernel(const Level& level, Arithmetic<float, float>, bool, SplitSamples<float> x,
                       int m, const KernelTwiddles<float>& w, float scale) {
  level.float_split(x.re, x.im, m, w, scale);
}

inline void run_kernel(const Level& level, Arithmetic<double, float>, bool, SplitSamples<double> x,
                       int m, const KernelTwiddles<double>& w, double scale) {
  level.double_rounded(x.re, x.im, m, w, scale);
}

inline void run_kernel(const Level& level, Arithmetic<double, float>, bool, SplitSamples<float> x,
                       int m, const KernelTwiddles<double>& w, float scale) {
  level.float_rounded(x.re, x.im, m, w, scale);
}

inline void run_kernel(const Level& level, Arithmetic<double, double>, bool inverse,
                       InterleavedSamples<double> x, int m, const KernelTwiddles<double>& w,
                       double scale) {
  level.double_interleaved(x.data, inverse, m, w, scale);
}

inline void run_kernel(const Level& level, Arithmetic<float, float>, bool inverse,
                       InterleavedSamples<float> x, int m, const KernelTwiddles<float>& w,
                       float scale) {
  level.float_interleaved(x.data, inverse, m, w, scale);
}

/// The conjugate twiddle is an exchange of real and imaginary parts, exactly. What is interleaved
/// stays: its kernel is told.
template <class Real>
SplitSamples<Real> exchanged(SplitSamples<Real> x) {
  return {x.im, x.re};
}

template <class Real>
InterleavedSamples<Real> exchanged(InterleavedSamples<Real> x) {
  return x;
}

/// What results are multiplied by to be divided by their number, a power of two: exactly the same.
template <class Element>
Element inverse_length(int m) {
  return Element{1} / static_cast<Element>(1 << m);
}

/// A transform whose results are multiplied by `scale`.
/// @param twiddles  Twiddles, or another source with the same operations.
template <class Arithmetic, Direction direction, class Samples, class TwiddleSource>
void transform(Samples x, int m, const TwiddleSource& twiddles,
               typename Samples::Element scale = 1) {
  if (const auto w = twiddles.for_kernels(); w.has_value()) {
    constexpr bool inverse = direction == Direction::inverse;
    run_kernel(twiddles.level(), Arithmetic{}, inverse, inverse ? exchanged(x) : x, m, *w, scale);
    return;
  }
  butterflies<Arithmetic, direction>(x, m, twiddles);
  twiddles.permute(x);
  if (scale != 1) {
    multiply(x, m, scale);
  }
}

}  // namespace sarnum
