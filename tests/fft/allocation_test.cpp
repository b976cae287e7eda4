// Transforms that run short of memory: the stated outcome for every allocation that can fail.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sarnum/sarnum.h>

#include <cstring>
#include <string>
#include <vector>

#include "failing_allocations.h"
#include "plain_transform.h"

namespace {

TEST(Allocation, OneDimensionalTransformsNeedNoTwiddleStorage) {
  const auto re = oracle::random_values<double>(1024, 1);
  const auto im = oracle::random_values<double>(1024, 2);
  const auto run = [&](auto&& transform, int failing) {
    auto x = re;
    auto y = im;
    int asked = 0;
    {
      const FailingAllocations failure(failing, FailingAllocations::Failing::persistently);
      transform(x.data(), y.data());
      asked = failure.count();
    }
    EXPECT_EQ(asked, 1);
    return std::pair(x, y);
  };
  const auto check = [&](auto&& transform) { EXPECT_EQ(run(transform, 1), run(transform, 0)); };
  check([](double* x, double* y) { fft(x, y, 10); });
  check([](double* x, double* y) { ifft(x, y, 10); });
  check([](double* x, double* y) { CFFTClass().fft(x, y, 10); });
  check([](double* x, double* y) { CFFTClass().ifft(x, y, 10); });
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

/// Runs a 16 × 8 complex float transform with the nth allocation failing (0: none).
struct TransformRun {
  TransformRun(bool inverse, int nth) : pixels(16 * 8, {1.0F, 2.0F}) {
    for (int row = 0; row < 8; ++row) {
      pixels[static_cast<std::size_t>(row)].re = static_cast<float>(row);
      rows.push_back(pixels.data() + 16 * row);
    }
    const std::vector<float> before = values();
    {
      const FailingAllocations failing(nth);
      CFFTClass transform;
      result = inverse
                   ? transform.IFFT_2D(rows.data(), rows.data(), 16, 8, TD_COMPLEX_FLOAT32, &meter)
                   : transform.FFT_2D(rows.data(), rows.data(), 16, 8, TD_COMPLEX_FLOAT32, &meter);
      count = failing.count();
    }
    untouched = values() == before;
  }

  std::vector<float> values() const {
    std::vector<float> all;
    for (const COMPLEX_FLOAT32& pixel : pixels) {
      all.push_back(pixel.re);
      all.push_back(pixel.im);
    }
    return all;
  }

  std::vector<COMPLEX_FLOAT32> pixels;
  std::vector<void*> rows;
  CountingMeter meter;
  int result = -1;
  int count = 0;
  bool untouched = false;
};

TEST(Allocation, TwoDimensionalTransformsFailWholeOrNotAtAll) {
  for (const bool inverse : {false, true}) {
    const TransformRun whole(inverse, 0);
    ASSERT_EQ(whole.result, 1);
    int refused = 0;
    int completed = 0;
    for (int nth = 1; nth <= whole.count; ++nth) {
      SCOPED_TRACE((inverse ? "inverse, allocation " : "forward, allocation ") +
                   std::to_string(nth));
      const TransformRun run(inverse, nth);
      if (run.result == 0) {
        ++refused;
        EXPECT_TRUE(run.untouched);
        EXPECT_EQ(run.meter.steps, 0);
        EXPECT_EQ(run.meter.preparations, inverse ? 3 : 0);
      } else {
        ++completed;
        EXPECT_EQ(run.values(), whole.values());
        EXPECT_EQ(run.meter.steps, 16 + 8);
        EXPECT_EQ(run.meter.preparations, 3);
        EXPECT_THAT(run.meter.text, testing::EndsWith("..."));
      }
    }
    EXPECT_EQ(refused, 2) << "the two work buffers";
    EXPECT_GE(completed, 3) << "the meter's text, and the twiddles of both lengths";
  }
}

}  // namespace
