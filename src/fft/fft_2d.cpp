// Two-dimensional transforms of rasters given as row pointers: every row, then every column.
//
// A line (a row or a column) is copied into two contiguous buffers, transformed there and copied
// back before the next one is touched. Rows of the output may therefore overlap each other, or
// be the rows of the input, and the result is still the one of the order of the lines.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>
#include <type_traits>

#include "fft/exponent.h"
#include "fft/line_transform.h"
#include "numeric/pixel_layout.h"
#include "sarnum/fft/fft_object.h"

namespace {

using sarnum::CentredForwardLine;
using sarnum::Complex;
using sarnum::ForwardLine;
using sarnum::InverseLine;
using sarnum::Twiddles;

constexpr int forward_label = 700;
constexpr int inverse_label = 701;

/// Size of a raster with both sides padded to powers of two.
struct PaddedSize {
  int row_exponent;
  int column_exponent;

  std::size_t columns() const { return std::size_t{1} << row_exponent; }
  std::size_t rows() const { return std::size_t{1} << column_exponent; }
  std::size_t longer_side() const { return std::max(columns(), rows()); }
};

std::optional<PaddedSize> padded_size(int width, int height) {
  const PaddedSize size{sarnum::ceil_power_of_two(width), sarnum::ceil_power_of_two(height)};
  if (!sarnum::is_transform_exponent(size.row_exponent) ||
      !sarnum::is_transform_exponent(size.column_exponent)) {
    return std::nullopt;
  }
  return size;
}

void start_meter(CMeterInfo* meter, const PaddedSize& size, int label_id) {
  if (meter == nullptr) {
    return;
  }
  meter->SetRange(0, static_cast<int>(static_cast<unsigned>(size.columns()) +
                                      static_cast<unsigned>(size.rows())));
  meter->SetStep(1);
  CString label;
  const char* text = "...";
  try {
    label = GetResourceString(label_id) + text;
    text = label;
  } catch (...) {
    // The caption is not worth the transform, whatever a host's strings may throw.
  }
  meter->SetText(text);
}

void step_meter(CMeterInfo* meter) {
  if (meter != nullptr) {
    meter->StepIt();
  }
}

/// Real and imaginary parts of one line, from the C allocator; unusable when that has none.
template <class Real>
class LineBuffers {
 public:
  explicit LineBuffers(std::size_t length) : re_(allocate(length)), im_(allocate(length)) {}

  explicit operator bool() const { return re_ != nullptr && im_ != nullptr; }
  Real* re() const { return re_.get(); }
  Real* im() const { return im_.get(); }

 private:
  struct Free {
    void operator()(Real* p) const { std::free(p); }
  };
  using Buffer = std::unique_ptr<Real, Free>;

  static Buffer allocate(std::size_t length) {
    return Buffer(static_cast<Real*>(std::malloc(length * sizeof(Real))));
  }

  Buffer re_;
  Buffer im_;
};

/// Whether pixels of a layout have a row pass in a transform of element type Real: doubles are
/// transformed in double, everything else in float, complex unsigned integers not at all.
template <class Layout, class Real>
constexpr bool has_row_pass =
    std::is_same_v<typename Layout::Element, double> == std::is_same_v<Real, double> &&
    !(Layout::is_complex && std::is_unsigned_v<typename Layout::Element>);

/// One transform of a raster into dst, with `line` as the transform of every row and column.
template <class Real, class Line>
class RasterTransform {
 public:
  RasterTransform(Line line, void** dst, const PaddedSize& size, const LineBuffers<Real>& buffers,
                  CMeterInfo* meter)
      : line_(line),
        dst_(dst),
        size_(size),
        buffers_(buffers),
        meter_(meter),
        row_twiddles_(sarnum::line_twiddles(size.row_exponent)) {
    if (size.column_exponent != size.row_exponent) {
      own_column_twiddles_.emplace(sarnum::line_twiddles(size.column_exponent));
    }
  }

  template <class Layout>
  void transform_rows(void** src, std::size_t width, std::size_t height) {
    const std::size_t columns = size_.columns();
    const Real divisor = divisor_for(columns);
    for (std::size_t row = 0; row < height; ++row) {
      sarnum::load_pixels<Layout>(src[row], width, buffers_.re(), buffers_.im());
      std::fill(buffers_.re() + width, buffers_.re() + columns, Real{0});
      std::fill(buffers_.im() + width, buffers_.im() + columns, Real{0});
      line_(buffers_.re(), buffers_.im(), row_twiddles_);
      for (std::size_t column = 0; column < columns; ++column) {
        store(row, column, column, divisor);
      }
      step_meter(meter_);
    }
    for (std::size_t row = height; row < size_.rows(); ++row) {
      std::memset(dst_[row], 0, columns * sizeof(Complex<Real>));
      step_meter(meter_);
    }
  }

  void transform_columns() {
    const Twiddles<double>& twiddles =
        own_column_twiddles_.has_value() ? *own_column_twiddles_ : row_twiddles_;
    const std::size_t rows = size_.rows();
    const Real divisor = divisor_for(rows);
    for (std::size_t column = 0; column < size_.columns(); ++column) {
      for (std::size_t row = 0; row < rows; ++row) {
        const auto pixel = sarnum::element_at<Complex<Real>>(dst_[row], column);
        buffers_.re()[row] = pixel.re;
        buffers_.im()[row] = pixel.im;
      }
      line_(buffers_.re(), buffers_.im(), twiddles);
      for (std::size_t row = 0; row < rows; ++row) {
        store(row, column, row, divisor);
      }
      step_meter(meter_);
    }
  }

 private:
  static Real divisor_for(std::size_t length) {
    return Line::divides_in_2d ? static_cast<Real>(length) : Real{1};
  }

  /// Pixel (row, column) of dst becomes entry i of the buffers, divided.
  void store(std::size_t row, std::size_t column, std::size_t i, Real divisor) {
    const Complex<Real> pixel{buffers_.re()[i] / divisor, buffers_.im()[i] / divisor};
    std::memcpy(static_cast<unsigned char*>(dst_[row]) + column * sizeof(pixel), &pixel,
                sizeof(pixel));
  }

  Line line_;
  void** dst_;
  PaddedSize size_;
  const LineBuffers<Real>& buffers_;
  CMeterInfo* meter_;
  Twiddles<double> row_twiddles_;
  std::optional<Twiddles<double>> own_column_twiddles_;  ///< none where both sides are equal
};

/// @return false, with nothing touched, when the work storage cannot be had.
template <class Real, class Line>
bool forward(Line line, void** src, void** dst, int width, int height, int type,
             CMeterInfo* meter) {
  const auto size = padded_size(width, height);
  if (!size.has_value()) {
    return false;
  }
  const LineBuffers<Real> buffers(size->longer_side());
  if (!buffers) {
    return false;
  }
  start_meter(meter, *size, forward_label);
  RasterTransform<Real, Line> transform(line, dst, *size, buffers, meter);
  sarnum::with_pixel_layout(type, [&](auto layout) {
    if constexpr (has_row_pass<decltype(layout), Real>) {
      transform.template transform_rows<decltype(layout)>(src, static_cast<std::size_t>(width),
                                                          static_cast<std::size_t>(height));
    }
  });
  transform.transform_columns();
  return true;
}

/// forward() in the precision of the pixel type.
template <class Line>
bool forward_of_type(Line line, void** src, void** dst, int width, int height, int type,
                     CMeterInfo* meter) {
  return type == TD_FLOAT64 || type == TD_COMPLEX_FLOAT64
             ? forward<double>(line, src, dst, width, height, type, meter)
             : forward<float>(line, src, dst, width, height, type, meter);
}

/// @return false, with dst untouched, when the work storage cannot be had.
template <class Real>
bool inverse(void** src, void** dst, const PaddedSize& size, CMeterInfo* meter) {
  const LineBuffers<Real> buffers(size.longer_side());
  if (!buffers) {
    return false;
  }
  RasterTransform<Real, InverseLine> transform({}, dst, size, buffers, meter);
  transform.template transform_rows<sarnum::PixelLayout<Real, true>>(src, size.columns(),
                                                                     size.rows());
  transform.transform_columns();
  return true;
}

}  // namespace

int CFFTClass::FFT_2D(void** src, void** dst, int width, int height, int TypeData,
                      CMeterInfo* meter) {
  return forward_of_type(ForwardLine{}, src, dst, width, height, TypeData, meter) ? 1 : 0;
}

int CFFTClass::FFT_2D_NEW(void** src, void** dst, int width, int height, int TypeData, int centre,
                          CMeterInfo* meter) {
  forward_of_type(CentredForwardLine{centre}, src, dst, width, height, TypeData, meter);
  return 1;
}

int CFFTClass::IFFT_2D(void** src, void** dst, int width, int height, int TypeData,
                       CMeterInfo* meter) {
  const auto size = padded_size(width, height);
  if (!size.has_value() || size->columns() != static_cast<std::size_t>(width) ||
      size->rows() != static_cast<std::size_t>(height)) {
    return 0;
  }
  start_meter(meter, *size, inverse_label);
  switch (TypeData) {
    case TD_COMPLEX_FLOAT32:
      return inverse<float>(src, dst, *size, meter) ? 1 : 0;
    case TD_COMPLEX_FLOAT64:
      return inverse<double>(src, dst, *size, meter) ? 1 : 0;
    default:
      return 1;
  }
}
