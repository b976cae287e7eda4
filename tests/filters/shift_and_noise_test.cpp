// Circular shifts by their definition, and the distribution of the noise.
#include <gtest/gtest.h>
#include <sarnum/sarnum.h>

#include <climits>
#include <cmath>
#include <cstdlib>
#include <numeric>
#include <vector>

namespace {

TEST(ShiftData, MovesCircularlyAndStaysInside) {
  for (const int n : {0, 1, 2, 5, 8}) {
    for (const int shift : {INT_MIN, -9, -8, -5, -4, -1, 0, 1, 2, 3, 5, 8, 9, INT_MAX}) {
      const auto size = static_cast<std::size_t>(n);
      std::vector<double> re(size);
      std::iota(re.begin(), re.end(), 1.0);
      std::vector<double> im(re.rbegin(), re.rend());
      std::vector<COMPLEX_FLOAT32> samples(size);
      std::vector<double> expected_re = re, expected_im = im;
      const bool is_done = std::abs(static_cast<double>(shift)) <= n;
      for (std::size_t i = 0; i < size; ++i) {
        samples[i] = {static_cast<float>(re[i]), static_cast<float>(im[i])};
        const std::size_t to = is_done ? static_cast<std::size_t>(shift + 2 * n) + i : i;
        expected_re[to % size] = re[i];
        expected_im[to % size] = im[i];
      }
      ShiftData(re.data(), im.data(), n, shift);
      ShiftData(samples.data(), n, shift);
      EXPECT_EQ(re, expected_re) << n << " by " << shift;
      EXPECT_EQ(im, expected_im) << n << " by " << shift;
      for (std::size_t i = 0; i < size; ++i) {
        EXPECT_TRUE(samples[i].re == re[i] && samples[i].im == im[i]) << n << " by " << shift;
      }
    }
  }
  ShiftData(nullptr, nullptr, INT_MIN, INT_MIN);
  ShiftData(static_cast<COMPLEX_FLOAT32*>(nullptr), -3, 1);
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
