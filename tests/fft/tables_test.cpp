// The process-wide tables: content, reuse, and the sequences in which arrays must grow.
#include <gmock/gmock.h>
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
using testing::ElementsAreArray;
using Failing = FailingAllocations::Failing;

constexpr int least = std::numeric_limits<int>::min(), most = std::numeric_limits<int>::max();

class Tables : public testing::Test {
 protected:
  void SetUp() override {
    delete_ibitr();
    table_state.largest_exponent = 0;
    table_state.swap_count = 0;
  }
};

/// What is filled, and 16 entries of slack, lie inside what is allocated.
template <class T>
void expect_table(const sarnum::TableArray<T>& table, const std::vector<T>& expected,
                  std::size_t size) {
  ASSERT_GE(table.capacity(), size + 16);
  EXPECT_EQ(std::vector<T>(table.data(), table.data() + expected.size()), expected);
}

/// Builds the tables of 2^m and expects them to be complete and served.
void expect_tables_of(int m) {
  SCOPED_TRACE("m=" + std::to_string(m));
  ASSERT_EQ(init_ibitr(m), 0);
  const std::size_t n = std::size_t{1} << m;
  std::vector<int> reversals, pairs;
  std::vector<double> cosines, sines;
  for (int i = 0; i <= 1 << m; ++i) {
    reversals.push_back(oracle::reversed(i, m));
    if (reversals.back() > i) {
      pairs.insert(pairs.end(), {i, reversals.back()});
    }
    if (i < 1 << m >> 1) {
      cosines.push_back(std::cos(std::acos(-1.0) * 2.0 * i / (1 << m)));
      sines.push_back(std::sin(std::acos(-1.0) * 2.0 * i / (1 << m)));
    }
  }
  EXPECT_EQ(2 * static_cast<std::size_t>(table_state.swap_count), pairs.size());
  expect_table(table_state.bit_reversal, reversals, n);
  expect_table(table_state.cosine, cosines, n / 2);
  expect_table(table_state.sine, sines, n / 2);
  expect_table(table_state.swap_pairs, pairs, pairs.size());
}

/// Neither length must be served by tables of which a part is missing.
void expect_no_length_served() {
  EXPECT_FALSE(table_state.ready_exponent.has_value());
  for (const int m : {5, 8, 9, 11}) {
    const std::size_t n = std::size_t{1} << m;
    std::vector<double> data(2 * n, 1.0);
    fft_Fast(data.data(), data.data() + n, m);
    EXPECT_THAT(data, testing::Each(1.0));
  }
}

TEST_F(Tables, HoldReversalsTwiddlesAndSwapPairs) {
  for (int m = 0; m <= 12; ++m) {
    expect_tables_of(m);
  }
  expect_tables_of(3);
  EXPECT_THAT(std::vector(table_state.bit_reversal.data(), table_state.bit_reversal.data() + 9),
              ElementsAreArray({0, 4, 2, 6, 1, 5, 3, 7, 0}));
}

TEST_F(Tables, ASmallerLengthReusesTheArrays) {
  ASSERT_EQ(init_ibitr(10), 0);
  {
    const FailingAllocations none(1, Failing::persistently);
    ASSERT_EQ(init_ibitr(4), 0);
    ASSERT_EQ(init_ibitr(10), 0);
    EXPECT_EQ(none.count(), 0);
  }
  expect_tables_of(4);
  for (const int m : {-1, 31, least, most}) {
    EXPECT_EQ(init_ibitr(m), 1);
  }
  EXPECT_EQ(table_state.largest_exponent, 10);
}

TEST_F(Tables, GrowBelowTheLargestExponentAfterARelease) {
  ASSERT_EQ(init_ibitr(12), 0);
  delete_ibitr();
  delete_ibitr();
  EXPECT_EQ(table_state.largest_exponent, 12);
  EXPECT_NE(table_state.swap_count, 0);
  expect_tables_of(8);
  expect_tables_of(10);
}

TEST_F(Tables, EveryFailedAllocationHasItsStatusAndIsMadeUpForLater) {
  for (const bool grows_after_release : {false, true}) {
    for (int nth = 1; nth <= 4; ++nth) {
      SCOPED_TRACE(testing::Message() << "allocation " << nth << ", grows " << grows_after_release);
      SetUp();
      if (grows_after_release) {
        ASSERT_EQ(init_ibitr(11), 0);
        delete_ibitr();
        ASSERT_EQ(init_ibitr(8), 0);
      }
      {
        const FailingAllocations failing(nth, Failing::persistently);
        EXPECT_EQ(init_ibitr(9), nth);
      }
      EXPECT_EQ(table_state.largest_exponent, grows_after_release ? 11 : 9);
      expect_no_length_served();
      {
        const FailingAllocations counting(0);
        EXPECT_EQ(init_ibitr(9), 0);
        constexpr int derived = 2;
        EXPECT_EQ(counting.count(), 5 - nth + derived) << "allocates only what is missing";
      }
      expect_tables_of(5);
      expect_tables_of(9);
    }
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
