// What a command tells on the standard output.
#ifndef SARNUM_TOOL_REPORT_H
#define SARNUM_TOOL_REPORT_H

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

/// Throws a Failure when the standard output does not take the text.
void print(std::string_view text);

}  // namespace sarnum::tool

#endif
