// Linear algebra as it is defined, step by step, rows and columns from 1.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <random>
#include <utility>
#include <vector>

#include "elementary/functions.h"

namespace oracle {

using Doubles = std::vector<double>;
using LongDoubles = std::vector<long double>;

template <class Real>
struct Matrix {
  Matrix(int rows, int width) : values(static_cast<std::size_t>(rows * width)), columns(width) {}
  Matrix(const LongDoubles& given, int width) : columns(width) {
    std::ranges::transform(given, std::back_inserter(values),
                           [](long double value) { return static_cast<double>(value); });
  }
  Real& operator()(int i, int j) {
    return values[static_cast<std::size_t>((i - 1) * columns + j - 1)];
  }

  std::vector<Real> values;
  int columns;
};

inline void change_row(int i, int j, int n, Matrix<double>& a, int last) {
  for (int k = i + 1; k <= n; ++k) {
    if (std::abs(a(k, j)) > std::abs(a(i, j))) {
      std::swap_ranges(&a(i, i), &a(i, last) + 1, &a(k, i));
    }
  }
}

/// @return false at a zero pivot, if that is to end it.
inline bool eliminate(int n, Matrix<double>& a, int last_exchanged, bool zero_ends) {
  for (int k = 1; k <= n - 1; ++k) {
    change_row(k, k, n, a, last_exchanged);
    for (int r = k + 1; r <= n; ++r) {
      if (zero_ends && a(k, k) == 0) {
        return false;
      }
      const double factor = a(r, k) / a(k, k);
      for (int c = k; c <= a.columns; ++c) {
        a(r, c) -= factor * a(k, c);
      }
    }
  }
  return true;
}

inline Doubles solve(int n, Matrix<double>& a) {
  eliminate(n, a, n + 1, false);
  Doubles x;
  for (int i = n; i >= 1; --i) {
    const double d = std::exchange(a(i, i), a(i, n + 1));
    for (int j = n; j >= i + 1; --j) {
      a(i, i) -= a(i, j) * a(j, j);
    }
    x.insert(x.begin(), a(i, i) /= d);
  }
  return x;
}

inline int ln_abs_determinant(double& result, int n, Matrix<double>& a) {
  double s = 0.0;
  bool regular = eliminate(n, a, n, true);
  for (int i = 1; i <= n && regular; ++i) {
    regular = std::abs(a(i, i)) > 0.0;
    s += sarnum::logarithm(std::abs(a(i, i)));
  }
  result = regular ? s / sarnum::logarithm(2.71828) : result;
  return regular ? 1 : 0;
}

/// @return the right half, or nothing.
inline LongDoubles inverse(int n, const LongDoubles& given) {
  Matrix<double> w(n, 2 * n), a(given, n);
  for (int i = 1; i <= n; ++i) {
    std::copy_n(&a(i, 1), n, &w(i, 1));
    w(i, n + i) = 1.0;
  }
  if (!eliminate(n, w, 2 * n - 1, true)) {
    return {};
  }
  LongDoubles result;
  for (int i = n; i >= 1; --i) {
    for (int c = n + 1; c <= 2 * n; ++c) {
      if (w(i, i) == 0.0) {
        return {};
      }
      w(i, c) /= w(i, i);
      for (int j = i - 1; j >= 1; --j) {
        w(j, c) -= w(i, c) * w(j, i);
      }
    }
    result.insert(result.begin(), &w(i, n + 1), &w(i, n + 1) + n);
  }
  return result;
}

inline Doubles multiply(Matrix<double> a, Matrix<double> b, int m, int k, int n) {
  Matrix<double> product(m, n);
  for (int i = 1; i <= m; ++i) {
    for (int j = 1; j <= n; ++j) {
      for (int l = 1; l <= k; ++l) {
        product(i, j) += a(i, l) * b(l, j);
      }
    }
  }
  return product.values;
}

/// Normal equations from element(i, r, s) and right_side(i, r) of sample i, solved.
template <class Element, class RightSide>
Doubles fit(int terms, std::size_t samples, Element element, RightSide right_side) {
  Matrix<double> a(terms, terms + 1);
  for (std::size_t i = 0; i < samples; ++i) {
    for (int r = 1; r <= terms; ++r) {
      for (int s = 1; s <= terms; ++s) {
        a(r, s) += element(i, r - 1, s - 1);
      }
      a(r, terms + 1) += right_side(i, r - 1);
    }
  }
  return solve(terms, a);
}

/// Uniform in −1 … 1, with more digits than a double has.
inline LongDoubles random_values(int count, int seed) {
  std::mt19937_64 engine(static_cast<unsigned>(seed));
  LongDoubles values(static_cast<std::size_t>(count));
  std::ranges::generate(values, [&] {
    return static_cast<long double>(static_cast<std::int64_t>(engine())) * 0x1p-63L;
  });
  return values;
}

}  // namespace oracle
