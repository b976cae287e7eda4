// Means of looks, where the samples are not averaged just as they are.
#ifndef SARNUM_TOOL_LOOK_MEANS_H
#define SARNUM_TOOL_LOOK_MEANS_H

#include <cstdint>
#include <vector>

#include "looks.h"
#include "raster_input.h"

namespace sarnum::tool {

/// What becomes of a sample before it is averaged.
struct SampleRule {
  bool skips_gaps = false;    ///< pixels without a sample and NaN do not count
  bool from_decibel = false;  ///< 10^(x/10), of the value that scale and offset make of a sample
};

class LookMeans {
 public:
  LookMeans(const RasterInput& input, Looks looks, SampleRule rule);

  int width() const { return static_cast<int>(sums_.size()); }
  int height() const;

  /// The means of an output row, those at the edges over the samples that exist; NaN where none
  /// counts. The next call overwrites them.
  const std::vector<double>& row(int row);

 private:
  void add_row(int row);

  const RasterInput& input_;
  Looks looks_;
  SampleRule rule_;
  double scale_;
  double offset_;
  SampleReader reader_;
  std::vector<double> sums_;
  std::vector<std::int64_t> counts_;
};

}  // namespace sarnum::tool

#endif
