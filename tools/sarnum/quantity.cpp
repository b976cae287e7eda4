#include "quantity.h"

#include <cpl_string.h>

#include <algorithm>

#include "messages.h"
#include "row_pieces.h"

namespace sarnum::tool {

const char* name_of(Quantity quantity) {
  switch (quantity) {
    case Quantity::amplitude:
      return "amplitude";
    case Quantity::decibel:
      return "decibel";
    case Quantity::intensity:
      break;
  }
  return "intensity";
}

std::optional<Quantity> noted_quantity(const RasterInput& input) {
  const char* const item = input.dataset().GetMetadataItem(quantity_item);
  for (const Quantity quantity : {Quantity::intensity, Quantity::amplitude, Quantity::decibel}) {
    if (item != nullptr && EQUAL(item, name_of(quantity))) {
      return quantity;
    }
  }
  return std::nullopt;
}

bool is_label_of_decibels(const std::string& label) {
  const std::string text = CPLString(label).tolower();
  return text == "db" || text.find("decibel") != std::string::npos || text.ends_with("_db") ||
         text.ends_with(" db") || text.ends_with("[db]") || text.ends_with("(db)");
}

std::string evidence_of_decibels(const RasterInput& input) {
  if (input.type().is_complex()) {
    return "";
  }
  for (const char* const word : {input.band().GetUnitType(), input.band().GetDescription()}) {
    if (word != nullptr && is_label_of_decibels(word)) {
      return "it is labelled " + in_quotes(word);
    }
  }
  constexpr int most_rows = 16;
  constexpr int most_pieces = 256;
  constexpr int longest_piece = 4096;
  const int length = std::min(longest_piece, input.width());
  RowPieces pieces(input);
  for (const int row : evenly_spread(input.height(), 1, most_rows)) {
    for (const int column : evenly_spread(input.width(), length, most_pieces)) {
      pieces.read(column, row, length);
      if (std::any_of(pieces.re().begin(), pieces.re().end(),
                      [](double value) { return value < 0; })) {
        return "it has values below zero";
      }
    }
  }
  return "";
}

}  // namespace sarnum::tool
