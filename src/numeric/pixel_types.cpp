// Raw pixels of any type to double.
#include "sarnum/numeric/pixel_types.h"

#include <algorithm>
#include <cmath>

#include "numeric/ask_ahead.h"
#include "numeric/pixel_layout.h"

namespace {

/// Values or amplitudes of the pixels begin … end − 1.
template <class Layout>
void load_values(const void* pixels, std::size_t begin, std::size_t end, double* out) {
  using Element = typename Layout::Element;
  for (std::size_t i = begin; i < end; ++i) {
    if constexpr (Layout::is_complex) {
      const double re = sarnum::element_at<Element>(pixels, 2 * i);
      const double im = sarnum::element_at<Element>(pixels, 2 * i + 1);
      out[i] = std::sqrt(re * re + im * im);
    } else {
      out[i] = sarnum::element_at<Element>(pixels, i);
    }
  }
}

}  // namespace

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
  // Most of the time goes into waiting for the memory of the results, the wider side.
  constexpr std::size_t piece = 8 * sarnum::line_size;
  const auto count = static_cast<std::size_t>(n);
  sarnum::with_pixel_layout(type, [&](auto layout) {
    for (std::size_t begin = 0; begin < count; begin += piece) {
      for (std::size_t k = 0; k < piece; k += sarnum::line_size) {
        sarnum::ask_ahead(out, begin + k, count);
      }
      load_values<decltype(layout)>(src, begin, std::min(begin + piece, count), out);
    }
  });
}
