// The filters against their definition, step by step.
#include <gtest/gtest.h>
#include <sarnum/sarnum.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <vector>

#include "plain_transform.h"
#include "same_value.h"

namespace {

/// Real parts, as many imaginary parts, and means and deviations of both.
using Signal = std::vector<double>;

void filter(Signal& signal, bool keeps_band) {
  const std::size_t n = signal.size() / 2 - 2;
  double *const re = signal.data(), *const im = re + n, *const results = im + n;
  if (keeps_band) {
    FilterHighSp(re, im, static_cast<int>(n));
  } else {
    FilterLowSp(re, im, static_cast<int>(n), results, results + 1, results + 2, results + 3);
  }
}

struct Band {
  int lower, upper;

  bool holds(int bin) const {
    return upper >= lower ? bin >= lower && bin <= upper : bin <= upper || bin >= lower;
  }
};

Band peak_band(const std::vector<double>& re, const std::vector<double>& im) {
  const int n = static_cast<int>(re.size());
  std::vector<double> magnitude;
  double mean = 0;
  for (std::size_t i = 0; i < re.size(); ++i) {
    magnitude.push_back(std::sqrt(im[i] * im[i] + re[i] * re[i]));
    mean += magnitude[i] / n;
  }
  const auto peak = std::ranges::max_element(magnitude) - magnitude.begin();
  int bounds[2] = {0, 0};
  for (const int side : {0, 1}) {
    int i = 1;
    for (; i < n; ++i) {
      const auto bin = static_cast<std::size_t>(peak + (2 * side - 1) * i + n) % re.size();
      if (mean >= magnitude[bin]) {
        break;
      }
      bounds[side] = magnitude[bin] > mean ? static_cast<int>(bin) : bounds[side];
    }
    bounds[side] = i < n ? bounds[side] : 0;  // no end within one circle
  }
  return {bounds[0], bounds[1]};
}

/// The definition of either filter.
Band define(Signal& signal, bool keeps_band) {
  const std::size_t n = signal.size() / 2 - 2, padded = std::max(std::bit_ceil(n), std::size_t{2});
  const int exponent = static_cast<int>(std::bit_width(keeps_band ? padded : n)) - 1;
  std::vector<double> parts[2] = {{&signal[0], &signal[n]}, {&signal[n], &signal[2 * n]}};
  parts[0].resize(padded);
  parts[1].resize(padded);
  oracle::radix2<double, double, double>(parts[0].data(), parts[1].data(), exponent, false);
  const Band band = peak_band(parts[0], parts[1]);
  for (std::size_t i = 0; i < padded; ++i) {
    if (band.holds(static_cast<int>(i)) != keeps_band) {
      parts[0][i] = parts[1][i] = 0;
    }
  }
  oracle::radix2<double, double, float>(parts[0].data(), parts[1].data(), exponent, true);
  for (const std::size_t part : {0U, 1U}) {
    double mean = 0, variance = 0;
    for (const double value : parts[part]) {
      mean += value / static_cast<double>(padded);
    }
    for (const double value : parts[part]) {
      variance += (value - mean) * (value - mean) / static_cast<double>(padded);
    }
    if (!keeps_band) {
      signal[2 * n + part] = mean;
      signal[2 * n + 2 + part] = std::sqrt(variance);
    }
    parts[part].push_back(0.0);
    Scale(parts[part].data(), &signal[part * n], static_cast<int>(padded), static_cast<int>(n));
  }
  return band;
}

/// Noise with a tone whose band has a width of about `width` bins.
Signal tone_in_noise(std::size_t n, double bin, double width, unsigned seed) {
  Signal signal = oracle::random_values<double>(2 * n + 4, seed);
  for (std::size_t i = 0; i < n; ++i) {
    const double t = static_cast<double>(i) / static_cast<double>(n);
    signal[i] += 30.0 * std::exp(-5.0 * width * t) * std::cos(6.283185307179586 * bin * t);
    signal[n + i] += 30.0 * std::exp(-5.0 * width * t) * std::sin(6.283185307179586 * bin * t);
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
        input[n / 2] = std::numeric_limits<double>::quiet_NaN();
      } else if (round == 28 && n == 4) {  // magnitudes 5, 3, 4, 0: one is equal to their mean
        input = {3, 0.25, 1.5, 0.25, 0, 0.75, 0, -0.75, 7, 7, 7, 7};
      } else if (round == 27 || round == 26) {  // magnitudes all above their mean, or overflowing
        std::ranges::fill(input, 0.0);
        input[0] = round == 27 ? 0.1 : 1e200;
      }
      for (const bool keeps_band : {true, false}) {
        Signal actual = input, expected = input;
        filter(actual, keeps_band);
        const Band band = define(expected, keeps_band);
        ASSERT_TRUE(same_values(actual, expected)) << "keeps the band: " << keeps_band;
        wrapped += band.upper < band.lower;
        ordinary += band.lower > 0 && band.upper > band.lower;
        one_side_at_zero += band.lower == 0 && band.upper > 0;
      }
    }
  }
  EXPECT_TRUE(wrapped > 20 && ordinary > 20 && one_side_at_zero > 20);
}

}  // namespace
