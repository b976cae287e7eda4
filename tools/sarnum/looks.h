// How many looks are averaged into one, and how large their pixels are on the ground.
#ifndef SARNUM_TOOL_LOOKS_H
#define SARNUM_TOOL_LOOKS_H

#include <optional>
#include <string>

#include "raster_input.h"

namespace sarnum::tool {

struct Looks {
  int across;
  int down;

  std::string text() const { return std::to_string(across) + "x" + std::to_string(down); }
};

/// "4x4"; throws a UsageFailure on what is no number of looks each way.
Looks parse_looks(const std::string& text);
/// "16", the looks in all that --square may take.
int parse_most_looks(const std::string& text);

/// Sides of a pixel on the ground. Range runs across the image, azimuth down.
struct Spacing {
  double across;
  double down;
};

/// The spacing that the arguments tell, or else the image: its geotransform, or the items of
/// range and azimuth spacing that GDAL's drivers for radar products give it.
/// @param told       "RANGExAZIMUTH", or empty.
/// @param incidence  in degrees: makes ground range of slant range.
Spacing ground_spacing(const RasterInput& input, const std::string& told,
                       std::optional<double> incidence);

/// Looks whose pixel is square on the ground. For a number of rows, the columns are those that
/// come nearest to a square. Without `most`, the fewest rows that give sides equal within 5 %;
/// with it, the most rows that keep the looks in all to it. Throws a UsageFailure where there
/// are none.
Looks square_looks(Spacing spacing, std::optional<int> most);

}  // namespace sarnum::tool

#endif
