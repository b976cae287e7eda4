// A raster file as a layer uses it: rows of 32-bit floats, whatever stores them. What stores them
// is chosen when the host is built (SARNUM_RASTER): gdal_raster.cpp or envi_raster.cpp.
#ifndef SARNUM_SRC_HOST_STANDALONE_RASTER_FILE_H
#define SARNUM_SRC_HOST_STANDALONE_RASTER_FILE_H

#include <memory>
#include <string>
#include <vector>

namespace sarnum::host {

/// Functions that give false put the reason into `reason`.
class RasterFile {
 public:
  RasterFile() = default;
  RasterFile(const RasterFile&) = delete;
  RasterFile& operator=(const RasterFile&) = delete;
  virtual ~RasterFile() = default;

  virtual int width() const = 0;
  virtual int height() const = 0;
  /// Rows from a multiple of it on are stored together, and lost together.
  virtual int block_height() const { return 1; }

  /// Whole rows of the first band.
  virtual bool read(int row, int count, float* to, std::string& reason) = 0;
  /// The rows above this one are not read again soon.
  virtual void pass(int /*row*/) {}

  /// Of a created file. The values lie inside of it.
  virtual bool write(const float* from, int column, int row, int count, std::string& reason) = 0;

  /// Of a created file: it is not to be completed.
  virtual void abandon() noexcept = 0;

  /// Completes the file and closes it; nothing is called after that. A created file that misses
  /// something that was written to it, or was abandoned, is removed.
  virtual bool close(std::string& reason) noexcept = 0;
};

/// Null, with the reason, when the file cannot be delivered as rows of floats, or be created.
/// @{
std::unique_ptr<RasterFile> open_raster_file(const char* path, std::string& reason);
std::unique_ptr<RasterFile> create_raster_file(const char* path, int width, int height,
                                               const std::vector<std::string>& options,
                                               std::string& reason);
/// @}

}  // namespace sarnum::host

#endif
