// Transforms of many lines by a plan.
//
// A line whose samples adjoin each other is transformed where it is; others are copied into a
// buffer and back. Where lines adjoin each other as the columns of an image do, several of them are
// copied at once: they share cache lines.
#include "fft/lines.h"

#include <algorithm>
#include <type_traits>

#include "fft/line_buffers.h"

namespace sarnum {

namespace {

/// Samples in one piece of work, at least: enough that handing out a piece costs nothing.
constexpr std::size_t least_piece = 16384;

/// Lines that are copied together, where that is worth it and their buffers stay small.
constexpr std::size_t copied_together = 16;
constexpr std::size_t largest_buffer = std::size_t{1} << 18;

template <class Real>
struct StridedSamples {
  Real* re;
  Real* im;
  std::ptrdiff_t stride;

  Complex<Real> load(std::ptrdiff_t i) const { return {re[i * stride], im[i * stride]}; }
  void store(std::ptrdiff_t i, Complex<Real> value) const {
    re[i * stride] = value.re;
    im[i * stride] = value.im;
  }
};

/// Line k as numbers at a stride, whatever the layout.
template <class Real>
StridedSamples<Real> samples_of(const Lines<Real>& lines, std::size_t k) {
  const std::ptrdiff_t numbers = lines.im == nullptr ? 2 : 1;
  Real* const im = lines.im == nullptr ? lines.re + 1 : lines.im;
  const std::ptrdiff_t offset = static_cast<std::ptrdiff_t>(k) * lines.distance * numbers;
  return {lines.re + offset, im + offset, lines.stride * numbers};
}

/// Work on lines, each given as samples that adjoin each other.
/// @param work  called with SplitSamples or InterleavedSamples of one line
template <class Real, class Work>
Outcome for_each_line(const Plan<Real>& plan, const Lines<Real>& lines, const Run& run,
                      const Work& work) {
  const std::size_t n = std::size_t{1} << plan.exponent();
  std::size_t together = std::max(least_piece / n, std::size_t{1});
  const bool is_copied = lines.stride != 1;
  if (is_copied) {
    together = std::clamp(largest_buffer / n, std::size_t{1}, copied_together);
  }
  together = std::min(together, lines.count);
  const LineBuffers<Real> buffers(is_copied ? n : 0,
                                  is_copied ? run.threads * static_cast<unsigned>(together) : 0);
  if (!buffers) {
    return Outcome::no_storage;
  }
  if (!run.begin()) {
    return Outcome::stopped;
  }
  const auto in_place = [&](std::size_t k) {
    const auto line = samples_of(lines, k);
    if (lines.im == nullptr) {
      work(InterleavedSamples<Real>{line.re});
    } else {
      work(SplitSamples<Real>{line.re, line.im});
    }
  };
  const auto copied = [&](unsigned worker, std::size_t first, std::size_t end) {
    const auto buffer = [&](std::size_t k) {
      return buffers.of(worker * static_cast<unsigned>(together) +
                        static_cast<unsigned>(k - first));
    };
    for (std::size_t j = 0; j < n; ++j) {
      for (std::size_t k = first; k < end; ++k) {
        buffer(k).store(j, samples_of(lines, k).load(static_cast<std::ptrdiff_t>(j)));
      }
    }
    for (std::size_t k = first; k < end; ++k) {
      work(buffer(k));
    }
    for (std::size_t j = 0; j < n; ++j) {
      for (std::size_t k = first; k < end; ++k) {
        samples_of(lines, k).store(static_cast<std::ptrdiff_t>(j), buffer(k).load(j));
      }
    }
  };
  const auto piece = [&](unsigned worker, std::size_t number) {
    const std::size_t first = number * together;
    const std::size_t end = std::min(first + together, lines.count);
    if (is_copied) {
      copied(worker, first, end);
      return;
    }
    for (std::size_t k = first; k < end; ++k) {
      in_place(k);
    }
  };
  const std::size_t pieces = (lines.count + together - 1) / together;
  return for_each_piece(run, pieces, together, piece) ? Outcome::complete : Outcome::stopped;
}

template <class Real, class Samples>
void transform_samples(const Plan<Real>& plan, Direction direction, Scaling scaling, Samples x) {
  if (direction == Direction::forward) {
    transform<Direction::forward>(plan, scaling, x);
  } else {
    transform<Direction::inverse>(plan, scaling, x);
  }
}

}  // namespace

template <class Real>
void transform_line(const Plan<Real>& plan, Direction direction, Scaling scaling, Real* re,
                    Real* im) {
  if (im == nullptr) {
    transform_samples(plan, direction, scaling, InterleavedSamples<Real>{re});
  } else {
    transform_samples(plan, direction, scaling, SplitSamples<Real>{re, im});
  }
}

template <class Real>
Outcome transform_lines(const Plan<Real>& plan, Direction direction, Scaling scaling,
                        const Lines<Real>& lines, const Run& run) {
  return for_each_line(plan, lines, run,
                       [&](auto x) { transform_samples(plan, direction, scaling, x); });
}

template <class Real>
Outcome compress_lines(const Plan<Real>& plan, const Real* reference_re, const Real* reference_im,
                       std::size_t reference_count, const Lines<Real>& lines, const Run& run) {
  const std::size_t n = std::size_t{1} << plan.exponent();
  const LineBuffers<Real> storage(n, 1);
  if (!storage) {
    return Outcome::no_storage;
  }
  const SplitSamples<Real> spectrum = storage.of(0);
  for (std::size_t i = 0; i < n; ++i) {
    const bool is_interleaved = reference_im == nullptr;
    spectrum.store(i, i >= reference_count ? Complex<Real>{0, 0}
                      : is_interleaved ? Complex<Real>{reference_re[2 * i], reference_re[2 * i + 1]}
                                       : Complex<Real>{reference_re[i], reference_im[i]});
  }
  transform<Direction::forward>(plan, Scaling::none, spectrum);
  return for_each_line(plan, lines, run, [&](auto x) {
    transform<Direction::forward>(plan, Scaling::none, x);
    for (std::size_t k = 0; k < n; ++k) {
      const auto a = x.load(k);
      const auto r = spectrum.load(k);
      x.store(k, {a.re * r.re + a.im * r.im, a.im * r.re - a.re * r.im});
    }
    transform<Direction::inverse>(plan, Scaling::by_length, x);
  });
}

template void transform_line<float>(const Plan<float>&, Direction, Scaling, float*, float*);
template void transform_line<double>(const Plan<double>&, Direction, Scaling, double*, double*);
template Outcome transform_lines<float>(const Plan<float>&, Direction, Scaling, const Lines<float>&,
                                        const Run&);
template Outcome transform_lines<double>(const Plan<double>&, Direction, Scaling,
                                         const Lines<double>&, const Run&);
template Outcome compress_lines<float>(const Plan<float>&, const float*, const float*, std::size_t,
                                       const Lines<float>&, const Run&);
template Outcome compress_lines<double>(const Plan<double>&, const double*, const double*,
                                        std::size_t, const Lines<double>&, const Run&);

}  // namespace sarnum
