// The one-dimensional transforms of CFFTClass with their twiddles given, so that all rows (or
// columns) of a raster share them.
//
// A line transform is a function of the two arrays of a line and the twiddles of its length. All
// arithmetic is in double; results are rounded to float at each store for float elements, and in
// the inverse for elements of either type. None scales; scale() is what a two-dimensional transform
// made of it multiplies each line by.
#pragma once

#include <type_traits>

#include "fft/transform.h"

namespace sarnum {

/// Multiplies both parts of n elements by (−1)^i.
template <class Real>
void alternate_signs(Real* re, Real* im, std::size_t n) {
  for (std::size_t i = 1; i < n; i += 2) {
    re[i] = -re[i];
    im[i] = -im[i];
  }
}

template <Direction of>
struct PlainLine {
  static constexpr bool is_inverse = of == Direction::inverse;
  template <class Real>
  using Rounded = std::conditional_t<is_inverse, float, Real>;

  static constexpr bool is_centred() { return false; }

  template <class Real>
  Real scale(int m) const {
    return is_inverse ? Real{1} : inverse_length<Real>(m);
  }

  template <class Real>
  void operator()(Real* re, Real* im, const Twiddles<double>& twiddles) const {
    transform<Arithmetic<double, Rounded<Real>>, of>(SplitSamples<Real>{re, im},
                                                     twiddles.exponent(), twiddles);
  }
};
using ForwardLine = PlainLine<Direction::forward>;
using InverseLine = PlainLine<Direction::inverse>;

/// The forward transform, of the line multiplied by (−1)^i when `centre` is 1: that moves
/// frequency zero to the middle.
struct CentredForwardLine {
  static constexpr bool is_inverse = false;
  template <class Real>
  using Rounded = Real;

  int centre;

  bool is_centred() const { return centre == 1; }

  template <class Real>
  Real scale(int m) const {
    return inverse_length<Real>(m);
  }

  template <class Real>
  void operator()(Real* re, Real* im, const Twiddles<double>& twiddles) const {
    if (is_centred()) {
      alternate_signs(re, im, std::size_t{1} << twiddles.exponent());
    }
    ForwardLine{}(re, im, twiddles);
  }
};

}  // namespace sarnum
