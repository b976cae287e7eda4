// CFFTClass::SyntAlmaz: fast convolution of a line with a reference spectrum. Both transforms use
// the same twiddles, computed once.
#include <algorithm>

#include "fft/line_transform.h"
#include "sarnum/fft/fft_object.h"

void CFFTClass::SyntAlmaz(float* refRe, float* refIm, float* re, float* im, int n, int m) {
  if (!sarnum::is_transform_exponent(m)) {
    return;
  }
  const sarnum::Twiddles<double> twiddles(m);
  sarnum::ForwardLine{}(re, im, twiddles);
  const int count = std::min(n, 1 << m);
  for (int k = 0; k < count; ++k) {
    const float a = refRe[k];
    const float b = refIm[k];
    const float x = re[k];
    const float y = im[k];
    re[k] = y * b + a * x;
    im[k] = b * x - a * y;
  }
  sarnum::InverseLine{}(re, im, twiddles);
}
