// The filters that keep or remove the peak band of a spectrum. They differ in what they set to
// zero and in the exponent of their transforms: that of the padded length in one, of the given
// length in the other.
#include "sarnum/filters/peak_band.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <memory>
#include <new>

#include "sarnum/fft/reference.h"
#include "sarnum/numeric/scalar.h"
#include "sarnum/numeric/statistics.h"

namespace {

/// First and last bin of a band; upper < lower when it lies across the end of the spectrum.
struct Band {
  int lower = 0;
  int upper = 0;
};

/// The bins on one side of the peak (step −1 or +1), which belong to the band up to the first one
/// that is not above the mean.
/// @return the last bin of the band, 0 when the first one is already outside. Where no bin ends the
///         band within one circle, the spectrum is flat and its mean was rounded down, or it is
///         NaN: also 0, as for a flat spectrum whose mean is exact.
int bound(const double* magnitude, int count, int peak, int step, double mean) {
  int last = 0;
  int bin = peak;
  for (int walked = 1; walked < count; ++walked) {
    bin += step;
    if (bin < 0) {
      bin = count - 1;
    } else if (bin == count) {
      bin = 0;
    }
    if (mean >= magnitude[bin]) {
      return last;
    }
    if (magnitude[bin] > mean) {
      last = bin;
    }
  }
  return 0;
}

/// A zero-padded copy of a signal, which is a spectrum in between.
class PaddedSignal {
 public:
  /// Holds nothing when storage could not be had, or the padded length is none.
  PaddedSignal(const double* re, const double* im, int n) {
    const double padded = Add_to_Power_of_2(n);
    if (padded < n) {
      return;  // beyond the range of a 32-bit length
    }
    count_ = static_cast<int>(padded);
    // One element more than the samples, as the resampling reads one.
    const std::size_t size = static_cast<std::size_t>(count_) + 1;
    re_.reset(new (std::nothrow) double[size]());
    im_.reset(new (std::nothrow) double[size]());
    magnitude_.reset(new (std::nothrow) double[size - 1]);
    if (is_held()) {
      std::copy_n(re, n, re_.get());
      std::copy_n(im, n, im_.get());
    }
  }

  bool is_held() const { return re_ != nullptr && im_ != nullptr && magnitude_ != nullptr; }
  int count() const { return count_; }
  const double* re() const { return re_.get(); }
  const double* im() const { return im_.get(); }

  void transform(int exponent) { fft(re_.get(), im_.get(), exponent); }
  void transform_back(int exponent) { ifft(re_.get(), im_.get(), exponent); }

  Band peak_band() {
    double* const magnitude = magnitude_.get();
    double mean = 0.0;
    for (std::size_t i = 0; i < static_cast<std::size_t>(count_); ++i) {
      magnitude[i] = std::sqrt(im_[i] * im_[i] + re_[i] * re_[i]);
      mean += magnitude[i] / count_;
    }
    const int peak = Max_mass_index(magnitude, count_);
    return {bound(magnitude, count_, peak, -1, mean), bound(magnitude, count_, peak, +1, mean)};
  }

  /// Bins begin … end − 1; none where end ≤ begin.
  void set_to_zero(int begin, int end) {
    const int size = std::max(end - begin, 0);
    std::fill_n(re_.get() + begin, size, 0.0);
    std::fill_n(im_.get() + begin, size, 0.0);
  }

  void resample_to(double* re, double* im, int n) {
    Scale(re_.get(), re, count_, n);
    Scale(im_.get(), im, count_, n);
  }

 private:
  int count_ = 0;
  std::unique_ptr<double[]> re_;
  std::unique_ptr<double[]> im_;
  std::unique_ptr<double[]> magnitude_;
};

struct Statistics {
  double mean = 0.0;
  double deviation = 0.0;
};

/// Each term is divided before it is added.
Statistics statistics(const double* x, int count) {
  Statistics result;
  for (int i = 0; i < count; ++i) {
    result.mean += x[i] / count;
  }
  for (int i = 0; i < count; ++i) {
    const double difference = x[i] - result.mean;
    result.deviation += difference * difference / count;
  }
  result.deviation = std::sqrt(result.deviation);
  return result;
}

}  // namespace

void FilterHighSp(double* re, double* im, int n) {
  if (n <= 0) {
    return;
  }
  PaddedSignal signal(re, im, n);
  if (!signal.is_held()) {
    return;
  }
  const int exponent = static_cast<int>(Power_of_two(signal.count()));
  signal.transform(exponent);
  const auto [lower, upper] = signal.peak_band();
  if (upper >= lower) {
    signal.set_to_zero(0, lower);
    signal.set_to_zero(upper + 1, signal.count());
  } else {
    signal.set_to_zero(upper + 1, lower);
  }
  signal.transform_back(exponent);
  signal.resample_to(re, im, n);
}

void FilterLowSp(double* re, double* im, int n, double* meanRe, double* meanIm, double* sigmaRe,
                 double* sigmaIm) {
  if (n <= 0) {
    return;
  }
  PaddedSignal signal(re, im, n);
  if (!signal.is_held()) {
    return;
  }
  const int exponent = static_cast<int>(Power_of_two(n));
  signal.transform(exponent);
  const auto [lower, upper] = signal.peak_band();
  if (upper < lower) {
    signal.set_to_zero(0, upper + 1);
    signal.set_to_zero(lower, signal.count());
  } else {
    signal.set_to_zero(lower, upper + 1);
  }
  signal.transform_back(exponent);
  signal.resample_to(re, im, n);
  const Statistics of_re = statistics(signal.re(), signal.count());
  const Statistics of_im = statistics(signal.im(), signal.count());
  *meanRe = of_re.mean;
  *sigmaRe = of_re.deviation;
  *meanIm = of_im.mean;
  *sigmaIm = of_im.deviation;
}
