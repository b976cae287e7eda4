// Raw pixels by their type code: the one place that knows the element type of each code.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "sarnum/numeric/pixel_types.h"

namespace sarnum {

template <class ElementType, bool complex>
struct PixelLayout {
  using Element = ElementType;
  static constexpr bool is_complex = complex;
};

/// Calls visit(PixelLayout<...>{}) for the layout of a type code, so that a loop over pixels is
/// compiled once for each layout. An unknown code calls nothing.
template <class Visit>
void with_pixel_layout(int type, Visit&& visit) {
  switch (type) {
    case TD_UINT8:
      return visit(PixelLayout<std::uint8_t, false>{});
    case TD_INT8:
      return visit(PixelLayout<std::int8_t, false>{});
    case TD_UINT16:
      return visit(PixelLayout<std::uint16_t, false>{});
    case TD_INT16:
      return visit(PixelLayout<std::int16_t, false>{});
    case TD_UINT32:
      return visit(PixelLayout<std::uint32_t, false>{});
    case TD_INT32:
      return visit(PixelLayout<std::int32_t, false>{});
    case TD_FLOAT32:
      return visit(PixelLayout<float, false>{});
    case TD_FLOAT64:
      return visit(PixelLayout<double, false>{});
    case TD_COMPLEX_FLOAT32:
      return visit(PixelLayout<float, true>{});
    case TD_COMPLEX_FLOAT64:
      return visit(PixelLayout<double, true>{});
    case TD_COMPLEX_UINT8:
      return visit(PixelLayout<std::uint8_t, true>{});
    case TD_COMPLEX_INT8:
      return visit(PixelLayout<std::int8_t, true>{});
    case TD_COMPLEX_UINT16:
      return visit(PixelLayout<std::uint16_t, true>{});
    case TD_COMPLEX_INT16:
      return visit(PixelLayout<std::int16_t, true>{});
    case TD_COMPLEX_UINT32:
      return visit(PixelLayout<std::uint32_t, true>{});
    case TD_COMPLEX_INT32:
      return visit(PixelLayout<std::int32_t, true>{});
    default:
      return;
  }
}

/// Bytes of a pixel; 0 for an unknown code.
inline std::size_t pixel_size(int type) {
  std::size_t size = 0;
  with_pixel_layout(type, [&]<class Layout>(Layout) {
    size = sizeof(typename Layout::Element) << (Layout::is_complex ? 1 : 0);
  });
  return size;
}

/// Element i of a run of elements. Raster rows come as untyped memory of any alignment.
template <class Element>
Element element_at(const void* elements, std::size_t i) {
  Element element;
  std::memcpy(&element, static_cast<const unsigned char*>(elements) + i * sizeof(Element),
              sizeof(Element));
  return element;
}

/// Real and imaginary parts of n pixels; the imaginary part of a real pixel is +0.
template <class Layout, class Real>
void load_pixels(const void* pixels, std::size_t n, Real* re, Real* im) {
  using Element = typename Layout::Element;
  for (std::size_t i = 0; i < n; ++i) {
    if constexpr (Layout::is_complex) {
      re[i] = static_cast<Real>(element_at<Element>(pixels, 2 * i));
      im[i] = static_cast<Real>(element_at<Element>(pixels, 2 * i + 1));
    } else {
      re[i] = static_cast<Real>(element_at<Element>(pixels, i));
      im[i] = Real{0};
    }
  }
}

}  // namespace sarnum
