// The raster that a command reads: opened for reading only, checked to be whole as far as
// that shows without reading it, its first band delivered row by row.
#ifndef SARNUM_TOOL_RASTER_INPUT_H
#define SARNUM_TOOL_RASTER_INPUT_H

#include <gdal_priv.h>

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "gaps.h"

namespace sarnum::tool {

/// A pixel type of the library and the type in which GDAL delivers such pixels.
struct PixelType {
  int code;          ///< TD_UINT8 … TD_COMPLEX_INT32
  const char* name;  ///< as sarnum.h spells it
  GDALDataType delivered_as;

  bool is_complex() const { return GDALDataTypeIsComplex(delivered_as) != 0; }
  std::size_t bytes() const {
    return static_cast<std::size_t>(GDALGetDataTypeSizeBytes(delivered_as));
  }
};

/// How many parts of a size a side has, a last one that is cut short included.
inline int divide_rounding_up(int side, int size) {
  return side / size + (side % size != 0 ? 1 : 0);
}

/// Registers the drivers of GDAL, but for the opening of memory by its address: a virtual raster
/// could name any.
void register_drivers();

class RasterInput {
 public:
  /// Throws a Failure that names the file when it is no raster that can be read whole.
  explicit RasterInput(const std::string& path);

  const std::string& path() const { return path_; }
  GDALDataset& dataset() const { return *dataset_; }
  GDALRasterBand& band() const { return *dataset_->GetRasterBand(1); }
  int width() const { return dataset_->GetRasterXSize(); }
  int height() const { return dataset_->GetRasterYSize(); }
  const PixelType& type() const { return type_; }

  /// Reads a window of the first band as pixels of type(). Throws a Failure that names its rows.
  void read(int column, int row, int columns, int rows, void* pixels) const;

  /// Which of its pixels hold no sample.
  const Gaps& gaps() const { return *gaps_; }

  /// So many rows that a block of them holds about a quarter of a million pixels.
  int rows_in_a_block() const;

  /// The files the raster consists of, those of its parts and those read beside it included.
  const std::vector<std::string>& files() const { return files_; }

 private:
  void read_first_sample() const;

  std::string path_;
  GDALDatasetUniquePtr dataset_;
  PixelType type_{};
  std::optional<Gaps> gaps_;
  std::vector<std::string> files_;
};

/// Rows of the first band as doubles.
class SampleReader {
 public:
  /// @param most_rows   read at a time.
  /// @param marks_gaps  makes NaN of the real parts of pixels that hold no sample.
  SampleReader(const RasterInput& input, int most_rows, bool marks_gaps = true);

  void read(int first, int rows);

  // What was read last, at first so many rows as may be read. Real pixels have no imaginary parts.
  const std::byte* pixels() const { return pixels_.data(); }
  std::span<double> re() { return std::span(re_).first(count_); }
  std::span<const double> im() const {
    return std::span(im_).first(input_.type().is_complex() ? count_ : 0);
  }

 private:
  std::size_t size(int rows) const {
    return static_cast<std::size_t>(input_.width()) * static_cast<std::size_t>(rows);
  }

  const RasterInput& input_;
  bool marks_gaps_;
  std::size_t count_;
  std::vector<std::byte> pixels_;
  std::vector<double> re_;
  std::vector<double> im_;
};

}  // namespace sarnum::tool

#endif
