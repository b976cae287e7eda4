// The one-dimensional transforms of CFFTClass with their twiddles given, so that all rows (or
// columns) of a raster share them.
#pragma once

#include "fft/radix2.h"

namespace sarnum {

/// Twiddles of the members of CFFTClass. The constant is 2π rounded to double, in digits: the
/// members do not depend on the π that is set at load.
inline Twiddles<double> line_twiddles(int m) {
  return {6.283185307179586, m};
}

/// Transforms 2^m elements in place, without scaling. All arithmetic is in double; results are
/// rounded to float at each store for float elements, and in every inverse.
template <class Real>
void transform_line(Real* re, Real* im, const Twiddles<double>& twiddles, Direction direction) {
  const SplitSamples<Real> line{re, im};
  if (direction == Direction::forward) {
    radix2<Arithmetic<double, Real>, Direction::forward>(line, twiddles);
  } else {
    radix2<Arithmetic<double, float>, Direction::inverse>(line, twiddles);
  }
}

}  // namespace sarnum
