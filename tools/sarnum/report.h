// What a command tells on the standard output.
#ifndef SARNUM_TOOL_REPORT_H
#define SARNUM_TOOL_REPORT_H

#include <nlohmann/json.hpp>

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "raster_input.h"

namespace sarnum::tool {

/// Lines of a label and a value.
class Report {
 public:
  void line(const std::string& label, std::string_view value);

  /// The lines "Size" and "Pixel type".
  void lines_on_pixels(const RasterInput& input);

  /// "Label: value" each, the values below one another.
  std::string text() const;

 private:
  std::vector<std::pair<std::string, std::string>> lines_;
};

/// A number as it stands in a report: computed ones to 12 digits, ones that were read in as many
/// as tell them from their neighbours.
std::string number(double value);
std::string exact_number(double value);

/// For programs: an object whose fields stand in the order in which they are given.
using Json = nlohmann::ordered_json;

/// For what JSON lacks, the strings "Infinity", "-Infinity" and "NaN", which conversions to a
/// number understand; null for no number.
Json json_number(std::optional<double> value);

/// As it is printed. A file's name may be no UTF-8, which JSON must be: bytes that are not are
/// replaced.
std::string text_of(const Json& object);

/// Throws a Failure when the standard output does not take the text.
void print(std::string_view text);

}  // namespace sarnum::tool

#endif
