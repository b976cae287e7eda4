// The metadata items of radar products that tell of the size of a pixel, in the one table of those
// that are known: what they become when pixels are enlarged, and which of them are lengths.
#ifndef SARNUM_TOOL_PIXEL_ITEMS_H
#define SARNUM_TOOL_PIXEL_ITEMS_H

#include <cpl_string.h>
#include <gdal_priv.h>

#include <array>
#include <optional>
#include <string>
#include <vector>

namespace sarnum::tool {

/// In which the tool notes the looks averaged so far, ACROSSxDOWN.
inline constexpr const char* looks_item = "SARNUM_LOOKS";

/// Pixels become so many times larger: known items follow, and those are removed that may tell of
/// pixels too but whose meaning is unknown.
/// @return the names of those removed.
std::vector<std::string> enlarge_pixel_items(CPLStringList& items, int across, int down);

/// Sides of a pixel, across and down, in metres.
std::optional<std::array<double, 2>> pixel_sides(GDALDataset& dataset);

}  // namespace sarnum::tool

#endif
