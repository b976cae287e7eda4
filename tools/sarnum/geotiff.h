// The GeoTIFF files that commands write row by row, and the check of every finished raster.
#ifndef SARNUM_TOOL_GEOTIFF_H
#define SARNUM_TOOL_GEOTIFF_H

#include <gdal_priv.h>

#include <string>
#include <vector>

#include "output.h"

namespace sarnum::tool {

/// Creation options as the user gave them, NAME=VALUE each. Throws a UsageFailure on one that
/// GeoTIFF does not know, or that asks for a second file beside the output.
void check_creation_options(const std::vector<std::string>& options);

/// Blocks of zeros are left out of a raster with the creation option SPARSE_OK. What reads it could
/// take them for the trace of an interrupted program; so the file says that they are meant so.
void mark_if_sparse(GDALDataset& dataset, const std::vector<std::string>& options);
bool is_marked_as_sparse(GDALDataset& dataset);

/// GDAL keeps nothing beside a raster in the lifetime of an object.
class NoSidecars {
 public:
  NoSidecars();
  ~NoSidecars();
  NoSidecars(const NoSidecars&) = delete;
  NoSidecars& operator=(const NoSidecars&) = delete;

 private:
  std::string before_;
  bool was_set_;
};

/// Creates a GeoTIFF of one band as the temporary file of an output. `options` as checked.
GDALDatasetUniquePtr create_geotiff(const OutputFile& output, int width, int height,
                                    GDALDataType type, const std::vector<std::string>& options);

/// Writes whole rows of the first band; `type` is that of the pixels given.
void write_rows(GDALDataset& dataset, const OutputFile& output, int first, int count,
                GDALDataType type, void* pixels);

/// Closes a raster that was written; throws a Failure when a write failed late.
void close_written(GDALDatasetUniquePtr dataset, const OutputFile& output);

/// Opens the temporary file anew and sees that it is the raster it should be, to its last row.
void check_written(const OutputFile& output, int width, int height, GDALDataType type);

/// Says that the output cannot be written and why, in terms of the user's name for it.
[[noreturn]] void fail_to_write(const OutputFile& output, const std::string& why);

/// Warns when the output's name suggests another format.
void warn_of_other_format(const std::string& name);

}  // namespace sarnum::tool

#endif
