// Functions of arrays against their plain definitions, on data where ties, NaN, signed zeros, the
// order of a sum or an overlap decide the result.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sarnum/sarnum.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "elementary/functions.h"
#include "same_value.h"

namespace {

using testing::ElementsAre;

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

/// Numbers of very different size and sign: a sum of them depends on its order.
std::vector<double> ill_conditioned(int n, unsigned seed) {
  std::mt19937 engine(seed);
  std::vector<double> values(static_cast<std::size_t>(std::max(n, 0)));
  std::ranges::generate(values, [&] {
    return std::ldexp(static_cast<int>(engine()), static_cast<int>(engine() % 61) - 61);
  });
  return values;
}

struct Extreme {
  double (*value)(double*, int);
  int (*index)(double*, int);
  bool (*replaces)(double element, double extreme);
};

const Extreme extremes[] = {
    {Min_mass, Min_mass_index, [](double x, double m) { return m > x; }},
    {Max_mass, Max_mass_index, [](double x, double m) { return x > m; }},
    {Min_mass_ABS, Min_mass_ABS_index,
     [](double x, double m) { return std::abs(m) > std::abs(x); }},
    {Max_mass_ABS, Max_mass_ABS_index,
     [](double x, double m) { return std::abs(x) > std::abs(m); }},
};

void expect_extremes_of(std::vector<double> a) {
  const int n = static_cast<int>(a.size());
  for (const Extreme& extreme : extremes) {
    std::size_t p = 0;
    for (std::size_t i = 1; i < a.size(); ++i) {
      p = extreme.replaces(a[i], a[p]) ? i : p;
    }
    EXPECT_PRED2(same_value, extreme.value(a.data(), n), a[p]);
    EXPECT_EQ(extreme.index(a.data(), n), &extreme == &extremes[0] ? n - 1 : static_cast<int>(p));
  }
}

TEST(Extremes, AreThoseOfAnAscendingScan) {
  const double odd_ones[] = {nan, 0.0, -0.0, HUGE_VAL, -HUGE_VAL, 5e-324, -1e308};
  std::mt19937 engine(1);
  for (const int n : {1, 2, 3, 7, 8, 9, 15, 16, 17, 31, 100, 511, 512, 513, 3000}) {
    for (int round = 0; round < 60; ++round) {
      SCOPED_TRACE(testing::Message() << n << " elements, round " << round);
      // Few different values make ties; the range moves the extreme to either sign or zero.
      std::uniform_int_distribution value(round % 3 - 2, round % 3 + round / 15);
      std::vector<double> a(static_cast<std::size_t>(n));
      std::ranges::generate(a, [&] { return value(engine) * (engine() % 2 ? 1.0 : -1.0); });
      for (int odd = 0; odd < round % 8; ++odd) {
        a[engine() % a.size()] = odd_ones[engine() % std::size(odd_ones)];
      }
      expect_extremes_of(a);
    }
  }
}

// A single extreme, everywhere in turn: no lane, tail or border of a block is left out.
TEST(Extremes, AreFoundAtEveryPosition) {
  std::vector<double> a(1100, 1.0);
  for (int i = 0; i < 1100; ++i) {
    double& element = a[static_cast<std::size_t>(i)];
    element = -2.0;
    EXPECT_EQ(Max_mass_ABS_index(a.data(), 1100), i);
    EXPECT_EQ(Min_mass(a.data(), 1100), -2.0);
    element = 1.0;
  }
}

TEST(Extremes, OfNoElementsReadNothing) {
  for (const int n : {0, -1, INT_MIN}) {
    for (const Extreme& extreme : extremes) {
      EXPECT_EQ(extreme.value(nullptr, n) + Max_mass_index(nullptr, n) + Min_mass_index(nullptr, n),
                0);
    }
  }
}

TEST(Sums, AreAddedInAscendingOrder) {
  for (const int n : {INT_MIN, -1, 0, 1, 2, 3, 5, 200, 1001}) {
    std::vector<double> a = ill_conditioned(n, 2), b = ill_conditioned(n, 3);
    double sum = 0, descending = 0, squares = 0, products = 0;
    for (std::size_t i = 0; i < a.size(); ++i) {
      sum += a[i];
      descending += a[a.size() - 1 - i];
      squares += a[i] * a[i];
      products += a[i] * b[i];
    }
    EXPECT_TRUE(n < 200 || sum != descending) << "the data do not tell one order from another";
    EXPECT_PRED2(same_value, Sum_mass(a.data(), n), sum);
    EXPECT_PRED2(same_value, Mean(a.data(), n), sum / n);
    EXPECT_PRED2(same_value, Magnitude(a.data(), n), std::sqrt(squares));
    EXPECT_PRED2(same_value, Scalar_Multiply(a.data(), b.data(), n), products);
  }
}

// `out` is an array of its own, an input, or overlaps an input by all but a few elements; volatile
// keeps the definition from being reordered.
TEST(ElementWise, AnOverlapGivesTheRecurrence) {
  struct Operation {
    void (*run)(double* a, double* b, double* out, int n);
    double (*element)(double a, double b, double norm);
  };
  const Operation operations[] = {
      {Vec_Add, [](double a, double b, double) { return a + b; }},
      {Vec_Sub, [](double a, double b, double) { return a - b; }},
      {[](double*, double* b, double* out, int n) { Const_Multiply(0.7, b, out, n); },
       [](double, double b, double) { return 0.7 * b; }},
      {[](double*, double* b, double* out, int n) { Normalize(b, out, n); },
       [](double, double b, double norm) { return b / norm; }},
  };
  for (const Operation& operation : operations) {
    for (const int n : {INT_MIN, 0, 1, 2, 3, 4, 7, 16, 33}) {
      for (int offset = -9; offset <= 9; ++offset) {
        std::vector<double> memory = ill_conditioned(100, 4), expected = memory;
        const double norm = Magnitude(expected.data() + 40, n);
        volatile double* const defined = expected.data();
        for (int i = 0; i < n; ++i) {
          defined[40 + offset + i] = operation.element(defined[i], defined[40 + i], norm);
        }
        operation.run(memory.data(), memory.data() + 40, memory.data() + 40 + offset, n);
        ASSERT_EQ(memory, expected) << n << " elements, offset " << offset;
        ASSERT_EQ(memory == ill_conditioned(100, 4), n <= 0);
      }
    }
  }
  double squares_underflow[] = {0, -1e-200};
  Normalize(squares_underflow, squares_underflow, 2);
  EXPECT_THAT(squares_underflow, ElementsAre(testing::IsNan(), -INFINITY));
}

TEST(Vectors, AngleIsNotLimitedAndCrossRunsTwice) {
  double x[] = {1, 0}, y[] = {0, 1}, minus_x[] = {-1, 0}, none[] = {0, 0};
  EXPECT_EQ(Angle(x, y, 2), 1.5707963267948966);
  EXPECT_EQ(Angle(x, minus_x, 2), 3.141592653589793);
  EXPECT_TRUE(std::isnan(Angle(x, none, 2)));
  double ones[] = {0.1, 0.1, 0.1, 0.1, 0.1, 0.1};
  for (int n = 1; n <= 6; ++n) {  // some quotients round above 1
    EXPECT_PRED2(same_value, Angle(ones, ones, n),
                 sarnum::arc_cosine(Scalar_Multiply(ones, ones, n) / Qrt(Magnitude(ones, n))));
  }
  double apart[3], a[] = {1, 2, 3}, b[] = {4, 5, 6}, onto_a[] = {1, 2, 3}, onto_b[] = {4, 5, 6};
  Cross(a, b, apart);
  Cross(onto_a, b, onto_a);
  Cross(a, onto_b, onto_b);
  EXPECT_THAT(apart, ElementsAre(-3, 6, -3));
  EXPECT_THAT(onto_a, ElementsAre(855, -5670, 26955));
  EXPECT_THAT(onto_b, ElementsAre(27, 90, 36));
}

TEST(Scale, InterpolatesAndReadsOneElementMore) {
  for (const int n_in : {1, 2, 3, 10, 63, 1000}) {
    std::vector<double> in = ill_conditioned(n_in + 1, 5);
    in.back() = nan;
    for (const int n_out : {2, 3, 5, 9, 10, 63, 1001}) {
      std::vector<double> out(static_cast<std::size_t>(n_out));
      const double step = static_cast<double>(n_in - 1) / static_cast<double>(n_out - 1);
      Scale(in.data(), out.data(), n_in, n_out);
      for (int j = 0; j < n_out; ++j) {
        const double x = j * step;
        const auto k = static_cast<std::size_t>(x);
        ASSERT_PRED2(same_value, out[static_cast<std::size_t>(j)],
                     (in[k + 1] - in[k]) * (x - std::trunc(x)) + in[k]);
      }
    }
  }
  for (const int n_out : {0, 1}) {
    double in[] = {10}, out[] = {7, 7};
    Scale(in, out, 3, n_out);
    EXPECT_THAT(out, ElementsAre(10, 7));
  }
  Scale(nullptr, nullptr, 3, -1);
}

TEST(Correlation, IsCircularInTheFirstSequence) {
  for (int n1 = 1; n1 <= 7; ++n1) {
    for (int n2 = 1; n2 <= 20; ++n2) {
      auto x = ill_conditioned(n1, 6), y = ill_conditioned(n1, 7);
      auto u = ill_conditioned(n2, 8), v = ill_conditioned(n2, 9);
      for (int s = -n2 - 1; s <= n1 + 1; ++s) {
        double sum = 0, re = 0, im = 0;
        for (std::size_t l = 0; l < u.size() && s > -n2 && s < n1; ++l) {
          const auto k = (l + static_cast<std::size_t>(s + 21 * n1)) % x.size();
          sum += x[k] * u[l];
          re += x[k] * u[l] + y[k] * v[l];
          im += y[k] * u[l] - x[k] * v[l];
        }
        ASSERT_EQ(Correl(x.data(), u.data(), n1, n2, s), sum);
        ASSERT_EQ(Correl(x.data(), y.data(), u.data(), v.data(), n1, n2, s),
                  std::sqrt(im * im + re * re));
      }
      const int padded = n1 + n2 - 1;
      x.resize(static_cast<std::size_t>(padded));
      for (int s = 1 - n2; s < padded; ++s) {
        double linear = 0;
        for (int l = std::max(0, -s); s < n1 && l < std::min(n2, n1 - s); ++l) {
          linear += x[static_cast<std::size_t>(l + s)] * u[static_cast<std::size_t>(l)];
        }
        ASSERT_EQ(Correl(x.data(), u.data(), padded, n2, s),
                  s < n1 ? linear : Correl(x.data(), u.data(), padded, n2, s - padded));
      }
    }
  }
  for (const int n : {INT_MIN, -1, 0}) {
    for (const int s : {INT_MIN, -1, 0, INT_MAX}) {
      EXPECT_EQ(Correl(nullptr, nullptr, n, 5, s) + Correl(nullptr, nullptr, 5, n, s), 0.0);
    }
  }
}

}  // namespace
