// CLagrangeInterpolation2D: the fit and its evaluation.
//
// An element of the normal equations depends on the sums of its terms' exponents alone, so that all
// of them are copies of (2P + 1)(P + 1) sums over the samples, each with the value that the element
// itself would have. Powers are computed once for each exponent and sample.
#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <new>

#include "elementary/functions.h"
#include "linalg/elimination.h"
#include "linalg/work_storage.h"
#include "sarnum/linalg/interpolation.h"

namespace {

/// Powers up to this one are tabulated on the stack when a point is evaluated.
constexpr std::size_t largest_tabulated = 31;

std::size_t largest_exponent(int order) {
  return static_cast<std::size_t>(std::max(order, 0));
}

std::size_t index(double exponent) {
  return static_cast<std::size_t>(exponent);
}

void tabulate_powers(double base, double* powers, std::size_t largest) {
  sarnum::integer_powers(base, powers, static_cast<unsigned>(largest));
}

double power(double base, double exponent) {
  return sarnum::integer_power(base, static_cast<unsigned>(exponent));
}

}  // namespace

CLagrangeInterpolation2D::CLagrangeInterpolation2D(int polynomial_order, int count, double* x,
                                                   double* y, double* z)
    : coefficients(nullptr),
      secondExponents(nullptr),
      firstExponents(nullptr),
      reservedCount(0),
      order(polynomial_order),
      termCount(0),
      successFlag(0) {
  const std::int64_t product = (std::int64_t{order} + 2) * (std::int64_t{order} + 1);
  if (product > std::numeric_limits<int>::max()) {
    return;
  }
  termCount = static_cast<int>(static_cast<double>(product) * 0.5);
  successFlag = count >= termCount || count >= 1 ? 1 : 0;
  const auto terms = static_cast<std::size_t>(termCount);
  coefficients = new (std::nothrow) double[terms]();
  secondExponents = new (std::nothrow) double[terms]();
  firstExponents = new (std::nothrow) double[terms]();
  if (coefficients == nullptr || secondExponents == nullptr || firstExponents == nullptr) {
    successFlag = 0;
    return;
  }
  std::size_t term = 0;
  for (int t = 0; t <= order; ++t) {
    for (int j = 0; j <= t; ++j, ++term) {
      secondExponents[term] = t - j;
      firstExponents[term] = j;
    }
  }
  CalculateCoefficients(count, x, y, z);
}

CLagrangeInterpolation2D::CLagrangeInterpolation2D(const CLagrangeInterpolation2D&) = default;
CLagrangeInterpolation2D& CLagrangeInterpolation2D::operator=(const CLagrangeInterpolation2D&) =
    default;

CLagrangeInterpolation2D::~CLagrangeInterpolation2D() {
  delete[] coefficients;
  delete[] secondExponents;
  delete[] firstExponents;
}

int CLagrangeInterpolation2D::GetPolynomOrder() {
  return order;
}

int CLagrangeInterpolation2D::GetSuccessFlag() {
  return successFlag;
}

void CLagrangeInterpolation2D::CalculateCoefficients(int count, double* x, double* y, double* z) {
  const auto terms = static_cast<std::size_t>(termCount);
  const std::size_t columns = terms + 1;
  const std::size_t largest = 2 * largest_exponent(order);
  const std::size_t side = largest + 1;
  sarnum::WorkStorage storage(terms * columns + side * side + 2 * side);
  double* const system = storage.get();
  if (system == nullptr) {
    std::fill_n(coefficients, terms, std::numeric_limits<double>::quiet_NaN());
    successFlag = 0;
    return;
  }
  double* const sums = system + terms * columns;  // of y^a·x^b at [a·side + b]
  double* const y_powers = sums + side * side;
  double* const x_powers = y_powers + side;
  std::fill_n(system, terms * columns + side * side, 0.0);

  for (int i = 0; i < count; ++i) {
    tabulate_powers(y[i], y_powers, largest);
    tabulate_powers(x[i], x_powers, largest);
    for (std::size_t a = 0; a < side; ++a) {
      for (std::size_t b = 0; b < side - a; ++b) {
        sums[a * side + b] += y_powers[a] * x_powers[b];
      }
    }
    for (std::size_t r = 0; r < terms; ++r) {
      system[r * columns + terms] +=
          y_powers[index(secondExponents[r])] * z[i] * x_powers[index(firstExponents[r])];
    }
  }
  for (std::size_t r = 0; r < terms; ++r) {
    for (std::size_t s = 0; s < terms; ++s) {
      system[r * columns + s] = sums[index(secondExponents[s] + secondExponents[r]) * side +
                                     index(firstExponents[s] + firstExponents[r])];
    }
  }
  sarnum::solve_onto_diagonal(system, terms);
  for (std::size_t k = 0; k < terms; ++k) {
    coefficients[k] = system[k * columns + k];
  }
}

double CLagrangeInterpolation2D::GetInterpolatedValue(double x, double y) {
  if (termCount < 1) {
    return 0.0;
  }
  if (coefficients == nullptr || secondExponents == nullptr || firstExponents == nullptr) {
    return std::numeric_limits<double>::quiet_NaN();
  }
  const auto terms = static_cast<std::size_t>(termCount);
  const std::size_t largest = largest_exponent(order);
  double value = 0.0;
  if (largest <= largest_tabulated) {
    std::array<double, largest_tabulated + 1> x_powers, y_powers;
    tabulate_powers(x, x_powers.data(), largest);
    tabulate_powers(y, y_powers.data(), largest);
    for (std::size_t k = 0; k < terms; ++k) {
      value += coefficients[k] * y_powers[index(secondExponents[k])] *
               x_powers[index(firstExponents[k])];
    }
  } else {
    for (std::size_t k = 0; k < terms; ++k) {
      value += coefficients[k] * power(y, secondExponents[k]) * power(x, firstExponents[k]);
    }
  }
  return value;
}
