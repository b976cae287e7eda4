// The one-dimensional transforms of CFFTClass with their twiddles given, so that all rows (or
// columns) of a raster share them.
//
// A line transform is a function of the two arrays of a line and the twiddles of its length. All
// arithmetic is in double; results are rounded to float at each store for float elements, and in
// the inverse for elements of either type. None scales; divides_in_2d says whether a
// two-dimensional transform made of it divides each line by its length.
#pragma once

#include "fft/transform.h"

namespace sarnum {

/// Twiddles of the members of CFFTClass. The constant is 2π rounded to double, in digits: the
/// members do not depend on the π that is set at load.
inline Twiddles<double> line_twiddles(int m) {
  return {6.283185307179586, m};
}

struct ForwardLine {
  static constexpr bool divides_in_2d = true;

  template <class Real>
  void operator()(Real* re, Real* im, const Twiddles<double>& twiddles) const {
    transform<Arithmetic<double, Real>, Direction::forward>(SplitSamples<Real>{re, im},
                                                            twiddles.exponent(), twiddles);
  }
};

struct InverseLine {
  static constexpr bool divides_in_2d = false;

  template <class Real>
  void operator()(Real* re, Real* im, const Twiddles<double>& twiddles) const {
    transform<Arithmetic<double, float>, Direction::inverse>(SplitSamples<Real>{re, im},
                                                             twiddles.exponent(), twiddles);
  }
};

/// The forward transform, of the line multiplied by (−1)^i when `centre` is 1: that moves
/// frequency zero to the middle.
struct CentredForwardLine {
  static constexpr bool divides_in_2d = true;

  int centre;

  template <class Real>
  void operator()(Real* re, Real* im, const Twiddles<double>& twiddles) const {
    if (centre == 1) {
      const std::size_t n = std::size_t{1} << twiddles.exponent();
      for (std::size_t i = 0; i < n; ++i) {
        const Real sign = i % 2 == 0 ? Real{1} : Real{-1};
        re[i] *= sign;
        im[i] *= sign;
      }
    }
    ForwardLine{}(re, im, twiddles);
  }
};

}  // namespace sarnum
