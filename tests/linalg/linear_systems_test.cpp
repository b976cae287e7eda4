// Systems, determinants, inverses and products: equal to the plain definition in 64-bit steps at
// every instruction-set level, what is left of consumed matrices included; accurate; exact where
// the arithmetic is.
#include <gtest/gtest.h>
#include <sarnum/sarnum.h>

#include <limits>

#include "forced_level.h"
#include "plain_linear_algebra.h"
#include "same_value.h"

namespace {

using oracle::Doubles;
using oracle::LongDoubles;
using oracle::Matrix;

enum Kind { random, badly_scaled, nearly_singular, many_ties, singular, not_finite, kinds };

LongDoubles make_matrix(int kind, int n, int columns) {
  LongDoubles a = oracle::random_values(n * columns, n);
  const bool ends_at_last = n % 4 == 0;  // of singular ones: the zero pivot has no rows below it
  const int zero_column = ends_at_last ? n - 1 : n / 2 + n / 20;
  const int dependent = n <= 2                              ? 0
                        : kind == nearly_singular           ? 1
                        : kind == singular && !ends_at_last ? 2
                                                            : 0;
  for (int i = 0; i < n * columns; ++i) {
    const int row = i / columns, column = i % columns;
    long double& value = a[static_cast<std::size_t>(i)];
    if (kind == badly_scaled) {
      value *= std::ldexp(1.0, 97 * (row % 7 - 3) + 31 * (column % 5 - 2));
    } else if (kind == many_ties || kind == singular) {  // integers: exact zeros come about
      value = column == zero_column && kind == singular
                  ? 0
                  : std::round(1.49 * static_cast<double>(value));
    }
    if (row >= n - dependent) {
      value = 2 * a[static_cast<std::size_t>(column)] + (kind == singular ? 0 : 1e-13L * value);
    }
  }
  if (kind == not_finite) {
    a[a.size() / 2] = std::numeric_limits<long double>::infinity();
    a.back() = std::numeric_limits<long double>::quiet_NaN();
  }
  return a;
}

template <class Check>
void for_matrices(int columns_more, Check check) {
  for (int kind = 0; kind < kinds; ++kind) {
    for (int n = 1; n <= (kind == many_ties ? 73 : 72); ++n) {
      const int order = n == 71 ? 129 : n == 72 ? 200 : n == 73 ? 515 : n;
      const LongDoubles matrix = make_matrix(kind, order, order + columns_more);
      for (std::size_t level = 0; level < ForcedLevel::runnable(); ++level) {
        SCOPED_TRACE(testing::Message() << "kind " << kind << " n " << order << " level " << level);
        const ForcedLevel forced(level);
        check(kind, order, matrix);
      }
    }
  }
}

/// LAPACK's measure ‖b − A·x‖ / (‖A‖ ‖x‖ n u).
long double residual(Matrix<long double> system, const LongDoubles& x) {
  const int n = static_cast<int>(x.size());
  long double a_norm = 0, x_norm = 0, worst = 0;
  for (int i = 1; i <= n; ++i) {
    long double rest = system(i, n + 1), row = 0;
    for (int j = 1; j <= n; ++j) {
      rest -= system(i, j) * x[static_cast<std::size_t>(j - 1)];
      row += std::abs(system(i, j));
    }
    worst = std::max(worst, std::abs(rest));
    a_norm = std::max(a_norm, row);
    x_norm = std::max(x_norm, std::abs(x[static_cast<std::size_t>(i - 1)]));
  }
  return worst / (a_norm * x_norm * n * 0x1p-53L);
}

TEST(LinearSystems, EqualThePlainDefinitionAndAreAccurate) {
  for_matrices(1, [](int kind, int n, LongDoubles a) {
    const Matrix<long double> given(a, n + 1);
    Matrix<double> exchanged(a, n + 1), solved = exchanged;
    LongDoubles rows = given.values, x(static_cast<std::size_t>(n));
    ChangeRow_IJ(n / 3 + 1, n / 2 + 1, n, rows.data());
    oracle::change_row(n / 3 + 1, n / 2 + 1, n, exchanged, n + 1);
    EXPECT_TRUE(same_values(rows, exchanged.values));
    Solve_System(n, a.data(), x.data());
    EXPECT_TRUE(same_values(x, oracle::solve(n, solved)));
    EXPECT_TRUE(same_values(a, solved.values));
    if (kind <= nearly_singular) {
      EXPECT_LE(residual(given, x), 8.0);
    }
  });
}

TEST(DeterminantsAndInverses, EqualThePlainDefinition) {
  int refused = 0;
  for_matrices(0, [&](int, int n, LongDoubles a) {
    const LongDoubles given = a, inverse = oracle::inverse(n, a), kept(a.size(), 7.0L);
    LongDoubles separate = kept;
    int returned = MatrixInversion(n, a.data(), separate.data());
    EXPECT_EQ(returned, inverse.empty() ? 0 : 1);
    EXPECT_TRUE(same_values(separate, returned == 1 ? inverse : kept));
    MatrixInversion(n, a.data(), a.data());
    EXPECT_TRUE(same_values(a, returned == 1 ? inverse : given));

    a = given;
    Matrix<double> plain(a, n);
    double result = 7.0, expected = 7.0;
    returned = LnAbsDeterminant(&result, n, a.data());
    EXPECT_EQ(returned, oracle::ln_abs_determinant(expected, n, plain));
    EXPECT_EQ(result, expected);
    EXPECT_TRUE(same_values(a, plain.values));
    refused += 1 - returned;
  });
  EXPECT_GT(refused, 100);
}

TEST(DeterminantsAndInverses, OfSmallMatricesAreTrue) {
  LongDoubles plain = {0, 1, 2, 0}, bordered = {0, 1, 0, 2, 0, 0, 0, 0, 1}, x(2);
  LongDoubles system = {0, 1, 3, 2, 0, 4}, triangle = {4, 0, 2, 2};
  EXPECT_EQ(
      MatrixInversion(2, &plain[0], &plain[0]) + MatrixInversion(3, &bordered[0], &bordered[0]), 2);
  EXPECT_EQ(plain, (LongDoubles{0, 0, 1, 1}));
  EXPECT_EQ(bordered, (LongDoubles{0, 0.5L, 0, 1, 0, 0, 0, 0, 1}));
  Solve_System(2, &system[0], &x[0]);
  EXPECT_EQ(x, (LongDoubles{2, 3}));
  double logarithm = 7.0;
  EXPECT_EQ(LnAbsDeterminant(&logarithm, 2, &triangle[0]), 1);
  EXPECT_NEAR(logarithm, std::log(8.0) / std::log(2.71828), 1e-15);
}

TEST(Products, EqualThePlainDefinitionAlsoOntoAFactor) {
  for_matrices(1, [](int, int n, LongDoubles b) {
    LongDoubles a = make_matrix(random, n, n), square = a;
    Matrix_Multiply(square.data(), b.data(), square.data(), n, n, n);
    EXPECT_TRUE(same_values(square, oracle::multiply({a, n}, {b, n}, n, n, n)));
    const int m = n / 2 + 1;
    const auto expected = oracle::multiply({a, n}, {b, n + 1}, m, n, n + 1);
    Matrix_Multiply(a.data(), b.data(), b.data(), m, n, n + 1);
    b.resize(expected.size());
    EXPECT_TRUE(same_values(b, expected));
    Matrix_Multiply(a.data(), b.data(), a.data(), n, -1, 1);
    EXPECT_TRUE(std::all_of(a.begin(), a.begin() + n, [](auto value) { return value == 0; }));
  });
  long double subnormal = 0x1p-1030L, factor = -0x1p-40L;
  Matrix_Multiply(&subnormal, &factor, &factor, 1, 1, 1);
  EXPECT_EQ(factor, -0x1p-1070L);
  double u[] = {2.0, -3.0, 0.5}, v[] = {4.0, 5.0, 6.0};
  Vector_Multiply(u, v, v, 2);
  EXPECT_EQ(std::vector(v, v + 3), (std::vector{8.0, -15.0, 6.0}));
}

TEST(LinearSystems, MayBeSolvedIntoThemselves) {
  constexpr int n = 5;
  const LongDoubles given = make_matrix(random, n, n + 1);
  Matrix<double> solved(given, n + 1);
  const Doubles expected = oracle::solve(n, solved);
  for (int first = 0; first <= n * n; ++first) {
    LongDoubles a = given;
    Solve_System(n, a.data(), a.data() + first);
    EXPECT_TRUE(same_values(LongDoubles(a.begin() + first, a.begin() + first + n), expected));
  }
}

TEST(LinearSystems, RowsAreComparedAsDoubles) {
  const long double above_one = 1 + std::numeric_limits<long double>::epsilon();
  LongDoubles a = {1, 2, 3, -above_one, 5, 6}, given = a;
  ChangeRow_IJ(1, 1, 2, a.data());
  EXPECT_EQ(a == given, std::numeric_limits<long double>::digits > 53);
}

TEST(DeterminantsAndInverses, OfNoRowsSucceed) {
  double result = 7.0;
  EXPECT_EQ(LnAbsDeterminant(&result, 0, nullptr), 1);
  EXPECT_EQ(result, 0.0);
  EXPECT_EQ(MatrixInversion(-3, nullptr, nullptr), 1);
}

}  // namespace
