// The mean and the sum of squared deviations are brought up to date by a run of samples at a
// time, after T. F. Chan, G. H. Golub and R. J. LeVeque, "Algorithms for computing the sample
// variance" (The American Statistician 37, 1983). With the deviations c = x - mean from the mean
// so far, N samples with the new ones:
//
//   mean += Σc / N          squares += Σc² - (Σc)² / N
//
// What is subtracted never comes near the sum: for a run of n samples it is at most n/N of Σc²
// and, in the first run, at most n times what remains, since the mean starts from a sample. What
// rounding takes from the mean is kept beside it: over many runs it would be seen in the deviation
// of samples that vary little about a large mean. All is scaled by a power of two, which is exact,
// so that squares neither overflow nor vanish. A run is short enough to stay in the first cache
// while it is looked through.
#include "running_statistics.h"

#include <sarnum/sarnum.h>

#include <algorithm>
#include <cmath>
#include <iterator>

namespace sarnum::tool {

void RunningStatistics::add(std::span<const double> samples) {
  constexpr std::size_t longest_run = 2048;
  for (; samples.size() > longest_run; samples = samples.subspan(longest_run)) {
    add_run(samples.first(longest_run));
  }
  add_run(samples);
}

void RunningStatistics::add_run(std::span<const double> samples) {
  values_.clear();
  std::copy_if(samples.begin(), samples.end(), std::back_inserter(values_),
               [](double value) { return !std::isnan(value); });
  if (!values_.empty()) {
    const auto extreme = [&](double value) {
      const auto first = std::find(samples.begin(), samples.end(), value);
      return Extreme{value, seen_ + (first - samples.begin())};
    };
    const auto count = static_cast<int>(values_.size());
    const double smallest = Min_mass(values_.data(), count);
    const double largest = Max_mass(values_.data(), count);
    if (!minimum_ || smallest < minimum_->value) {
      minimum_ = extreme(smallest);
    }
    if (!maximum_ || largest > maximum_->value) {
      maximum_ = extreme(largest);
    }
    if (std::isinf(smallest) || std::isinf(largest)) {
      infinite_ +=
          static_cast<std::int64_t>(std::erase_if(values_, [](double x) { return std::isinf(x); }));
    }
  }
  seen_ += static_cast<std::int64_t>(samples.size());
  if (!values_.empty()) {
    add_finite(values_);
  }
}

/// Makes the largest sample so far about 1. What vanishes in that is nothing beside it.
void RunningStatistics::scale_to(double largest) {
  constexpr int most = 1000;  // the scale and its inverse are then normal numbers
  largest_ = largest;
  const double scale = std::ldexp(1.0, std::clamp(-std::ilogb(largest), -most, most));
  const double change = scale / scale_;
  scale_ = scale;
  mean_ *= change;
  mean_rest_ *= change;
  squares_ = squares_ * change * change;
}

void RunningStatistics::add_finite(std::vector<double>& values) {
  const auto count = static_cast<int>(values.size());
  const double largest = std::abs(Max_mass_ABS(values.data(), count));
  if (largest > largest_) {
    scale_to(largest);
  }
  if (finite_ == 0) {
    mean_ = values.front() * scale_;
  }
  finite_ += count;
  for (double& value : values) {
    value = value * scale_ - mean_;
  }
  // From deviations x - mean_ to those from mean_ + mean_rest_.
  const auto total = static_cast<double>(finite_);
  const double sum = Sum_mass(values.data(), count);
  const double rest_sum = sum - count * mean_rest_;
  squares_ += Scalar_Multiply(values.data(), values.data(), count) - mean_rest_ * (sum + rest_sum) -
              rest_sum * (rest_sum / total);
  const double step = mean_rest_ + rest_sum / total;
  const double mean = mean_ + step;
  mean_rest_ = step - (mean - mean_);
  mean_ = mean;
}

std::optional<double> RunningStatistics::mean() const {
  return finite_ > 0 ? std::optional(mean_ / scale_) : std::nullopt;
}

std::optional<double> RunningStatistics::standard_deviation() const {
  // Rounding may leave the sum a little below zero.
  return finite_ > 0
             ? std::optional(std::sqrt(std::max(squares_, 0.0) / static_cast<double>(finite_)) /
                             scale_)
             : std::nullopt;
}

}  // namespace sarnum::tool
