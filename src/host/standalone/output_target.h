// The file that a path names: whether it may be read or written as a raster, and what goes with it.
#ifndef SARNUM_SRC_HOST_STANDALONE_OUTPUT_TARGET_H
#define SARNUM_SRC_HOST_STANDALONE_OUTPUT_TARGET_H

#include <string>
#include <vector>

namespace sarnum::host {

/// The text of errno.
std::string system_reason() noexcept;

/// Why a path cannot name a file of samples (it is a folder, a device, a FIFO …); the empty string
/// where it names a regular file, by links too, or nothing. Touches nothing.
std::string why_not_a_file(const std::string& path);

/// Where the links of a path end, whether or not there is a file: an absolute path, so that the
/// file can be removed later whatever has become of the links and of the working folder.
std::string target_of(const std::string& path);

/// The files that GDAL reads with a raster of that path, or of its target, and with no other:
/// statistics and georeferencing, overviews, and masks.
std::vector<std::string> companions_of(const std::string& path);

}  // namespace sarnum::host

#endif
