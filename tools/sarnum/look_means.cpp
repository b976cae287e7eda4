// The library averages rows of 32-bit floats, all of them. Where some do not count, or are
// decibels, their sums are made here, in double to the end: by the number of those that count,
// which differs from mean to mean, a mean that was rounded before could not be divided without a
// trace.
#include "look_means.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "elementary/functions.h"

namespace sarnum::tool {
LookMeans::LookMeans(const RasterInput& input, Looks looks, SampleRule rule)
    : input_(input),
      looks_(looks),
      rule_(rule),
      scale_(input.band().GetScale()),
      offset_(input.band().GetOffset()),
      reader_(input, 1, rule.skips_gaps),
      sums_(static_cast<std::size_t>(divide_rounding_up(input.width(), looks.across))),
      counts_(sums_.size()) {}

int LookMeans::height() const {
  return divide_rounding_up(input_.height(), looks_.down);
}

const std::vector<double>& LookMeans::row(int row) {
  std::fill(sums_.begin(), sums_.end(), 0.0);
  std::fill(counts_.begin(), counts_.end(), 0);
  const int first = row * looks_.down;
  const int count = std::min(looks_.down, input_.height() - first);
  for (int k = 0; k < count; ++k) {
    add_row(first + k);
  }
  // Without samples 0/0 is NaN.
  std::transform(sums_.begin(), sums_.end(), counts_.begin(), sums_.begin(),
                 [](double sum, std::int64_t n) { return sum / static_cast<double>(n); });
  return sums_;
}

void LookMeans::add_row(int row) {
  reader_.read(row, 1);
  const std::span<const double> samples = reader_.re();
  const auto across = static_cast<std::size_t>(looks_.across);
  for (std::size_t mean = 0; mean < sums_.size(); ++mean) {
    for (const double sample :
         samples.subspan(mean * across, std::min(across, samples.size() - mean * across))) {
      if (!rule_.skips_gaps || !std::isnan(sample)) {
        sums_[mean] += rule_.from_decibel ? power_of_ten((sample * scale_ + offset_) / 10) : sample;
        ++counts_[mean];
      }
    }
  }
}

}  // namespace sarnum::tool
