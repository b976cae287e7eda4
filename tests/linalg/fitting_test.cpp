// Fits: equal to the plain definition, singular ones included, and raising no exceptions that it
// does not raise.
#include <gtest/gtest.h>
#include <sarnum/sarnum.h>

#include <cfenv>
#include <limits>

#include "elementary/functions.h"
#include "plain_linear_algebra.h"
#include "same_value.h"

namespace {

using oracle::Doubles;
using oracle::Matrix;

constexpr double infinity = std::numeric_limits<double>::infinity();

int plain_lin_yr(int n, Matrix<double> a, double* b, double* x) {
  for (int k = 1; k <= n - 1; ++k) {
    for (int j = k + 1; a(k, k) == 0.0; ++j) {
      if (j > n) {
        return -1;
      }
      for (int c = k; c <= n; ++c) {
        a(k, c) += a(j, c);
      }
      b[k - 1] += b[j - 1];
    }
    for (int r = k + 1; r <= n; ++r) {
      const double factor = a(r, k) / a(k, k);
      for (int c = k + 1; c <= n; ++c) {
        a(r, c) -= factor * a(k, c);
      }
      b[r - 1] -= factor * b[k - 1];
    }
  }
  for (int i = n; i >= 1; --i) {
    double s = 0.0;
    for (int j = n; j >= i + 1; --j) {
      s += a(i, j) * x[j - 1];
    }
    x[i - 1] = (b[i - 1] - s) / a(i, i);
  }
  return 1;
}

TEST(FiveEquations, EqualThePlainDefinition) {
  int refused = 0, not_finite = 0;
  for (int seed = 0; seed < 3000; ++seed) {
    const int n = seed % 5 + 1;
    Matrix<double> a(oracle::random_values(35, seed), 5);
    if (seed % 3 > 0) {  // integers that are often zero: pivots to repair, and some beyond repair
      std::ranges::for_each(a.values, [](double& value) { value = std::round(0.8 * value); });
    }
    double rows[5][5];
    std::copy_n(&a(1, 1), 25, rows[0]);
    Doubles given(a.values.end() - 10, a.values.end()), plain = given;  // b, then x
    const int expected = plain_lin_yr(n, a, plain.data(), plain.data() + 5);
    EXPECT_EQ(lin_yr(n, rows, given.data(), given.data() + 5), expected) << seed;
    EXPECT_TRUE(same_values(given, plain)) << seed;
    EXPECT_TRUE(std::equal(rows[0], rows[0] + 25, a.values.begin()));
    refused += expected == -1 ? 1 : 0;
    not_finite += std::isfinite(given[5]) ? 0 : 1;
  }
  EXPECT_GT(refused, 100);
  EXPECT_GT(not_finite, 100);
  EXPECT_EQ(lin_yr(6, nullptr, nullptr, nullptr), -1);
}

double power(double x, int n) {
  return sarnum::integer_power(x, static_cast<unsigned>(n));
}

/// Samples z over (x, y): spread out, far from the origin, on a line, in one place, not finite, so
/// large that only some powers overflow.
struct Samples {
  Samples(int kind, int number) : count(number) {
    Matrix<double> random(oracle::random_values(3 * count, count), 3);
    for (int i = 1; i <= count; ++i) {
      const double scale = kind == 5 ? 1e100 : 1.0;
      x.push_back(kind == 1   ? 5000.0 + 700.0 * random(i, 1)
                  : kind == 3 ? 1.0
                              : scale * random(i, 1));
      y.push_back(kind == 2 ? 2.0 * x.back() : kind == 3 ? -3.0 : scale * random(i, 2));
      z.push_back(kind == 4 && i == count ? infinity : random(i, 3));
    }
  }
  int count;
  Doubles x, y, z;
};

Doubles plain_mnk(int m, const Samples& s) {
  double S[10] = {}, T[5] = {};
  for (std::size_t i = 0; i < s.x.size(); ++i) {
    double p = 1.0, q = s.z[i];
    for (int k = 0; k < 2 * m; ++k) {
      S[k] += p;
      p *= s.x[i];
      T[k % 5] += k < m ? q : 0.0;
      q *= s.x[i];
    }
  }
  Matrix<double> a(5, 5);
  for (int r = 1; r <= m; ++r) {
    std::copy_n(S + r - 1, m, &a(r, 1));
  }
  Doubles c(15, 7.0);
  plain_lin_yr(m, a, T, c.data());
  return c;
}

double squared_power(double x, int exponent) {
  return exponent == 0 ? 1.0
         : exponent == 1
             ? x
             : squared_power(x, exponent / 2) * squared_power(x, exponent - exponent / 2);
}

template <class Compute>
int exceptions_of(Compute compute) {
  std::feclearexcept(FE_ALL_EXCEPT);
  compute();
  return std::fetestexcept(FE_DIVBYZERO | FE_INVALID | FE_OVERFLOW);
}

TEST(Fits, EqualThePlainDefinition) {
  for (int kind = 0; kind < 6; ++kind) {
    for (const int count : {0, 1, 2, 3, 5, 14, 15, 16, 40, 333}) {
      Samples s(kind, count);
      double *const x = s.x.data(), *const y = s.y.data(), *const z = s.z.data();
      // (t, q) of mnk2, the exponents (j, t − j) of the class
      std::vector<std::pair<int, int>> terms;
      for (int order = -1; order <= 6; ++order) {
        SCOPED_TRACE(testing::Message()
                     << "kind " << kind << " count " << count << " order " << order);
        for (int j = 0; j <= order; ++j) {
          terms.emplace_back(order, j);
        }
        const auto of = [&](int r) { return terms[static_cast<std::size_t>(r)]; };
        const Doubles untouched(15, 7.0);
        Doubles c = untouched;
        mnk(order, count, z, x, c.data());
        EXPECT_TRUE(same_values(c, order >= 1 && order <= 5 ? plain_mnk(order, s) : untouched));

        const int M = static_cast<int>(terms.size());
        const auto phi = [&](std::size_t i, int r) {
          const auto [t, q] = of(r);
          return squared_power(y[i], q) * squared_power(x[i], t - q);
        };
        Doubles expected;
        const int raised = exceptions_of([&] {
          if (order >= 0 && order <= 4) {
            expected = oracle::fit(
                M, s.x.size(), [&](auto i, int r, int t) { return phi(i, r) * phi(i, t); },
                [&](auto i, int r) { return phi(i, r) * z[i]; });
          }
        });
        expected.resize(15, 7.0);
        c = untouched;
        EXPECT_EQ(exceptions_of([&] { mnk2(order, count, z, x, y, c.data()); }) & ~raised, 0);
        EXPECT_TRUE(same_values(c, expected));

        CLagrangeInterpolation2D fit(order, count, x, y, z);
        const auto powers = [&](double at_x, double at_y, double times, int r, int t) {
          const int ey = of(r).first - of(r).second + of(t).first - of(t).second;
          return power(at_y, ey) * times * power(at_x, of(r).second + of(t).second);
        };
        expected = oracle::fit(
            M, s.x.size(), [&](auto i, int r, int t) { return powers(x[i], y[i], 1.0, r, t); },
            [&](auto i, int r) { return powers(x[i], y[i], z[i], r, 0); });
        EXPECT_TRUE(same_values(Doubles(fit.coefficients, fit.coefficients + M), expected));
        EXPECT_EQ(fit.GetSuccessFlag(), count > 0 || M == 0 ? 1 : 0);
        double value = 0.0;
        for (int r = 0; r < M; ++r) {
          const int ey = of(r).first - of(r).second;
          value +=
              expected[static_cast<std::size_t>(r)] * power(-0.7, ey) * power(0.3, of(r).second);
        }
        EXPECT_TRUE(same_values(Doubles{fit.GetInterpolatedValue(0.3, -0.7)}, Doubles{value}));
      }
    }
  }
}

TEST(Interpolations, OfLargeAndUnlawfulOrdersAreSafe) {
  constexpr int least = std::numeric_limits<int>::min(), most = std::numeric_limits<int>::max();
  const struct {
    int order, terms, flag;
    double value;  // at (2, 3), all coefficients being 1: 3^(t+1) − 2^(t+1) summed over t
  } cases[] = {{-1, 0, 1, 0.0},
               {-5, 6, 1, 6.0},
               {31, 528, 1, 2779521693343170.0},
               {32, 561, 1, 8338573669964101.0},
               {46340, 0, 0, 0.0},
               {most, 0, 0, 0.0},
               {least, 0, 0, 0.0}};
  double sample = 1.0;
  for (const auto& [order, terms, flag, value] : cases) {
    CLagrangeInterpolation2D fit(order, 1, &sample, &sample, &sample);
    EXPECT_EQ(fit.termCount, terms) << order;
    EXPECT_EQ(fit.GetSuccessFlag(), flag) << order;
    std::fill_n(fit.coefficients, terms, 1.0);
    EXPECT_EQ(fit.GetInterpolatedValue(2.0, 3.0), value) << order;
  }
}

TEST(Planes, PassThroughThreeCorners) {
  double x[] = {1.0, 4.0, -2.0}, y[] = {0.5, 2.0, 7.0}, z[] = {6.75, 3.0, -13.5},
         p[] = {7.0, 7.0, 7.0};
  EXPECT_EQ(GetRectInterpolationCoefficients(p, p + 1, p + 2, 1, 1, 5, 2, 2, 6, 3, 3, 9, 1, 2, 3),
            0);
  EXPECT_EQ(p[0] + p[1] + p[2], 21.0);
  EXPECT_EQ(GetRectInterpolationCoefficients(p, p + 1, p + 2, x[0], y[0], z[0], x[1], y[1], z[1],
                                             x[2], y[2], z[2], infinity, infinity, infinity),
            1);
  EXPECT_EQ(Doubles(p, p + 3), (Doubles{0.25, -3.0, 8.0}));
}

}  // namespace
