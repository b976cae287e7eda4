// The C interface: two threads against one and against FFTW's two, and what a call costs beyond the
// classic one. Data are zeros while timing, as in transforms_bench.cpp.
#include <fftw3.h>
#include <sarnum/sarnum.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <limits>
#include <memory>
#include <sarnum/cxx.hpp>
#include <string>
#include <vector>

#include "side_by_side.h"

namespace {

template <class Real>
using Line = std::vector<std::complex<Real>>;

/// What both sides transform in place.
template <class Real>
struct Both {
  explicit Both(std::size_t count) : ours(count), peers(count) {}

  void prepare(bool timing) {
    for (std::size_t i = 0; i < ours.size(); ++i) {
      ours[i] = peers[i] = timing ? Real{0} : sample<Real>(i);
    }
  }
  double difference() const {
    double difference = 0.0, norm = 0.0;
    for (std::size_t i = 0; i < ours.size(); ++i) {
      difference += std::norm(std::complex<double>(ours[i]) - std::complex<double>(peers[i]));
      norm += std::norm(std::complex<double>(peers[i]));
    }
    return std::sqrt(difference / norm);
  }

  Line<Real> ours, peers;
};

template <class Real>
Piece piece(const std::string& name, std::shared_ptr<Both<Real>> both, std::function<void()> ours,
            Peer peer) {
  return {name,
          std::move(ours),
          std::move(peer),
          [both](bool timing) { both->prepare(timing); },
          [both] { return both->difference(); },
          8 * static_cast<double>(std::numeric_limits<Real>::epsilon())};
}

template <class Real>
void add_lines(std::vector<Piece>& pieces, const std::string& precision, std::size_t lines,
               std::size_t n) {
  auto both = std::make_shared<Both<Real>>(lines * n);
  auto plan = std::make_shared<sarnum::Plan<Real>>(n);
  const auto work = [=](Line<Real>& data, int threads) {
    plan->transform(sarnum::Direction::forward, sarnum::Scaling::none, sarnum::rows_of(data, n),
                    {threads});
  };
  pieces.push_back(piece<Real>(
      "2 threads, lines " + precision + "/" + std::to_string(lines) + "x" + std::to_string(n), both,
      [=] { work(both->ours, 2); }, {"1 thread", [=] { work(both->peers, 1); }, 0.55}));
}

template <class Real>
void transform_image(const sarnum::Plan<Real>& plan, Line<Real>& data, int threads) {
  const sarnum::Image<std::complex<Real>> image(data.data(), plan.size(), plan.size());
  sarnum::transform_2d(plan, plan, sarnum::Direction::forward, sarnum::Scaling::none, image, image,
                       {threads});
}

template <class Real>
void add_image(std::vector<Piece>& pieces, const std::string& precision, std::size_t side) {
  auto both = std::make_shared<Both<Real>>(side * side);
  auto plan = std::make_shared<sarnum::Plan<Real>>(side);
  pieces.push_back(piece<Real>("2 threads, transform_2d " + precision + "/" + std::to_string(side),
                               both, [=] { transform_image(*plan, both->ours, 2); },
                               {"1 thread", [=] { transform_image(*plan, both->peers, 1); }, 0.6}));
}

void add_fftw(std::vector<Piece>& pieces, std::size_t side) {
  auto both = std::make_shared<Both<double>>(side * side);
  auto plan = std::make_shared<sarnum::Plan<double>>(side);
  auto* const peers = reinterpret_cast<fftw_complex*>(both->peers.data());
  const int n = static_cast<int>(side);
  const std::shared_ptr<std::remove_pointer_t<fftw_plan>> peer(
      fftw_plan_dft_2d(n, n, peers, peers, FFTW_FORWARD, FFTW_MEASURE), fftw_destroy_plan);
  pieces.push_back(piece<double>("transform_2d double/" + std::to_string(side), both,
                                 [=] { transform_image(*plan, both->ours, 2); },
                                 {"FFTW, 2 threads each", [=] { fftw_execute(peer.get()); }, 1.0}));
}

/// So many calls a measurement: microseconds are nanoseconds a call.
constexpr int calls = 1000;

void add_call(std::vector<Piece>& pieces, int m) {
  const std::size_t n = std::size_t{1} << m;
  auto both = std::make_shared<Both<double>>(n);
  auto plan = std::make_shared<sarnum::Plan<double>>(n);
  // Split arrays, in the storage of interleaved ones.
  const auto parts = [n](Line<double>& line) {
    auto* const re = reinterpret_cast<double*>(line.data());
    return std::pair{re, re + n};
  };
  auto work =
      piece<double>("1000 calls of sarnum_transform/" + std::to_string(m), both,
                    [=] {
                      const auto [re, im] = parts(both->ours);
                      for (int i = 0; i < calls; ++i) {
                        sarnum_transform(plan->get(), SARNUM_FORWARD, SARNUM_UNSCALED, re, im);
                      }
                    },
                    {"fft_Fast", [=] {
                       const auto [re, im] = parts(both->peers);
                       for (int i = 0; i < calls; ++i) {
                         fft_Fast(re, im, m);
                       }
                     }});
  work.prepare = [both, m](bool) {
    both->prepare(true);  // other numbers would grow beyond all bounds
    init_ibitr(m);
  };
  work.difference = [=] {
    both->prepare(false);
    sarnum_transform(plan->get(), SARNUM_FORWARD, SARNUM_UNSCALED, parts(both->ours).first,
                     parts(both->ours).second);
    fft_Fast(parts(both->peers).first, parts(both->peers).second, m);
    return both->ours == both->peers ? 0.0 : 1.0;
  };
  pieces.push_back(std::move(work));
}

std::vector<Piece> all_pieces() {
  fftw_init_threads();
  fftw_plan_with_nthreads(2);
  std::vector<Piece> pieces;
  add_lines<float>(pieces, "float", 512, 4096);
  add_lines<double>(pieces, "double", 512, 4096);
  add_image<float>(pieces, "float", 4096);
  add_image<double>(pieces, "double", 4096);
  add_fftw(pieces, 4096);
  add_call(pieces, 6);
  return pieces;
}

}  // namespace

int main(int argc, char** argv) {
  return run_side_by_side(all_pieces(), argc, argv);
}
