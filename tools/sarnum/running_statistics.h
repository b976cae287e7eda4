// Extremes, mean and standard deviation of samples that are seen once, a run after another.
#ifndef SARNUM_TOOL_RUNNING_STATISTICS_H
#define SARNUM_TOOL_RUNNING_STATISTICS_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace sarnum::tool {

/// NaN is no sample and is passed over, but counts for positions. Infinities are extremes like any
/// other value, and are left out of mean and standard deviation, which they would void.
class RunningStatistics {
 public:
  struct Extreme {
    double value;
    std::int64_t position;  ///< of the first sample of this value, from 0
  };

  void add(std::span<const double> samples);

  std::int64_t seen() const { return seen_; }
  std::int64_t valid() const { return finite_ + infinite_; }
  std::int64_t infinite() const { return infinite_; }

  /// Nothing where no sample is valid.
  std::optional<Extreme> minimum() const { return minimum_; }
  std::optional<Extreme> maximum() const { return maximum_; }

  /// Of the finite samples; nothing where there are none. The deviation is that of the samples
  /// as the whole population (divided by their number).
  std::optional<double> mean() const;
  std::optional<double> standard_deviation() const;

 private:
  void add_run(std::span<const double> samples);
  void add_finite(std::vector<double>& values);
  void scale_to(double largest);

  std::int64_t seen_ = 0;
  std::int64_t finite_ = 0;
  std::int64_t infinite_ = 0;
  std::optional<Extreme> minimum_;
  std::optional<Extreme> maximum_;
  double largest_ = 0;    // magnitude of the finite samples
  double scale_ = 1;      // of the three below
  double mean_ = 0;       // of the finite samples
  double mean_rest_ = 0;  // what rounding took from it
  double squares_ = 0;    // of their deviations from the mean, summed
  std::vector<double> values_;
};

}  // namespace sarnum::tool

#endif
