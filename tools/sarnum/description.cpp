#include "description.h"

#include <cstddef>
#include <utility>

#include "messages.h"
#include "raster_input.h"

namespace sarnum::tool {
namespace {

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
      nodata(input.gaps().nodata()) {
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
    warn("the geolocation arrays of " + in_quotes(input.path()) + " are not carried over");
  }
}

void Description::enlarge_pixels(int across, int down) {
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
  } else if (control_points.count() > 0) {
    check(dataset.SetGCPs(control_points.count(), control_points.points(),
                          control_points.reference()));
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
}

}  // namespace sarnum::tool
