#include "description.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

#include "messages.h"
#include "pixel_items.h"
#include "raster_input.h"

namespace sarnum::tool {
namespace {

constexpr int most_control_points = 65535 / 6;  // a tag has at most 65535 numbers, a point six

/// The items that stay true when the values change.
CPLStringList lasting_metadata(CSLConstList items) {
  CPLStringList kept;
  for (; items != nullptr && *items != nullptr; ++items) {
    if (!STARTS_WITH_CI(*items, "STATISTICS_") && !STARTS_WITH_CI(*items, "TIFFTAG_MINSAMPLE") &&
        !STARTS_WITH_CI(*items, "TIFFTAG_MAXSAMPLE")) {
      kept.AddString(*items);
    }
  }
  return kept;
}

void replace_number(CPLStringList& items, const char* name, double factor, double shift) {
  if (const char* const text = items.FetchNameValue(name)) {
    items.SetNameValue(name, CPLString().Printf("%.17g", (CPLAtof(text) + shift) * factor - shift));
  }
}

/// By how much control points come back moved, in both directions, from a GeoTIFF that GDAL creates
/// with AREA_OR_POINT=Point. Versions that write them half a pixel to one side and read them half a
/// pixel to the same side move them by one; a version without the fault, and one that is told by
/// GTIFF_POINT_GEO_IGNORE to leave half pixels alone, do not. Therefore it is measured.
std::optional<double> shift_of_points(const OGRSpatialReference* reference) {
  constexpr const char* name = "/vsimem/sarnum_control_point.tif";
  GDAL_GCP origin{};
  GDALInitGCPs(1, &origin);
  GDALDatasetUniquePtr dataset(
      GetGDALDriverManager()->GetDriverByName("GTiff")->Create(name, 1, 1, 1, GDT_Byte, nullptr));
  if (dataset != nullptr) {
    dataset->SetMetadataItem(GDALMD_AREA_OR_POINT, GDALMD_AOP_POINT);
    dataset->SetGCPs(1, &origin, reference);
  }
  GDALDeinitGCPs(1, &origin);
  dataset.reset();  // which writes it
  dataset.reset(GDALDataset::Open(name, GDAL_OF_RASTER));
  const bool is_read = dataset != nullptr && dataset->GetGCPCount() == 1;
  const std::optional<double> shift =
      is_read ? std::optional(dataset->GetGCPs()[0].dfGCPPixel) : std::nullopt;
  dataset.reset();
  VSIUnlink(name);
  return shift;
}

/// "A", "A and B", "A, B, C and 4 more".
std::string listed(const std::vector<std::string>& names) {
  constexpr std::size_t most = 3;
  std::string text = names.front();
  const std::size_t shown = std::min(names.size(), most);
  for (std::size_t i = 1; i < shown; ++i) {
    text += (i + 1 == names.size() ? " and " : ", ") + names[i];
  }
  return shown == names.size() ? text
                               : text + " and " + std::to_string(names.size() - shown) + " more";
}

}  // namespace

ControlPoints::ControlPoints(GDALDataset& dataset)
    : count_(dataset.GetGCPCount()), points_(GDALDuplicateGCPs(count_, dataset.GetGCPs())) {
  if (const OGRSpatialReference* const reference = dataset.GetGCPSpatialRef()) {
    reference_ = *reference;
    has_reference_ = true;
  }
}

ControlPoints::ControlPoints(ControlPoints&& other) noexcept
    : count_(std::exchange(other.count_, 0)),
      points_(std::exchange(other.points_, nullptr)),
      has_reference_(other.has_reference_),
      reference_(std::move(other.reference_)) {}

ControlPoints::~ControlPoints() {
  GDALDeinitGCPs(count_, points_);
  CPLFree(points_);
}

Description::Description(const RasterInput& input)
    : control_points(input.dataset()),
      rational_model(CSLDuplicate(input.dataset().GetMetadata("RPC"))),
      metadata(lasting_metadata(input.dataset().GetMetadata())),
      band_metadata(lasting_metadata(input.band().GetMetadata())),
      band_description(input.band().GetDescription()),
      unit(input.band().GetUnitType()),
      nodata(input.gaps().nodata()),
      source(in_quotes(input.path())) {
  if (const OGRSpatialReference* const found = input.dataset().GetSpatialRef()) {
    reference = *found;
  }
  std::array<double, 6> transform{};
  if (input.dataset().GetGeoTransform(transform.data()) == CE_None) {
    geotransform = transform;
  }
  int present = 0;
  const double scale_value = input.band().GetScale(&present);
  if (present != 0 && scale_value != 1.0) {
    scale = scale_value;
  }
  const double offset_value = input.band().GetOffset(&present);
  if (present != 0 && offset_value != 0.0) {
    offset = offset_value;
  }
  if (CSLCount(input.dataset().GetMetadata("GEOLOCATION")) > 0) {
    losses.push_back("the geolocation arrays of " + source + " are not carried over");
  }
  if (geotransform && control_points.count() > 0) {
    losses.push_back("the control points of " + source +
                     " are not carried over: a GeoTIFF holds them or a geotransform");
  } else if (control_points.count() > most_control_points) {
    losses.push_back("the " + std::to_string(control_points.count()) + " control points of " +
                     source + " are not carried over: a GeoTIFF holds at most " +
                     std::to_string(most_control_points));
  }
}

void Description::enlarge_pixels(int across, int down) {
  if (geotransform && is_placeholder(*geotransform) && (across > 1 || down > 1)) {
    losses.push_back("the geotransform of " + source +
                     " merely counts pixels and is not carried over");
    geotransform.reset();
  }
  if (geotransform) {
    std::array<double, 6>& t = *geotransform;
    t[1] *= across;
    t[4] *= across;
    t[2] *= down;
    t[5] *= down;
  }
  for (int i = 0; i < control_points.count(); ++i) {
    GDAL_GCP& point = control_points.points()[i];
    point.dfGCPPixel /= across;
    point.dfGCPLine /= down;
  }
  // The model counts from the centre of the first pixel, all else from its corner.
  replace_number(rational_model, "SAMP_OFF", 1.0 / across, 0.5);
  replace_number(rational_model, "LINE_OFF", 1.0 / down, 0.5);
  replace_number(rational_model, "SAMP_SCALE", 1.0 / across, 0.0);
  replace_number(rational_model, "LINE_SCALE", 1.0 / down, 0.0);

  if (metadata.FetchNameValue(looks_item) == nullptr) {
    metadata.SetNameValue(looks_item, "1x1");
  }
  std::vector<std::string> removed = enlarge_pixel_items(metadata, across, down);
  for (std::string& name : enlarge_pixel_items(band_metadata, across, down)) {
    removed.push_back(std::move(name));
  }
  if (!removed.empty()) {
    losses.push_back("the items " + listed(removed) + " of " + source +
                     " are not carried over: they may tell of its pixels, which were averaged");
  }
}

void Description::apply(GDALDataset& dataset, const std::string& path) const {
  forget_gdal_messages();
  GDALRasterBand& band = *dataset.GetRasterBand(1);
  bool good = true;
  const auto check = [&good](CPLErr result) { good = good && result == CE_None; };
  if (metadata.Count() > 0) {
    check(dataset.SetMetadata(const_cast<char**>(metadata.List())));
  }
  if (band_metadata.Count() > 0) {
    check(band.SetMetadata(const_cast<char**>(band_metadata.List())));
  }
  if (geotransform) {
    // A file holds a geotransform or control points, and the former says more.
    check(dataset.SetGeoTransform(const_cast<double*>(geotransform->data())));
  } else if (control_points.count() > 0 && control_points.count() <= most_control_points) {
    std::vector<GDAL_GCP> points(control_points.points(),
                                 control_points.points() + control_points.count());
    const char* const kind = metadata.FetchNameValue(GDALMD_AREA_OR_POINT);
    if (kind != nullptr && EQUAL(kind, GDALMD_AOP_POINT)) {
      const std::optional<double> shift = shift_of_points(control_points.reference());
      good = shift.has_value();
      for (GDAL_GCP& point : points) {
        point.dfGCPPixel -= shift.value_or(0);
        point.dfGCPLine -= shift.value_or(0);
      }
    }
    check(dataset.SetGCPs(control_points.count(), points.data(), control_points.reference()));
  }
  if (reference && (geotransform || control_points.count() == 0)) {
    check(dataset.SetSpatialRef(&*reference));
  }
  if (rational_model.Count() > 0) {
    check(dataset.SetMetadata(const_cast<char**>(rational_model.List()), "RPC"));
  }
  if (!band_description.empty()) {
    band.SetDescription(band_description.c_str());
  }
  if (!unit.empty()) {
    check(band.SetUnitType(unit.c_str()));
  }
  if (nodata) {
    check(band.SetNoDataValue(*nodata));
  }
  if (scale) {
    check(band.SetScale(*scale));
  }
  if (offset) {
    check(band.SetOffset(*offset));
  }
  if (!good) {
    fail_with_gdal_reason("cannot store the georeferencing or metadata of " + in_quotes(path));
  }
  for (const std::string& loss : losses) {
    warn(loss);
  }
}

bool is_placeholder(const std::array<double, 6>& geotransform) {
  const std::array<double, 6>& t = geotransform;
  return t[0] == 0 && t[1] == 1 && t[2] == 0 && t[3] == 0 && t[4] == 0 && std::abs(t[5]) == 1;
}

}  // namespace sarnum::tool
