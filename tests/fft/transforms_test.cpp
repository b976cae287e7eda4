// One-dimensional transforms: equal to the plain radix-2 definition element for element, accurate
// against a discrete Fourier transform, and harmless outside their contract.
#include <gtest/gtest.h>
#include <sarnum/sarnum.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string_view>
#include <utility>
#include <vector>

#include "transform_forms.h"

namespace {

constexpr int outside[] = {-1, 31, std::numeric_limits<int>::min(),
                           std::numeric_limits<int>::max()};

template <class Real>
struct Line {
  std::vector<Real> re;
  std::vector<Real> im;
};

template <class Real>
Line<Real> random_line(std::size_t n, unsigned seed) {
  return {oracle::random_values<Real>(n, seed), oracle::random_values<Real>(n, seed + 1000)};
}

template <class Real>
void expect_equal(const Line<Real>& actual, const Line<Real>& expected) {
  for (const auto part : {&Line<Real>::re, &Line<Real>::im}) {
    const auto& a = actual.*part;
    const auto& e = expected.*part;
    for (std::size_t i = 0; i < e.size(); ++i) {
      ASSERT_TRUE(a[i] == e[i] || (std::isnan(a[i]) && std::isnan(e[i])))
          << "element " << i << " is " << a[i] << ", expected " << e[i];
    }
  }
}

/// Noise of common, huge and subnormal size, and with an infinite and a missing sample: nothing may
/// be left out because a twiddle is one.
template <class Real>
std::vector<Line<Real>> test_lines(int m) {
  std::vector<Line<Real>> lines;
  for (const Real scale : {Real{1}, std::ldexp(Real{1}, 120), std::ldexp(Real{1}, -145)}) {
    lines.push_back(random_line<Real>(std::size_t{1} << m, static_cast<unsigned>(m)));
    for (std::size_t i = 0; i < lines.back().re.size(); ++i) {
      lines.back().re[i] *= scale;
      lines.back().im[i] *= scale;
    }
  }
  lines.push_back(lines[0]);
  lines.back().re.front() = std::numeric_limits<Real>::infinity();
  lines.back().im.back() = std::numeric_limits<Real>::quiet_NaN();
  return lines;
}

template <class Real>
void check_values() {
  for (int m = 0; m <= 14; ++m) {
    ASSERT_EQ(init_ibitr(m), 0);
    const auto lines = test_lines<Real>(m);
    for (const auto& form : forms::all<Real>()) {
      for (const Line<Real>& line : lines) {
        SCOPED_TRACE(testing::Message() << form.name << " m=" << m);
        Line<Real> actual = line;
        Line<Real> expected = line;
        form.transform(actual.re.data(), actual.im.data(), m);
        form.define(expected.re.data(), expected.im.data(), m);
        expect_equal(actual, expected);
      }
    }
  }
}

TEST(Transforms, EqualThePlainDefinition) {
  check_values<double>();
  check_values<float>();
}

template <class Real>
void check_accuracy() {
  for (const int m : {2, 3, 5, 8, 11}) {
    ASSERT_EQ(init_ibitr(m), 0);
    const std::size_t n = std::size_t{1} << m;
    for (const auto& form : forms::all<Real>()) {
      SCOPED_TRACE(testing::Message() << form.name << " m=" << m);
      Line<Real> line = random_line<Real>(n, 5);
      auto expected = oracle::dft(line.re, line.im, form.inverse);
      if (form.centred) {
        std::rotate(expected.begin(), expected.begin() + static_cast<long>(n / 2), expected.end());
      }
      for (auto& value : expected) {
        value /= form.divides ? static_cast<long double>(n) : 1.0L;
      }
      form.transform(line.re.data(), line.im.data(), m);
      EXPECT_LE(oracle::relative_error(line.re, line.im, expected),
                form.arithmetic.accuracy * std::sqrt(m));
    }
  }
}

TEST(Transforms, AreAccurate) {
  check_accuracy<double>();
  check_accuracy<float>();
}

TEST(Transforms, DoubleInversesThatRoundLeaveValuesOfSinglePrecision) {
  for (const bool member : {false, true}) {
    Line<double> line = random_line<double>(512, 1);
    member ? CFFTClass().ifft(line.re.data(), line.im.data(), 9)
           : ifft(line.re.data(), line.im.data(), 9);
    for (std::size_t i = 0; i < 512; ++i) {
      volatile float re = static_cast<float>(line.re[i]);  // the compiler may not see through
      volatile float im = static_cast<float>(line.im[i]);
      EXPECT_EQ(line.re[i], re);
      EXPECT_EQ(line.im[i], im);
    }
  }
}

template <class Real>
void expect_all_forms_do_nothing(int m) {
  const Line<Real> line = random_line<Real>(2, 3);
  Line<Real> touched = line;
  for (const auto& form : forms::all<Real>()) {
    // Interleaved forms are given the pair as their array below.
    if (std::string_view(form.name).find("interleaved") == std::string_view::npos) {
      form.transform(touched.re.data(), touched.im.data(), m);
    }
  }
  expect_equal(touched, line);
}

TEST(Transforms, DoNothingForAnExponentOutsideTheContract) {
  float pair[] = {1.5F, -2.5F};
  for (const int m : outside) {
    expect_all_forms_do_nothing<double>(m);
    expect_all_forms_do_nothing<float>(m);
    fft(pair, m);
    ifft(pair, m);
    CFFTClass().SyntAlmaz(pair, pair + 1, pair, pair + 1, 1, m);
    EXPECT_EQ(pair[0], 1.5F);
    EXPECT_EQ(pair[1], -2.5F);
  }
}

template <class Real>
void expect_table_forms_do_nothing(int m) {
  const Line<Real> line = random_line<Real>(8, 4);
  Line<Real> touched = line;
  fft_Fast(touched.re.data(), touched.im.data(), m);
  ifft_Fast(touched.re.data(), touched.im.data(), m);
  if constexpr (sizeof(Real) == sizeof(float)) {
    fft_Fast(touched.re.data(), m);
    ifft_Fast(touched.re.data(), m);
  }
  expect_equal(touched, line);
}

TEST(TableDriven, DoNothingWithoutTheTablesOfTheirLength) {
  for (const bool released : {false, true}) {
    init_ibitr(10);
    init_ibitr(2);
    if (released) {
      delete_ibitr();
    }
    for (const int m : {3, 1, 0, -1, 31}) {
      expect_table_forms_do_nothing<double>(m);
      expect_table_forms_do_nothing<float>(m);
    }
  }
  expect_table_forms_do_nothing<double>(2);
}

// The line as the definition has it, in float; n samples of the spectrum are multiplied.
TEST(SyntAlmaz, MultipliesTheConjugateSpectrumByTheReference) {
  constexpr int m = 7;
  constexpr int length = 128;
  Line<float> reference = random_line<float>(length, 1);
  const Line<float> kept = reference;
  for (const int n : {length, 50, 1, 0, -3, length + 1000}) {
    SCOPED_TRACE(n);
    Line<float> actual = random_line<float>(length, 3);
    Line<float> expected = actual;
    CFFTClass().SyntAlmaz(reference.re.data(), reference.im.data(), actual.re.data(),
                          actual.im.data(), n, m);
    oracle::radix2<double, double, float>(expected.re.data(), expected.im.data(), m, false);
    for (std::size_t k = 0; k < length && static_cast<int>(k) < n; ++k) {
      const float x = expected.re[k];
      const float y = expected.im[k];
      expected.re[k] = y * kept.im[k] + kept.re[k] * x;
      expected.im[k] = kept.im[k] * x - kept.re[k] * y;
    }
    oracle::radix2<double, double, float>(expected.re.data(), expected.im.data(), m, true);
    expect_equal(actual, expected);
    expect_equal(reference, kept);
  }
}

TEST(CeilPowerOfTwo, FollowsTheLogarithmFormula) {
  CFFTClass transform;
  for (const auto& [n, m] : {std::pair{1, 0},
                             {2, 1},
                             {3, 2},
                             {1000, 10},
                             {1024, 10},
                             {1025, 11},
                             {1 << 29, 30},
                             {(1 << 30) - 1, 30},
                             {2147483647, 31}}) {
    EXPECT_EQ(transform.CeilPowerOfTwo(n), m) << n;
  }
  for (const int n : {0, -1, std::numeric_limits<int>::min()}) {
    EXPECT_EQ(transform.CeilPowerOfTwo(n), std::numeric_limits<int>::min());
  }
}

TEST(CFFTClass, CanBeDeletedThroughABasePointer) {
  struct Derived : CFFTClass {
    explicit Derived(bool& gone) : gone_(gone) {}
    ~Derived() override { gone_ = true; }
    bool& gone_;
  };
  bool gone = false;
  const CFFTClass* const object = new Derived(gone);
  delete object;
  EXPECT_TRUE(gone);
}

}  // namespace
