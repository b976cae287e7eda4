// Transforms against FFTW, as ratios of times measured in one run.
//
// Each piece of work is done by both sides and compared before anything is timed. Repetitions of
// all pieces are interleaved in random order, so that a change of the machine's speed hits both
// sides; the least time of each counts. Data are zeros while timing: a transform repeated in place
// would grow without bound, and the arithmetic takes the same time on zeros.
#include <benchmark/benchmark.h>
#include <fftw3.h>
#include <sarnum/sarnum.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <limits>
#include <map>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

namespace {

/// Work that both sides do on storage of their own.
struct Piece {
  std::string name;
  std::function<void()> ours;
  std::function<void()> peer;
  /// Fills both inputs with the same numbers, or with zeros.
  std::function<void(bool zeros)> fill;
  /// ‖ours − peer's‖ / ‖peer's‖ of the results.
  std::function<double()> difference;
  double tolerance;
};

template <class Real>
Real sample(std::size_t i) {
  return static_cast<Real>(std::sin(static_cast<double>(i * i % 1009)));
}

template <class Real>
double relative_difference(const std::vector<Real>& ours, const std::vector<Real>& peers) {
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
  using Plan = fftw_plan;
  static Plan split(int n, double* re, double* im) {
    const fftw_iodim dimension{n, 1, 1};
    return fftw_plan_guru_split_dft(1, &dimension, 0, nullptr, re, im, re, im, FFTW_MEASURE);
  }
  static void run(Plan plan) { fftw_execute(plan); }
  static void destroy(Plan plan) { fftw_destroy_plan(plan); }
};

struct FloatFftw {
  using Plan = fftwf_plan;
  static Plan split(int n, float* re, float* im) {
    const fftwf_iodim dimension{n, 1, 1};
    return fftwf_plan_guru_split_dft(1, &dimension, 0, nullptr, re, im, re, im, FFTW_MEASURE);
  }
  static Plan interleaved(int n, float* data) {
    auto* const complex = reinterpret_cast<fftwf_complex*>(data);
    return fftwf_plan_dft_1d(n, complex, complex, FFTW_FORWARD, FFTW_MEASURE);
  }
  static void run(Plan plan) { fftwf_execute(plan); }
  static void destroy(Plan plan) { fftwf_destroy_plan(plan); }
};

/// A plan that is destroyed with the last piece of work that uses it.
template <class Fftw>
auto owned(typename Fftw::Plan plan) {
  return std::shared_ptr<std::remove_pointer_t<typename Fftw::Plan>>(plan, Fftw::destroy);
}

/// A forward transform of 2·n reals: real parts then imaginary parts, or interleaved.
template <class Real, class Fftw, class Plan, class Ours>
Piece line_piece(const std::string& name, int m, Plan plan, Ours ours) {
  const std::size_t n = std::size_t{1} << m;
  auto data = std::make_shared<std::vector<Real>>(2 * n);
  auto peers = std::make_shared<std::vector<Real>>(2 * n);
  const auto peer_plan = owned<Fftw>(plan(static_cast<int>(n), peers->data()));
  return {name + "/" + std::to_string(m),
          [=] { ours(data->data(), n, m); },
          [=] { Fftw::run(peer_plan.get()); },
          [=](bool zeros) {
            for (std::size_t i = 0; i < 2 * n; ++i) {
              (*data)[i] = (*peers)[i] = zeros ? Real{0} : sample<Real>(i);
            }
            init_ibitr(m);
          },
          [=] { return relative_difference(*data, *peers); },
          static_cast<double>(std::numeric_limits<Real>::epsilon()) * 8};
}

/// FFT_2D of 16-bit integers, against converting, transforming and scaling with FFTW in double.
Piece raster_piece(int side) {
  const auto n = static_cast<std::size_t>(side);
  struct State {
    std::vector<std::int16_t> pixels;
    std::vector<float> spectrum;
    std::vector<float> peers;
    std::vector<std::complex<double>> work;
    std::vector<void*> src;
    std::vector<void*> dst;
  };
  auto state = std::make_shared<State>();
  state->pixels.resize(n * n);
  state->spectrum.resize(2 * n * n);
  state->peers.resize(2 * n * n);
  state->work.resize(n * n);
  for (std::size_t row = 0; row < n; ++row) {
    state->src.push_back(state->pixels.data() + row * n);
    state->dst.push_back(state->spectrum.data() + 2 * row * n);
  }
  auto* const work = reinterpret_cast<fftw_complex*>(state->work.data());
  const auto plan =
      owned<DoubleFftw>(fftw_plan_dft_2d(side, side, work, work, FFTW_FORWARD, FFTW_MEASURE));
  return {"FFT_2D int16/" + std::to_string(side),
          [=] {
            CFFTClass().FFT_2D(state->src.data(), state->dst.data(), side, side, TD_INT16, nullptr);
          },
          [=] {
            std::copy(state->pixels.begin(), state->pixels.end(), state->work.begin());
            DoubleFftw::run(plan.get());
            const double scale = 1.0 / (static_cast<double>(side) * side);
            for (std::size_t i = 0; i < state->work.size(); ++i) {
              state->peers[2 * i] = static_cast<float>(state->work[i].real() * scale);
              state->peers[2 * i + 1] = static_cast<float>(state->work[i].imag() * scale);
            }
          },
          [=](bool zeros) {
            for (std::size_t i = 0; i < state->pixels.size(); ++i) {
              state->pixels[i] =
                  zeros ? std::int16_t{0} : static_cast<std::int16_t>(sample<double>(i) * 3e4);
            }
          },
          [=] { return relative_difference(state->spectrum, state->peers); },
          1e-6};
}

std::vector<Piece> all_pieces() {
  std::vector<Piece> pieces;
  for (const int m : {6, 8, 10, 12, 14, 16, 18}) {
    pieces.push_back(line_piece<double, DoubleFftw>(
        "fft_Fast double split", m,
        [](int n, double* data) { return DoubleFftw::split(n, data, data + n); },
        [](double* data, std::size_t n, int e) { fft_Fast(data, data + n, e); }));
    pieces.push_back(line_piece<float, FloatFftw>(
        "fft_Fast float split", m,
        [](int n, float* data) { return FloatFftw::split(n, data, data + n); },
        [](float* data, std::size_t n, int e) { fft_Fast(data, data + n, e); }));
    pieces.push_back(
        line_piece<float, FloatFftw>("fft_Fast float interleaved", m, FloatFftw::interleaved,
                                     [](float* data, std::size_t, int e) { fft_Fast(data, e); }));
  }
  for (const int side : {512, 1024}) {
    pieces.push_back(raster_piece(side));
  }
  return pieces;
}

bool sides_agree(const Piece& piece) {
  piece.fill(false);
  piece.ours();
  piece.peer();
  const double difference = piece.difference();
  piece.fill(true);
  if (!(difference <= piece.tolerance)) {
    std::fprintf(stderr, "%s differs from the peer's by %g\n", piece.name.c_str(), difference);
    return false;
  }
  return true;
}

/// Keeps the least time of each benchmark, in place of the usual line for every repetition.
class LeastTimes : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      if (run.run_type == Run::RT_Iteration) {
        const auto [entry, is_new] =
            times_.try_emplace(run.run_name.function_name, run.GetAdjustedRealTime());
        entry->second = std::min(entry->second, run.GetAdjustedRealTime());
      }
    }
  }

  double of(const std::string& name) const { return times_.at(name); }
  bool has(const std::string& name) const { return times_.count(name) != 0; }

 private:
  std::map<std::string, double> times_;
};

}  // namespace

int main(int argc, char** argv) {
  const std::vector<Piece> pieces = all_pieces();
  for (const Piece& piece : pieces) {
    if (!sides_agree(piece)) {
      return 1;
    }
    // Tables serve one length at a time, and repetitions of all lengths are interleaved.
    const auto add = [&piece](const std::string& side, const std::function<void()>& work) {
      benchmark::RegisterBenchmark((piece.name + side).c_str(),
                                   [&](benchmark::State& state) {
                                     piece.fill(true);
                                     for (auto _ : state) {
                                       work();
                                       benchmark::ClobberMemory();
                                     }
                                   })
          ->Repetitions(9)
          ->MinTime(0.02)
          ->Unit(benchmark::kMicrosecond);
    };
    add("", piece.ours);
    add(" peer", piece.peer);
  }
  std::vector<char*> arguments(argv, argv + argc);
  char interleave[] = "--benchmark_enable_random_interleaving=true";
  arguments.push_back(interleave);
  int count = static_cast<int>(arguments.size());
  benchmark::Initialize(&count, arguments.data());
  LeastTimes times;
  benchmark::RunSpecifiedBenchmarks(&times);

  std::printf("%-32s %12s %12s %8s\n", "work", "ours, us", "FFTW, us", "ratio");
  for (const Piece& piece : pieces) {
    if (times.has(piece.name) && times.has(piece.name + " peer")) {
      const double ours = times.of(piece.name);
      const double peers = times.of(piece.name + " peer");
      std::printf("%-32s %12.2f %12.2f %8.2f\n", piece.name.c_str(), ours, peers, ours / peers);
    }
  }
  return 0;
}
