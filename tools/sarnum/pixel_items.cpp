#include "pixel_items.h"

#include <cpl_conv.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <string_view>

namespace sarnum::tool {
namespace {

enum class Kind {
  side,     // of a pixel in metres
  step,     // from pixel to pixel in another unit, or the looks in a pixel
  density,  // pixels per length
};

struct KnownItems {
  const char* across;
  const char* down;
  Kind kind;
};

// As GDAL's drivers name them.
constexpr KnownItems known_items[] = {
    {"PIXEL_SPACING", "LINE_SPACING", Kind::side},
    {"RANGE_SPACING", "AZIMUTH_SPACING", Kind::side},
    {"CEOS_PIXEL_SPACING_METERS", "CEOS_LINE_SPACING_METERS", Kind::side},
    {"SPH_RANGE_SPACING", "SPH_AZIMUTH_SPACING", Kind::side},
    {"COL_SPACING", "ROW_SPACING", Kind::step},
    {"RANGE_LOOKS", "AZIMUTH_LOOKS", Kind::step},
    {"SPH_RANGE_LOOKS", "SPH_AZIMUTH_LOOKS", Kind::step},
    {"", "LINE_TIME_INTERVAL", Kind::step},
    {"", "SPH_LINE_TIME_INTERVAL", Kind::step},
    {"TIFFTAG_XRESOLUTION", "TIFFTAG_YRESOLUTION", Kind::density},
};

// What the names of further such items contain.
constexpr const char* doubtful_words[] = {
    "SPACING",           "LOOKS",           "RESOLUTION", "PIXEL_SIZE",   "PIXELSIZE",
    "SAMPLING_",         "LINE_TIME",       "LINETIME",   "TIMEINTERVAL", "TIME_INTERVAL",
    "NUMBER_OF_SAMPLES", "NUMBER_OF_LINES", "IMAGE_SIZE", "LINE_LENGTH",
};

/// The number that a text consists of.
std::optional<double> whole_number(const char* text) {
  char* end = nullptr;
  const double value = CPLStrtod(text, &end);
  const bool is_all =
      end != text && std::string_view(end).find_first_not_of(' ') == std::string_view::npos;
  return is_all && std::isfinite(value) ? std::optional(value) : std::nullopt;
}

std::optional<std::string> enlarged(const KnownItems& known, const char* text, int times) {
  const std::optional<double> value = whole_number(text);
  if (!value) {
    return std::nullopt;
  }
  return CPLString().Printf("%.15g", known.kind == Kind::density ? *value / times : *value * times);
}

/// Looks of the steps so far and of this one.
std::optional<std::string> accumulated(std::string_view looks, int across, int down) {
  std::int64_t total[2] = {};
  const char* at = looks.data();
  const char* const end = at + looks.size();
  for (const int i : {0, 1}) {
    const auto [rest, error] = std::from_chars(at, end, total[i]);
    const bool is_good = error == std::errc{} && total[i] > 0 &&
                         (i == 0 ? rest != end && *rest == 'x' : rest == end) &&
                         !__builtin_mul_overflow(total[i], i == 0 ? across : down, &total[i]);
    if (!is_good) {
      return std::nullopt;
    }
    at = rest + (i == 0 ? 1 : 0);
  }
  return std::to_string(total[0]) + "x" + std::to_string(total[1]);
}

bool is_doubtful(std::string_view name, std::string_view value) {
  const std::string upper = CPLString(std::string(name)).toupper();
  // A text without digits, such as a unit or a method, tells no size.
  return value.find_first_of("0123456789") != std::string_view::npos && !upper.ends_with("UNIT") &&
         !upper.ends_with("UNITS") &&
         std::any_of(std::begin(doubtful_words), std::end(doubtful_words),
                     [&](const char* word) { return upper.find(word) != std::string::npos; });
}

/// What an item becomes; nothing when it is to be removed.
std::optional<std::string> enlarged_item(const char* name, const char* value, int across,
                                         int down) {
  std::optional<std::string> result;
  if (EQUAL(name, looks_item)) {
    result = accumulated(value, across, down);
  }
  for (const KnownItems& known : known_items) {
    if (EQUAL(name, known.across) || EQUAL(name, known.down)) {
      result = enlarged(known, value, EQUAL(name, known.across) ? across : down);
    }
  }
  return result || is_doubtful(name, value) ? result : std::optional<std::string>(value);
}

}  // namespace

std::vector<std::string> enlarge_pixel_items(CPLStringList& items, int across, int down) {
  if (across == 1 && down == 1) {
    return {};
  }
  std::vector<std::string> removed;
  CPLStringList kept;
  for (int i = 0; i < items.size(); ++i) {
    char* name = nullptr;
    const char* const value = CPLParseNameValue(items[i], &name);
    const auto result =
        name != nullptr ? enlarged_item(name, value, across, down) : std::optional<std::string>();
    if (result) {
      kept.AddNameValue(name, result->c_str());
    } else {
      removed.emplace_back(name != nullptr ? name : items[i]);
    }
    CPLFree(name);
  }
  items = std::move(kept);
  return removed;
}

std::optional<std::array<double, 2>> pixel_sides(GDALDataset& dataset) {
  for (const KnownItems& known : known_items) {
    const char* const across = dataset.GetMetadataItem(known.across);
    const char* const down = dataset.GetMetadataItem(known.down);
    if (known.kind == Kind::side && across != nullptr && down != nullptr) {
      const auto width = whole_number(across);
      const auto height = whole_number(down);
      if (width && height) {
        return std::array{*width, *height};
      }
    }
  }
  return std::nullopt;
}

}  // namespace sarnum::tool
