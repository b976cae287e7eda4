#include "report.h"

#include <cpl_string.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <iostream>

#include "messages.h"

namespace sarnum::tool {

void Report::line(const std::string& label, std::string_view value) {
  lines_.emplace_back(label + ":", one_line(value));
}

void Report::lines_on_pixels(const RasterInput& input) {
  const int bands = input.dataset().GetRasterCount();
  line("Size", std::to_string(input.width()) + " x " + std::to_string(input.height()) +
                   " pixels, " + std::to_string(bands) + (bands == 1 ? " band" : " bands"));
  line("Pixel type", std::string(GDALGetDataTypeName(input.band().GetRasterDataType())) +
                         ", TypeData " + std::to_string(input.type().code) + " (" +
                         input.type().name + ")");
}

std::string Report::text() const {
  std::size_t widest = 0;
  for (const auto& [label, value] : lines_) {
    widest = std::max(widest, label.size());
  }
  std::string text;
  for (const auto& [label, value] : lines_) {
    text.append(label).append(widest + 1 - label.size(), ' ').append(value).append("\n");
  }
  return text;
}

std::string number(double value) {
  return CPLString().Printf("%.12g", value);
}

std::string exact_number(double value) {
  std::array<char, 32> digits{};
  return {digits.data(), std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr};
}

Json json_number(std::optional<double> value) {
  if (!value) {
    return nullptr;
  }
  if (std::isnan(*value)) {
    return "NaN";
  }
  if (std::isinf(*value)) {
    return *value > 0 ? "Infinity" : "-Infinity";
  }
  return *value;
}

std::string text_of(const Json& object) {
  return object.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

void print(std::string_view text) {
  if (!(std::cout << text << std::flush)) {
    throw Failure("cannot write to standard output");
  }
}

}  // namespace sarnum::tool
