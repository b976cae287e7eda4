#include "sample_view.h"

#include <cpl_string.h>

#include <cmath>
#include <cstddef>
#include <limits>

#include "description.h"
#include "messages.h"

namespace sarnum::tool {
namespace {

constexpr const char* function_name = "sarnum_sample_view";

/// A pixel function of GDAL's virtual rasters: converts a block of samples, delivered as doubles.
CPLErr convert(void** sources, int /*source_count*/, void* out, int width, int height,
               GDALDataType /*source_type*/, GDALDataType out_type, int pixel_space, int line_space,
               CSLConstList arguments) noexcept {
  const auto option = [arguments](const char* name) { return CSLFetchNameValue(arguments, name); };
  const auto figure = [&option](const char* name, double otherwise) {
    const char* const text = option(name);
    return text != nullptr ? CPLAtof(text) : otherwise;
  };
  const bool tells_validity = option("validity") != nullptr;
  const bool skips_invalid = option("skip") != nullptr;
  const bool from_decibel = option("decibel") != nullptr;
  const double scale = figure("scale", 1);
  const double offset = figure("offset", 0);
  const std::optional<double> nodata(
      figure("nodata", std::numeric_limits<double>::quiet_NaN()));  // which no sample equals
  for (int y = 0; y < height; ++y) {
    double* const row = static_cast<double*>(sources[0]) + std::ptrdiff_t{y} * width;
    for (double* sample = row; sample != row + width; ++sample) {
      const bool is_valid = !std::isnan(*sample) && !is_nodata(*sample, nodata);
      if (tells_validity) {
        *sample = is_valid ? 1 : 0;
      } else if (skips_invalid && !is_valid) {
        *sample = 0;
      } else if (from_decibel) {
        *sample = std::pow(10.0, (*sample * scale + offset) / 10);
      }
    }
    GDALCopyWords(row, GDT_Float64, sizeof *row,
                  static_cast<std::byte*>(out) + std::ptrdiff_t{y} * line_space, out_type,
                  pixel_space, width);
  }
  return CE_None;
}

std::string escaped(const std::string& text) {
  char* const copy = CPLEscapeString(text.c_str(), -1, CPLES_XML);
  std::string result = copy;
  CPLFree(copy);
  return result;
}

}  // namespace

std::string name_of_view(const RasterInput& input, SampleRule rule, View view) {
  if (GDALAddDerivedBandPixelFuncWithArgs(function_name, convert, nullptr) != CE_None) {
    throw Failure("this GDAL has no pixel functions");
  }
  if (input.path().starts_with("/vsistdin")) {
    throw UsageFailure(
        "the standard input cannot be read by --nodata skip or --from-db; name a file");
  }
  std::string arguments;
  const auto add = [&arguments](const char* name, double value) {
    arguments += std::string(" ") + name + "=\"" + CPLString().Printf("%.17g", value) + "\"";
  };
  if (view == View::validity) {
    add("validity", 1);
  }
  if (rule.skips_invalid) {
    add("skip", 1);
  }
  if (rule.from_decibel) {
    add("decibel", 1);
    add("scale", input.band().GetScale());
    add("offset", input.band().GetOffset());
  }
  if (const auto nodata = nodata_of(input.band())) {
    add("nodata", *nodata);
  }
  // GDAL takes the text of a virtual raster for its name: there is no file to be removed.
  return "<VRTDataset rasterXSize=\"" + std::to_string(input.width()) + "\" rasterYSize=\"" +
         std::to_string(input.height()) +
         "\"><VRTRasterBand dataType=\"Float32\" band=\"1\" subClass=\"VRTDerivedRasterBand\">"
         "<PixelFunctionType>" +
         function_name + "</PixelFunctionType><PixelFunctionArguments" + arguments +
         "/><SourceTransferType>Float64</SourceTransferType><SimpleSource><SourceFilename "
         "relativeToVRT=\"0\">" +
         escaped(input.path()) +
         "</SourceFilename><SourceBand>1</SourceBand></SimpleSource></VRTRasterBand></VRTDataset>";
}

}  // namespace sarnum::tool
