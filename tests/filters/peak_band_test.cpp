// The filters against their definition, step by step.
#include <gtest/gtest.h>
#include <sarnum/sarnum.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <limits>
#include <vector>

#include "failing_allocations.h"
#include "plain_transform.h"
#include "same_value.h"

namespace {

struct Signal {
  std::vector<double> re, im;
  double statistics[4] = {-1, -1, -1, -1};  // mean re, mean im, sigma re, sigma im
};

using Filter = void (*)(Signal&);

void keep_band(Signal& signal) {
  FilterHighSp(signal.re.data(), signal.im.data(), static_cast<int>(signal.re.size()));
}

void remove_band(Signal& signal) {
  double* const s = signal.statistics;
  FilterLowSp(signal.re.data(), signal.im.data(), static_cast<int>(signal.re.size()), &s[0], &s[1],
              &s[2], &s[3]);
}

struct Band {
  int lower, upper;

  bool holds(int bin) const {
    return upper >= lower ? bin >= lower && bin <= upper : bin <= upper || bin >= lower;
  }
};

Band peak_band(const std::vector<double>& re, const std::vector<double>& im) {
  const int n = static_cast<int>(re.size());
  std::vector<double> magnitude(re.size());
  double mean = 0;
  int peak = 0;
  const auto at = [&](int bin) { return magnitude[static_cast<std::size_t>((bin + 2 * n) % n)]; };
  for (int i = 0; i < n; ++i) {
    const auto k = static_cast<std::size_t>(i);
    magnitude[k] = std::sqrt(im[k] * im[k] + re[k] * re[k]);
    mean += magnitude[k] / n;
    peak = at(i) > at(peak) ? i : peak;
  }
  int bounds[2] = {0, 0};
  for (const int side : {0, 1}) {
    int i = 1;
    for (; i < n && !(mean >= at(peak + (2 * side - 1) * i)); ++i) {
      const int bin = (peak + (2 * side - 1) * i + n) % n;
      bounds[side] = at(bin) > mean ? bin : bounds[side];
    }
    bounds[side] = i < n ? bounds[side] : 0;  // no end within one circle
  }
  return {bounds[0], bounds[1]};
}

/// The definition of either filter.
Band define(Signal& signal, bool keeps) {
  const std::size_t n = signal.re.size();
  std::size_t padded = 2;
  int exponent = 1;
  while (padded < n) {
    padded *= 2;
    ++exponent;
  }
  if (!keeps && padded != n) {
    --exponent;
  }
  std::vector<double>* const parts[2] = {&signal.re, &signal.im};
  std::vector<double> re = signal.re, im = signal.im;
  re.resize(padded);
  im.resize(padded);
  oracle::radix2<double, double, double>(re.data(), im.data(), exponent, false);
  const Band band = peak_band(re, im);
  for (std::size_t i = 0; i < padded; ++i) {
    if (band.holds(static_cast<int>(i)) != keeps) {
      re[i] = im[i] = 0;
    }
  }
  oracle::radix2<double, double, float>(re.data(), im.data(), exponent, true);
  const std::vector<double>* const results[2] = {&re, &im};
  for (const int part : {0, 1}) {
    std::vector<double> x = *results[part];
    double mean = 0, sigma = 0;
    for (const double value : x) {
      mean += value / static_cast<double>(padded);
    }
    for (const double value : x) {
      sigma += (value - mean) * (value - mean) / static_cast<double>(padded);
    }
    if (!keeps) {
      signal.statistics[part] = mean;
      signal.statistics[2 + part] = std::sqrt(sigma);
    }
    x.push_back(0.0);
    Scale(x.data(), parts[part]->data(), static_cast<int>(padded), static_cast<int>(n));
  }
  return band;
}

void expect_same(const Signal& actual, const Signal& expected) {
  for (std::size_t i = 0; i < expected.re.size(); ++i) {
    ASSERT_PRED2(same_value, actual.re[i] + 0.0, expected.re[i] + 0.0);  // any sign of a zero
    ASSERT_PRED2(same_value, actual.im[i] + 0.0, expected.im[i] + 0.0);
  }
  for (const int i : {0, 1, 2, 3}) {
    ASSERT_PRED2(same_value, actual.statistics[i], expected.statistics[i]);
  }
}

/// Noise with a tone whose band has a width of about `width` bins.
Signal tone_in_noise(std::size_t n, double bin, double width, unsigned seed) {
  Signal signal{oracle::random_values<double>(n, seed), oracle::random_values<double>(n, seed + 1)};
  for (std::size_t i = 0; i < n; ++i) {
    const double t = static_cast<double>(i) / static_cast<double>(n);
    const double decay = 30.0 * std::exp(-5.0 * width * t);
    signal.re[i] += decay * std::cos(6.283185307179586 * bin * t);
    signal.im[i] += decay * std::sin(6.283185307179586 * bin * t);
  }
  return signal;
}

TEST(PeakBandFilters, FollowTheirDefinition) {
  int wrapped = 0, ordinary = 0, one_side_at_zero = 0;
  for (const std::size_t n : {1U, 2U, 3U, 4U, 5U, 7U, 8U, 16U, 33U, 64U, 100U, 128U, 255U}) {
    for (unsigned round = 0; round < 30; ++round) {
      SCOPED_TRACE(testing::Message() << n << " samples, round " << round);
      Signal input = tone_in_noise(n, round * static_cast<double>(n) / 30.0, round % 4, round);
      if (round == 29) {
        input.re[n / 2] = std::numeric_limits<double>::quiet_NaN();
      } else if (round == 28 && n == 4) {  // magnitudes 5, 3, 4, 0: one is equal to their mean
        input = {{3, 0.25, 1.5, 0.25}, {0, 0.75, 0, -0.75}};
      } else if (round == 27 || round == 26) {  // magnitudes all above their mean, or overflowing
        std::fill(input.re.begin(), input.re.end(), 0.0);
        std::fill(input.im.begin(), input.im.end(), 0.0);
        input.re[0] = round == 27 ? 0.1 : 1e200;
      }
      for (const bool keeps : {true, false}) {
        Signal actual = input;
        Signal expected = input;
        (keeps ? keep_band : remove_band)(actual);
        const Band band = define(expected, keeps);
        expect_same(actual, expected);
        wrapped += band.upper < band.lower;
        ordinary += band.lower > 0 && band.upper > band.lower;
        one_side_at_zero += band.lower == 0 && band.upper > 0;
      }
    }
  }
  EXPECT_GT(wrapped, 20);
  EXPECT_GT(ordinary, 20);
  EXPECT_GT(one_side_at_zero, 20);
}

// Both sides of a pure tone stop at once, so that its band is bin 0 alone; what one filter keeps is
// what the other removes.
TEST(PeakBandFilters, APureToneIsNotInItsBand) {
  Signal tone{std::vector<double>(64), std::vector<double>(64)};
  for (std::size_t i = 0; i < 64; ++i) {
    tone.re[i] = 0.25 + std::cos(6.283185307179586 * 5.0 * static_cast<double>(i) / 64.0);
    tone.im[i] = std::sin(6.283185307179586 * 5.0 * static_cast<double>(i) / 64.0);
  }
  Signal kept = tone;
  Signal removed = tone;
  keep_band(kept);
  remove_band(removed);
  for (std::size_t i = 0; i < 64; ++i) {
    EXPECT_NEAR(kept.re[i], 0.25 * 64, 1e-5);
    EXPECT_NEAR(kept.re[i] + removed.re[i], tone.re[i] * 64, 1e-4);
    EXPECT_NEAR(kept.im[i] + removed.im[i], tone.im[i] * 64, 1e-4);
  }
}

TEST(PeakBandFilters, LackOfStorageChangesNothingOrNoValue) {
  const Signal input = tone_in_noise(50, 11, 2, 5);
  for (const Filter filter : {keep_band, remove_band}) {
    Signal expected = input;
    filter(expected);
    for (const auto failing :
         {FailingAllocations::Failing::once, FailingAllocations::Failing::persistently}) {
      for (int nth = 1; nth <= 6; ++nth) {
        Signal actual = input;
        int count = 0;
        {
          const FailingAllocations failure(nth, failing);
          filter(actual);
          count = failure.count();
        }
        // The three arrays come first; what the transforms then lack costs them only time.
        expect_same(actual, nth <= 3 ? input : expected);
        EXPECT_GE(count, 3);
      }
    }
  }
}

TEST(PeakBandFilters, NoSamplesAreNotTouched) {
  for (const int n : {0, -1, INT_MIN, (1 << 30) + 1, INT_MAX}) {
    FilterHighSp(nullptr, nullptr, n);
    FilterLowSp(nullptr, nullptr, n, nullptr, nullptr, nullptr, nullptr);
  }
}

}  // namespace
