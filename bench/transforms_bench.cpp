// Transforms against FFTW, and those that compute their own sines and cosines against the time of
// just these and a transform that has them. Both sides' results are compared, on the same numbers.
// Data are zeros while timing: a transform repeated in place would grow without bound, and the
// arithmetic takes the same time on zeros.
#include <fftw3.h>
#include <sarnum/sarnum.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <complex>
#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include "side_by_side.h"

namespace {

template <class Ours, class Peers>
double relative_difference(const std::vector<Ours>& ours, const std::vector<Peers>& peers) {
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
  static Plan raster(int rows, int columns, std::complex<double>* data) {
    auto* const complex = reinterpret_cast<fftw_complex*>(data);
    return fftw_plan_dft_2d(rows, columns, complex, complex, FFTW_FORWARD, FFTW_MEASURE);
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
  static Plan raster(int rows, int columns, std::complex<float>* data) {
    auto* const complex = reinterpret_cast<fftwf_complex*>(data);
    return fftwf_plan_dft_2d(rows, columns, complex, complex, FFTW_FORWARD, FFTW_ESTIMATE);
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
  using Fftw = std::conditional_t<std::is_same_v<Real, double>, DoubleFftw, FloatFftw>;
  const std::size_t n = std::size_t{1} << m;
  const Real divisor = direction == Direction::inverse ? static_cast<Real>(n) : Real{1};
  auto data = std::make_shared<std::vector<Real>>(2 * n);
  auto peers = std::make_shared<std::vector<Real>>(2 * n);
  const auto peer_plan = owned<Fftw>(plan(static_cast<int>(n), peers->data()));
  return {name + "/" + std::to_string(m),
          [=] { ours(data->data(), n, m); },
          {"FFTW", [=] { Fftw::run(peer_plan.get()); }, target},
          [=](bool timing) {
            for (std::size_t i = 0; i < 2 * n; ++i) {
              (*data)[i] = (*peers)[i] = timing ? Real{0} : sample<Real>(i);
            }
            // Tables serve one length at a time, and repetitions of all lengths are interleaved.
            init_ibitr(m);
          },
          [=] {
            for (Real& value : *peers) {
              value /= divisor;
            }
            return relative_difference(*data, *peers);
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
  pieces.push_back(line_piece<double>(
      name + "double split", m, split, direction,
      [=](int n, double* data) {
        double* const im = data + n;
        return DoubleFftw::split(n, forward ? data : im, forward ? im : data, planning);
      },
      [=](double* data, std::size_t n, int e) {
        forward ? fft_Fast(data, data + n, e) : ifft_Fast(data, data + n, e);
      }));
  pieces.push_back(line_piece<float>(
      name + "float split", m, split, direction,
      [=](int n, float* data) {
        float* const im = data + n;
        return FloatFftw::split(n, forward ? data : im, forward ? im : data, planning);
      },
      [=](float* data, std::size_t n, int e) {
        forward ? fft_Fast(data, data + n, e) : ifft_Fast(data, data + n, e);
      }));
  pieces.push_back(line_piece<float>(
      name + "float interleaved", m, interleaved, direction,
      [=](int n, float* data) {
        return FloatFftw::interleaved(n, data, forward ? FFTW_FORWARD : FFTW_BACKWARD, planning);
      },
      [=](float* data, std::size_t, int e) { forward ? fft_Fast(data, e) : ifft_Fast(data, e); }));
}

/// What a transform without tables needs at least: the libm calls, and a table-driven transform.
template <class Computed>
struct LibmAndTable {
  explicit LibmAndTable(int exponent) : m(exponent) {}

  void run() {
    const auto two_pi = static_cast<Computed>(6.283185307179586);
    for (std::size_t i = 0; i < n / 2; ++i) {
      const Computed x = two_pi * static_cast<Computed>(i) / static_cast<Computed>(n);
      twiddles[2 * i] = std::cos(x);
      twiddles[2 * i + 1] = std::sin(x);
    }
    fft_Fast(data.data(), data.data() + n, m);
  }

  int m;
  std::size_t n = std::size_t{1} << m;
  std::vector<Computed> data = std::vector<Computed>(2 * n);
  std::vector<Computed> twiddles = std::vector<Computed>(n);
};

/// A transform of a split pair without tables, on elements of type Stored, against what it needs in
/// the width it computes in.
template <class Stored, class Computed, class Ours>
Piece reference_piece(const std::string& name, int m, double target,
                      std::shared_ptr<LibmAndTable<Computed>> peer, Ours ours) {
  const std::size_t n = std::size_t{1} << m;
  auto data = std::make_shared<std::vector<Stored>>(2 * n);
  const auto rounded = std::max(static_cast<double>(std::numeric_limits<Stored>::epsilon()),
                                target > 1.2 ? 0x1p-24 : 0.0);
  return {name + "/" + std::to_string(m),
          [=] { ours(data->data(), data->data() + n, m); },
          {"libm+table", [=] { peer->run(); }, target},
          [=](bool timing) {
            for (std::size_t i = 0; i < 2 * n; ++i) {
              (*data)[i] = timing ? Stored{0} : sample<Stored>(i);
              peer->data[i] = static_cast<Computed>((*data)[i]);
            }
            init_ibitr(m);
          },
          [=] { return relative_difference(*data, peer->data); },
          8 * rounded};
}

/// Those of one length, beside one peer for each width. An inverse transform of a split pair is the
/// forward one of the exchanged pair.
void add_reference_pieces(std::vector<Piece>& pieces, int m) {
  using Double = double*;
  using Float = float*;
  constexpr double forward = 1.15;
  constexpr double rounding = 1.35;
  const auto wide = std::make_shared<LibmAndTable<double>>(m);
  const auto narrow = std::make_shared<LibmAndTable<float>>(m);
  pieces.push_back(reference_piece<double>("fft double", m, forward, wide,
                                           [](Double re, Double im, int e) { fft(re, im, e); }));
  pieces.push_back(
      reference_piece<double>("member fft double", m, forward, wide,
                              [](Double re, Double im, int e) { CFFTClass().fft(re, im, e); }));
  pieces.push_back(reference_piece<float>("fft float split", m, forward, narrow,
                                          [](Float re, Float im, int e) { fft(re, im, e); }));
  pieces.push_back(reference_piece<double>("ifft double", m, rounding, wide,
                                           [](Double re, Double im, int e) { ifft(im, re, e); }));
  pieces.push_back(
      reference_piece<double>("member ifft double", m, rounding, wide,
                              [](Double re, Double im, int e) { CFFTClass().ifft(im, re, e); }));
  pieces.push_back(
      reference_piece<float>("member fft float", m, rounding, wide,
                             [](Float re, Float im, int e) { CFFTClass().fft(re, im, e); }));
  pieces.push_back(
      reference_piece<float>("member ifft float", m, rounding, wide,
                             [](Float re, Float im, int e) { CFFTClass().ifft(im, re, e); }));
}

/// A raster, padded, transformed and divided by both sides; `Width` is the peer's arithmetic.
template <class Pixel, class Result, class Width>
struct RasterState {
  std::vector<Pixel> pixels;
  std::vector<Result> spectrum;
  std::vector<Result> peers;
  std::vector<std::complex<Width>> work;
  std::vector<void*> src;
  std::vector<void*> dst;
};

/// FFT_2D of a raster against FFTW, which gets the pixels, and gives the results, in the same
/// types.
template <class Fftw, class Width, class Result, class Pixel>
Piece raster_piece(const std::string& name, int type, int width, int height, double target) {
  const auto side = [](int size) { return std::bit_ceil(static_cast<std::size_t>(size)); };
  const auto columns = side(width);
  const auto rows = side(height);
  const auto row_pixels = static_cast<std::size_t>(width);
  auto state = std::make_shared<RasterState<Pixel, Result, Width>>();
  state->pixels.resize(row_pixels * static_cast<std::size_t>(height));
  state->spectrum.resize(2 * rows * columns);
  state->peers.resize(2 * rows * columns);
  state->work.resize(rows * columns);
  for (std::size_t row = 0; row < rows; ++row) {
    if (row < static_cast<std::size_t>(height)) {
      state->src.push_back(state->pixels.data() + row * row_pixels);
    }
    state->dst.push_back(state->spectrum.data() + 2 * row * columns);
  }
  const auto plan = owned<Fftw>(
      Fftw::raster(static_cast<int>(rows), static_cast<int>(columns), state->work.data()));
  return {name + "/" + std::to_string(width) + "x" + std::to_string(height),
          [=] {
            CFFTClass().FFT_2D(state->src.data(), state->dst.data(), width, height, type, nullptr);
          },
          {Fftw::name,
           [=] {
             std::fill(state->work.begin(), state->work.end(), 0);
             for (std::size_t row = 0; row < state->src.size(); ++row) {
               const Pixel* const from = state->pixels.data() + row * row_pixels;
               std::copy(from, from + row_pixels, state->work.data() + row * columns);
             }
             Fftw::run(plan.get());
             const Width scale = Width{1} / static_cast<Width>(rows * columns);
             for (std::size_t i = 0; i < state->work.size(); ++i) {
               state->peers[2 * i] = static_cast<Result>(state->work[i].real() * scale);
               state->peers[2 * i + 1] = static_cast<Result>(state->work[i].imag() * scale);
             }
           },
           target},
          [=](bool timing) {
            for (std::size_t i = 0; i < state->pixels.size(); ++i) {
              state->pixels[i] = static_cast<Pixel>(timing ? 0.0F : sample<float>(i) * 3e4F);
            }
          },
          [=] { return relative_difference(state->spectrum, state->peers); },
          8 * static_cast<double>(std::numeric_limits<Result>::epsilon())};
}

void add_raster_pieces(std::vector<Piece>& pieces, int width, int height) {
  const double same_width = width < 1024 ? 1.6 : 1.3;
  pieces.push_back(raster_piece<DoubleFftw, double, float, std::int16_t>(
      "FFT_2D int16", TD_INT16, width, height, same_width));
  if (width == 8192) {
    return;  // to see how the ratio grows
  }
  pieces.push_back(raster_piece<FloatFftw, float, float, std::int16_t>("FFT_2D int16", TD_INT16,
                                                                       width, height, 0.25));
  pieces.push_back(raster_piece<DoubleFftw, double, float, std::complex<float>>(
      "FFT_2D complex float", TD_COMPLEX_FLOAT32, width, height, same_width));
  pieces.push_back(raster_piece<DoubleFftw, double, double, double>("FFT_2D double", TD_FLOAT64,
                                                                    width, height, 0.9));
}

std::vector<Piece> all_pieces() {
  std::vector<Piece> pieces;
  for (int m = 6; m <= 20; ++m) {
    add_line_pieces(pieces, m, Direction::forward, FFTW_MEASURE);
    add_line_pieces(pieces, m, Direction::inverse, FFTW_MEASURE);
  }
  for (int m = 21; m <= 24; ++m) {
    add_line_pieces(pieces, m, Direction::forward, FFTW_ESTIMATE);
  }
  // A length that few wait for a measured plan of: to see how the ratios grow.
  add_line_pieces(pieces, 24, Direction::forward, FFTW_MEASURE, "planned ");
  for (int m = 8; m <= 20; m += 2) {
    add_reference_pieces(pieces, m);
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
