// The reference transforms in double precision: split layout, twiddles computed for the call.
#include "sarnum/fft/reference.h"

#include "fft/transform.h"

namespace {

using sarnum::Arithmetic;
using sarnum::Direction;

template <class Arithmetic, Direction direction>
void transform(double* re, double* im, int m) {
  if (!sarnum::is_transform_exponent(m)) {
    return;
  }
  const sarnum::Twiddles<double> twiddles(m);
  sarnum::transform<Arithmetic, direction>(sarnum::SplitSamples<double>{re, im}, m, twiddles);
}

}  // namespace

void fft(double* re, double* im, int m) {
  transform<Arithmetic<double, double>, Direction::forward>(re, im, m);
}

void ifft(double* re, double* im, int m) {
  transform<Arithmetic<double, float>, Direction::inverse>(re, im, m);
}
