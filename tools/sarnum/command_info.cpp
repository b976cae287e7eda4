// sarnum info: what a raster is, and how many looks its speckle seems to have.
#include <cpl_string.h>

#include "commands.h"
#include "description.h"
#include "quantity.h"
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

std::string looks_text(const EquivalentLooks& looks) {
  return CPLString().Printf("%.*f", looks.looks < 100 ? 2 : 0, looks.looks);
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

/// What the samples are taken for, and the equivalent looks that they then have.
struct Reading {
  Quantity quantity;
  std::optional<EquivalentLooks> looks;
  std::string words;
  bool is_guessed = false;
  // What else they may be, where that is open.
  std::optional<Quantity> other_quantity = std::nullopt;
  std::optional<EquivalentLooks> other_looks = std::nullopt;
};

Reading known_reading(const RasterInput& input, Quantity quantity) {
  return {quantity, equivalent_looks(input, quantity),
          quantity == Quantity::amplitude ? "amplitude, squared"
          : quantity == Quantity::decibel ? "decibel, converted to intensity"
                                          : "intensity"};
}

/// Products of detected pixels hold amplitude where they hold short integers. But speckle has at
/// least one look: an image that would have fewer as amplitude holds intensity. Beyond about three
/// looks of intensity the figures allow both.
Reading guessed_reading(const RasterInput& input) {
  if (const std::string evidence = evidence_of_decibels(input); !evidence.empty()) {
    return {Quantity::decibel, equivalent_looks(input, Quantity::decibel),
            "a guess: decibel since " + evidence, true};
  }
  constexpr double fewest_looks = 0.8;
  constexpr int bits_of_a_short = 16;
  const auto as_intensity = equivalent_looks(input, Quantity::intensity);
  const auto as_amplitude = equivalent_looks(input, Quantity::amplitude);
  const GDALDataType type = input.band().GetRasterDataType();
  const bool is_short =
      GDALDataTypeIsInteger(type) != 0 && GDALGetDataTypeSizeBits(type) <= bits_of_a_short;
  const bool is_amplitude = is_short && !(as_amplitude && as_amplitude->looks < fewest_looks);
  Reading reading{is_amplitude ? Quantity::amplitude : Quantity::intensity,
                  is_amplitude ? as_amplitude : as_intensity,
                  "",
                  true,
                  is_amplitude ? Quantity::intensity : Quantity::amplitude,
                  is_amplitude ? as_intensity : as_amplitude};
  reading.words = std::string("a guess: ") + name_of(reading.quantity) + "; " +
                  (reading.other_looks ? looks_text(*reading.other_looks) + " if " : "else ") +
                  name_of(*reading.other_quantity) + "; give --amplitude or --intensity";
  return reading;
}

Reading reading_of(const RasterInput& input, std::optional<Quantity> told) {
  if (input.type().is_complex()) {
    return known_reading(input, Quantity::intensity);
  }
  const std::optional<Quantity> known = told ? told : noted_quantity(input);
  return known ? known_reading(input, *known) : guessed_reading(input);
}

std::string text(const RasterInput& input, const Description& description, const Reading& reading) {
  const std::optional<EquivalentLooks>& looks = reading.looks;
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
  report.line("Equivalent looks",
              looks
                  ? looks_text(*looks) + CPLString().Printf(" (%s; median of %d blocks of %d x %d)",
                                                            reading.words.c_str(), looks->blocks,
                                                            looks->block_size, looks->block_size)
                  : "not enough homogeneous blocks (" + reading.words + ")");
  return report.text();
}

std::string json(const RasterInput& input, const Description& description, const Reading& reading) {
  const std::optional<EquivalentLooks>& looks = reading.looks;
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
      {"quantity", name_of(reading.quantity)},
      {"quantity_is_guessed", reading.is_guessed},
      {"other_quantity", reading.other_quantity ? Json(name_of(*reading.other_quantity)) : Json()},
      {"other_equivalent_looks",
       reading.other_looks ? json_number(reading.other_looks->looks) : Json()},
      {"blocks", looks ? looks->blocks : 0},
      {"block_size", looks ? Json(looks->block_size) : Json()},
  });
}

}  // namespace

void run_info(const InfoArguments& arguments) {
  const RasterInput input(arguments.input);
  const Description description(input);
  const Reading reading = reading_of(input, arguments.quantity);
  print(arguments.json ? json(input, description, reading) : text(input, description, reading));
}

}  // namespace sarnum::tool
