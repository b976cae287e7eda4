// Circular shifts by their definition, and the distribution of the noise.
#include <gtest/gtest.h>
#include <sarnum/sarnum.h>

#include <climits>
#include <cmath>
#include <cstdlib>
#include <vector>

namespace {

TEST(ShiftData, MovesCircularlyAndStaysInside) {
  for (const int n : {0, 1, 2, 5, 8}) {
    for (const int shift : {INT_MIN, -9, -8, -5, -4, -1, 0, 1, 2, 3, 5, 8, 9, INT_MAX}) {
      const int done = std::abs(static_cast<double>(shift)) <= n ? shift : 0;
      std::vector<double> re(static_cast<std::size_t>(n)), im = re, expected = re;
      std::vector<COMPLEX_FLOAT32> samples(re.size());
      for (std::size_t i = 0; i < re.size(); ++i) {
        re[i] = static_cast<double>(i);
        im[i] = -re[i];
        samples[i] = {static_cast<float>(i), -static_cast<float>(i)};
        expected[(static_cast<std::size_t>(done + n) + i) % re.size()] = re[i];
      }
      ShiftData(re.data(), im.data(), n, shift);
      ShiftData(samples.data(), n, shift);
      EXPECT_EQ(re, expected) << n << " by " << shift;
      for (std::size_t i = 0; i < re.size(); ++i) {
        EXPECT_TRUE(im[i] == -expected[i] && samples[i].re == expected[i] && samples[i].im == im[i])
            << n << " by " << shift;
      }
    }
  }
}

TEST(NoiseNormal, HasTheMeanAndVarianceAskedFor) {
  std::srand(1);
  constexpr int n = 100000;
  double sum = 0, squares = 0, fourth_powers = 0;
  for (int i = 0; i < n; ++i) {
    const double x = (Noise_normal(3, 4) - 3) / 2;
    ASSERT_LT(std::abs(x), 7.75);
    sum += x;
    squares += x * x;
    fourth_powers += x * x * x * x;
  }
  EXPECT_NEAR(sum / n, 0, 0.02);
  EXPECT_NEAR(squares / n, 1, 0.02);
  EXPECT_NEAR(fourth_powers / n, 3 - 1.2 / 20, 0.08);  // of twenty uniform numbers
  EXPECT_EQ(Noise_normal(3, 0), 3);
  EXPECT_TRUE(std::isnan(Noise_normal(3, -1)));
}

}  // namespace
