// Equality as the contract means it: equal bits, or equal numbers where transforms and elimination
// leave the sign of a zero open; and any NaN for a NaN.
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

/// For EXPECT_PRED2, which prints both values where they differ.
inline bool same_value(double actual, double expected) {
  return std::isnan(expected)
             ? std::isnan(actual)
             : actual == expected && std::signbit(actual) == std::signbit(expected);
}

/// Whether all elements are equal; a zero equals one of the other sign, unless told otherwise.
template <class A, class B>
testing::AssertionResult same_values(const std::vector<A>& actual, const std::vector<B>& expected,
                                     bool any_zero = true) {
  for (std::size_t i = 0; i < actual.size() && i < expected.size(); ++i) {
    const bool same_sign = any_zero || std::signbit(actual[i]) == std::signbit(expected[i]);
    if (!((actual[i] == expected[i] && same_sign) ||
          (std::isnan(actual[i]) && std::isnan(expected[i])))) {
      return testing::AssertionFailure()
             << "element " << i << " is " << static_cast<double>(actual[i]) << ", expected "
             << static_cast<double>(expected[i]);
    }
  }
  return testing::AssertionResult(actual.size() == expected.size()) << "sizes differ";
}
