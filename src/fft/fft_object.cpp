// CFFTClass: special members and one-dimensional transforms. SyntAlmaz is in synthesis.cpp, the
// two-dimensional members are in fft_2d.cpp.
#include "sarnum/fft/fft_object.h"

#include "fft/exponent.h"
#include "fft/line_transform.h"

namespace {

template <class Real, class Line>
void transform(Line line, Real* re, Real* im, int m) {
  if (sarnum::is_transform_exponent(m)) {
    line(re, im, sarnum::Twiddles<double>(m));
  }
}

}  // namespace

CFFTClass::CFFTClass() = default;
CFFTClass::CFFTClass(const CFFTClass&) = default;
CFFTClass& CFFTClass::operator=(const CFFTClass&) = default;
CFFTClass::~CFFTClass() = default;

void CFFTClass::fft(float* const re, float* const im, int m) {
  transform(sarnum::ForwardLine{}, re, im, m);
}

void CFFTClass::ifft(float* const re, float* const im, int m) {
  transform(sarnum::InverseLine{}, re, im, m);
}

void CFFTClass::fft(double* const re, double* const im, int m) {
  transform(sarnum::ForwardLine{}, re, im, m);
}

void CFFTClass::ifft(double* const re, double* const im, int m) {
  transform(sarnum::InverseLine{}, re, im, m);
}

void CFFTClass::fft_new(float* const re, float* const im, int m, int centre) {
  transform(sarnum::CentredForwardLine{centre}, re, im, m);
}

void CFFTClass::fft_new(double* const re, double* const im, int m, int centre) {
  transform(sarnum::CentredForwardLine{centre}, re, im, m);
}

int CFFTClass::CeilPowerOfTwo(int n) {
  return sarnum::ceil_power_of_two(n);
}
