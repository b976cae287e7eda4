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

/// How far a form may be from the exact transform, in units of half an ulp of `precision` bits
/// times √m.
struct Accuracy {
  int precision;
  double factor;
};

constexpr Accuracy rounding_to_float{24, 1.0};
// The angle of a twiddle is itself rounded, which costs as much as the butterflies do.
constexpr Accuracy all_in_float{24, 2.0};
constexpr Accuracy all_in_double{53, 1.5};

template <class Real>
struct Form {
  std::string name;
  bool inverse;
  bool divides;
  Accuracy accuracy;
  std::function<void(Real*, Real*, int)> transform;
  std::function<void(Real*, Real*, int)> definition;
};

using DoubleForm = Form<double>;
using FloatForm = Form<float>;

/// The definition of a form as a function of re, im and m.
template <class Real, class Angle, class Computed, class Rounded>
auto definition(bool inverse, bool divides = false) {
  return [=](Real* re, Real* im, int m) {
    oracle::radix2<Angle, Computed, Rounded>(re, im, m, inverse);
    if (divides) {
      oracle::divide_by_length(re, im, 1 << m);
    }
  };
}

std::vector<DoubleForm> double_forms() {
  const auto exact = definition<double, double, double, double>(false);
  const auto rounding = definition<double, double, double, float>(true);
  const auto scaled = definition<double, double, double, double>(true, true);
  return {
      {"fft", false, false, all_in_double, [](auto re, auto im, int m) { fft(re, im, m); }, exact},
      {"ifft", true, false, rounding_to_float, [](auto re, auto im, int m) { ifft(re, im, m); },
       rounding},
      {"member_fft", false, false, all_in_double,
       [](auto re, auto im, int m) { CFFTClass().fft(re, im, m); }, exact},
      {"member_ifft", true, false, rounding_to_float,
       [](auto re, auto im, int m) { CFFTClass().ifft(re, im, m); }, rounding},
      {"member_fft_new", false, false, all_in_double,
       [](auto re, auto im, int m) { CFFTClass().fft_new(re, im, m, 0); }, exact},
      {"fft_Fast", false, false, all_in_double,
       [](auto re, auto im, int m) {
         init_ibitr(m);
         fft_Fast(re, im, m);
       },
       exact},
      {"ifft_Fast", true, true, all_in_double,
       [](auto re, auto im, int m) {
         init_ibitr(m);
         ifft_Fast(re, im, m);
       },
       scaled},
  };
}

/// A transform of an interleaved array as one of a split pair.
template <class Transform>
auto interleaved(Transform transform) {
  return [transform](float* re, float* im, int m) {
    const std::size_t n = std::size_t{1} << m;
    std::vector<float> data(2 * n);
    for (std::size_t i = 0; i < n; ++i) {
      data[2 * i] = re[i];
      data[2 * i + 1] = im[i];
    }
    transform(data.data(), m);
    for (std::size_t i = 0; i < n; ++i) {
      re[i] = data[2 * i];
      im[i] = data[2 * i + 1];
    }
  };
}

std::vector<FloatForm> float_forms() {
  const auto member = [](bool inverse) {
    return definition<float, double, double, float>(inverse);
  };
  const auto free = [](bool inverse) {
    return definition<float, float, float, float>(inverse, inverse);
  };
  const auto fast = [](bool inverse) {
    return definition<float, double, float, float>(inverse, inverse);
  };
  return {
      {"member_fft", false, false, rounding_to_float,
       [](auto re, auto im, int m) { CFFTClass().fft(re, im, m); }, member(false)},
      {"member_ifft", true, false, rounding_to_float,
       [](auto re, auto im, int m) { CFFTClass().ifft(re, im, m); }, member(true)},
      {"member_fft_new", false, false, rounding_to_float,
       [](auto re, auto im, int m) { CFFTClass().fft_new(re, im, m, -1); }, member(false)},
      {"fft", false, false, all_in_float, [](auto re, auto im, int m) { fft(re, im, m); },
       free(false)},
      {"ifft", true, true, all_in_float, [](auto re, auto im, int m) { ifft(re, im, m); },
       free(true)},
      {"interleaved_fft", false, false, all_in_float,
       interleaved([](float* data, int m) { fft(data, m); }), free(false)},
      {"interleaved_ifft", true, true, all_in_float,
       interleaved([](float* data, int m) { ifft(data, m); }), free(true)},
      {"fft_Fast", false, false, rounding_to_float,
       [](auto re, auto im, int m) {
         init_ibitr(m);
         fft_Fast(re, im, m);
       },
       fast(false)},
      {"ifft_Fast", true, true, rounding_to_float,
       [](auto re, auto im, int m) {
         init_ibitr(m);
         ifft_Fast(re, im, m);
       },
       fast(true)},
      {"interleaved_fft_Fast", false, false, rounding_to_float, interleaved([](float* data, int m) {
         init_ibitr(m);
         fft_Fast(data, m);
       }),
       fast(false)},
      {"interleaved_ifft_Fast", true, true, rounding_to_float, interleaved([](float* data, int m) {
         init_ibitr(m);
         ifft_Fast(data, m);
       }),
       fast(true)},
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

template <class Real>
void expect_accurate(const std::vector<Form<Real>>& forms) {
  for (const Form<Real>& form : forms) {
    const double unit = std::ldexp(form.accuracy.factor, -form.accuracy.precision);
    for (const int m : {1, 2, 3, 5, 8, 11}) {
      SCOPED_TRACE(form.name + " m=" + std::to_string(m));
      const std::size_t n = std::size_t{1} << m;
      auto re = oracle::random_values<Real>(n, 5);
      auto im = oracle::random_values<Real>(n, 6);
      auto expected = oracle::dft(re, im, form.inverse);
      if (form.divides) {
        for (auto& value : expected) {
          value /= static_cast<long double>(n);
        }
      }
      form.transform(re.data(), im.data(), m);
      EXPECT_LE(oracle::relative_error(re, im, expected), unit * std::sqrt(std::max(2.0, 1.0 * m)));
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

TEST(Transforms, ReferenceInverseLeavesValuesOfSinglePrecision) {
  auto re = oracle::random_values<double>(512, 1);
  auto im = oracle::random_values<double>(512, 2);
  ifft(re.data(), im.data(), 9);
  for (std::size_t i = 0; i < re.size(); ++i) {
    EXPECT_EQ(re[i], static_cast<double>(static_cast<float>(re[i])));
    EXPECT_EQ(im[i], static_cast<double>(static_cast<float>(im[i])));
  }
}

TEST(Transforms, ExponentsOutsideTheContractLeaveTheDataAlone) {
  for (const int m : {-1, 31, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
    double re = 1.5;
    double im = -2.5;
    float float_re = 1.5F;
    float float_im = -2.5F;
    for (const DoubleForm& form : double_forms()) {
      form.transform(&re, &im, m);
    }
    fft(&float_re, &float_im, m);
    ifft(&float_re, &float_im, m);
    fft(&float_re, m);
    ifft(&float_re, m);
    CFFTClass().SyntAlmaz(&float_re, &float_im, &float_re, &float_im, 1, m);
    EXPECT_EQ(re, 1.5);
    EXPECT_EQ(im, -2.5);
    EXPECT_EQ(float_re, 1.5F);
    EXPECT_EQ(float_im, -2.5F);
  }
}

TEST(TableDriven, TouchNothingWithoutTheTablesOfTheirLength) {
  const auto expect_untouched = [](int m) {
    double re[8] = {1, 2, 3, 4, 5, 6, 7, 8};
    double im[8] = {};
    float data[16] = {1, 2, 3, 4, 5, 6, 7, 8};
    fft_Fast(re, im, m);
    ifft_Fast(re, im, m);
    fft_Fast(data, data + 8, m);
    ifft_Fast(data, data + 8, m);
    fft_Fast(data, m);
    ifft_Fast(data, m);
    for (int i = 0; i < 8; ++i) {
      EXPECT_EQ(re[i], i + 1.0);
      EXPECT_EQ(im[i], 0.0);
      EXPECT_EQ(data[i], static_cast<float>(i + 1));
      EXPECT_EQ(data[8 + i], 0.0F);
    }
  };
  init_ibitr(10);
  init_ibitr(2);
  for (const int m : {3, 0, -1, 31}) {
    expect_untouched(m);
  }
  init_ibitr(3);
  delete_ibitr();
  for (const int m : {3, 0, -1}) {
    expect_untouched(m);
  }
}

template <class Real>
void check_centred() {
  for (int m = 0; m <= 10; ++m) {
    for (const Line<Real>& line : test_lines<Real>(m)) {
      SCOPED_TRACE("m=" + std::to_string(m));
      Line<Real> actual = line;
      Line<Real> expected = line;
      CFFTClass().fft_new(actual.re.data(), actual.im.data(), m, 1);
      oracle::alternate_signs(expected.re.data(), expected.im.data(), 1 << m);
      oracle::radix2<double, double, Real>(expected.re.data(), expected.im.data(), m, false);
      expect_equal(actual.re, expected.re);
      expect_equal(actual.im, expected.im);
    }
  }
  std::vector<Real> re(64, Real{3});
  std::vector<Real> im(64);
  CFFTClass().fft_new(re.data(), im.data(), 6, 1);
  for (std::size_t k = 0; k < re.size(); ++k) {
    EXPECT_EQ(re[k], k == 32 ? Real{192} : Real{0});
    EXPECT_EQ(im[k], Real{0});
  }
}

TEST(Centred, MultiplyByAlternatingSignsFirst) {
  check_centred<float>();
  check_centred<double>();
}

// The line as the definition has it, in float; n samples of the spectrum are multiplied.
TEST(SyntAlmaz, MultipliesTheConjugateSpectrumByTheReference) {
  constexpr int m = 7;
  constexpr int length = 128;
  const auto ref_re = oracle::random_values<float>(length, 1);
  const auto ref_im = oracle::random_values<float>(length, 2);
  for (const int n : {length, 50, 1, 0, -3, length + 1000}) {
    SCOPED_TRACE(n);
    auto h_re = ref_re;
    auto h_im = ref_im;
    Line<float> actual{oracle::random_values<float>(length, 3),
                       oracle::random_values<float>(length, 4)};
    Line<float> expected = actual;
    CFFTClass().SyntAlmaz(h_re.data(), h_im.data(), actual.re.data(), actual.im.data(), n, m);
    oracle::radix2<double, double, float>(expected.re.data(), expected.im.data(), m, false);
    for (std::size_t k = 0; k < length && static_cast<int>(k) < n; ++k) {
      const float x = expected.re[k];
      const float y = expected.im[k];
      expected.re[k] = y * ref_im[k] + ref_re[k] * x;
      expected.im[k] = ref_im[k] * x - ref_re[k] * y;
    }
    oracle::radix2<double, double, float>(expected.re.data(), expected.im.data(), m, true);
    expect_equal(actual.re, expected.re);
    expect_equal(actual.im, expected.im);
    EXPECT_EQ(h_re, ref_re);
    EXPECT_EQ(h_im, ref_im);
  }
}

TEST(SyntAlmaz, WithAUnitReferenceConjugatesAndReversesTheLine) {
  constexpr std::size_t length = 64;
  std::vector<float> ones(length, 1.0F);
  std::vector<float> zeros(length, 0.0F);
  const Line<float> line{oracle::random_values<float>(length, 3),
                         oracle::random_values<float>(length, 4)};
  Line<float> result = line;
  CFFTClass().SyntAlmaz(ones.data(), zeros.data(), result.re.data(), result.im.data(), length, 6);
  for (std::size_t j = 0; j < length; ++j) {
    const std::size_t source = (length - j) % length;
    EXPECT_NEAR(result.re[j] / length, line.re[source], 2e-6);
    EXPECT_NEAR(result.im[j] / length, -line.im[source], 2e-6);
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
