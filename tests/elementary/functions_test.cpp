// Functions of numbers against MPFR: values, the bounds that their fast paths state, and what the
// exact path gives where they would have decided.
#include "elementary/functions.h"

#include <gtest/gtest.h>
#include <mpfr.h>

#include <bit>
#include <cfenv>
#include <cmath>
#include <functional>
#include <limits>
#include <random>
#include <vector>

#include "elementary/approximation.h"
#include "elementary/exact.h"
#include "fft/exponent.h"
#include "same_value.h"

namespace sarnum {
namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

/// A number of MPFR.
class Number {
 public:
  explicit Number(mpfr_prec_t bits, double x = 0.0) {
    mpfr_init2(value, bits);
    mpfr_set_d(value, x, MPFR_RNDN);
  }
  Number(const Number&) = delete;
  Number& operator=(const Number&) = delete;
  ~Number() { mpfr_clear(value); }

  mpfr_t value;
};

/// The nearest double to what compute(number) leaves there, which returns MPFR's ternary value.
double nearest_double(const std::function<int(mpfr_ptr)>& compute) {
  mpfr_set_emin(-1073);
  mpfr_set_emax(1024);
  Number result(53);
  const int rounded = mpfr_check_range(result.value, compute(result.value), MPFR_RNDN);
  mpfr_subnormalize(result.value, rounded, MPFR_RNDN);
  mpfr_set_emin(mpfr_get_emin_min());
  mpfr_set_emax(mpfr_get_emax_max());
  return mpfr_get_d(result.value, MPFR_RNDN);
}

/// The distance of an approximation from what compute(number) leaves there, over its bound.
double share_of_bound(const Approximation& approximation,
                      const std::function<int(mpfr_ptr)>& compute) {
  Number exact(300);
  compute(exact.value);
  mpfr_sub_d(exact.value, exact.value, approximation.hi, MPFR_RNDN);
  mpfr_sub_d(exact.value, exact.value, approximation.lo, MPFR_RNDN);
  return std::abs(mpfr_get_d(exact.value, MPFR_RNDN)) / approximation.error;
}

std::mt19937_64& generator() {
  static std::mt19937_64 bits(17);
  return bits;
}

/// All exponents of a range are alike to it.
double random_between(double least, double most) {
  std::uniform_real_distribution<double> exponent(std::log2(least), std::log2(most));
  const double near = std::exp2(exponent(generator()));
  return std::bit_cast<double>(std::bit_cast<std::uint64_t>(near) ^ (generator()() & 0xfffffff));
}

double with_random_sign(double x) {
  return generator()() % 2 == 0 ? x : -x;
}

using OfMpfr = int (*)(mpfr_ptr, mpfr_srcptr, mpfr_rnd_t);

struct Range {
  double least, most;
};

struct Function {
  const char* name;
  OfMpfr definition;
  OfMpfr inverse;
  double (*ours)(double);
  Approximation (*fast)(double);
  double (*exact)(double);
  bool has_negative_arguments;
  Range fast_range;
  std::vector<Range> ranges;
};

double exact_logarithm(double x) {
  return exact::logarithm(x, approximate_logarithm(x).rounded());
}

const Function functions[] = {
    {"sine",
     mpfr_sin,
     mpfr_asin,
     sine,
     [](double x) { return approximate_sine(x, 0); },
     [](double x) { return exact::sine(x, 0); },
     true,
     {0x1p-27, 3000.0},
     {{5e-324, 1e308}, {1e-9, 1.0}, {1.5707, 1.5709}, {7.0, 3000.0}}},
    {"cosine",
     mpfr_cos,
     mpfr_acos,
     cosine,
     [](double x) { return approximate_sine(x, 1); },
     [](double x) { return exact::sine(x, 1); },
     true,
     {0x1p-27, 3000.0},
     {{5e-324, 1e308}, {1e-9, 1.0}, {0.5, 7.0}, {7.0, 3000.0}}},
    {"exponential",
     mpfr_exp,
     mpfr_log,
     exponential,
     [](double x) {
       return approximate_exponential({x, 0.0});
     },
     exact::exponential,
     true,
     {0x1p-54, 640.0},
     {{5e-324, 1e308}, {1e-17, 1.0}, {1e-3, 640.0}, {640.0, 760.0}}},
    {"power_of_ten",
     mpfr_exp10,
     mpfr_log10,
     power_of_ten,
     approximate_power_of_ten,
     exact::power_of_ten,
     true,
     {0x1p-56, 277.0},
     {{1e-18, 1.0}, {1.0, 277.0}, {277.0, 340.0}}},
    {"logarithm",
     mpfr_log,
     mpfr_exp,
     logarithm,
     approximate_logarithm,
     exact_logarithm,
     false,
     {5e-324, 1e308},
     {{5e-324, 1e308}, {0.6, 1.7}, {0.99, 1.01}, {1 - 1e-6, 1 + 1e-6}}},
    {"decimal_logarithm",
     mpfr_log10,
     mpfr_exp10,
     decimal_logarithm,
     approximate_decimal_logarithm,
     [](double x) {
       return exact::decimal_logarithm(x, approximate_decimal_logarithm(x).rounded());
     },
     false,
     {5e-324, 1e308},
     {{5e-324, 1e308}, {0.6, 1.7}, {0.99, 1.01}}},
    {"arc_cosine",
     mpfr_acos,
     mpfr_cos,
     arc_cosine,
     approximate_arc_cosine,
     [](double x) { return exact::arc_cosine(x, approximate_arc_cosine(x).rounded()); },
     true,
     {0x1p-57, 1.0},
     {{1e-18, 1.0}, {0.1, 1.0}, {0.99, 1.0}}},
};

void PrintTo(const Function& function, std::ostream* out) {
  *out << function.name;
}

class EachFunction : public testing::TestWithParam<Function> {
 protected:
  void expect_nearest(double x) {
    const Function& f = GetParam();
    const auto definition = [&](mpfr_ptr result) {
      return f.definition(result, Number(53, x).value, MPFR_RNDN);
    };
    const double expected = nearest_double(definition);
    ASSERT_PRED2(same_value, f.ours(x), expected) << f.name << " of " << std::hexfloat << x;
    if (is_between(x, f.fast_range.least, f.fast_range.most)) {
      const Approximation fast = f.fast(x);
      ASSERT_LE(share_of_bound(fast, definition), 1.0) << f.name << " of " << std::hexfloat << x;
      undecided_ += fast.hi + (fast.lo - fast.error) != fast.hi + (fast.lo + fast.error);
      ASSERT_EQ(f.exact(x), expected) << f.name << " of " << std::hexfloat << x;
    }
  }

  /// An argument whose result is half-way between two doubles, as nearly as can be.
  double hard_argument(double x) const {
    Number result(54), argument(54, x);
    GetParam().definition(result.value, argument.value, MPFR_RNDN);
    if (mpfr_min_prec(result.value) < 54) {
      mpfr_nextabove(result.value);
    }
    GetParam().inverse(argument.value, result.value, MPFR_RNDN);
    const double hard = std::copysign(mpfr_get_d(argument.value, MPFR_RNDN), x);
    return std::isfinite(hard) && hard != 0.0 ? hard : x;
  }

  void expect_nearest_in_all_ranges(int count) {
    for (const Range& range : GetParam().ranges) {
      for (int i = 0; i < count && !HasFatalFailure(); ++i) {
        const double magnitude = random_between(range.least, range.most);
        const double x =
            GetParam().has_negative_arguments ? with_random_sign(magnitude) : magnitude;
        expect_nearest(x);
        expect_nearest(hard_argument(x));
      }
    }
  }

  int undecided_ = 0;
};

// Where a function hardly changes, hard arguments are for the exact path. Logarithms have no such.
TEST_P(EachFunction, GivesTheNearestDoubles) {
  expect_nearest_in_all_ranges(400);
  EXPECT_TRUE(undecided_ > 0 || !GetParam().has_negative_arguments);
}

class LongEachFunction : public EachFunction {};

TEST_P(LongEachFunction, GivesTheNearestDoubles) {
  expect_nearest_in_all_ranges(100'000);
}

const auto name_of = [](const auto& tested) { return std::string(tested.param.name); };
INSTANTIATE_TEST_SUITE_P(, EachFunction, testing::ValuesIn(functions), name_of);
INSTANTIATE_TEST_SUITE_P(, LongEachFunction, testing::ValuesIn(functions), name_of);

struct Result {
  double actual, expected;
};

// Annex F of the C standard; and arguments at which a function's range ends, or is nearest to what
// decides its rounding: 0x1.921fb54442d18p0 is the double next to π/2, 6381956970095103·2^797 the
// one next to any multiple, and 10^23 is half-way between two doubles.
TEST(Functions, HaveTheStandardsSpecialValues) {
  constexpr double pi = 3.141592653589793;
  constexpr double least = 5e-324;
  constexpr double largest = std::numeric_limits<double>::max();
  const std::vector<Result> results{{sine(0.0), 0.0},
                                    {sine(-0.0), -0.0},
                                    {sine(infinity), nan},
                                    {sine(nan), nan},
                                    {sine(-least), -least},
                                    {sine(pi), 0x1.1a62633145c07p-53},
                                    {cosine(-0.0), 1.0},
                                    {cosine(-infinity), nan},
                                    {cosine(nan), nan},
                                    {cosine(least), 1.0},
                                    {cosine(pi / 2), 0x1.1a62633145c07p-54},
                                    {cosine(6381956970095103 * 0x1p797), -0x1.14ae72e6ba22fp-61},
                                    {exponential(-0.0), 1.0},
                                    {exponential(infinity), infinity},
                                    {exponential(-infinity), 0.0},
                                    {exponential(nan), nan},
                                    {exponential(least), 1.0},
                                    {exponential(largest), infinity},
                                    {exponential(-largest), 0.0},
                                    {exponential(0x1.62e42fefa39efp+9), 0x1.fffffffffff2ap+1023},
                                    {exponential(0x1.62e42fefa39f0p+9), infinity},
                                    {exponential(-0x1.74910d52d3051p+9), least},
                                    {exponential(-0x1.74910d52d3052p+9), 0.0},
                                    {power_of_ten(0.0), 1.0},
                                    {power_of_ten(infinity), infinity},
                                    {power_of_ten(-infinity), 0.0},
                                    {power_of_ten(nan), nan},
                                    {power_of_ten(22), 1e22},
                                    {power_of_ten(23), 1e23},
                                    {power_of_ten(-5), 1e-5},
                                    {power_of_ten(309), infinity},
                                    {power_of_ten(-400), 0.0},
                                    {power_of_ten(2000), infinity},
                                    {logarithm(0.0), -infinity},
                                    {logarithm(-0.0), -infinity},
                                    {logarithm(1.0), 0.0},
                                    {logarithm(-1.0), nan},
                                    {logarithm(-infinity), nan},
                                    {logarithm(infinity), infinity},
                                    {logarithm(nan), nan},
                                    {logarithm(2.0), 0.6931471805599453},
                                    {decimal_logarithm(-0.0), -infinity},
                                    {decimal_logarithm(1.0), 0.0},
                                    {decimal_logarithm(-least), nan},
                                    {decimal_logarithm(infinity), infinity},
                                    {decimal_logarithm(nan), nan},
                                    {decimal_logarithm(1e22), 22.0},
                                    {decimal_logarithm(0.01), -2.0},
                                    {arc_cosine(1.0), 0.0},
                                    {arc_cosine(-1.0), pi},
                                    {arc_cosine(0.0), pi / 2},
                                    {arc_cosine(-least), pi / 2},
                                    {arc_cosine(1.0000000000000002), nan},
                                    {arc_cosine(infinity), nan},
                                    {arc_cosine(nan), nan},
                                    {arc_tangent(0.0, 0.0), 0.0},
                                    {arc_tangent(-0.0, 0.0), -0.0},
                                    {arc_tangent(0.0, -0.0), pi},
                                    {arc_tangent(-0.0, -0.0), -pi},
                                    {arc_tangent(0.0, 1.0), 0.0},
                                    {arc_tangent(-0.0, -1.0), -pi},
                                    {arc_tangent(1.0, -0.0), pi / 2},
                                    {arc_tangent(-1.0, 0.0), -pi / 2},
                                    {arc_tangent(1.0, -infinity), pi},
                                    {arc_tangent(-1.0, infinity), -0.0},
                                    {arc_tangent(infinity, 1.0), pi / 2},
                                    {arc_tangent(-infinity, -1.0), -pi / 2},
                                    {arc_tangent(infinity, infinity), pi / 4},
                                    {arc_tangent(-infinity, -infinity), -3 * pi / 4},
                                    {arc_tangent(nan, 0.0), nan},
                                    {arc_tangent(infinity, nan), nan},
                                    {arc_tangent(1.0, 1.0), pi / 4},
                                    {arc_tangent(3 * least, 2.0), least},
                                    {arc_tangent(least, largest), 0.0},
                                    {arc_tangent(-largest, least), -pi / 2},
                                    {arc_tangent(least, -largest), pi},
                                    {integer_power(nan, 0), 1.0},
                                    {integer_power(-0.0, 3), -0.0},
                                    {integer_power(-0.0, 2), 0.0},
                                    {integer_power(-infinity, 3), -infinity},
                                    {integer_power(-infinity, 2), infinity},
                                    {integer_power(nan, 1), nan},
                                    {integer_power(10, 23), 1e23},
                                    {integer_power(-1, 1U << 31), 1.0},
                                    {integer_power(2, 1024), infinity},
                                    {integer_power(-0.5, 1075), -0.0},
                                    {integer_power(-0.5, 1074), least}};
  for (const Result& result : results) {
    EXPECT_PRED2(same_value, result.actual, result.expected) << "entry " << &result - &results[0];
  }
}

void expect_nearest_angles(int count) {
  for (int i = 0; i < count && !testing::Test::HasFatalFailure(); ++i) {
    const double most = i % 3 == 0 ? 1e308 : i % 3 == 1 ? 1e3 : 1e17;
    const double least = i % 3 == 0 ? 5e-324 : 1 / most;
    const double y = with_random_sign(random_between(least, most));
    // Powers of two, too, by which quotients are exact or ties of subnormal numbers.
    const double x =
        with_random_sign(i % 5 == 0 ? std::ldexp(1.0, i % 1000) : random_between(least, most));
    const auto definition = [&](mpfr_ptr result) {
      return mpfr_atan2(result, Number(53, y).value, Number(53, x).value, MPFR_RNDN);
    };
    const double expected = nearest_double(definition);
    ASSERT_PRED2(same_value, arc_tangent(y, x), expected) << std::hexfloat << y << " " << x;
    if (is_between(y, 0x1p-400, 0x1p400) && is_between(x, 0x1p-400, 0x1p400)) {
      const Approximation fast = approximate_arc_tangent({y, 0.0}, {x, 0.0});
      ASSERT_LE(share_of_bound(fast, definition), 1.0) << std::hexfloat << y << " " << x;
      ASSERT_EQ(exact::arc_tangent(y, x, fast.rounded()), expected)
          << std::hexfloat << y << " " << x;
    }
  }
}

void expect_nearest_powers(int count) {
  constexpr unsigned largest = 62;
  for (int i = 0; i < count && !testing::Test::HasFatalFailure(); ++i) {
    // Of numbers with few digits some powers are exact, or ties.
    const double random = with_random_sign(random_between(1e-8, 1e8));
    const double x = i % 2 == 0 ? random : static_cast<float>(std::round(random * 16) / 16);
    std::vector<double> powers(largest + 1);
    integer_powers(x, powers.data(), largest);
    for (unsigned n = 0; n <= largest; ++n) {
      const double expected = nearest_double(
          [&](mpfr_ptr result) { return mpfr_pow_ui(result, Number(53, x).value, n, MPFR_RNDN); });
      ASSERT_PRED2(same_value, powers[n], expected) << std::hexfloat << x << "^" << n;
      ASSERT_PRED2(same_value, integer_power(x, n), expected) << std::hexfloat << x << "^" << n;
      ASSERT_TRUE(x == 0.0 || exact::integer_power(x, n) == expected)
          << std::hexfloat << x << "^" << n;
    }
  }
}

TEST(Functions, OfTwoArgumentsAreTheNearestDoubles) {
  expect_nearest_angles(2000);
  expect_nearest_powers(50);
}

TEST(LongFunctions, OfTwoArgumentsAreTheNearestDoubles) {
  expect_nearest_angles(1'000'000);
  expect_nearest_powers(20'000);
}

// The quotient grows with n, as nearest doubles of logarithms do: what it is beside the powers of
// two decides it for all n between.
TEST(Functions, CeilOfABinaryLogarithmIsThatOfTheQuotientInDouble) {
  for (int k = 0; k < 31; ++k) {
    for (std::int64_t n = (std::int64_t{1} << k) - 1; n <= (std::int64_t{1} << k) + 1; ++n) {
      if (n > 0) {
        EXPECT_EQ(ceil_power_of_two(static_cast<int>(n)),
                  std::ceil(logarithm(static_cast<double>(n)) / logarithm(2.0)))
            << n;
      }
    }
  }
  EXPECT_EQ(ceil_power_of_two(std::numeric_limits<int>::max()), 31);
  EXPECT_EQ(std::ceil(logarithm(2147483647.0) / logarithm(2.0)), 31);
  EXPECT_EQ(ceil_power_of_two(0), std::numeric_limits<int>::min());
}

// Results that are normal numbers, of coordinates far from 1 and from each other.
TEST(Functions, RaiseNoUnderflowWhereTheResultIsNormal) {
  constexpr double points[][2] = {
      {0x1p-400, 0x1p400}, {0x1p-1000, 12.0}, {0x1p-1000, -0x1p900}, {0x1.8p-1060, 0x1.5p-1040}};
  for (const auto& [y, x] : points) {
    volatile double up = y, across = x;
    std::feclearexcept(FE_ALL_EXCEPT);
    EXPECT_GT(arc_tangent(up, across), 0.0);
    EXPECT_EQ(std::fetestexcept(FE_UNDERFLOW | FE_OVERFLOW | FE_INVALID), 0) << y << " " << x;
  }
}

}  // namespace
}  // namespace sarnum
