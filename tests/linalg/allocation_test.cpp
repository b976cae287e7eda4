// Systems and fits that run short of memory: failure is reported where a result can say so, outputs
// and matrices stay as they were, and only complete fits keep storage.
#include <gtest/gtest.h>
#include <sarnum/sarnum.h>

#include "failing_allocations.h"
#include "plain_linear_algebra.h"

namespace {

using oracle::LongDoubles;

constexpr int n = 70;  // too large for the stack, and done by blocks

/// A call on a matrix with an output, which gives its result or 1, and what it gives on failure.
/// Allocations after the necessary ones only make it faster.
const struct {
  const char* name;
  int necessary, allocations, failed;
  int (*run)(long double* a, long double* x);
} calls[] = {
    {"system", 1, 2, 1, [](auto a, auto x) { return Solve_System(n, a, x), 1; }},
    {"determinant", 1, 2, 0,
     [](auto a, auto x) {
       double result = static_cast<double>(*x);
       const int returned = LnAbsDeterminant(&result, n, a);
       *x = result;
       return returned;
     }},
    {"inverse", 1, 2, 0, [](auto a, auto x) { return MatrixInversion(n, a, x); }},
    {"product", 2, 3, 1, [](auto a, auto x) { return Matrix_Multiply(a, a, x, n, n, n), 1; }},
    {"fit", 3 + 2, 3 + 2, 1,
     [](auto, auto x) {
       double u[] = {1.0, 2.0, 4.0}, v[] = {0.0, 3.0, 1.0}, c[3] = {7.0, 7.0, 7.0};
       mnk2(1, 3, u, u, v, c);
       std::copy_n(c, 3, x);
       return 1;
     }},
};

TEST(Allocation, WhatFailsLeavesEverythingAsItWasOrMakesNoDifference) {
  const LongDoubles matrix = oracle::random_values(n * (n + 1), 1), output(n * n, 7.0L);
  for (const auto& call : calls) {
    LongDoubles done = matrix, right = output;
    for (int nth = 0; nth <= call.allocations; ++nth) {
      LongDoubles a = matrix, x = output;
      FailingAllocations failing(nth);
      const int returned = call.run(a.data(), x.data()), count = failing.count();
      const bool failed = nth > 0 && nth <= call.necessary;
      if (nth == 0) {
        EXPECT_EQ(count, call.allocations) << call.name;
        done = a;
        right = x;
      }
      EXPECT_TRUE(x == (failed ? output : right)) << call.name << nth;
      EXPECT_TRUE(a == (failed ? matrix : done)) << call.name << nth;
      EXPECT_EQ(returned, failed ? call.failed : 1) << call.name << nth;
    }
    EXPECT_FALSE(right == output) << call.name;
  }
  // A product that has no room for its blocks takes room for the plain form.
  LongDoubles a = matrix, x = output;
  const FailingAllocations failing(3, FailingAllocations::Failing::persistently);
  Matrix_Multiply(a.data(), a.data(), x.data(), n, n, n);
  EXPECT_EQ(x, output);
}

TEST(Allocation, AnInterpolationWithoutStorageSaysSo) {
  double x[] = {1.0, 2.0, 4.0}, y[] = {0.0, 3.0, 1.0};
  for (const auto how :
       {FailingAllocations::Failing::once, FailingAllocations::Failing::persistently}) {
    for (int nth = 1; nth <= 4; ++nth) {
      const FailingAllocations failing(nth, how);
      CLagrangeInterpolation2D fit(6, 3, x, y, x);
      EXPECT_EQ(fit.GetSuccessFlag(), 0) << nth;
      EXPECT_TRUE(std::isnan(fit.GetInterpolatedValue(1.0, 1.0))) << nth;
    }
  }
}

}  // namespace
