// The free transforms of float arrays: everything in single precision, inverses divided by N.
#include "sarnum/fft/single_precision.h"

#include "fft/transform.h"

namespace {

using sarnum::Direction;
using sarnum::InterleavedSamples;
using sarnum::SplitSamples;

template <Direction direction, class Samples>
void transform(Samples x, int m) {
  if (!sarnum::is_transform_exponent(m)) {
    return;
  }
  const float scale = direction == Direction::inverse ? sarnum::inverse_length<float>(m) : 1;
  const sarnum::Twiddles<float> twiddles(m);
  sarnum::transform<sarnum::Arithmetic<float, float>, direction>(x, m, twiddles, scale);
}

}  // namespace

void fft(float* const re, float* const im, int m) {
  transform<Direction::forward>(SplitSamples<float>{re, im}, m);
}

void ifft(float* const re, float* const im, int m) {
  transform<Direction::inverse>(SplitSamples<float>{re, im}, m);
}

void fft(float* const data, int m) {
  transform<Direction::forward>(InterleavedSamples<float>{data}, m);
}

void ifft(float* const data, int m) {
  transform<Direction::inverse>(InterleavedSamples<float>{data}, m);
}
