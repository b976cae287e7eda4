// sarnum info: what a raster is, and how many looks its speckle seems to have.
#include <cpl_string.h>

#include "commands.h"
#include "description.h"
#include "messages.h"
#include "raster_input.h"
#include "report.h"

namespace sarnum::tool {
namespace {

const OGRSpatialReference* reference_of(const Description& description) {
  return description.reference ? &*description.reference : description.control_points.reference();
}

std::string name_of(const OGRSpatialReference& reference) {
  const char* const name = reference.GetName();
  return name != nullptr ? name : "unnamed coordinate system";
}

/// "EPSG:32631", or empty.
std::string code_of(const OGRSpatialReference& reference) {
  const char* const authority = reference.GetAuthorityName(nullptr);
  const char* const code = reference.GetAuthorityCode(nullptr);
  return authority != nullptr && code != nullptr ? std::string(authority) + ":" + code : "";
}

std::string georeferencing(const Description& description) {
  std::vector<std::string> parts;
  if (const OGRSpatialReference* const reference = reference_of(description)) {
    const std::string code = code_of(*reference);
    parts.push_back(name_of(*reference) + (code.empty() ? "" : " (" + code + ")"));
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
  bool is_guessed = false;
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
  if (item != nullptr && EQUAL(item, quantity_decibel)) {
    return {Quantity::decibel, "decibel, converted to intensity"};
  }
  if (const std::string sign = input.sign_of_decibels(); !sign.empty()) {
    return {Quantity::decibel, "taken as decibel since " + sign, true};
  }
  return {Quantity::intensity, "taken as intensity; else give --amplitude or --decibel", true};
}

std::string text(const RasterInput& input, const Description& description, const Reading& reading,
                 const std::optional<EquivalentLooks>& looks) {
  GDALDriver& driver = *input.dataset().GetDriver();
  const char* const long_name = driver.GetMetadataItem(GDAL_DMD_LONGNAME);
  Report report;
  report.line("File", input.path());
  report.line("Driver", std::string(driver.GetDescription()) +
                            (long_name != nullptr ? " (" + std::string(long_name) + ")" : ""));
  report.lines_on_pixels(input);
  report.line("Georeferencing", georeferencing(description));
  report.line("Nodata", input.gaps().text());
  report.line("Unit", description.unit.empty() ? "none" : description.unit);
  report.line(
      "Equivalent looks",
      looks ? CPLString().Printf("%.*f (%s; median of %d blocks of %d x %d)",
                                 looks->looks < 100 ? 2 : 0, looks->looks, reading.words.c_str(),
                                 looks->blocks, looks->block_size, looks->block_size)
            : "not enough homogeneous blocks (" + reading.words + ")");
  return report.text();
}

std::string json(const RasterInput& input, const Description& description, const Reading& reading,
                 const std::optional<EquivalentLooks>& looks) {
  const auto text_or_null = [](const std::string& value) {
    return value.empty() ? Json() : Json(value);
  };
  const OGRSpatialReference* const reference = reference_of(description);
  return text_of({
      {"file", input.path()},
      {"driver", input.dataset().GetDriver()->GetDescription()},
      {"bands", input.dataset().GetRasterCount()},
      {"width", input.width()},
      {"height", input.height()},
      {"pixel_type", input.type().name},
      {"coordinate_system", reference != nullptr ? Json(name_of(*reference)) : Json()},
      {"authority_code", reference != nullptr ? text_or_null(code_of(*reference)) : Json()},
      {"geotransform", description.geotransform ? Json(*description.geotransform) : Json()},
      {"ground_control_points", description.control_points.count()},
      {"rational_model", description.rational_model.Count() > 0},
      {"nodata", json_number(input.gaps().nodata())},
      {"mask", input.gaps().has_mask()},
      {"unit", text_or_null(description.unit)},
      {"equivalent_looks", looks ? json_number(looks->looks) : Json()},
      {"quantity", reading.quantity == Quantity::amplitude ? quantity_amplitude
                   : reading.quantity == Quantity::decibel ? quantity_decibel
                                                           : quantity_intensity},
      {"quantity_is_guessed", reading.is_guessed},
      {"blocks", looks ? looks->blocks : 0},
      {"block_size", looks ? Json(looks->block_size) : Json()},
  });
}

}  // namespace

void run_info(const InfoArguments& arguments) {
  const RasterInput input(arguments.input);
  const Description description(input);
  const Reading reading = reading_of(input, arguments.quantity);
  const auto looks = equivalent_looks(input, reading.quantity);
  print(arguments.json ? json(input, description, reading, looks)
                       : text(input, description, reading, looks));
}

}  // namespace sarnum::tool
