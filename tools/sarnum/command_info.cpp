// sarnum info: what a raster is, and how many looks its speckle seems to have.
#include <cpl_string.h>

#include "commands.h"
#include "description.h"
#include "messages.h"
#include "raster_input.h"
#include "report.h"

namespace sarnum::tool {
namespace {

std::string name_of(const OGRSpatialReference& reference) {
  const char* const name = reference.GetName();
  const char* const authority = reference.GetAuthorityName(nullptr);
  const char* const code = reference.GetAuthorityCode(nullptr);
  std::string text = name != nullptr ? name : "unnamed coordinate system";
  if (authority != nullptr && code != nullptr) {
    text.append(" (").append(authority).append(":").append(code).append(")");
  }
  return text;
}

std::string georeferencing(const Description& description) {
  std::vector<std::string> parts;
  if (description.reference) {
    parts.push_back(name_of(*description.reference));
  } else if (description.control_points.reference() != nullptr) {
    parts.push_back(name_of(*description.control_points.reference()));
  }
  if (description.geotransform) {
    const auto& t = *description.geotransform;
    parts.push_back("origin " + number(t[0]) + ", " + number(t[3]));
    parts.push_back("pixel size " + number(t[1]) + " x " + number(t[5]));
    if (t[2] != 0 || t[4] != 0) {
      parts.push_back("rotation " + number(t[2]) + ", " + number(t[4]));
    }
  }
  if (description.control_points.count() > 0) {
    parts.push_back(std::to_string(description.control_points.count()) + " ground control points");
  }
  if (description.rational_model.Count() > 0) {
    parts.emplace_back("rational polynomial model (RPC)");
  }
  std::string text;
  for (const std::string& part : parts) {
    text += (text.empty() ? "" : ", ") + part;
  }
  return text.empty() ? "none" : text;
}

struct Reading {
  Quantity quantity;
  std::string words;
};

/// What the samples are, and how that is known.
Reading reading_of(const RasterInput& input, std::optional<Quantity> told) {
  if (input.type().is_complex()) {
    return {Quantity::intensity, "intensity"};
  }
  if (told) {
    return {*told, *told == Quantity::amplitude ? "amplitude, squared"
                   : *told == Quantity::decibel ? "decibel, converted to intensity"
                                                : "intensity"};
  }
  const char* const item = input.dataset().GetMetadataItem(quantity_item);
  if (item != nullptr && EQUAL(item, quantity_intensity)) {
    return {Quantity::intensity, "intensity"};
  }
  if (item != nullptr && EQUAL(item, quantity_amplitude)) {
    return {Quantity::amplitude, "amplitude, squared"};
  }
  if (const std::string sign = input.sign_of_decibels(); !sign.empty()) {
    return {Quantity::decibel, "taken as decibel since " + sign};
  }
  return {Quantity::intensity, "taken as intensity; else give --amplitude or --decibel"};
}

std::string looks(const RasterInput& input, std::optional<Quantity> told) {
  const Reading reading = reading_of(input, told);
  const auto result = equivalent_looks(input, reading.quantity);
  if (!result) {
    return "not enough homogeneous blocks (" + reading.words + ")";
  }
  return CPLString().Printf("%.*f (%s; median of %d blocks of %d x %d)",
                            result->looks < 100 ? 2 : 0, result->looks, reading.words.c_str(),
                            result->blocks, result->block_size, result->block_size);
}

}  // namespace

void run_info(const InfoArguments& arguments) {
  const RasterInput input(arguments.input);
  const Description description(input);
  const GDALDriver& driver = *input.dataset().GetDriver();
  const char* const long_name = const_cast<GDALDriver&>(driver).GetMetadataItem(GDAL_DMD_LONGNAME);

  Report report;
  report.line("File", input.path());
  report.line("Driver", std::string(driver.GetDescription()) +
                            (long_name != nullptr ? " (" + std::string(long_name) + ")" : ""));
  report.lines_on_pixels(input);
  report.line("Georeferencing", georeferencing(description));
  report.line("Nodata", description.nodata ? number(*description.nodata) : "none");
  report.line("Unit", description.unit.empty() ? "none" : description.unit);
  report.line("Equivalent looks", looks(input, arguments.quantity));
  print(report.text());
}

}  // namespace sarnum::tool
