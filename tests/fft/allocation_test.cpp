// Transforms that run short of memory: the stated outcome for every allocation that can fail.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sarnum/sarnum.h>

#include <new>
#include <string>
#include <vector>

#include "failing_allocations.h"
#include "recording_meter.h"
#include "transform_forms.h"

namespace {

using testing::MatchesRegex;
using Failing = FailingAllocations::Failing;

template <class Real>
void check_forms() {
  auto all = forms::all<Real>();
  if constexpr (sizeof(Real) == sizeof(float)) {
    all.push_back({"SyntAlmaz", {}, false, false, false, [](float* re, float* im, int) {
                     CFFTClass().SyntAlmaz(re + 512, im + 512, re, im, 100, 9);
                   }});
  }
  for (const auto& form : all) {
    auto data = oracle::random_values<Real>(2048, 1), expected = data;
    form.transform(expected.data(), expected.data() + 1024, 10);
    {
      const FailingAllocations failing(1, Failing::persistently);
      form.transform(data.data(), data.data() + 1024, 10);
    }
    EXPECT_EQ(data, expected) << form.name;
  }
}

TEST(Allocation, OneDimensionalTransformsNeedNoTwiddleStorage) {
  ASSERT_EQ(init_ibitr(10), 0);
  check_forms<double>();
  check_forms<float>();
}

enum Kind { forward, centred, inverse };

/// Runs a 16 × 32 complex float transform, whose columns take two passes, with the nth allocation
/// failing (0: none).
struct TransformRun {
  TransformRun(Kind kind, int nth, Failing failing) {
    void* rows[32];
    for (std::size_t row = 0; row < 32; ++row) {
      rows[row] = values.data() + 2 * 16 * row;
    }
    CFFTClass object;
    const FailingAllocations failure(nth, failing);
    result = kind == inverse   ? object.IFFT_2D(rows, rows, 16, 32, 9, &meter)
             : kind == forward ? object.FFT_2D(rows, rows, 16, 32, 9, &meter)
                               : object.FFT_2D_NEW(rows, rows, 16, 32, 9, 1, &meter);
    count = failure.count();
  }

  const std::vector<float> before = oracle::random_values<float>(2 * 16 * 32, 3);
  std::vector<float> values = before;
  RecordingMeter meter;
  int result = -1, count = 0;
};

TEST(Allocation, TwoDimensionalTransformsAreDoneWholeOrNotAtAll) {
  // The caption may be lost, as it is not worth the transform.
  const std::string prepared = "range 0 48 step 1 [^|.]*\\.\\.\\.";
  for (const Kind kind : {forward, centred, inverse}) {
    for (const Failing failing : {Failing::once, Failing::persistently}) {
      const TransformRun whole(kind, 0, failing);
      int not_done = 0;
      for (int nth = 1; nth <= whole.count; ++nth) {
        SCOPED_TRACE(testing::Message() << "kind " << kind << " allocation " << nth);
        const TransformRun run(kind, nth, failing);
        if (run.values == run.before) {
          ++not_done;
          EXPECT_EQ(run.result, kind == centred ? 1 : 0);
          EXPECT_THAT(run.meter.calls, MatchesRegex(kind == inverse ? prepared : ""));
        } else {
          EXPECT_EQ(run.result, 1);
          EXPECT_EQ(run.values, whole.values);
          EXPECT_THAT(run.meter.calls, MatchesRegex(prepared + "\\|{48}"));
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
