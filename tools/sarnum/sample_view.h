// The input as the averaging of valid samples wants to see it: a virtual raster that GDAL composes
// row by row, so that the library's routine reads it like a file and no image is copied.
#ifndef SARNUM_TOOL_SAMPLE_VIEW_H
#define SARNUM_TOOL_SAMPLE_VIEW_H

#include <optional>
#include <string>

#include "raster_input.h"

namespace sarnum::tool {

/// What becomes of a sample.
struct SampleRule {
  bool skips_invalid = false;  ///< nodata and NaN become zero
  bool from_decibel = false;   ///< 10^(x/10), of the value that scale and offset make of a sample
};

enum class View {
  values,
  validity,  ///< 1 where a sample is valid, 0 where it is nodata or NaN
};

/// The name of the view, for GDAL to open. It opens the input once more.
std::string name_of_view(const RasterInput& input, SampleRule rule, View view);

}  // namespace sarnum::tool

#endif
