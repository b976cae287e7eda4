// One-dimensional transforms: equal to the plain radix-2 definition element for element, and
// harmless outside their contract.
#include <gtest/gtest.h>
#include <sarnum/sarnum.h>

#include <cmath>
#include <limits>
#include <vector>

#include "same_value.h"
#include "transform_forms.h"

namespace {

constexpr int least = std::numeric_limits<int>::min(), most = std::numeric_limits<int>::max();

/// Noise of common, huge and subnormal size, and with an infinite and a missing sample: nothing may
/// be left out because a twiddle is one.
template <class Real>
std::vector<Real> test_line(int kind, int m) {
  auto line = oracle::random_values<Real>(std::size_t{2} << m, static_cast<unsigned>(m));
  for (Real& value : line) {
    value *= std::ldexp(Real{1}, kind == 1 ? 120 : kind == 2 ? -145 : 0);
  }
  if (kind == 3) {
    line.front() = std::numeric_limits<Real>::infinity();
    line.back() = std::numeric_limits<Real>::quiet_NaN();
  }
  return line;
}

template <class Real>
void check_forms() {
  for (int m = 0; m <= 14; ++m) {
    ASSERT_EQ(init_ibitr(m), 0);
    const std::size_t n = std::size_t{1} << m;
    for (const auto& form : forms::all<Real>()) {
      for (const int kind : {0, 1, 2, 3}) {
        SCOPED_TRACE(testing::Message() << form.name << " m=" << m << " kind " << kind);
        const auto line = test_line<Real>(kind, m);
        auto actual = line, expected = line;
        form.transform(actual.data(), actual.data() + n, m);
        form.define(expected.data(), expected.data() + n, m);
        ASSERT_TRUE(same_values(actual, expected));
      }
    }
  }
}

TEST(Transforms, EqualThePlainDefinition) {
  check_forms<double>();
  check_forms<float>();
}

// The line as the definition has it, in float; n samples of the spectrum are multiplied.
TEST(SyntAlmaz, MultipliesTheConjugateSpectrumByTheReference) {
  constexpr int m = 7, length = 128;
  const auto kept = oracle::random_values<float>(2 * length, 1);
  for (const int n : {length, 50, 1, 0, -3, length + 1000}) {
    auto reference = kept, actual = oracle::random_values<float>(2 * length, 3), expected = actual;
    CFFTClass().SyntAlmaz(reference.data(), reference.data() + length, actual.data(),
                          actual.data() + length, n, m);
    float *const re = expected.data(), *const im = re + length;
    oracle::radix2<double, double, float>(re, im, m, false);
    for (std::size_t k = 0; k < length && static_cast<int>(k) < n; ++k) {
      const float x = re[k], y = im[k];
      re[k] = y * kept[length + k] + kept[k] * x;
      im[k] = kept[length + k] * x - kept[k] * y;
    }
    oracle::radix2<double, double, float>(re, im, m, true);
    EXPECT_TRUE(same_values(actual, expected)) << n;
    EXPECT_EQ(reference, kept) << n;
  }
}

TEST(CFFTClass, CeilPowerOfTwoFollowsTheLogarithmFormula) {
  const int cases[][2] = {{1, 0},     {2, 1},     {3, 2},        {1000, 10},
                          {1024, 10}, {1025, 11}, {1 << 29, 30}, {(1 << 30) - 1, 30},
                          {most, 31}, {0, least}, {-1, least},   {least, least}};
  for (const auto& [n, m] : cases) {
    EXPECT_EQ(CFFTClass().CeilPowerOfTwo(n), m) << n;
  }
}

}  // namespace
