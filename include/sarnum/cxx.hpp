/// @file
/// The C interface (sarnum/c.h) for C++17 programs: objects that release what they hold,
/// std::complex, containers, exceptions. Header-only: all of it is compiled into the program, so
/// that the library may come from another compiler. It declares nothing outside of namespace sarnum
/// but what c.h does.
///
///     const sarnum::Plan<float> plan(4096);
///     std::vector<std::complex<float>> line(4096);
///     plan.forward(line);
///     plan.inverse(line);  // the line again
///
/// What c.h says of values, layouts, bounds and threads holds here too. Instead of returning a
/// status, functions throw Error, or Cancelled when the progress callable asked to stop.
#ifndef SARNUM_CXX_HPP
#define SARNUM_CXX_HPP

#include <array>
#include <complex>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "sarnum/c.h"

#if defined(__has_include)
#if __has_include(<version>)
#include <version>
#endif
#endif
#if defined(__cpp_lib_span)
#include <span>
#endif

namespace sarnum {
inline namespace cxx {

// --- Errors ------------------------------------------------------------------------------------

/// A call that failed. what() is the sentence of sarnum_error_message().
class Error : public std::runtime_error {
 public:
  Error(sarnum_status status, const std::string& message)
      : std::runtime_error(message), status_(status) {}

  /// SARNUM_INVALID_ARGUMENT, SARNUM_NO_MEMORY, …
  sarnum_status status() const noexcept { return status_; }

 private:
  sarnum_status status_;
};

/// The progress callable asked to stop; the output may be incomplete (see SARNUM_CANCELLED).
class Cancelled : public Error {
 public:
  using Error::Error;
};

/// Throws if a function of c.h failed on this thread.
inline void check(sarnum_status status) {
  if (status == SARNUM_CANCELLED) {
    throw Cancelled(status, sarnum_error_message());
  }
  if (status != SARNUM_OK) {
    throw Error(status, sarnum_error_message());
  }
}

/// Version of the loaded library.
inline const char* version() noexcept {
  return sarnum_version();
}

// --- Arrays ------------------------------------------------------------------------------------

#if defined(__cpp_lib_span)
template <class T>
using Span = std::span<T>;
#else
/// What std::span is in C++20: an array of somebody else's.
template <class T>
class Span {
 public:
  constexpr Span(T* data, std::size_t size) noexcept : data_(data), size_(size) {}
  template <class Container,
            class = std::enable_if_t<std::is_convertible_v<
                std::remove_pointer_t<decltype(std::declval<Container&>().data())> (*)[], T (*)[]>>>
  constexpr Span(Container&& container) : data_(container.data()), size_(container.size()) {}

  constexpr T* data() const noexcept { return data_; }
  constexpr std::size_t size() const noexcept { return size_; }

 private:
  T* data_;
  std::size_t size_;
};
#endif

/// Complex lines: sample j of line k is at index j·stride + k·distance.
template <class Real>
struct Lines {
  Real* re;
  Real* im;  ///< null: real and imaginary parts in turn in re
  std::size_t count = 1;
  std::ptrdiff_t stride = 1;
  std::ptrdiff_t distance = 0;
};

/// The rows of an image without gaps, of `width` pixels each, as lines.
template <class Real>
Lines<Real> rows_of(Span<std::complex<Real>> image, std::size_t width) {
  return {reinterpret_cast<Real*>(image.data()), nullptr, width == 0 ? 0 : image.size() / width, 1,
          static_cast<std::ptrdiff_t>(width)};
}
template <class Real>
Lines<Real> rows_of(std::vector<std::complex<Real>>& image, std::size_t width) {
  return rows_of(Span<std::complex<Real>>(image), width);
}

/// The columns of an image without gaps, of `width` pixels a row, as lines.
template <class Real>
Lines<Real> columns_of(Span<std::complex<Real>> image, std::size_t width) {
  return {reinterpret_cast<Real*>(image.data()), nullptr, width, static_cast<std::ptrdiff_t>(width),
          1};
}
template <class Real>
Lines<Real> columns_of(std::vector<std::complex<Real>>& image, std::size_t width) {
  return columns_of(Span<std::complex<Real>>(image), width);
}

// --- How a call runs ---------------------------------------------------------------------------

/// Threads and progress of a call.
struct Run {
  /// 1, or more, or 0 for one per processor.
  int threads = 1;
  /// Called on the calling thread with the part that is done, 0 to 1. False stops the work, and the
  /// function throws Cancelled. What it throws stops the work too, and leaves the function.
  std::function<bool(double fraction)> progress = nullptr;
};

/// Calls a function of c.h with the options of a run.
template <class Call>
void run_with(const Run& run, const Call& call) {
  struct Watched {
    const Run& run;
    std::exception_ptr thrown;
  } watched{run, nullptr};
  sarnum_options options = SARNUM_OPTIONS_INIT;
  options.threads = run.threads;
  if (run.progress) {
    options.context = &watched;
    options.progress = [](void* context, double fraction) noexcept -> int {
      auto& self = *static_cast<Watched*>(context);
      try {
        return self.run.progress(fraction) ? 0 : 1;
      } catch (...) {
        self.thrown = std::current_exception();
        return 1;
      }
    };
  }
  const sarnum_status status = call(&options);
  if (watched.thrown) {
    std::rethrow_exception(watched.thrown);
  }
  check(status);
}

// --- Transforms of lines -----------------------------------------------------------------------

enum class Direction : sarnum_direction { forward = SARNUM_FORWARD, inverse = SARNUM_INVERSE };

enum class Scaling : sarnum_scaling {
  none = SARNUM_UNSCALED,
  by_length = SARNUM_BY_LENGTH,
  by_root = SARNUM_BY_ROOT
};

/// Transforms of one length, in float or in double. It can be moved, not copied; any number of
/// threads may use it at the same time.
template <class Real>
class Plan {
  static_assert(std::is_same_v<Real, float> || std::is_same_v<Real, double>,
                "a plan is of float or of double");

 public:
  using Complex = std::complex<Real>;
  static constexpr sarnum_type precision =
      std::is_same_v<Real, float> ? SARNUM_FLOAT32 : SARNUM_FLOAT64;

  /// @param n  a power of two from 1 to 2^30; Error has SARNUM_UNSUPPORTED for another length in
  ///           that range
  explicit Plan(std::size_t n) {
    sarnum_plan* plan = nullptr;
    check(sarnum_plan_create(n, precision, &plan));
    plan_.reset(plan);
  }

  std::size_t size() const noexcept { return sarnum_plan_length(plan_.get()); }

  /// For functions of c.h.
  const sarnum_plan* get() const noexcept { return plan_.get(); }

  /// One line of size() samples in place. forward() and inverse() without a scaling are each
  /// other's inverse.
  void forward(Span<Complex> line, Scaling scaling = Scaling::none) const {
    transform_one(Direction::forward, scaling, line);
  }
  void inverse(Span<Complex> line, Scaling scaling = Scaling::by_length) const {
    transform_one(Direction::inverse, scaling, line);
  }

  /// Many lines in place.
  void transform(Direction direction, Scaling scaling, const Lines<Real>& lines,
                 const Run& run = {}) const {
    run_with(run, [&](const sarnum_options* options) {
      return sarnum_transform_lines(get(), static_cast<sarnum_direction>(direction),
                                    static_cast<sarnum_scaling>(scaling), lines.re, lines.im,
                                    lines.count, lines.stride, lines.distance, options);
    });
  }

  /// Replaces each line by its circular correlation with a reference of at most size() samples: an
  /// echo of the reference that begins at sample j gives its peak there.
  void compress(Span<const Complex> reference, const Lines<Real>& lines,
                const Run& run = {}) const {
    run_with(run, [&](const sarnum_options* options) {
      return sarnum_compress_lines(get(), reference.data(), nullptr, reference.size(), lines.re,
                                   lines.im, lines.count, lines.stride, lines.distance, options);
    });
  }

 private:
  struct Destroy {
    void operator()(sarnum_plan* plan) const noexcept { sarnum_plan_destroy(plan); }
  };

  void transform_one(Direction direction, Scaling scaling, Span<Complex> line) const {
    if (line.size() != size()) {
      throw Error(SARNUM_INVALID_ARGUMENT, "the line has " + std::to_string(line.size()) +
                                               " samples: pass one of " + std::to_string(size()) +
                                               ", the length of the plan.");
    }
    check(sarnum_transform(get(), static_cast<sarnum_direction>(direction),
                           static_cast<sarnum_scaling>(scaling), line.data(), nullptr));
  }

  std::unique_ptr<sarnum_plan, Destroy> plan_;
};

// --- Images ------------------------------------------------------------------------------------

/// The type code of a pixel: integers, float, double, std::complex of the latter two, and
/// std::array<T, 2> for a complex pixel of integers T.
template <class Pixel>
constexpr sarnum_type type_of() {
  using P = std::remove_cv_t<Pixel>;
  constexpr bool complex_integer[] = {std::is_same_v<P, std::array<std::uint8_t, 2>>,
                                      std::is_same_v<P, std::array<std::int8_t, 2>>,
                                      std::is_same_v<P, std::array<std::uint16_t, 2>>,
                                      std::is_same_v<P, std::array<std::int16_t, 2>>,
                                      std::is_same_v<P, std::array<std::uint32_t, 2>>,
                                      std::is_same_v<P, std::array<std::int32_t, 2>>};
  constexpr bool real[] = {std::is_same_v<P, std::uint8_t>,
                           std::is_same_v<P, std::int8_t>,
                           std::is_same_v<P, std::uint16_t>,
                           std::is_same_v<P, std::int16_t>,
                           std::is_same_v<P, std::uint32_t>,
                           std::is_same_v<P, std::int32_t>,
                           std::is_same_v<P, float>,
                           std::is_same_v<P, double>,
                           std::is_same_v<P, std::complex<float>>,
                           std::is_same_v<P, std::complex<double>>};
  sarnum_type type = 0;
  for (sarnum_type i = 0; i < 10; ++i) {
    type = real[i] ? SARNUM_UINT8 + i : type;
  }
  for (sarnum_type i = 0; i < 6; ++i) {
    type = complex_integer[i] ? SARNUM_COMPLEX_UINT8 + i : type;
  }
  return type;
}

/// An image of somebody else's.
template <class Pixel>
class Image {
  static_assert(type_of<Pixel>() != 0, "no pixel type of the library");

 public:
  /// Rows that adjoin each other.
  Image(Pixel* first, std::size_t width, std::size_t height)
      : Image(first, width, height, static_cast<std::ptrdiff_t>(width * sizeof(Pixel))) {}
  /// Rows at a distance in bytes, which may be negative.
  Image(Pixel* first, std::size_t width, std::size_t height, std::ptrdiff_t row_bytes)
      : first_(first), width_(width), height_(height), row_bytes_(row_bytes) {}

  Pixel* data() const noexcept { return first_; }
  std::size_t width() const noexcept { return width_; }
  std::size_t height() const noexcept { return height_; }
  std::ptrdiff_t row_bytes() const noexcept { return row_bytes_; }

  auto rows() const {
    using Void = std::conditional_t<std::is_const_v<Pixel>, const void, void>;
    using Byte = std::conditional_t<std::is_const_v<Pixel>, const char, char>;
    std::vector<Void*> rows(height_);
    for (std::size_t row = 0; row < height_; ++row) {
      rows[row] = reinterpret_cast<Byte*>(first_) + static_cast<std::ptrdiff_t>(row) * row_bytes_;
    }
    return rows;
  }

 private:
  Pixel* first_;
  std::size_t width_;
  std::size_t height_;
  std::ptrdiff_t row_bytes_;
};

/// Throws unless an image has a size.
template <class Pixel>
void check_size(const char* name, const Image<Pixel>& image, std::size_t width,
                std::size_t height) {
  if (image.width() != width || image.height() != height) {
    throw Error(SARNUM_INVALID_ARGUMENT,
                std::string(name) + " is " + std::to_string(image.width()) + " x " +
                    std::to_string(image.height()) + " pixels: pass " + std::to_string(width) +
                    " x " + std::to_string(height) + ".");
  }
}

/// The rows of an image that is only read.
template <class Pixel>
std::vector<const void*> source_rows(const Image<Pixel>& source) {
  return Image<const Pixel>(source.data(), source.width(), source.height(), source.row_bytes())
      .rows();
}

/// Every row, then every column, in the plans' precision. The source counts as 0 beyond its sides;
/// the target is as large as the plans are long. Both may be the same image.
template <class Pixel, class Real>
void transform_2d(const Plan<Real>& row_plan, const Plan<Real>& column_plan, Direction direction,
                  Scaling scaling, const Image<Pixel>& source,
                  const Image<std::complex<Real>>& target, const Run& run = {}) {
  check_size("target", target, row_plan.size(), column_plan.size());
  const auto from = source_rows(source);
  const auto to = target.rows();
  run_with(run, [&](const sarnum_options* options) {
    return sarnum_transform_2d(row_plan.get(), column_plan.get(),
                               static_cast<sarnum_direction>(direction),
                               static_cast<sarnum_scaling>(scaling), type_of<Pixel>(), from.data(),
                               source.width(), source.height(), to.data(), options);
  });
}

/// The values of the classic interface (CFFTClass::FFT_2D and IFFT_2D), without plans. The target
/// has the least powers of two not below the source's width and height as sides, and pixels of
/// std::complex<double> for sources of double or std::complex<double>, of std::complex<float> for
/// all others.
template <class Pixel, class Real>
void transform_raster(Direction direction, const Image<Pixel>& source,
                      const Image<std::complex<Real>>& target, const Run& run = {}) {
  constexpr bool is_double =
      type_of<Pixel>() == SARNUM_FLOAT64 || type_of<Pixel>() == SARNUM_COMPLEX_FLOAT64;
  static_assert(std::is_same_v<Real, std::conditional_t<is_double, double, float>>,
                "the target's precision follows from the source's");
  const auto padded = [](std::size_t side) {
    std::size_t power = 1;
    while (power < side && power <= SIZE_MAX / 2) {
      power *= 2;
    }
    return power;
  };
  check_size("target", target, padded(source.width()), padded(source.height()));
  const auto from = source_rows(source);
  const auto to = target.rows();
  run_with(run, [&](const sarnum_options* options) {
    return sarnum_transform_raster(static_cast<sarnum_direction>(direction), type_of<Pixel>(),
                                   from.data(), source.width(), source.height(), to.data(),
                                   options);
  });
}

// --- Multilooking ------------------------------------------------------------------------------

enum class Detection : sarnum_detection {
  as_is = SARNUM_AS_IS,
  intensity = SARNUM_INTENSITY,
  amplitude = SARNUM_AMPLITUDE
};

/// How looks are averaged.
struct Looks {
  std::size_t across = 1;
  std::size_t down = 1;
  Detection detection = Detection::as_is;
  bool skip_nan = false;

  sarnum_multilook_options options() const {
    sarnum_multilook_options looks = SARNUM_MULTILOOK_INIT(across, down);
    looks.detection = static_cast<sarnum_detection>(detection);
    looks.skip_nan = skip_nan ? 1 : 0;
    return looks;
  }
};

/// Means of adjoining rectangles of looks. The target has ceil(width / across) columns and
/// ceil(height / down) rows of float or double.
template <class Pixel, class Real>
void multilook(const Image<Pixel>& source, const Image<Real>& target, const Looks& looks,
               const Run& run = {}) {
  const auto divided = [](std::size_t size, std::size_t by) {
    return by == 0 ? 0 : size / by + (size % by != 0 ? 1 : 0);
  };
  if (looks.across != 0 && looks.down != 0) {
    check_size("target", target, divided(source.width(), looks.across),
               divided(source.height(), looks.down));
  }
  const sarnum_multilook_options how = looks.options();
  run_with(run, [&](const sarnum_options* options) {
    return sarnum_multilook(type_of<Pixel>(), source.data(), source.width(), source.height(),
                            source.row_bytes(), type_of<Real>(), target.data(), target.row_bytes(),
                            &how, options);
  });
}

/// The same from file to file; see sarnum_multilook_file().
inline void multilook_file(const std::string& input_path, const std::string& output_path,
                           const Looks& looks, const Run& run = {}) {
  const sarnum_multilook_options how = looks.options();
  run_with(run, [&](const sarnum_options* options) {
    return sarnum_multilook_file(input_path.c_str(), output_path.c_str(), &how, options);
  });
}

}  // namespace cxx
}  // namespace sarnum

#endif
