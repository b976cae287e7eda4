/// @file
/// What the standalone host offers beyond the suite's interface: the failures that a
/// CFileLayer cannot report to the routine using it, and options for the files it creates.
///
/// Both are kept for each thread apart: a caller sets and asks on the thread that runs the
/// routine.
#ifndef SARNUM_HOST_STANDALONE_H
#define SARNUM_HOST_STANDALONE_H

#include "sarnum/export.h"

namespace sarnum::host {

/// The first failure of a layer on this thread: one line that names the file, or the empty
/// string. It covers opening, creating, setting the band, reading, writing and closing. Valid until
/// the next call into the host on this thread.
///
/// Opening or creating a file forgets a former failure, so that work that succeeds shows none; but
/// not the failure of a file that another layer still has open, because that work goes on.
SARNUM_HOST_API const char* raster_failure() noexcept;

/// Forgets the failure, whatever is open.
SARNUM_HOST_API void clear_raster_failure() noexcept;

/// GDAL creation options for the next CFileLayer::Create on this thread, which uses them up:
/// `count` strings of the form NAME=VALUE, which are copied. They come after the layer's own
/// BIGTIFF=IF_SAFER and replace it when they name the same option. An option or a value that
/// GeoTIFF does not know makes Create() fail before it touches an existing file. Files of flat
/// samples, which a host without GDAL creates, have no options: all are unknown.
/// @return false, with no options set, when storage is short.
SARNUM_HOST_API bool set_creation_options(const char* const* options, int count) noexcept;

/// Why a raster cannot be whole: one line that says which file has fewer bytes than its header
/// promises, or the empty string if no such file is known. Files of plain samples are measured,
/// those that a virtual raster consists of too; a CFileLayer does not open what fails here. Valid
/// until the next call on this thread.
SARNUM_HOST_API const char* missing_samples(const char* path) noexcept;

}  // namespace sarnum::host

#endif
