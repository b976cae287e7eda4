#include <sarnum/sarnum.h>

#include <cmath>
#include <cstdio>
#include <vector>

int main() {
  const int exponent = 10;  // 2^10 = 1024 samples, in place, real and imaginary parts apart
  std::vector<double> re(1 << exponent), im(1 << exponent);
  for (std::size_t n = 0; n < re.size(); ++n) {
    re[n] = std::cos(2.0 * std::acos(-1.0) * 37.0 * static_cast<double>(n) / 1024.0);
  }
  fft(re.data(), im.data(), exponent);
  std::size_t peak = 0;
  for (std::size_t k = 1; k < re.size() / 2; ++k) {
    if (std::hypot(re[k], im[k]) > std::hypot(re[peak], im[peak])) {
      peak = k;
    }
  }
  std::printf("strongest at bin %zu, magnitude %.0f\n", peak, std::hypot(re[peak], im[peak]));
}
