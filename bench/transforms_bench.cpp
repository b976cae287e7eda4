// Transforms against FFTW, and those that need no tables against the C library's sines and cosines
// and a transform that has them. Both sides' results are compared, on the same numbers.
// Data are zeros while timing: a transform repeated in place would grow without bound, and the
// arithmetic takes the same time on zeros.
#include <fftw3.h>
#include <sarnum/sarnum.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <complex>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <memory>
#include <new>
#include <span>
#include <string>
#include <type_traits>
#include <vector>

#include "side_by_side.h"

namespace {

/// Storage that all pieces share, as only one works at a time: for what both sides transform and
/// for what they give. Pages that no piece touches take no memory.
template <class Element>
std::span<Element> storage(int which, std::size_t count) {
  constexpr std::size_t bytes = std::size_t{5} << 28;  // 8192² doubles, complex, and some
  static const auto blocks = [] {
    std::array<std::unique_ptr<void, void (*)(void*)>, 4> all{
        {{nullptr, std::free}, {nullptr, std::free}, {nullptr, std::free}, {nullptr, std::free}}};
    for (auto& block : all) {
      block.reset(std::aligned_alloc(4096, bytes));
      if (block == nullptr) {
        throw std::bad_alloc();
      }
    }
    return all;
  }();
  return {static_cast<Element*>(blocks[static_cast<std::size_t>(which)].get()), count};
}

template <class Ours, class Peers>
double relative_difference(std::span<Ours> ours, std::span<Peers> peers) {
  double difference = 0.0;
  double norm = 0.0;
  for (std::size_t i = 0; i < ours.size(); ++i) {
    const double d = static_cast<double>(ours[i]) - static_cast<double>(peers[i]);
    difference += d * d;
    norm += static_cast<double>(peers[i]) * static_cast<double>(peers[i]);
  }
  return std::sqrt(difference / norm);
}

struct DoubleFftw {
  static constexpr auto name = "FFTW";
  using Plan = fftw_plan;
  static Plan raster(int rows, int columns, std::complex<double>* data, int sign) {
    auto* const complex = reinterpret_cast<fftw_complex*>(data);
    return fftw_plan_dft_2d(rows, columns, complex, complex, sign, FFTW_MEASURE);
  }
  /// A forward transform; the inverse one is that of the parts in each other's place.
  static Plan split(int n, double* re, double* im, unsigned planning) {
    const fftw_iodim dimension{n, 1, 1};
    return fftw_plan_guru_split_dft(1, &dimension, 0, nullptr, re, im, re, im, planning);
  }
  static void run(Plan plan) { fftw_execute(plan); }
  static void destroy(Plan plan) { fftw_destroy_plan(plan); }
};

struct FloatFftw {
  static constexpr auto name = "FFTW float unplanned";
  using Plan = fftwf_plan;
  static Plan raster(int rows, int columns, std::complex<float>* data, int sign) {
    auto* const complex = reinterpret_cast<fftwf_complex*>(data);
    return fftwf_plan_dft_2d(rows, columns, complex, complex, sign, FFTW_ESTIMATE);
  }
  static Plan split(int n, float* re, float* im, unsigned planning) {
    const fftwf_iodim dimension{n, 1, 1};
    return fftwf_plan_guru_split_dft(1, &dimension, 0, nullptr, re, im, re, im, planning);
  }
  static Plan interleaved(int n, float* data, int sign, unsigned planning) {
    auto* const complex = reinterpret_cast<fftwf_complex*>(data);
    return fftwf_plan_dft_1d(n, complex, complex, sign, planning);
  }
  static void run(Plan plan) { fftwf_execute(plan); }
  static void destroy(Plan plan) { fftwf_destroy_plan(plan); }
};

template <class Real>
using FftwOf = std::conditional_t<std::is_same_v<Real, double>, DoubleFftw, FloatFftw>;

/// A plan that is destroyed with the last piece of work that uses it.
template <class Fftw>
auto owned(typename Fftw::Plan plan) {
  return std::shared_ptr<std::remove_pointer_t<typename Fftw::Plan>>(plan, Fftw::destroy);
}

enum class Direction { forward, inverse };

/// A table-driven transform of 2·n reals: real parts then imaginary parts, or interleaved. FFTW
/// does not divide the results of an inverse transform, as ours does.
template <class Real, class Plan, class Ours>
Piece line_piece(const std::string& name, int m, double target, Direction direction, Plan plan,
                 Ours ours) {
  const std::size_t n = std::size_t{1} << m;
  const Real divisor = direction == Direction::inverse ? static_cast<Real>(n) : Real{1};
  const auto data = storage<Real>(0, 2 * n);
  const auto peers = storage<Real>(1, 2 * n);
  const auto peer_plan = owned<FftwOf<Real>>(plan(static_cast<int>(n), peers.data()));
  return {name + "/" + std::to_string(m),
          [=] { ours(data.data(), n, m); },
          {"FFTW", [=] { FftwOf<Real>::run(peer_plan.get()); }, target},
          [=](bool timing) {
            for (std::size_t i = 0; i < 2 * n; ++i) {
              data[i] = peers[i] = timing ? Real{0} : sample<Real>(i);
            }
            // Tables serve one length at a time, and repetitions of all lengths are interleaved.
            init_ibitr(m);
          },
          [=] {
            for (Real& value : peers) {
              value /= divisor;
            }
            return relative_difference(data, peers);
          },
          static_cast<double>(std::numeric_limits<Real>::epsilon()) * 8};
}

/// One length in all layouts.
void add_line_pieces(std::vector<Piece>& pieces, int m, Direction direction, unsigned planning,
                     const std::string& note = "") {
  const bool forward = direction == Direction::forward;
  const std::string name = (forward ? "fft_Fast " : "ifft_Fast ") + note;
  // What is to be reached on average stands in table.py.
  const double split = planning == FFTW_ESTIMATE ? 0.8 : 1.0;
  const double interleaved = planning == FFTW_ESTIMATE ? 0.8 : 0.0;
  const auto add_split = [&]<class Real>(const char* layout, Real) {
    pieces.push_back(line_piece<Real>(
        name + layout, m, split, direction,
        [=](int n, Real* data) {
          Real* const im = data + n;
          return FftwOf<Real>::split(n, forward ? data : im, forward ? im : data, planning);
        },
        [=](Real* data, std::size_t n, int e) {
          forward ? fft_Fast(data, data + n, e) : ifft_Fast(data, data + n, e);
        }));
  };
  add_split("double split", double{});
  add_split("float split", float{});
  pieces.push_back(line_piece<float>(
      name + "float interleaved", m, interleaved, direction,
      [=](int n, float* data) {
        return FloatFftw::interleaved(n, data, forward ? FFTW_FORWARD : FFTW_BACKWARD, planning);
      },
      [=](float* data, std::size_t, int e) { forward ? fft_Fast(data, e) : ifft_Fast(data, e); }));
}

/// What a transform without tables would take with the C library's sines and cosines, and with a
/// table-driven transform.
template <class Computed>
struct LibmAndTable {
  void run() const {
    const auto two_pi = static_cast<Computed>(6.283185307179586);
    for (std::size_t i = 0; i < n / 2; ++i) {
      const Computed x = two_pi * static_cast<Computed>(i) / static_cast<Computed>(n);
      twiddles[2 * i] = std::cos(x);
      twiddles[2 * i + 1] = std::sin(x);
    }
    table_driven(data.data(), m);
  }

  int m;
  void (*table_driven)(Computed* data, int m);
  std::size_t n = std::size_t{1} << m;
  std::span<Computed> data = storage<Computed>(1, 2 * n);
  std::span<Computed> twiddles = storage<Computed>(2, n);
};

/// What a form without tables is to reach, and the type its butterflies are rounded to.
struct Form {
  std::string name;
  double target;
  double rounding;
};

/// A transform without tables, on elements of type Stored, against what it needs in the width it
/// computes in.
template <class Stored, class Computed, class Ours>
Piece reference_piece(const Form& form, int m, std::shared_ptr<LibmAndTable<Computed>> peer,
                      Ours ours) {
  const std::size_t n = std::size_t{1} << m;
  const auto data = storage<Stored>(0, 2 * n);
  return {form.name + "/" + std::to_string(m),
          [=] { ours(data.data(), data.data() + n, m); },
          {"libm+table", [=] { peer->run(); }, form.target},
          [=](bool timing) {
            for (std::size_t i = 0; i < 2 * n; ++i) {
              data[i] = timing ? Stored{0} : sample<Stored>(i);
              peer->data[i] = static_cast<Computed>(data[i]);
            }
            init_ibitr(m);
          },
          [=] { return relative_difference(data, peer->data); },
          8 * form.rounding};
}

/// The same against FFTW, planned without measuring for each transform.
template <class Real, class Ours>
Piece unplanned_piece(const std::string& name, int m, Ours ours) {
  const std::size_t n = std::size_t{1} << m;
  const auto data = storage<Real>(0, 2 * n);
  const auto peers = storage<Real>(1, 2 * n);
  return {name + "/" + std::to_string(m),
          [=] { ours(data.data(), data.data() + n, m); },
          {"FFTW plan+run",
           [=] {
             Real* const re = peers.data();
             const auto plan = FftwOf<Real>::split(static_cast<int>(n), re, re + n, FFTW_ESTIMATE);
             FftwOf<Real>::run(plan);
             FftwOf<Real>::destroy(plan);
           },
           1.0},
          [=](bool timing) {
            for (std::size_t i = 0; i < 2 * n; ++i) {
              data[i] = peers[i] = timing ? Real{0} : sample<Real>(i);
            }
          },
          [=] { return relative_difference(data, peers); },
          8 * static_cast<double>(std::numeric_limits<Real>::epsilon())};
}

/// Those of one length, beside one peer for each width. An inverse transform of a split pair is the
/// forward one of the exchanged pair.
void add_reference_pieces(std::vector<Piece>& pieces, int m) {
  using Double = double*;
  using Float = float*;
  // What is to be reached on average stands in table.py.
  const double forward = m < 8 ? 1.05 : 0.95;
  constexpr double of_double = 0x1p-52;
  constexpr double of_float = 0x1p-23;
  const auto split = [](auto* data, int e) { fft_Fast(data, data + (std::size_t{1} << e), e); };
  const auto wide = std::make_shared<LibmAndTable<double>>(LibmAndTable<double>{m, split});
  const auto narrow = std::make_shared<LibmAndTable<float>>(LibmAndTable<float>{m, split});
  const auto interleaved = std::make_shared<LibmAndTable<float>>(LibmAndTable<float>{m, fft_Fast});
  const auto double_form = [](Double re, Double im, int e) { fft(re, im, e); };
  const auto float_form = [](Float re, Float im, int e) { fft(re, im, e); };
  pieces.push_back(
      reference_piece<double>({"fft double", forward, of_double}, m, wide, double_form));
  pieces.push_back(
      reference_piece<double>({"member fft double", forward, of_double}, m, wide,
                              [](Double re, Double im, int e) { CFFTClass().fft(re, im, e); }));
  pieces.push_back(
      reference_piece<float>({"fft float split", 0.95, of_float}, m, narrow, float_form));
  pieces.push_back(reference_piece<float>({"fft float interleaved", 0.95, of_float}, m, interleaved,
                                          [](Float data, Float, int e) { fft(data, e); }));
  pieces.push_back(reference_piece<double>({"ifft double", 1.0, of_float}, m, wide,
                                           [](Double re, Double im, int e) { ifft(im, re, e); }));
  pieces.push_back(
      reference_piece<double>({"member ifft double", 1.0, of_float}, m, wide,
                              [](Double re, Double im, int e) { CFFTClass().ifft(im, re, e); }));
  pieces.push_back(
      reference_piece<float>({"member fft float", 1.0, of_float}, m, wide,
                             [](Float re, Float im, int e) { CFFTClass().fft(re, im, e); }));
  pieces.push_back(
      reference_piece<float>({"member ifft float", 1.0, of_float}, m, wide,
                             [](Float re, Float im, int e) { CFFTClass().ifft(im, re, e); }));
  pieces.push_back(unplanned_piece<double>("fft double", m, double_form));
  pieces.push_back(unplanned_piece<float>("fft float split", m, float_form));
}

/// The tables as their definition reads, with the C library's sines and cosines.
struct PlainTables {
  void build() const {
    const auto n = std::size_t{1} << m;
    for (std::size_t i = 0; i < n; ++i) {
      reversal[i] = 0;
      for (int b = 0; b < m; ++b) {
        reversal[i] = 2 * reversal[i] + static_cast<int>(i >> b & 1);
      }
    }
    for (std::size_t i = 0; i < n / 2; ++i) {
      const double x = 6.283185307179586 * static_cast<double>(i) / static_cast<double>(n);
      cosine[i] = std::cos(x);
      sine[i] = -std::sin(x);
    }
    std::size_t end = 0;
    for (std::size_t i = 0; i < n; ++i) {
      if (reversal[i] > static_cast<int>(i)) {
        pairs[end++] = static_cast<int>(i);
        pairs[end++] = reversal[i];
      }
    }
  }

  int m;
  std::span<int> reversal = storage<int>(0, std::size_t{1} << m);
  std::span<int> pairs = storage<int>(1, std::size_t{1} << m);
  std::span<double> cosine = storage<double>(2, (std::size_t{1} << m) / 2);
  std::span<double> sine = storage<double>(3, (std::size_t{1} << m) / 2);
};

/// Whose twiddles are seen in the transform of an impulse.
Piece tables_piece(int m) {
  const PlainTables tables{m};
  return {"init_ibitr/" + std::to_string(m),
          [=] { init_ibitr(m); },
          {"libm", [=] { tables.build(); }, m <= 12 ? 0.75 : 0.85},
          [](bool) {},
          [=] {
            const std::size_t n = std::size_t{1} << m;
            std::vector<double> re(n), im(n);
            re[1] = 1.0;
            fft_Fast(re.data(), im.data(), m);
            return std::max(relative_difference(std::span(re).first(n / 2), tables.cosine),
                            relative_difference(std::span(im).first(n / 2), tables.sine));
          },
          0x1p-50};
}

/// A raster of `Pixel`, whose spectrum has complex samples of `Result`; FFTW works in `Width`.
template <class Pixel, class Result, class Width>
struct Raster {
  Raster(int raster_width, int raster_height)
      : width(static_cast<std::size_t>(raster_width)),
        height(static_cast<std::size_t>(raster_height)),
        columns(std::bit_ceil(width)),
        rows(std::bit_ceil(height)),
        work(storage<std::complex<Width>>(0, rows * columns)),
        spectrum(storage<Result>(1, 2 * rows * columns)),
        peers(storage<Result>(2, 2 * rows * columns)),
        pixels(storage<Pixel>(3, width * height)) {
    for (std::size_t row = 0; row < rows; ++row) {
      if (row < height) {
        src.push_back(pixels.data() + row * width);
      }
      dst.push_back(spectrum.data() + 2 * row * columns);
    }
  }

  /// What a caller of FFTW writes: the pixels, with zeros where there are none.
  void load() const {
    for (std::size_t row = 0; row < rows; ++row) {
      std::complex<Width>* const to = work.data() + row * columns;
      const std::size_t filled = row < height ? width : 0;
      const Pixel* const from = pixels.data() + row * width;
      for (std::size_t column = 0; column < filled; ++column) {
        to[column] = std::complex<Width>(from[column]);
      }
      std::fill(to + filled, to + columns, std::complex<Width>());
    }
  }

  void change_signs() const {
    for (std::size_t row = 0; row < height; ++row) {
      for (std::size_t column = 1 - row % 2; column < width; column += 2) {
        work[row * columns + column] *= Width{-1};
      }
    }
  }

  void store(Width scale) const {
    for (std::size_t i = 0; i < work.size(); ++i) {
      peers[2 * i] = static_cast<Result>(work[i].real() * scale);
      peers[2 * i + 1] = static_cast<Result>(work[i].imag() * scale);
    }
  }

  std::size_t width, height, columns, rows;
  std::span<std::complex<Width>> work;
  std::span<Result> spectrum, peers;
  std::span<Pixel> pixels;
  std::vector<void*> src, dst;
};

enum class Transform { forward, centred, inverse };

/// A transform of a raster against FFTW, which gets the pixels and gives the results in the same
/// types, divides forward transforms and changes signs to centre, as ours does.
template <class Fftw, class Width, class Result, class Pixel>
Piece raster_piece(Transform transform, const std::string& pixel, int type, int width, int height,
                   double target) {
  const std::string name = transform == Transform::forward   ? "FFT_2D "
                           : transform == Transform::centred ? "FFT_2D_NEW "
                                                             : "IFFT_2D ";
  auto raster = std::make_shared<Raster<Pixel, Result, Width>>(width, height);
  const bool inverse = transform == Transform::inverse;
  const bool centred = transform == Transform::centred;
  const auto plan =
      owned<Fftw>(Fftw::raster(static_cast<int>(raster->rows), static_cast<int>(raster->columns),
                               raster->work.data(), inverse ? FFTW_BACKWARD : FFTW_FORWARD));
  const Width scale =
      inverse ? Width{1} : Width{1} / static_cast<Width>(raster->rows * raster->columns);
  return {name + pixel + "/" + std::to_string(width) + "x" + std::to_string(height),
          [=] {
            void **src = raster->src.data(), **dst = raster->dst.data();
            CFFTClass object;
            inverse   ? object.IFFT_2D(src, dst, width, height, type, nullptr)
            : centred ? object.FFT_2D_NEW(src, dst, width, height, type, 1, nullptr)
                      : object.FFT_2D(src, dst, width, height, type, nullptr);
          },
          {Fftw::name,
           [=] {
             raster->load();
             if (centred) {
               raster->change_signs();
             }
             Fftw::run(plan.get());
             raster->store(scale);
           },
           target},
          [=](bool timing) {
            for (std::size_t i = 0; i < raster->pixels.size(); ++i) {
              raster->pixels[i] = static_cast<Pixel>(timing ? 0.0F : sample<float>(i) * 3e4F);
            }
          },
          [=] { return relative_difference(raster->spectrum, raster->peers); },
          // Inverse transforms round to float, whatever they transform.
          8 * static_cast<double>(inverse ? std::numeric_limits<float>::epsilon()
                                          : std::numeric_limits<Result>::epsilon())};
}

void add_raster_pieces(std::vector<Piece>& pieces, int width, int height) {
  using enum Transform;
  using ComplexFloat = std::complex<float>;
  const double same_width = width < 1024 ? 1.6 : 1.3;
  pieces.push_back(raster_piece<DoubleFftw, double, float, std::int16_t>(
      forward, "int16", TD_INT16, width, height, same_width));
  if (width == 8192) {
    return;  // to see how the ratio grows
  }
  pieces.push_back(raster_piece<DoubleFftw, double, float, ComplexFloat>(
      forward, "complex float", TD_COMPLEX_FLOAT32, width, height, same_width));
  pieces.push_back(raster_piece<DoubleFftw, double, double, double>(forward, "double", TD_FLOAT64,
                                                                    width, height, 0.9));
  pieces.push_back(raster_piece<DoubleFftw, double, float, ComplexFloat>(
      centred, "complex float", TD_COMPLEX_FLOAT32, width, height, same_width));
  pieces.push_back(raster_piece<FloatFftw, float, float, std::int16_t>(forward, "int16", TD_INT16,
                                                                       width, height, 0.25));
  pieces.push_back(raster_piece<FloatFftw, float, float, ComplexFloat>(
      forward, "complex float", TD_COMPLEX_FLOAT32, width, height, 0.25));
  if (std::has_single_bit(static_cast<unsigned>(width))) {  // the only sides of an inverse
    pieces.push_back(raster_piece<DoubleFftw, double, float, ComplexFloat>(
        inverse, "complex float", TD_COMPLEX_FLOAT32, width, height, same_width));
    pieces.push_back(raster_piece<DoubleFftw, double, double, std::complex<double>>(
        inverse, "complex double", TD_COMPLEX_FLOAT64, width, height, same_width));
  }
}

std::vector<Piece> all_pieces() {
  std::vector<Piece> pieces;
  for (int m = 6; m <= 20; ++m) {
    add_line_pieces(pieces, m, Direction::forward, FFTW_MEASURE);
    add_line_pieces(pieces, m, Direction::inverse, FFTW_MEASURE);
  }
  for (int m = 21; m <= 24; ++m) {
    add_line_pieces(pieces, m, Direction::forward, FFTW_ESTIMATE);
    add_line_pieces(pieces, m, Direction::inverse, FFTW_ESTIMATE);
  }
  // A length that few wait for a measured plan of: to see how the ratios grow.
  add_line_pieces(pieces, 24, Direction::forward, FFTW_MEASURE, "planned ");
  for (int m = 6; m <= 20; ++m) {
    add_reference_pieces(pieces, m);
  }
  for (int m = 8; m <= 20; m += 2) {
    pieces.push_back(tables_piece(m));
  }
  for (const int side : {512, 1024, 2048, 4096, 8192}) {
    add_raster_pieces(pieces, side, side);
  }
  add_raster_pieces(pieces, 1000, 600);
  return pieces;
}

}  // namespace

int main(int argc, char** argv) {
  return run_side_by_side(all_pieces(), argc, argv);
}
