// The transforms that read the process-wide tables instead of computing sines, cosines and bit
// reversals. The tables serve one length at a time, and reading them for another would be reading
// past their ends, so a call is checked once against the length they serve.
#include "sarnum/fft/table_driven.h"

#include "fft/radix2.h"
#include "fft/table_state.h"

namespace {

using sarnum::Direction;
using sarnum::InterleavedSamples;
using sarnum::SplitSamples;

/// Twiddles from the double tables, rounded to Real. Group g stands at index 2·g of the bit
/// reversals, because it is reversed over one bit less than an element.
template <class Real>
struct TableTwiddles {
  const int* bit_reversal = sarnum::table_state.bit_reversal.data();
  const double* cosine = sarnum::table_state.cosine.data();
  const double* sine = sarnum::table_state.sine.data();

  sarnum::Twiddle<Real> operator()(std::size_t group) const {
    const int r = bit_reversal[2 * group];
    return {static_cast<Real>(cosine[r]), static_cast<Real>(sine[r])};
  }
};

template <Direction direction, class Samples>
void transform(Samples x, int m) {
  using Real = typename Samples::Element;
  if (sarnum::table_state.ready_exponent != m) {
    return;
  }
  sarnum::butterflies<sarnum::Arithmetic<Real, Real>, direction>(x, m, TableTwiddles<Real>{});
  const int* const pairs = sarnum::table_state.swap_pairs.data();
  const auto swap_count = static_cast<std::size_t>(sarnum::table_state.swap_count);
  for (std::size_t pair = 0; pair < swap_count; ++pair) {
    sarnum::exchange(x, static_cast<std::size_t>(pairs[2 * pair]),
                     static_cast<std::size_t>(pairs[2 * pair + 1]));
  }
  if constexpr (direction == Direction::inverse) {
    sarnum::divide_by_length(x, m);
  }
}

}  // namespace

void fft_Fast(double* re, double* im, int m) {
  transform<Direction::forward>(SplitSamples<double>{re, im}, m);
}

void ifft_Fast(double* re, double* im, int m) {
  transform<Direction::inverse>(SplitSamples<double>{re, im}, m);
}

void fft_Fast(float* const re, float* const im, int m) {
  transform<Direction::forward>(SplitSamples<float>{re, im}, m);
}

void ifft_Fast(float* const re, float* const im, int m) {
  transform<Direction::inverse>(SplitSamples<float>{re, im}, m);
}

void fft_Fast(float* const data, int m) {
  transform<Direction::forward>(InterleavedSamples<float>{data}, m);
}

void ifft_Fast(float* const data, int m) {
  transform<Direction::inverse>(InterleavedSamples<float>{data}, m);
}
