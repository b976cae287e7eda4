// Two-dimensional transforms of rasters given as row pointers: every row, then every column.
//
// A line (a row or a column) is copied into two contiguous buffers, transformed there and copied
// back before the next one is touched. On one thread, rows of the output may therefore overlap each
// other, or be the rows of the input, and the result is still the one of the order of the lines.
//
// Where there is a kernel for it, a block of adjoining columns is transformed at once, four cache
// lines wide: then rows far apart are fetched once for many columns. It gives the same result where
// no two columns of a block share memory.
#include "fft/raster_transform.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <type_traits>

#include "fft/line_buffers.h"
#include "fft/line_transform.h"
#include "numeric/pixel_layout.h"

namespace sarnum {

namespace {

/// The kernels for elements of type Real, computed in Computed, whose butterfly results are rounded
/// to Rounded.
template <class Real, class Computed, class Rounded>
const RasterKernels<Real, Computed>& kernels_of(const Level& level) {
  if constexpr (std::is_same_v<Computed, float>) {
    return level.float_raster;
  } else if constexpr (std::is_same_v<Real, float>) {
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

/// What copies pixels of a type into the buffers; null for no known type.
template <class Real>
using Load = void (*)(const void* pixels, std::size_t n, Real* re, Real* im);

template <class Real>
Load<Real> load_for(int type) {
  Load<Real> load = nullptr;
  with_pixel_layout(type, [&](auto layout) { load = &load_pixels<decltype(layout), Real>; });
  return load;
}

/// The transform of a line by a plan, in the plan's precision throughout.
template <Direction of>
struct PlannedLine {
  static constexpr bool is_inverse = of == Direction::inverse;
  template <class Real>
  using Rounded = Real;

  Scaling scaling;

  static constexpr bool is_centred() { return false; }

  template <class Real>
  Real scale(int m) const {
    return scale_of<Real>(scaling, m);
  }

  template <class Real>
  void operator()(Real* re, Real* im, const Plan<Real>& plan) const {
    sarnum::transform<of>(plan, Scaling::none, SplitSamples<Real>{re, im});
  }
};

/// One transform of a raster, with `line` as the transform of every row and column.
template <class Real, class Line, class TwiddleSource>
class RasterTransform {
 public:
  RasterTransform(Line line, const RasterRows& rows, const PaddedSize& size,
                  const LineBuffers<Real>& buffers, const Run& run,
                  const TwiddleSource& row_twiddles, const TwiddleSource& column_twiddles)
      : line_(line),
        rows_(rows),
        size_(size),
        buffers_(buffers),
        run_(run),
        row_twiddles_(row_twiddles),
        column_twiddles_(column_twiddles),
        kernels_(kernels_of<Real, Computed, typename Line::template Rounded<Real>>(
            row_twiddles.level())) {}

  bool transform_rows() const {
    const auto load = load_for<Real>(rows_.type);
    const auto kernel_twiddles = row_twiddles_.for_kernels();
    return load == nullptr ||
           for_each_piece(run_, size_.rows(), 1, [&](unsigned worker, std::size_t row) {
             if (row < rows_.height) {
               transform_row(load, kernel_twiddles, buffers_.of(worker), row);
             } else {
               std::memset(rows_.target[row], 0, size_.columns() * sizeof(Complex<Real>));
             }
           });
  }

  bool transform_columns() const {
    if (const auto complete = transform_blocks(); complete.has_value()) {
      return *complete;
    }
    const std::size_t rows = size_.rows();
    const Real scale = line_.template scale<Real>(size_.column_exponent);
    return for_each_piece(run_, size_.columns(), 1, [&](unsigned worker, std::size_t column) {
      const auto buffer = buffers_.of(worker);
      for (std::size_t row = 0; row < rows; ++row) {
        buffer.store(row, element_at<Complex<Real>>(rows_.target[row], column));
      }
      line_(buffer.re, buffer.im, column_twiddles_);
      for (std::size_t row = 0; row < rows; ++row) {
        store(row, column, buffer.load(row), scale);
      }
    });
  }

 private:
  using Kernels = std::remove_cvref_t<decltype(*std::declval<TwiddleSource>().for_kernels())>;
  using Computed = std::remove_cvref_t<decltype(*std::declval<Kernels>().lanes)>;

  void transform_row(Load<Real> load, const std::optional<Kernels>& kernel_twiddles,
                     SplitSamples<Real> buffer, std::size_t row) const {
    const std::size_t columns = size_.columns();
    const auto [re, im] = buffer;
    const std::size_t width = rows_.width;
    load(rows_.source[row], width, re, im);
    std::fill(re + width, re + columns, Real{0});
    std::fill(im + width, im + columns, Real{0});
    const Real scale = line_.template scale<Real>(size_.row_exponent);
    if (!kernel_twiddles.has_value()) {
      line_(re, im, row_twiddles_);
      for (std::size_t column = 0; column < columns; ++column) {
        store(row, column, buffer.load(column), scale);
      }
      return;
    }
    if (line_.is_centred()) {
      alternate_signs(re, im, columns);
    }
    kernels_.row(re, im, Line::is_inverse, rows_.target[row], size_.row_exponent, *kernel_twiddles,
                 scale);
  }

  /// Pixel (row, column) of the target becomes a scaled value.
  void store(std::size_t row, std::size_t column, Complex<Real> value, Real scale) const {
    const Complex<Real> pixel{value.re * scale, value.im * scale};
    std::memcpy(static_cast<unsigned char*>(rows_.target[row]) + column * sizeof(pixel), &pixel,
                sizeof(pixel));
  }

  /// Transforms the columns in blocks, if they can be.
  /// @return nothing when they cannot, or whether all were transformed.
  std::optional<bool> transform_blocks() const {
    const auto twiddles = column_twiddles_.for_columns();
    if (!twiddles.has_value()) {
      return std::nullopt;
    }
    const std::size_t row_bytes = size_.columns() * sizeof(Complex<Real>);
    const std::size_t widest =
        std::min({row_bytes, 4 * LineMemory::line, least_distance(rows_.target, size_.rows())});
    const std::size_t width = std::bit_floor(widest / sizeof(Complex<Real>));
    if (width * sizeof(Computed) < static_cast<std::size_t>(row_twiddles_.level().vector_bytes)) {
      return std::nullopt;
    }
    const std::size_t block_bytes = size_.rows() * width * sizeof(Complex<Real>);
    const LineMemory storage(run_.threads * block_bytes);
    if (storage.get() == nullptr) {
      return std::nullopt;
    }
    const Real scale = line_.template scale<Real>(size_.column_exponent);
    return for_each_piece(
        run_, size_.columns() / width, width, [&](unsigned worker, std::size_t block) {
          const std::size_t offset = block * width * sizeof(Complex<Real>);
          const std::size_t next = (offset + width * sizeof(Complex<Real>)) % row_bytes;
          kernels_.columns(
              {rows_.target, size_.column_exponent, offset, next, std::countr_zero(width),
               static_cast<unsigned char*>(storage.get()) + worker * block_bytes,
               line_.is_centred(), Line::is_inverse},
              *twiddles, scale);
        });
  }

  Line line_;
  const RasterRows& rows_;
  PaddedSize size_;
  const LineBuffers<Real>& buffers_;
  const Run& run_;
  const TwiddleSource& row_twiddles_;
  const TwiddleSource& column_twiddles_;
  const RasterKernels<Real, Computed>& kernels_;
};

/// @param with_twiddles  calls its argument with the twiddles of rows and of columns.
template <class Real, class Line, class WithTwiddles>
Outcome transform(Line line, const RasterRows& rows, const PaddedSize& size, const Run& run,
                  const WithTwiddles& with_twiddles) {
  const LineBuffers<Real> buffers(std::max(size.columns(), size.rows()), run.threads);
  if (!buffers) {
    return Outcome::no_storage;
  }
  if (!run.begin()) {
    return Outcome::stopped;
  }
  return with_twiddles([&](const auto& of_rows, const auto& of_columns) {
    const RasterTransform<Real, Line, std::remove_cvref_t<decltype(of_rows)>> raster(
        line, rows, size, buffers, run, of_rows, of_columns);
    return raster.transform_rows() && raster.transform_columns() ? Outcome::complete
                                                                 : Outcome::stopped;
  });
}

/// By twiddles that are made for the call.
template <class Real, class Line>
Outcome transform(Line line, const RasterRows& rows, const PaddedSize& size, const Run& run) {
  return transform<Real>(line, rows, size, run, [&](const auto& work) {
    const Twiddles<double> of_rows(size.row_exponent);
    const Twiddles<double> of_columns(LaneOrder{size.column_exponent, 0});
    return work(of_rows, of_columns);
  });
}

}  // namespace

template <class Real>
Outcome forward_raster(const RasterRows& rows, const PaddedSize& size, int centre, const Run& run) {
  return transform<Real>(CentredForwardLine{centre}, rows, size, run);
}

template <class Real>
Outcome inverse_raster(const RasterRows& rows, const PaddedSize& size, const Run& run) {
  return transform<Real>(InverseLine{}, rows, size, run);
}

template <class Real>
Outcome planned_raster(const RasterRows& rows, const Plan<Real>& row_plan,
                       const Plan<Real>& column_plan, Direction direction, Scaling scaling,
                       const Run& run) {
  const PaddedSize size{row_plan.exponent(), column_plan.exponent()};
  const auto by_plans = [&](const auto& work) { return work(row_plan, column_plan); };
  return direction == Direction::forward
             ? transform<Real>(PlannedLine<Direction::forward>{scaling}, rows, size, run, by_plans)
             : transform<Real>(PlannedLine<Direction::inverse>{scaling}, rows, size, run, by_plans);
}

template Outcome forward_raster<float>(const RasterRows&, const PaddedSize&, int, const Run&);
template Outcome forward_raster<double>(const RasterRows&, const PaddedSize&, int, const Run&);
template Outcome inverse_raster<float>(const RasterRows&, const PaddedSize&, const Run&);
template Outcome inverse_raster<double>(const RasterRows&, const PaddedSize&, const Run&);
template Outcome planned_raster<float>(const RasterRows&, const Plan<float>&, const Plan<float>&,
                                       Direction, Scaling, const Run&);
template Outcome planned_raster<double>(const RasterRows&, const Plan<double>&, const Plan<double>&,
                                        Direction, Scaling, const Run&);

}  // namespace sarnum
