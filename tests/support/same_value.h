// Equality as the contract means it: equal bits, and any NaN for a NaN.
#pragma once

#include <cmath>

/// For EXPECT_PRED2, which prints both values where they differ.
inline bool same_value(double actual, double expected) {
  return std::isnan(expected)
             ? std::isnan(actual)
             : actual == expected && std::signbit(actual) == std::signbit(expected);
}
