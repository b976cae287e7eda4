// A quick look: a raster of any size as a grey 8-bit PNG of at most 2048 pixels a side.
#ifndef SARNUM_TOOL_PICTURE_H
#define SARNUM_TOOL_PICTURE_H

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "output.h"

namespace sarnum::tool {

/// Rows come in one by one; each pixel of the picture is the mean of a square of samples (of
/// power, where the samples are one), so that a point target or a spectral line stays seen.
/// Positive data are shown as their logarithm, data with values below zero as they are,
/// stretched between two percentiles; what has no value is black.
class Picture {
 public:
  struct Stretch {
    double low_percent;
    double high_percent;
  };

  Picture(int width, int height, Stretch stretch);

  /// The next row, `width` samples; NaN and infinities are no value.
  void add_row(std::span<const double> row);

  /// Writes the temporary file of the output, closed and checked.
  void write(const OutputFile& output) const;

 private:
  void finish_line();
  std::vector<std::uint8_t> grey_levels() const;

  int width_;
  int reduction_;
  int columns_;
  int lines_;
  int rows_in_line_ = 0;
  Stretch stretch_;
  std::vector<double> sums_;
  std::vector<std::uint32_t> counts_;
  std::vector<double> means_;
};

/// Draws the raster that is the temporary file of `raster`.
void draw_raster(const OutputFile& raster, const OutputFile& picture);

/// The file of a picture that was asked for by that name; nothing when the name is empty.
class PictureFile {
 public:
  PictureFile(const std::string& name, bool overwrite, const std::vector<std::string>& inputs,
              const OutputFile& raster);

  explicit operator bool() const { return file_.has_value(); }
  OutputFile& operator*() { return *file_; }
  OutputFile* get() { return file_ ? &*file_ : nullptr; }

 private:
  std::optional<OutputFile> file_;
};

}  // namespace sarnum::tool

#endif
