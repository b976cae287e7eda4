// The process-wide tables: content, reuse, and the sequences in which arrays must grow.
#include <gtest/gtest.h>
#include <sarnum/sarnum.h>

#include <cmath>
#include <limits>
#include <vector>

#include "failing_allocations.h"
#include "fft/table_state.h"
#include "plain_transform.h"

namespace {

using sarnum::table_state;

class Tables : public testing::Test {
 protected:
  void SetUp() override {
    delete_ibitr();
    table_state.largest_exponent = 0;
    table_state.swap_count = 0;
  }
};

void expect_tables_of(int m) {
  SCOPED_TRACE("m=" + std::to_string(m));
  const int n = 1 << m;
  const auto un = static_cast<std::size_t>(n);
  const double pi = std::acos(-1.0);
  std::vector<int> pairs;
  for (int i = 0; i <= n; ++i) {
    const int r = oracle::reversed(i, m);
    ASSERT_EQ(table_state.bit_reversal[static_cast<std::size_t>(i)], r);
    if (r > i) {
      pairs.push_back(i);
      pairs.push_back(r);
    }
  }
  for (int i = 0; i < n / 2; ++i) {
    const double x = pi * 2.0 * i / n;
    ASSERT_EQ(table_state.cosine[static_cast<std::size_t>(i)], std::cos(x));
    ASSERT_EQ(table_state.sine[static_cast<std::size_t>(i)], std::sin(x));
  }
  ASSERT_EQ(2 * static_cast<std::size_t>(table_state.swap_count), pairs.size());
  for (std::size_t i = 0; i < pairs.size(); ++i) {
    ASSERT_EQ(table_state.swap_pairs[i], pairs[i]);
  }
  // What is filled, and 16 entries of slack, lie inside what is allocated.
  EXPECT_GE(table_state.bit_reversal.capacity(), un + 16);
  EXPECT_GE(table_state.cosine.capacity(), un / 2 + 16);
  EXPECT_GE(table_state.sine.capacity(), un / 2 + 16);
  EXPECT_GE(table_state.swap_pairs.capacity(), pairs.size() + 16);
}

TEST_F(Tables, HoldReversalsTwiddlesAndSwapPairs) {
  for (int m = 0; m <= 12; ++m) {
    ASSERT_EQ(init_ibitr(m), 0);
    expect_tables_of(m);
  }
  ASSERT_EQ(init_ibitr(3), 0);
  const int expected[] = {0, 4, 2, 6, 1, 5, 3, 7, 0};
  for (std::size_t i = 0; i < 9; ++i) {
    EXPECT_EQ(table_state.bit_reversal[i], expected[i]);
  }
  EXPECT_EQ(table_state.swap_count, 2);
}

TEST_F(Tables, ASmallerLengthReusesTheArrays) {
  ASSERT_EQ(init_ibitr(10), 0);
  {
    const FailingAllocations none(1, FailingAllocations::Failing::persistently);
    ASSERT_EQ(init_ibitr(4), 0);
    ASSERT_EQ(init_ibitr(10), 0);
    ASSERT_EQ(init_ibitr(4), 0);
    EXPECT_EQ(none.count(), 0);
  }
  EXPECT_EQ(table_state.largest_exponent, 10);
  expect_tables_of(4);
}

TEST_F(Tables, GrowBelowTheLargestExponentAfterARelease) {
  ASSERT_EQ(init_ibitr(12), 0);
  delete_ibitr();
  EXPECT_EQ(table_state.largest_exponent, 12);
  EXPECT_NE(table_state.swap_count, 0);
  ASSERT_EQ(init_ibitr(8), 0);
  expect_tables_of(8);
  ASSERT_EQ(init_ibitr(10), 0);
  expect_tables_of(10);
  delete_ibitr();
  delete_ibitr();
}

/// Neither length must be served by tables of which a part is missing.
void expect_no_length_served() {
  EXPECT_FALSE(table_state.ready_exponent.has_value());
  for (const int m : {5, 8, 9, 11}) {
    const std::size_t n = std::size_t{1} << m;
    std::vector<double> data(2 * n, 1.0);
    fft_Fast(data.data(), data.data() + n, m);
    EXPECT_EQ(data, std::vector<double>(2 * n, 1.0));
  }
}

TEST_F(Tables, EveryFailedAllocationHasItsStatusAndIsMadeUpForLater) {
  for (int nth = 1; nth <= 4; ++nth) {
    SetUp();
    {
      const FailingAllocations failing(nth, FailingAllocations::Failing::persistently);
      EXPECT_EQ(init_ibitr(9), nth);
    }
    EXPECT_EQ(table_state.largest_exponent, 9);
    expect_no_length_served();
    {
      const FailingAllocations counting(0);
      EXPECT_EQ(init_ibitr(9), 0);
      constexpr int derived = 2;
      EXPECT_EQ(counting.count(), 5 - nth + derived) << "allocates only what is missing";
    }
    expect_tables_of(9);
  }
}

TEST_F(Tables, ServeTheirLengthWithoutStorageForTheKernels) {
  for (const auto failing :
       {FailingAllocations::Failing::once, FailingAllocations::Failing::persistently}) {
    for (const int nth : {5, 6}) {
      SetUp();
      {
        const FailingAllocations failure(nth, failing);
        EXPECT_EQ(init_ibitr(8), 0);
      }
      auto line = oracle::random_values<double>(512, 1);
      auto expected = line;
      fft_Fast(line.data(), line.data() + 256, 8);
      fft(expected.data(), expected.data() + 256, 8);
      EXPECT_EQ(line, expected);
    }
  }
}

TEST_F(Tables, AFailureToGrowLeavesNothingShortOrServed) {
  for (int nth = 1; nth <= 4; ++nth) {
    SetUp();
    ASSERT_EQ(init_ibitr(11), 0);
    delete_ibitr();
    ASSERT_EQ(init_ibitr(8), 0);
    {
      const FailingAllocations failing(nth);
      EXPECT_EQ(init_ibitr(10), nth);
    }
    expect_no_length_served();
    ASSERT_EQ(init_ibitr(5), 0);
    expect_tables_of(5);
    ASSERT_EQ(init_ibitr(10), 0);
    expect_tables_of(10);
  }
}

TEST_F(Tables, RefuseExponentsOutsideTheContract) {
  ASSERT_EQ(init_ibitr(4), 0);
  for (const int m : {-1, 31, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
    EXPECT_EQ(init_ibitr(m), 1);
  }
  EXPECT_EQ(table_state.largest_exponent, 4);
  expect_tables_of(4);
}

TEST(BitReversal, ReversesTheLowBits) {
  EXPECT_EQ(ibitr(6, 3), 3);
  EXPECT_EQ(ibitr(1, 3), 4);
  EXPECT_EQ(ibitr(12345, 0), 0);
  EXPECT_EQ(ibitr(-1, 31), std::numeric_limits<int>::max());
  for (int x = 0; x < 4096; ++x) {
    ASSERT_EQ(ibitr(x, 12), oracle::reversed(x, 12));
  }
  // Counts outside the contract end, with what the loop over 32 bits leaves.
  EXPECT_EQ(ibitr(1, 32), std::numeric_limits<int>::min());
  EXPECT_EQ(ibitr(5, -1), 0);
  EXPECT_EQ(ibitr(-5, std::numeric_limits<int>::min()), -1);
}

}  // namespace
