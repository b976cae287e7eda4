// Two-dimensional transforms of rasters given as row pointers: every row, then every column.
//
// A line (a row or a column) is copied into two contiguous buffers, transformed there and copied
// back before the next one is touched. Rows of the output may therefore overlap each other, or
// be the rows of the input, and the result is still the one of the order of the lines.
//
// Where there is a kernel for it, a block of adjoining columns is transformed at once, four cache
// lines wide: then rows far apart are fetched once for many columns. It gives the same result where
// no two columns of a block share memory.
#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
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

/// Memory from the C allocator, at the beginning of a cache line; null when there is none.
class LineMemory {
 public:
  static constexpr std::size_t line = 64;

  explicit LineMemory(std::size_t bytes) : memory_(std::malloc(bytes + line)) {}

  void* get() const {
    void* begin = memory_.get();
    std::size_t space = 2 * line;
    return std::align(line, line, begin, space);
  }

 private:
  struct Free {
    void operator()(void* p) const { std::free(p); }
  };

  std::unique_ptr<void, Free> memory_;
};

/// Real and imaginary parts of one line; unusable when there is no memory. The imaginary parts
/// begin a few cache lines later in their page, so that neither part's are mistaken for the
/// other's.
template <class Real>
class LineBuffers {
 public:
  explicit LineBuffers(std::size_t length)
      : re_(length * sizeof(Real)), im_(length * sizeof(Real) + skew * sizeof(Real)) {}

  explicit operator bool() const { return re_.get() != nullptr && im_.get() != nullptr; }
  Real* re() const { return static_cast<Real*>(re_.get()); }
  Real* im() const { return static_cast<Real*>(im_.get()) + skew; }

 private:
  static constexpr std::size_t skew = 4 * LineMemory::line / sizeof(Real);

  LineMemory re_;
  LineMemory im_;
};

/// The kernels for elements of type Real whose butterfly results are rounded to Rounded.
template <class Real, class Rounded>
const sarnum::RasterKernels<Real>& kernels_of(const sarnum::Level& level) {
  if constexpr (std::is_same_v<Real, float>) {
    return level.float_rounded_raster;
  } else if constexpr (std::is_same_v<Rounded, float>) {
    return level.double_rounded_raster;
  } else {
    return level.double_raster;
  }
}

/// The least distance in bytes between the beginnings of any two rows; 0 when it is not known.
std::size_t least_distance(void* const* rows, std::size_t count) {
  const std::unique_ptr<std::uintptr_t[]> addresses(new (std::nothrow) std::uintptr_t[count]);
  if (addresses == nullptr) {
    return 0;
  }
  std::transform(rows, rows + count, addresses.get(),
                 [](void* row) { return reinterpret_cast<std::uintptr_t>(row); });
  std::sort(addresses.get(), addresses.get() + count);
  std::size_t least = std::numeric_limits<std::size_t>::max();
  for (std::size_t i = 1; i < count; ++i) {
    least = std::min<std::size_t>(least, addresses[i] - addresses[i - 1]);
  }
  return least;
}

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
        row_twiddles_(sarnum::line_two_pi, row_order(size.row_exponent), Line::direction),
        column_twiddles_(sarnum::line_two_pi, {size.column_exponent, 0}, Line::direction),
        kernels_(kernels_of<Real, typename Line::template Rounded<Real>>(row_twiddles_.level())) {}

  template <class Layout>
  void transform_rows(void** src, std::size_t width, std::size_t height) {
    const std::size_t columns = size_.columns();
    const auto kernel_twiddles = row_twiddles_.for_kernels();
    for (std::size_t row = 0; row < height; ++row) {
      Real* const re = buffers_.re();
      Real* const im = buffers_.im();
      sarnum::load_pixels<Layout>(src[row], width, re, im);
      std::fill(re + width, re + columns, Real{0});
      std::fill(im + width, im + columns, Real{0});
      if (kernel_twiddles.has_value()) {
        if (line_.is_centred()) {
          sarnum::alternate_signs(re, im, columns);
        }
        kernels_.row(re, im, dst_[row], size_.row_exponent, *kernel_twiddles,
                     Real{1} / divisor_for(columns));
      } else {
        line_(re, im, row_twiddles_);
        for (std::size_t column = 0; column < columns; ++column) {
          store(row, column, column, divisor_for(columns));
        }
      }
      step_meter(meter_);
    }
    for (std::size_t row = height; row < size_.rows(); ++row) {
      std::memset(dst_[row], 0, columns * sizeof(Complex<Real>));
      step_meter(meter_);
    }
  }

  void transform_columns() {
    const std::size_t rows = size_.rows();
    for (std::size_t column = transform_blocks(); column < size_.columns(); ++column) {
      for (std::size_t row = 0; row < rows; ++row) {
        const auto pixel = sarnum::element_at<Complex<Real>>(dst_[row], column);
        buffers_.re()[row] = pixel.re;
        buffers_.im()[row] = pixel.im;
      }
      line_(buffers_.re(), buffers_.im(), column_twiddles_);
      for (std::size_t row = 0; row < rows; ++row) {
        store(row, column, row, divisor_for(rows));
      }
      step_meter(meter_);
    }
  }

 private:
  static sarnum::LaneOrder row_order(int m) {
    return {m, sarnum::lane_exponent<double>(sarnum::level_in_use(), m)};
  }

  static Real divisor_for(std::size_t length) {
    return Line::divides_in_2d ? static_cast<Real>(length) : Real{1};
  }

  /// Pixel (row, column) of dst becomes entry i of the buffers, divided.
  void store(std::size_t row, std::size_t column, std::size_t i, Real divisor) {
    const Complex<Real> pixel{buffers_.re()[i] / divisor, buffers_.im()[i] / divisor};
    std::memcpy(static_cast<unsigned char*>(dst_[row]) + column * sizeof(pixel), &pixel,
                sizeof(pixel));
  }

  /// Transforms the columns in blocks, if they can be.
  /// @return the number of columns that are done: all or none.
  std::size_t transform_blocks() {
    const auto twiddles = column_twiddles_.for_columns();
    if (!twiddles.has_value()) {
      return 0;
    }
    const std::size_t row_bytes = size_.columns() * sizeof(Complex<Real>);
    const std::size_t widest =
        std::min({row_bytes, 4 * LineMemory::line, least_distance(dst_, size_.rows())});
    const std::size_t width = std::bit_floor(widest / sizeof(Complex<Real>));
    if (width * sizeof(double) < static_cast<std::size_t>(row_twiddles_.level().vector_bytes)) {
      return 0;
    }
    const LineMemory storage(size_.rows() * width * sizeof(Complex<Real>));
    if (storage.get() == nullptr) {
      return 0;
    }
    for (std::size_t column = 0; column < size_.columns(); column += width) {
      const std::size_t offset = column * sizeof(Complex<Real>);
      const std::size_t next = (offset + width * sizeof(Complex<Real>)) % row_bytes;
      kernels_.columns({dst_, size_.column_exponent, offset, next, std::countr_zero(width),
                        storage.get(), line_.is_centred()},
                       *twiddles, Real{1} / divisor_for(size_.rows()));
      for (std::size_t done = 0; done < width; ++done) {
        step_meter(meter_);
      }
    }
    return size_.columns();
  }

  Line line_;
  void** dst_;
  PaddedSize size_;
  const LineBuffers<Real>& buffers_;
  CMeterInfo* meter_;
  Twiddles<double> row_twiddles_;
  Twiddles<double> column_twiddles_;
  const sarnum::RasterKernels<Real>& kernels_;
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
