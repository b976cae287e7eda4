// The pixels of a raster that hold no sample: those of its nodata value, and those that a mask or
// an alpha band leaves out. This is the one place that knows which they are.
#ifndef SARNUM_TOOL_GAPS_H
#define SARNUM_TOOL_GAPS_H

#include <gdal_priv.h>

#include <optional>
#include <span>
#include <string>

namespace sarnum::tool {

/// The nodata value of a band, if it has one.
std::optional<double> nodata_of(GDALRasterBand& band);

class Gaps {
 public:
  /// @param name  names the raster in a message.
  Gaps(GDALRasterBand& band, std::string name);

  const std::optional<double>& nodata() const { return nodata_; }
  bool has_mask() const { return mask_ != nullptr; }
  bool may_exist() const { return nodata_ || has_mask(); }

  /// "-99", "a mask", "-99 and a mask", or "none".
  std::string text() const;

  /// Makes NaN of the real parts of those among the pixels of a window, which is `width` wide and
  /// begins at (column, row). `im` is empty where all pixels are real. Throws a Failure when the
  /// mask cannot be read.
  void mark(int column, int row, int width, std::span<double> re, std::span<const double> im) const;

 private:
  std::string name_;
  std::optional<double> nodata_;
  GDALRasterBand* mask_;
};

}  // namespace sarnum::tool

#endif
