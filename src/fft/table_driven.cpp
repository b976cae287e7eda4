// The transforms that read the process-wide tables instead of computing sines, cosines and bit
// reversals. The tables serve one length at a time, and reading them for another would be reading
// past their ends, so a call is checked once against the length they serve.
#include "sarnum/fft/table_driven.h"

#include "fft/table_state.h"
#include "fft/transform.h"

namespace {

using sarnum::Direction;
using sarnum::InterleavedSamples;
using sarnum::SplitSamples;

/// Twiddles from the double tables, rounded to Real. Group g stands at index 2·g of the bit
/// reversals, because it is reversed over one bit less than an element.
template <class Real>
struct TableTwiddles {
  const sarnum::TableState& tables = sarnum::table_state;

  sarnum::Twiddle<Real> operator()(std::size_t group) const {
    const auto r = static_cast<std::size_t>(tables.bit_reversal[2 * group]);
    return {static_cast<Real>(tables.cosine[r]), static_cast<Real>(tables.sine[r])};
  }

  template <class Samples>
  void permute(Samples x) const {
    for (std::size_t pair = 0; pair < static_cast<std::size_t>(tables.swap_count); ++pair) {
      sarnum::exchange(x, static_cast<std::size_t>(tables.swap_pairs[2 * pair]),
                       static_cast<std::size_t>(tables.swap_pairs[2 * pair + 1]));
    }
  }

  const sarnum::Level& level() const { return sarnum::level_in_use(); }
  std::optional<sarnum::KernelTwiddles<Real>> for_kernels() const {
    return tables.kernel_table<Real>().twiddles(level(), *tables.ready_exponent);
  }
};

template <Direction direction, class Samples>
void transform(Samples x, int m) {
  using Real = typename Samples::Element;
  if (sarnum::table_state.ready_exponent != m) {
    return;
  }
  const Real scale = direction == Direction::inverse ? sarnum::inverse_length<Real>(m) : 1;
  sarnum::transform<sarnum::Arithmetic<Real, Real>, direction>(x, m, TableTwiddles<Real>{}, scale);
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
