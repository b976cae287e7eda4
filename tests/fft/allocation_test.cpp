// Transforms that run short of memory: the stated outcome for every allocation that can fail.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sarnum/sarnum.h>

#include <cstring>
#include <new>
#include <vector>

#include "failing_allocations.h"
#include "transform_forms.h"

namespace {

using Failing = FailingAllocations::Failing;

template <class Real, class Transform>
void expect_same_without_storage(Transform transform) {
  auto data = oracle::random_values<Real>(2048, 1);
  auto expected = data;
  transform(expected.data(), expected.data() + 1024);
  {
    const FailingAllocations failing(1, Failing::persistently);
    transform(data.data(), data.data() + 1024);
  }
  EXPECT_EQ(data, expected);
}

template <class Real>
void check_forms() {
  for (const auto& form : forms::all<Real>()) {
    SCOPED_TRACE(form.name);
    if (std::strstr(form.name, "interleaved") == nullptr) {  // the test's own wrapper allocates
      expect_same_without_storage<Real>([&](Real* re, Real* im) { form.transform(re, im, 10); });
    }
  }
}

TEST(Allocation, OneDimensionalTransformsNeedNoTwiddleStorage) {
  ASSERT_EQ(init_ibitr(10), 0);
  check_forms<double>();
  check_forms<float>();
  expect_same_without_storage<float>([](float* data, float*) { fft(data, 10); });
  expect_same_without_storage<float>([](float* data, float*) { ifft(data, 10); });
  expect_same_without_storage<float>(
      [](float* re, float* im) { CFFTClass().SyntAlmaz(re + 512, im + 512, re, im, 100, 9); });
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
    const std::vector<float> before = values;
    void* rows[8];
    for (std::size_t row = 0; row < 8; ++row) {
      rows[row] = values.data() + 2 * 16 * row;
    }
    CFFTClass object;
    {
      const FailingAllocations failure(nth, failing);
      result = kind == Transform::inverse   ? object.IFFT_2D(rows, rows, 16, 8, 9, &meter)
               : kind == Transform::forward ? object.FFT_2D(rows, rows, 16, 8, 9, &meter)
                                            : object.FFT_2D_NEW(rows, rows, 16, 8, 9, 1, &meter);
      count = failure.count();
    }
    untouched = values == before;
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
          EXPECT_EQ(run.result, 1);
          EXPECT_EQ(run.values, whole.values);
          EXPECT_EQ(run.meter.steps, 16 + 8);
          EXPECT_THAT(run.meter.text, testing::EndsWith("..."));
        }
      }
      EXPECT_GE(not_done, 2) << "the two work buffers";
      EXPECT_GE(whole.count - not_done, 2) << "the twiddles of both lengths";
    }
  }
}

TEST(Allocation, ABlockThrowsForEitherTable) {
  for (const int nth : {1, 2}) {
    const FailingAllocations failing(nth);
    EXPECT_THROW(CVeryFastFT block(4), std::bad_alloc);
  }
}

}  // namespace
