// The process-wide tables: which length they serve, reuse, and the sequences in which arrays must
// grow.
#include <gtest/gtest.h>
#include <sarnum/sarnum.h>

#include <limits>
#include <string_view>
#include <vector>

#include "failing_allocations.h"
#include "fft/table_state.h"
#include "forced_level.h"
#include "transform_forms.h"

namespace {

using Failing = FailingAllocations::Failing;

constexpr int least = std::numeric_limits<int>::min(), most = std::numeric_limits<int>::max();

/// All transforms that read the tables follow their definition, or else do nothing; the plain form
/// as well as the kernels, whichever level the tables were built at.
template <class Real>
void expect_of_type(bool served, int m) {
  const std::size_t n = m >= 0 && m < 20 ? std::size_t{1} << m : 1;
  for (const std::size_t level : {std::size_t{0}, ForcedLevel::runnable() - 1}) {
    const ForcedLevel forced(level);
    for (const auto& form : forms::all<Real>()) {
      if (std::string_view(form.name).find("_Fast") != std::string_view::npos) {
        auto actual = oracle::random_values<Real>(2 * n, 1), expected = actual;
        form.transform(actual.data(), actual.data() + n, m);
        if (served) {
          form.define(expected.data(), expected.data() + n, m);
        }
        EXPECT_EQ(actual, expected) << form.name << " m=" << m << " served " << served;
      }
    }
  }
}

/// Whatever m it is given, a length that the tables do not serve is left alone.
void expect_served(int served) {
  for (const int m : {-1, 0, 1, 2, 3, 4, 5, 8, 9, 10, 11, 12, 31}) {
    expect_of_type<double>(m == served, m);
    expect_of_type<float>(m == served, m);
  }
}

constexpr int none = -2;

void forget_all_lengths() {
  delete_ibitr();
  sarnum::table_state.largest_exponent = 0;
}

TEST(Tables, ServeTheLengthOfTheLastCallAlone) {
  forget_all_lengths();
  for (const int m : {4, 3, 12, 1, none, none, 8, 10, 0, 2}) {
    EXPECT_EQ(m == none ? (delete_ibitr(), 0) : init_ibitr(m), 0);
    expect_served(m);
  }
  {
    const FailingAllocations counting(1, Failing::persistently);
    EXPECT_EQ(init_ibitr(4) + init_ibitr(10), 0);
    EXPECT_EQ(counting.count(), 0) << "lengths up to the largest reuse the arrays";
  }
  for (const int m : {-1, 31, least, most}) {
    EXPECT_EQ(init_ibitr(m), 1);
  }
  expect_served(10);
  EXPECT_EQ(sarnum::table_state.largest_exponent, 12) << "whatever was released since";
}

// The last two allocations are the kernels' own, which the plain form does without.
TEST(Tables, EveryFailedAllocationHasItsStatusAndIsMadeUpForLater) {
  const int all = ForcedLevel::runnable() > 1 ? 6 : 4;
  for (int nth = 1; nth <= all; ++nth) {
    SCOPED_TRACE(testing::Message() << "allocation " << nth);
    forget_all_lengths();
    EXPECT_EQ(init_ibitr(11), 0);
    delete_ibitr();
    EXPECT_EQ(init_ibitr(8), 0);
    {
      const FailingAllocations failing(nth, Failing::persistently);
      EXPECT_EQ(init_ibitr(9), nth > 4 ? 0 : nth);
    }
    expect_served(nth > 4 ? 9 : none);
    {
      const FailingAllocations counting(0);
      EXPECT_EQ(init_ibitr(9), 0);
      EXPECT_EQ(counting.count(), all + 1 - nth) << "allocates only what is missing";
    }
    expect_served(9);
  }
}

TEST(BitReversal, ReversesTheLowBits) {
  for (int x = 0; x < 4096; ++x) {
    ASSERT_EQ(ibitr(x, 12), oracle::reversed(x, 12));
  }
  // Counts outside the contract end, with what the loop over 32 bits leaves.
  const int cases[][3] = {{6, 3, 3},      {12345, 0, 0}, {-1, 31, most},
                          {1, 32, least}, {5, -1, 0},    {-5, least, -1}};
  for (const auto& [x, bits, expected] : cases) {
    EXPECT_EQ(ibitr(x, bits), expected) << x << ", " << bits;
  }
}

}  // namespace
