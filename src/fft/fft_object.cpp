// CFFTClass: special members and one-dimensional transforms. Its two-dimensional members are in
// fft_2d.cpp.
#include "sarnum/fft/fft_object.h"

#include "fft/exponent.h"
#include "fft/line_transform.h"

namespace {

using sarnum::Direction;

template <class Real>
void transform(Real* re, Real* im, int m, Direction direction) {
  if (sarnum::is_transform_exponent(m)) {
    sarnum::transform_line(re, im, sarnum::line_twiddles(m), direction);
  }
}

}  // namespace

CFFTClass::CFFTClass() = default;
CFFTClass::CFFTClass(const CFFTClass&) = default;
CFFTClass& CFFTClass::operator=(const CFFTClass&) = default;
CFFTClass::~CFFTClass() = default;

void CFFTClass::fft(float* const re, float* const im, int m) {
  transform(re, im, m, Direction::forward);
}

void CFFTClass::ifft(float* const re, float* const im, int m) {
  transform(re, im, m, Direction::inverse);
}

void CFFTClass::fft(double* const re, double* const im, int m) {
  transform(re, im, m, Direction::forward);
}

void CFFTClass::ifft(double* const re, double* const im, int m) {
  transform(re, im, m, Direction::inverse);
}

int CFFTClass::CeilPowerOfTwo(int n) {
  return sarnum::ceil_power_of_two(n);
}
