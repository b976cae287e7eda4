// What is known about a raster beside its pixels: where it lies, what its values mean. Held
// as a value, so that a command reads it from its input, changes what its work changes, and
// applies the rest to its output.
#ifndef SARNUM_TOOL_DESCRIPTION_H
#define SARNUM_TOOL_DESCRIPTION_H

#include <cpl_string.h>
#include <gdal_priv.h>
#include <ogr_spatialref.h>

#include <array>
#include <optional>
#include <string>
#include <vector>

namespace sarnum::tool {

class RasterInput;

/// Ground control points with the strings they own.
class ControlPoints {
 public:
  ControlPoints() = default;
  explicit ControlPoints(GDALDataset& dataset);
  ~ControlPoints();
  ControlPoints(ControlPoints&& other) noexcept;
  ControlPoints(const ControlPoints&) = delete;
  ControlPoints& operator=(const ControlPoints&) = delete;

  int count() const { return count_; }
  GDAL_GCP* points() { return points_; }
  const GDAL_GCP* points() const { return points_; }
  const OGRSpatialReference* reference() const { return has_reference_ ? &reference_ : nullptr; }

 private:
  int count_ = 0;
  GDAL_GCP* points_ = nullptr;
  bool has_reference_ = false;
  OGRSpatialReference reference_;
};

struct Description {
  explicit Description(const RasterInput& input);

  std::optional<OGRSpatialReference> reference;
  std::optional<std::array<double, 6>> geotransform;
  ControlPoints control_points;
  CPLStringList rational_model;  // RPC
  CPLStringList metadata;        // of the dataset, without statistics
  CPLStringList band_metadata;   // of the band, without statistics
  std::string band_description;
  std::string unit;
  std::optional<double> nodata;
  std::optional<double> scale;
  std::optional<double> offset;
  std::string source;               // the raster described, as messages name it
  std::vector<std::string> losses;  // what was not carried over from it

  /// Pixels become so many times larger; the image keeps its corner. The looks are noted.
  void enlarge_pixels(int across, int down);

  /// Gives all of it to a GeoTIFF open for writing and warns of the losses; throws a Failure
  /// naming `path`.
  void apply(GDALDataset& dataset, const std::string& path) const;
};

/// Whether a geotransform merely counts pixels, as one does that stands for none.
bool is_placeholder(const std::array<double, 6>& geotransform);

}  // namespace sarnum::tool

#endif
