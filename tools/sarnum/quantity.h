// What the samples of a raster are: what its file says of it, and what else tells it.
#ifndef SARNUM_TOOL_QUANTITY_H
#define SARNUM_TOOL_QUANTITY_H

#include <optional>
#include <string>

#include "raster_input.h"

namespace sarnum::tool {

enum class Quantity { intensity, amplitude, decibel };

/// Metadata item in which the tool notes the quantity.
inline constexpr const char* quantity_item = "SARNUM_QUANTITY";

/// As that item names it.
const char* name_of(Quantity quantity);

/// What that item says of a raster.
std::optional<Quantity> noted_quantity(const RasterInput& input);

/// Whether a unit or the name of a band says decibels.
bool is_label_of_decibels(const std::string& label);

/// Why the samples are to be taken for decibels, or nothing. Reads a few rows.
std::string evidence_of_decibels(const RasterInput& input);

}  // namespace sarnum::tool

#endif
