// Raw pixels of any type to double.
#include "sarnum/numeric/pixel_types.h"

#include <cmath>

#include "numeric/pixel_layout.h"

void Transform_to_double(void* src, int type, double* re, double* im, int n) {
  if (n <= 0) {
    return;
  }
  sarnum::with_pixel_layout(type, [&](auto layout) {
    sarnum::load_pixels<decltype(layout)>(src, static_cast<std::size_t>(n), re, im);
  });
}

void Transform_to_double(void* src, int type, double* out, int n) {
  if (n <= 0) {
    return;
  }
  sarnum::with_pixel_layout(type, [&](auto layout) {
    using Layout = decltype(layout);
    using Element = typename Layout::Element;
    for (std::size_t i = 0; i < static_cast<std::size_t>(n); ++i) {
      if constexpr (Layout::is_complex) {
        const double re = sarnum::element_at<Element>(src, 2 * i);
        const double im = sarnum::element_at<Element>(src, 2 * i + 1);
        out[i] = std::sqrt(re * re + im * im);
      } else {
        out[i] = sarnum::element_at<Element>(src, i);
      }
    }
  });
}
