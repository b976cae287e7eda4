// One-dimensional transforms: equal to the plain radix-2 definition element for element, accurate
// against a discrete Fourier transform, and bound by the laws of the transform.
#include <gtest/gtest.h>
#include <sarnum/sarnum.h>

#include <cmath>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "plain_transform.h"

namespace {

template <class Real>
struct Form {
  std::string name;
  bool inverse;
  bool rounds_to_float;
  std::function<void(Real*, Real*, int)> transform;
  std::function<void(Real*, Real*, int)> definition;
};

using DoubleForm = Form<double>;
using FloatForm = Form<float>;

std::vector<DoubleForm> double_forms() {
  const auto exact = [](bool inverse) {
    return [inverse](double* re, double* im, int m) {
      oracle::radix2<double, double>(re, im, m, inverse);
    };
  };
  const auto rounding = [](double* re, double* im, int m) {
    oracle::radix2<double, float>(re, im, m, true);
  };
  return {
      {"fft", false, false, [](double* re, double* im, int m) { fft(re, im, m); }, exact(false)},
      {"ifft", true, true, [](double* re, double* im, int m) { ifft(re, im, m); }, rounding},
      {"member_fft", false, false,
       [](double* re, double* im, int m) { CFFTClass().fft(re, im, m); }, exact(false)},
      {"member_ifft", true, true,
       [](double* re, double* im, int m) { CFFTClass().ifft(re, im, m); }, rounding},
  };
}

std::vector<FloatForm> float_forms() {
  const auto definition = [](bool inverse) {
    return [inverse](float* re, float* im, int m) {
      oracle::radix2<double, float>(re, im, m, inverse);
    };
  };
  return {
      {"member_fft", false, true, [](float* re, float* im, int m) { CFFTClass().fft(re, im, m); },
       definition(false)},
      {"member_ifft", true, true, [](float* re, float* im, int m) { CFFTClass().ifft(re, im, m); },
       definition(true)},
  };
}

template <class Real>
void expect_equal(const std::vector<Real>& actual, const std::vector<Real>& expected) {
  ASSERT_EQ(actual.size(), expected.size());
  for (std::size_t i = 0; i < actual.size(); ++i) {
    if (std::isnan(expected[i]) ? !std::isnan(actual[i]) : actual[i] != expected[i]) {
      FAIL() << "element " << i << " is " << actual[i] << ", expected " << expected[i];
    }
  }
}

template <class Real>
struct Line {
  std::vector<Real> re;
  std::vector<Real> im;
};

/// Lines that find different faults: noise, an impulse off the origin, a tone, values near the
/// ends of the range, and an infinite and a missing sample (nothing may be skipped because a
/// twiddle is one).
template <class Real>
std::vector<Line<Real>> test_lines(int m) {
  const std::size_t n = std::size_t{1} << m;
  const auto seed = static_cast<unsigned>(m);
  std::vector<Line<Real>> lines;
  lines.push_back(
      {oracle::random_values<Real>(n, seed), oracle::random_values<Real>(n, seed + 99)});
  Line<Real> line{std::vector<Real>(n), std::vector<Real>(n)};
  line.re[n / 3] = Real{1};
  lines.push_back(line);
  for (std::size_t i = 0; i < n; ++i) {
    line.re[i] = static_cast<Real>(std::cos(0.3 * static_cast<double>(i)));
    line.im[i] = static_cast<Real>(std::sin(0.3 * static_cast<double>(i)));
  }
  lines.push_back(line);
  lines.push_back(lines[0]);
  for (Real& value : lines.back().re) {
    value *= std::numeric_limits<float>::max() / Real{64};
  }
  lines.push_back(lines[0]);
  for (Real& value : lines.back().im) {
    value *= std::numeric_limits<float>::denorm_min() * Real{8};
  }
  lines.push_back(lines[0]);
  lines.back().re[n / 2] = std::numeric_limits<Real>::infinity();
  lines.back().im[n - 1] = std::numeric_limits<Real>::quiet_NaN();
  return lines;
}

template <class Real>
void expect_equal_to_definition(const std::vector<Form<Real>>& forms) {
  for (const Form<Real>& form : forms) {
    for (int m = 0; m <= 14; ++m) {
      for (const Line<Real>& line : test_lines<Real>(m)) {
        SCOPED_TRACE(form.name + " m=" + std::to_string(m));
        Line<Real> actual = line;
        Line<Real> expected = line;
        form.transform(actual.re.data(), actual.im.data(), m);
        form.definition(expected.re.data(), expected.im.data(), m);
        expect_equal(actual.re, expected.re);
        expect_equal(actual.im, expected.im);
      }
    }
  }
}

TEST(Transforms, EqualThePlainDefinition) {
  expect_equal_to_definition(double_forms());
  expect_equal_to_definition(float_forms());
}

/// ‖error‖ / ‖spectrum‖ stays below u·√m, where u is half a unit in the last place of what the
/// form rounds to. Forms in full double precision get half as much again: the angle of a twiddle is
/// itself rounded to double, which costs as much as the butterflies do.
template <class Real>
void expect_accurate(const std::vector<Form<Real>>& forms) {
  for (const Form<Real>& form : forms) {
    const long double u = form.rounds_to_float ? std::ldexp(1.0L, -24) : std::ldexp(1.5L, -53);
    for (const int m : {1, 2, 3, 5, 8, 11}) {
      SCOPED_TRACE(form.name + " m=" + std::to_string(m));
      const std::size_t n = std::size_t{1} << m;
      auto re = oracle::random_values<Real>(n, 5);
      auto im = oracle::random_values<Real>(n, 6);
      const auto expected = oracle::dft(re, im, form.inverse);
      form.transform(re.data(), im.data(), m);
      EXPECT_LE(oracle::relative_error(re, im, expected), u * std::sqrt(std::max(2.0L, 1.0L * m)));
    }
  }
}

TEST(Transforms, AreAccurate) {
  expect_accurate(double_forms());
  expect_accurate(float_forms());
}

TEST(Transforms, OfAnImpulseAtTheOriginAreAllOnes) {
  std::vector<float> re(256);
  std::vector<float> im(256);
  re[0] = 1.0F;
  CFFTClass().fft(re.data(), im.data(), 8);
  EXPECT_EQ(re, std::vector<float>(256, 1.0F));
  EXPECT_EQ(im, std::vector<float>(256, 0.0F));
}

TEST(Transforms, ThereAndBackGiveTheInputTimesTheLength) {
  constexpr int m = 9;
  constexpr double n = 512;
  const auto re = oracle::random_values<double>(512, 1);
  const auto im = oracle::random_values<double>(512, 2);
  const auto check = [&](auto&& forward, auto&& inverse) {
    auto x = re;
    auto y = im;
    forward(x.data(), y.data(), m);
    inverse(x.data(), y.data(), m);
    for (std::size_t i = 0; i < x.size(); ++i) {
      EXPECT_NEAR(x[i] / n, re[i], 2e-6);
      EXPECT_NEAR(y[i] / n, im[i], 2e-6);
      EXPECT_EQ(x[i], static_cast<double>(static_cast<float>(x[i])));
    }
  };
  const auto forms = double_forms();
  check(forms[0].transform, forms[1].transform);
  check(forms[2].transform, forms[3].transform);
}

TEST(Transforms, ExponentsOutsideTheContractLeaveTheDataAlone) {
  for (const int m : {-1, 31, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
    double re = 1.5;
    double im = -2.5;
    for (const DoubleForm& form : double_forms()) {
      form.transform(&re, &im, m);
    }
    EXPECT_EQ(re, 1.5);
    EXPECT_EQ(im, -2.5);
  }
}

TEST(CeilPowerOfTwo, FollowsTheLogarithmFormula) {
  CFFTClass transform;
  const std::vector<std::pair<int, int>> exact = {
      {1, 0}, {2, 1}, {3, 2}, {1000, 10}, {1024, 10}, {1025, 11}, {(1 << 30) - 1, 30}};
  for (const auto& [n, m] : exact) {
    EXPECT_EQ(transform.CeilPowerOfTwo(n), m) << n;
  }
  for (int k = 0; k <= 30; ++k) {
    const double quotient = std::log(std::ldexp(1.0, k)) / std::log(2.0);
    EXPECT_EQ(transform.CeilPowerOfTwo(1 << k), static_cast<int>(std::ceil(quotient))) << k;
  }
  EXPECT_EQ(transform.CeilPowerOfTwo(1 << 29), 30);
  for (const int n : {0, -1, std::numeric_limits<int>::min()}) {
    EXPECT_EQ(transform.CeilPowerOfTwo(n), std::numeric_limits<int>::min());
  }
}

TEST(CFFTClass, CanBeDeletedThroughABasePointerAndCopied) {
  struct Derived : CFFTClass {
    explicit Derived(bool& gone) : gone_(gone) {}
    ~Derived() override { gone_ = true; }
    bool& gone_;
  };
  bool gone = false;
  CFFTClass* const object = new Derived(gone);
  CFFTClass copy(*object);
  EXPECT_EQ(&(copy = *object), &copy);
  delete object;
  EXPECT_TRUE(gone);
}

}  // namespace
