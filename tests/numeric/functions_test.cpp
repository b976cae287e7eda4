// Functions of single numbers: results that ties, signs, NaN and 32-bit arithmetic decide.
#include <gtest/gtest.h>
#include <sarnum/sarnum.h>

#include <cmath>
#include <limits>
#include <vector>

#include "elementary/functions.h"
#include "same_value.h"

namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double inf = std::numeric_limits<double>::infinity();
constexpr double two_pi = 6.283185307179586;

struct Result {
  double actual, expected;
};

void expect_values(const std::vector<Result>& results) {
  for (const Result& result : results) {
    EXPECT_PRED2(same_value, result.actual, result.expected) << "entry " << &result - &results[0];
  }
}

// A tie or a NaN selects the second argument.
TEST(NumericFunctions, GiveTheStatedValues) {
  expect_values({{Min(0.0, -0.0), -0.0}, {Min(-0.0, 0.0), 0.0},  {Min(nan, 5), 5},
                 {Min(5, nan), nan},     {Min(1, 2), 1},         {Max(0.0, -0.0), -0.0},
                 {Max(-0.0, 0.0), 0.0},  {Max(nan, 5), 5},       {Max(5, nan), nan},
                 {Max(1, 2), 2},         {Min_ABS(-3, 2), 2},    {Min_ABS(-2, 3), -2},
                 {Min_ABS(2, -2), -2},   {Min_ABS(1, nan), nan}, {Max_ABS(-3, 2), -3},
                 {Max_ABS(2, -2), -2},   {Max_ABS(nan, 1), 1},   {Qrt(-3), 9},
                 {Power(0, 1), nan},     {Power(-2, 2), nan},    {Power(nan, 0), nan},
                 {Power(inf, -1), 0},    {Modulus(-5, 3), 1},    {Modulus(6, 3), 0},
                 {Modulus(-6, 3), 0},    {Modulus(7.5, 2), 1.5}, {Modulus(5, -3), 2},
                 {Modulus(-5, -3), -5},  {Modulus(1, 0), nan},   {Modulus(1, inf), nan},
                 {Fmod2p(two_pi), 0},    {Fmod2p(-inf), nan},    {AcTan(-0.0, 1), -0.0},
                 {Hanning(0, 8), 0},     {Hanning(4, 8), 2},     {Hanning(1, 0), nan},
                 {Kaiser(6, 4, 8), 1},   {Kaiser(0, 3, 8), 1},   {Kaiser(6, -1, 8), nan},
                 {Kaiser(6, 0, 0), nan}, {Bessel_NULL(0), 1},    {Bessel_NULL(nan), nan},
                 {Bessel_NULL(70), nan}, {Bessel_NULL(inf), nan}});
  EXPECT_EQ(Modulus(-4.81, 0.37), -0x1p-53);
}

// Of Add_to_Power_of_2, 3e9 is shifted out, and at 5e9 the count has wrapped.
TEST(NumericFunctions, FindSignsAndPowersOfTwo) {
  expect_values({{double(Sign(0.0)), 1},          {double(Sign(-0.0)), 1},
                 {double(Sign(-1e-300)), -1},     {double(Sign(nan)), -1},
                 {Power_of_two(1024), 10},        {Power_of_two(2), 1},
                 {Power_of_two(0.5), -1},         {Power_of_two(0), -inf},
                 {Power_of_two(-1), nan},         {Power_of_two(inf), inf},
                 {Power_of_two(nan), nan},        {Add_to_Power_of_2(-7), 2},
                 {Add_to_Power_of_2(-inf), 2},    {Add_to_Power_of_2(1), 2},
                 {Add_to_Power_of_2(1.5), 2},     {Add_to_Power_of_2(3), 4},
                 {Add_to_Power_of_2(1000), 1024}, {Add_to_Power_of_2(1024), 1024},
                 {Add_to_Power_of_2(1025), 2048}, {Add_to_Power_of_2(3e9), 0},
                 {Add_to_Power_of_2(5e9), 2},     {Add_to_Power_of_2(inf), inf},
                 {Add_to_Power_of_2(nan), 2}});
}

TEST(NumericFunctions, FollowTheirFormulas) {
  const double at_2 = std::sqrt(1 - (1.5 / 3.5) * (1.5 / 3.5)) * 6;
  expect_values({{Cube(0.1), (0.1 * 0.1) * 0.1},
                 {Fmod2p(-0.5), two_pi - 0.5},
                 {AcTan(0, -1), 3.141592653589793},
                 {Hamming(0.54, 0, 8), 1},
                 {Bessel_NULL(-3), Bessel_NULL(3)},
                 {Power(10, 0.3), sarnum::exponential(0.3 * sarnum::logarithm(10.0))},
                 {Radians(41), 41 * 3.141592653589793 / 180},
                 {Degrees(1.1), 1.1 * 180 / 3.141592653589793},
                 {AcTan(-1, 0), -1.5707963267948966 + two_pi},
                 {Power_of_two(3), 1.584962500721156},
                 {Power_of_two(0.1 + 0.2), sarnum::logarithm(0.1 + 0.2) / sarnum::logarithm(2.0)},
                 {Power_of_two(std::ldexp(1.0, 1023)), 1023},
                 {Add_to_Power_of_2(536870912), 1073741824},
                 {Add_to_Power_of_2(1.5e9), -2147483648.0},
                 {Add_to_Power_of_2(std::ldexp(1.5, 1023)), 0},
                 {Hanning(5, 6), 1 - sarnum::cosine(5 * two_pi / 6)},
                 {Hamming(0.54, 4, 8), -(1 - 0.54) + 0.54},
                 {Hamming(0.54, 5, 6), sarnum::cosine(5 * two_pi / 6) * (1 - 0.54) + 0.54},
                 {Kaiser(6, 0, 8), 1 / Bessel_NULL(6)},
                 {Kaiser(6, 2, 7), Bessel_NULL(at_2) / Bessel_NULL(6)}});
}

// The first term not above 1e-8 is the last: the third (4.3e-10) of x = 0.1, where a fourth (7e-14)
// would show, and the fourth (1.7e-11) of x = 0.2.
TEST(NumericFunctions, BesselSeriesEndsAtAnAbsoluteBound) {
  EXPECT_NEAR(Bessel_NULL(0.1), 1 + 2.5e-3 + 1.5625e-6 + 1.5625e-8 / 36, 5e-16);
  EXPECT_NEAR(Bessel_NULL(0.2), 1 + 1e-2 + 2.5e-5 + 1e-6 / 36 + 1e-8 / 576, 5e-16);
  for (const double x : {0.5, 2.0, 10.0, 50.0, 69.0}) {
    EXPECT_NEAR(Bessel_NULL(x), std::cyl_bessel_i(0.0, x), 1e-8 + 1e-13 * Bessel_NULL(x));
  }
}

}  // namespace
