// Accuracy of every one-dimensional transform against one in a wider type, and the laws that a
// discrete Fourier transform obeys. Prints the table of docs/reliability.md.
#include <gtest/gtest.h>
#include <sarnum/sarnum.h>

#include <algorithm>
#include <cstdio>
#include <vector>

#include "transform_forms.h"

namespace {

using oracle::Exact;
using oracle::Wide;

template <class Real>
Exact random_line(std::size_t n, unsigned seed) {
  return oracle::complex_line(oracle::random_values<Real>(2 * n, seed));
}

/// What a form gives for a line, without its division.
template <class Real>
Exact transformed(const forms::Form<Real>& form, const Exact& given, int m) {
  const std::size_t n = given.size();
  std::vector<Real> line(2 * n);
  for (std::size_t i = 0; i < n; ++i) {
    line[i] = static_cast<Real>(given[i].real());
    line[n + i] = static_cast<Real>(given[i].imag());
  }
  form.transform(line.data(), line.data() + n, m);
  Exact values = oracle::complex_line(line);
  for (auto& value : values) {
    value *= form.divides ? static_cast<Wide>(n) : Wide{1};
  }
  return values;
}

template <class Real>
double bound(const forms::Form<Real>& form, int m) {
  return form.arithmetic.accuracy * std::sqrt(m);
}

template <class Real>
void check_accuracy(const char* type) {
  struct Case {
    int m;
    Exact line, right[2];
  };
  std::vector<Case> cases;
  for (const int m : {2, 4, 6, 8, 10, 12, 14, 16, 18}) {
    const Exact line = random_line<Real>(std::size_t{1} << m, static_cast<unsigned>(m));
    cases.push_back(
        {m, line, {oracle::exact_transform(line, false), oracle::exact_transform(line, true)}});
  }
  for (const auto& form : forms::all<Real>()) {
    std::printf("| %s %s | %.1e·√m |", form.name, type, form.arithmetic.accuracy);
    for (const auto& [m, line, right] : cases) {
      ASSERT_EQ(init_ibitr(m), 0);
      const double error =
          oracle::relative_error(transformed(form, line, m), right[form.inverse ? 1 : 0],
                                 form.centred ? std::size_t{1} << (m - 1) : 0);
      EXPECT_LE(error, bound(form, m)) << form.name << " m=" << m;
      std::printf(" %.1e |", error);
    }
    std::puts("");
  }
}

TEST(Accuracy, IsThatOfTheArithmetic) {
  check_accuracy<double>("double");
  check_accuracy<float>("float");
}

/// Each law on lines that follow from one random line x: a sum of two, a shift, its own transform.
template <class Real>
void check_laws(int m, unsigned seed) {
  const std::size_t n = std::size_t{1} << m, shift = seed % n;
  const Exact x = random_line<Real>(n, seed), y = random_line<Real>(n, seed + 100);
  Exact sum = x, shifted = x, impulse(n), times_n = x;
  std::rotate(shifted.begin(), shifted.end() - static_cast<std::ptrdiff_t>(shift), shifted.end());
  impulse[shift] = Wide{1};
  Wide power_of_x = 0;
  for (std::size_t i = 0; i < n; ++i) {
    sum[i] += Wide{2} * y[i];
    times_n[i] *= static_cast<Wide>(n);
    power_of_x += std::norm(x[i]) * static_cast<Wide>(n);
  }
  for (const auto& form : forms::all<Real>()) {
    SCOPED_TRACE(testing::Message() << form.name << " m=" << m << " seed " << seed);
    const double allowed = 4 * bound(form, m);
    const Exact of_x = transformed(form, x, m), of_impulse = transformed(form, impulse, m);
    Exact linear = transformed(form, y, m), turned = of_x;
    Wide power = 0;
    for (std::size_t k = 0; k < n; ++k) {
      linear[k] = of_x[k] + Wide{2} * linear[k];
      turned[k] *= of_impulse[k];
      power += std::norm(of_x[k]);
      EXPECT_NEAR(std::sqrt(static_cast<double>(std::norm(of_impulse[k]))), 1.0, allowed)
          << "impulse";
    }
    EXPECT_LE(oracle::relative_error(transformed(form, sum, m), linear), allowed) << "linearity";
    EXPECT_LE(oracle::relative_error(transformed(form, shifted, m), turned), allowed) << "shift";
    EXPECT_NEAR(static_cast<double>(power / power_of_x), 1.0, allowed) << "Parseval";
    for (const auto& back : forms::all<Real>()) {
      if (back.inverse != form.inverse && !form.centred && !back.centred) {
        const Exact returned = transformed(back, of_x, m);
        EXPECT_LE(oracle::relative_error(returned, times_n), allowed + 4 * bound(back, m))
            << "inverse by " << back.name;
      }
    }
  }
}

TEST(Laws, HoldForEveryTransform) {
  for (int m = 2; m <= 10; ++m) {
    ASSERT_EQ(init_ibitr(m), 0);
    for (unsigned round = 0; round < 20; ++round) {
      check_laws<double>(m, 7 * round + 1);
      check_laws<float>(m, 7 * round + 1);
    }
  }
}

}  // namespace
