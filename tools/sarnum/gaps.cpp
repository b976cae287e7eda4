// GDAL has a mask for every band, but one for one reason: beside a nodata value it passes over an
// alpha band, and of complex pixels it compares the real parts only.
#include "gaps.h"

#include <cmath>
#include <cstddef>
#include <limits>
#include <utility>
#include <vector>

#include "messages.h"
#include "report.h"

namespace sarnum::tool {
namespace {

constexpr double no_value = std::numeric_limits<double>::quiet_NaN();

/// What a raster of 32-bit floats has for the nodata value.
double as_float(double nodata) {
  constexpr double largest = std::numeric_limits<float>::max();
  return std::abs(nodata) <= largest ? static_cast<double>(static_cast<float>(nodata)) : nodata;
}

/// The band that says by values other than zero which pixels are there, if there is one.
GDALRasterBand* mask_of(GDALRasterBand& band) {
  const int flags = band.GetMaskFlags();
  if ((flags & GMF_ALL_VALID) == 0 && flags != GMF_NODATA) {
    return band.GetMaskBand();
  }
  GDALDataset& dataset = *band.GetDataset();
  for (int i = 1; i <= dataset.GetRasterCount(); ++i) {
    GDALRasterBand* const other = dataset.GetRasterBand(i);
    if (other != &band && other->GetColorInterpretation() == GCI_AlphaBand) {
      return other;
    }
  }
  return nullptr;
}

}  // namespace

std::optional<double> nodata_of(GDALRasterBand& band) {
  int present = 0;
  const double value = band.GetNoDataValue(&present);
  return present != 0 ? std::optional(value) : std::nullopt;
}

Gaps::Gaps(GDALRasterBand& band, std::string name)
    : name_(std::move(name)), nodata_(nodata_of(band)), mask_(mask_of(band)) {}

std::string Gaps::text() const {
  const std::string value = nodata_ ? exact_number(*nodata_) : "";
  return !has_mask() ? (nodata_ ? value : "none") : (nodata_ ? value + " and a mask" : "a mask");
}

void Gaps::mark(int column, int row, int width, std::span<double> re,
                std::span<const double> im) const {
  if (nodata_) {
    const double rounded = as_float(*nodata_);
    for (std::size_t i = 0; i < re.size(); ++i) {
      if ((re[i] == *nodata_ || re[i] == rounded) && (im.empty() || im[i] == 0)) {
        re[i] = no_value;
      }
    }
  }
  if (mask_ == nullptr) {
    return;
  }
  std::vector<float> shown(re.size());
  const int rows = static_cast<int>(re.size() / static_cast<std::size_t>(width));
  forget_gdal_messages();
  if (mask_->RasterIO(GF_Read, column, row, width, rows, shown.data(), width, rows, GDT_Float32, 0,
                      0, nullptr) != CE_None ||
      !gdal_failure().empty()) {
    fail_with_gdal_reason("cannot read the mask of " + in_quotes(name_) +
                          ", which may be truncated or damaged");
  }
  for (std::size_t i = 0; i < re.size(); ++i) {
    if (shown[i] == 0) {
      re[i] = no_value;
    }
  }
}

}  // namespace sarnum::tool
