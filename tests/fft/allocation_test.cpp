// Transforms that run short of memory: the stated outcome for every allocation that can fail.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sarnum/sarnum.h>

#include <cstring>
#include <functional>
#include <new>
#include <string>
#include <vector>

#include "failing_allocations.h"
#include "plain_transform.h"

namespace {

using Failing = FailingAllocations::Failing;

/// The transform allocates its twiddles alone, and gives the same values without them.
template <class Real>
void expect_same_without_storage(const std::function<void(Real*, Real*)>& transform) {
  auto re = oracle::random_values<Real>(1024, 1);
  auto im = oracle::random_values<Real>(1024, 2);
  auto expected_re = re;
  auto expected_im = im;
  transform(expected_re.data(), expected_im.data());
  int asked = 0;
  {
    const FailingAllocations failing(1, Failing::persistently);
    transform(re.data(), im.data());
    asked = failing.count();
  }
  EXPECT_EQ(asked, 1);
  EXPECT_EQ(re, expected_re);
  EXPECT_EQ(im, expected_im);
}

TEST(Allocation, OneDimensionalTransformsNeedNoTwiddleStorage) {
  CFFTClass object;
  expect_same_without_storage<double>([](auto x, auto y) { fft(x, y, 10); });
  expect_same_without_storage<double>([](auto x, auto y) { ifft(x, y, 10); });
  expect_same_without_storage<double>([&](auto x, auto y) { object.fft(x, y, 10); });
  expect_same_without_storage<double>([&](auto x, auto y) { object.ifft(x, y, 10); });
  expect_same_without_storage<double>([&](auto x, auto y) { object.fft_new(x, y, 10, 1); });
  expect_same_without_storage<float>([](auto x, auto y) { fft(x, y, 10); });
  expect_same_without_storage<float>([](auto x, auto y) { ifft(x, y, 10); });
  expect_same_without_storage<float>([](auto x, auto) { fft(x, 9); });
  expect_same_without_storage<float>([](auto x, auto) { ifft(x, 9); });
  expect_same_without_storage<float>([&](auto x, auto y) { object.fft(x, y, 10); });
  expect_same_without_storage<float>([&](auto x, auto y) { object.ifft(x, y, 10); });
  expect_same_without_storage<float>([&](auto x, auto y) { object.fft_new(x, y, 10, 1); });
  expect_same_without_storage<float>([&](auto x, auto y) {
    std::vector<float>::size_type half = 512;
    object.SyntAlmaz(y, y + half, x, x + half, 100, 9);
  });
}

/// Counts calls and keeps the text without allocating anything itself.
class CountingMeter : public CMeterInfo {
 public:
  void SetRange(int, int) override { ++preparations; }
  int SetStep(int) override { return ++preparations; }
  void SetText(const char* shown) override {
    ++preparations;
    std::strncpy(text, shown, sizeof text - 1);
  }
  void StepIt() override { ++steps; }

  char text[80] = {};
  int preparations = 0;
  int steps = 0;
};

enum class Transform { forward, centred, inverse };

/// Runs a 16 × 8 complex float transform with the nth allocation failing (0: none).
struct TransformRun {
  TransformRun(Transform kind, int nth, Failing failing)
      : values(oracle::random_values<float>(2 * 16 * 8, 3)) {
    std::vector<void*> rows;
    for (std::size_t row = 0; row < 8; ++row) {
      rows.push_back(values.data() + 2 * 16 * row);
    }
    const std::vector<float> before = values;
    {
      const FailingAllocations failure(nth, failing);
      result = run(kind, rows.data());
      count = failure.count();
    }
    untouched = values == before;
  }

  int run(Transform kind, void** rows) {
    CFFTClass object;
    switch (kind) {
      case Transform::forward:
        return object.FFT_2D(rows, rows, 16, 8, TD_COMPLEX_FLOAT32, &meter);
      case Transform::centred:
        return object.FFT_2D_NEW(rows, rows, 16, 8, TD_COMPLEX_FLOAT32, 1, &meter);
      default:
        return object.IFFT_2D(rows, rows, 16, 8, TD_COMPLEX_FLOAT32, &meter);
    }
  }

  std::vector<float> values;
  CountingMeter meter;
  int result = -1;
  int count = 0;
  bool untouched = false;
};

TEST(Allocation, TwoDimensionalTransformsAreDoneWholeOrNotAtAll) {
  for (const Transform kind : {Transform::forward, Transform::centred, Transform::inverse}) {
    for (const Failing failing : {Failing::once, Failing::persistently}) {
      const TransformRun whole(kind, 0, failing);
      ASSERT_EQ(whole.result, 1);
      int not_done = 0;
      int done = 0;
      for (int nth = 1; nth <= whole.count; ++nth) {
        SCOPED_TRACE(testing::Message()
                     << "kind " << static_cast<int>(kind) << " allocation " << nth);
        const TransformRun run(kind, nth, failing);
        if (run.untouched) {
          ++not_done;
          EXPECT_EQ(run.result, kind == Transform::centred ? 1 : 0);
          EXPECT_EQ(run.meter.steps, 0);
          EXPECT_EQ(run.meter.preparations, kind == Transform::inverse ? 3 : 0);
        } else {
          ++done;
          EXPECT_EQ(run.result, 1);
          EXPECT_EQ(run.values, whole.values);
          EXPECT_EQ(run.meter.steps, 16 + 8);
          EXPECT_EQ(run.meter.preparations, 3);
          EXPECT_THAT(run.meter.text, testing::EndsWith("..."));
        }
      }
      EXPECT_GE(not_done, 2) << "the two work buffers";
      EXPECT_GE(done, 2) << "the twiddles of both lengths";
    }
  }
}

TEST(Allocation, ABlockThrowsForEitherTableAndKeepsNothing) {
  for (const int nth : {1, 2}) {
    const FailingAllocations failing(nth);
    EXPECT_THROW(CVeryFastFT block(4), std::bad_alloc);
  }
}

}  // namespace
