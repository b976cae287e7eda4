#include "looks.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <numbers>
#include <string_view>
#include <utility>

#include "description.h"
#include "elementary/functions.h"
#include "messages.h"
#include "pixel_items.h"
#include "report.h"

namespace sarnum::tool {
namespace {

constexpr int most_looks_down = 36;

/// A whole number of looks, all of the text.
int parse_count(const std::string& argument, std::string_view digits, const char* form) {
  const auto fail = [&argument](const std::string& why) {
    throw UsageFailure("--looks " + in_quotes(argument) + ": " + why);
  };
  int value = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
  if (error == std::errc::result_out_of_range) {
    fail("the number is too large");
  }
  if (error != std::errc{} || end != digits.data() + digits.size()) {
    fail(std::string("give ") + form);
  }
  if (value < 1) {
    fail("there is at least one look each way");
  }
  return value;
}

bool is_length(double value) {
  return std::isfinite(value) && value > 0;
}

Spacing parse_spacing(const std::string& text) {
  const std::size_t cross = text.find_first_of("xX");
  Spacing spacing{};
  const auto parse = [&text](std::size_t begin, std::size_t end, double& value) {
    const char* const last = text.data() + end;
    const auto result = std::from_chars(text.data() + begin, last, value);
    return result.ec == std::errc{} && result.ptr == last && is_length(value);
  };
  if (cross == std::string::npos || !parse(0, cross, spacing.across) ||
      !parse(cross + 1, text.size(), spacing.down)) {
    throw UsageFailure("--spacing " + in_quotes(text) + ": give RANGExAZIMUTH, e.g. 2.3x14.1");
  }
  return spacing;
}

/// Why a raster cannot lie on the Earth where its geographic geotransform puts it, or nothing.
std::string why_not_on_earth(const RasterInput& input, const std::array<double, 6>& t,
                             double degrees) {
  constexpr std::array<std::array<int, 2>, 4> corners{{{0, 0}, {1, 0}, {0, 1}, {1, 1}}};
  double west = std::numeric_limits<double>::infinity();
  double east = -west;
  // A grid of points that include a pole reaches half a pixel beyond it.
  const double farthest = 90 + (std::abs(t[4]) + std::abs(t[5])) * degrees / 2 + 1e-6;
  for (const auto& [right, below] : corners) {
    const double x = right * static_cast<double>(input.width());
    const double y = below * static_cast<double>(input.height());
    const double latitude = (t[3] + t[4] * x + t[5] * y) * degrees;
    if (!(std::abs(latitude) <= farthest)) {
      return "reaches to latitude " + number(latitude);
    }
    west = std::min(west, (t[0] + t[1] * x + t[2] * y) * degrees);
    east = std::max(east, (t[0] + t[1] * x + t[2] * y) * degrees);
  }
  const double widest = 360 + (std::abs(t[1]) + std::abs(t[2])) * degrees + 1e-6;
  return east - west <= widest ? "" : "spans " + number(east - west) + " degrees of longitude";
}

/// What a geotransform tells of the ground.
struct Mapped {
  std::optional<Spacing> spacing;
  std::string fault;  ///< why it is not believed, or nothing
};

/// Pixel sides by the geotransform, those of a geographic one in metres at the image's middle.
Mapped mapped_spacing(const RasterInput& input) {
  std::array<double, 6> t{};
  if (input.dataset().GetGeoTransform(t.data()) != CE_None) {
    return {};
  }
  if (is_placeholder(t)) {
    return {std::nullopt, "merely counts pixels"};
  }
  const auto length = [](double x, double y) { return std::sqrt(x * x + y * y); };
  Spacing sides{length(t[1], t[4]), length(t[2], t[5])};
  const OGRSpatialReference* const reference = input.dataset().GetSpatialRef();
  if (reference != nullptr && reference->IsGeographic() != 0) {
    constexpr double earth_radius = 6371008.8;
    const double radians = reference->GetAngularUnits();
    if (std::string fault = why_not_on_earth(input, t, radians * 180 / std::numbers::pi);
        !fault.empty()) {
      return {std::nullopt, std::move(fault)};
    }
    const double latitude = t[3] + t[4] * input.width() / 2 + t[5] * input.height() / 2;
    const double metres = radians * earth_radius;
    const double shrink = cosine(latitude * radians);
    sides = {metres * length(t[1] * shrink, t[4]), metres * length(t[2] * shrink, t[5])};
  } else if (reference != nullptr && reference->IsProjected() != 0) {
    constexpr double farthest = 1.01 * 40075017;  // the Earth's girth, and some distortion
    const double longest = std::max(sides.across * input.width(), sides.down * input.height()) *
                           reference->GetLinearUnits();
    if (!(longest <= farthest)) {
      return {std::nullopt, CPLString().Printf("spans %.6g km", longest / 1000)};
    }
  }
  return {sides, ""};
}

/// How far from a square a pixel is: 1 is one, 2 is twice as long as wide.
double elongation(Spacing spacing, Looks looks) {
  const double ratio = spacing.across * looks.across / (spacing.down * looks.down);
  return std::max(ratio, 1 / ratio);
}

/// The columns that make the squarest pixel of so many rows.
std::optional<Looks> squarest(Spacing spacing, int down) {
  constexpr double most_across = 1 << 20;
  const double exact = spacing.down * down / spacing.across;
  if (!(exact < most_across)) {
    return std::nullopt;
  }
  const Looks fewer{std::max(1, static_cast<int>(exact)), down};
  const Looks more{fewer.across + 1, down};
  return elongation(spacing, more) < elongation(spacing, fewer) ? more : fewer;
}

}  // namespace

Looks parse_looks(const std::string& text) {
  constexpr const char* form = "ACROSSxDOWN, e.g. 4x4";
  const std::size_t cross = std::min(text.find_first_of("xX"), text.size());
  const std::string_view rest = std::string_view(text).substr(cross);
  const Looks looks{parse_count(text, std::string_view(text).substr(0, cross), form),
                    parse_count(text, rest.substr(rest.empty() ? 0 : 1), form)};
  if (looks.down > most_looks_down) {
    throw UsageFailure("--looks " + in_quotes(text) + ": there are at most " +
                       std::to_string(most_looks_down) + " looks down");
  }
  return looks;
}

int parse_most_looks(const std::string& text) {
  return parse_count(text, text, "their number in all with --square, e.g. 16");
}

Spacing ground_spacing(const RasterInput& input, const std::string& told,
                       std::optional<double> incidence) {
  if (incidence && !(*incidence > 0 && *incidence <= 90)) {
    throw UsageFailure("--incidence " + number(*incidence) + ": give degrees above 0, at most 90");
  }
  Spacing spacing{};
  if (!told.empty()) {
    spacing = parse_spacing(told);
  } else if (const Mapped mapped = mapped_spacing(input); mapped.spacing) {
    if (incidence) {
      throw UsageFailure(in_quotes(input.path()) +
                         " has a geotransform, which is on the ground: leave out --incidence, or "
                         "give --spacing too");
    }
    spacing = *mapped.spacing;
  } else if (const auto noted = pixel_sides(input.dataset())) {
    spacing = {(*noted)[0], (*noted)[1]};
    if (!incidence) {
      warn("the range spacing of " + in_quotes(input.path()) +
           " is taken as that on the ground; if it is slant range give --incidence");
    }
  } else if (!mapped.fault.empty()) {
    throw UsageFailure("the geotransform of " + in_quotes(input.path()) + " " + mapped.fault +
                       ", so it does not tell the pixel spacing; give --spacing RANGExAZIMUTH");
  } else {
    throw UsageFailure(in_quotes(input.path()) +
                       " does not tell its pixel spacing; give --spacing RANGExAZIMUTH");
  }
  if (!is_length(spacing.across) || !is_length(spacing.down)) {
    throw Failure(in_quotes(input.path()) + " has a pixel spacing of " + number(spacing.across) +
                  " x " + number(spacing.down) + "; give --spacing RANGExAZIMUTH");
  }
  if (incidence) {
    spacing.across /= sine(*incidence * std::numbers::pi / 180);
  }
  return spacing;
}

Looks square_looks(Spacing spacing, std::optional<int> most) {
  constexpr double nearly_square = 1.05;
  constexpr double far_from_square = 1.25;
  std::optional<Looks> chosen;
  for (int down = 1; down <= most_looks_down; ++down) {
    const auto looks = squarest(spacing, down);
    if (!looks) {
      break;
    }
    if (most) {
      if (std::int64_t{looks->across} * down <= *most) {
        chosen = looks;
      }
    } else if (elongation(spacing, *looks) <= nearly_square) {
      return *looks;
    }
  }
  if (!chosen) {
    throw UsageFailure(
        "pixels of " + number(spacing.across) + " x " + number(spacing.down) + " give no square " +
        (most ? "of at most " + std::to_string(*most) + " looks; give more, or --looks ACROSSxDOWN"
              : std::string("of at most 36 looks down; give --looks ACROSSxDOWN")));
  }
  if (const double factor = elongation(spacing, *chosen); factor > far_from_square) {
    warn(std::string("looks ") + chosen->text() +
         CPLString().Printf(", pixels of %.4g x %.4g on the ground, are far from square: one side "
                            "is %.3g times the other; give more --looks",
                            spacing.across * chosen->across, spacing.down * chosen->down, factor));
  }
  return *chosen;
}

}  // namespace sarnum::tool
