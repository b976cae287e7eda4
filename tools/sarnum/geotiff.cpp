#include "geotiff.h"

#include <cpl_conv.h>
#include <cpl_string.h>
#include <unistd.h>

#include <cstddef>

#include "messages.h"

namespace sarnum::tool {
namespace {

constexpr const char* pam_option = "GDAL_PAM_ENABLED";
// A domain of metadata that few programs copy with the image, to files that may be incomplete.
constexpr const char* own_domain = "SARNUM";
constexpr const char* sparse_item = "SPARSE";

GDALDriver& geotiff_driver() {
  GDALDriver* const driver = GetGDALDriverManager()->GetDriverByName("GTiff");
  if (driver == nullptr) {
    throw Failure("this GDAL has no GeoTIFF driver");
  }
  return *driver;
}

CPLStringList option_list(const std::vector<std::string>& options) {
  CPLStringList list;
  for (const std::string& option : options) {
    list.AddString(option.c_str());
  }
  return list;
}

}  // namespace

void check_creation_options(const std::vector<std::string>& options) {
  for (const std::string& option : options) {
    const std::size_t equals = option.find('=');
    if (equals == 0 || equals == std::string::npos) {
      throw UsageFailure("--co " + in_quotes(option) + " is not of the form NAME=VALUE");
    }
    if (EQUAL(option.substr(0, equals).c_str(), "PROFILE") &&
        !EQUAL(option.substr(equals + 1).c_str(), "GDALGeoTIFF")) {
      throw UsageFailure("--co " + in_quotes(option) +
                         " would drop what the file says of the image; leave it out");
    }
    for (const char* const name : {"TFW", "WORLDFILE", "RPB", "RPCTXT"}) {
      if (EQUAL(option.substr(0, equals).c_str(), name) &&
          CPLTestBool(option.substr(equals + 1).c_str())) {
        throw UsageFailure("--co " + in_quotes(option) +
                           " would write a second file; all is kept in the GeoTIFF itself");
      }
    }
  }
  forget_gdal_messages();
  const CPLStringList list = option_list(options);
  if (GDALValidateCreationOptions(&geotiff_driver(), list.List()) == FALSE) {
    const std::vector<std::string> reasons = gdal_warnings();
    throw UsageFailure("--co: " + (reasons.empty() ? "an option is not valid" : reasons.front()));
  }
}

void mark_if_sparse(GDALDataset& dataset, const std::vector<std::string>& options) {
  if (option_list(options).FetchBool("SPARSE_OK", false)) {
    dataset.SetMetadataItem(sparse_item, "YES", own_domain);
  }
}

bool is_marked_as_sparse(GDALDataset& dataset) {
  return dataset.GetMetadataItem(sparse_item, own_domain) != nullptr;
}

NoSidecars::NoSidecars() {
  const char* const value = CPLGetThreadLocalConfigOption(pam_option, nullptr);
  was_set_ = value != nullptr;
  before_ = was_set_ ? value : "";
  CPLSetThreadLocalConfigOption(pam_option, "NO");
}

NoSidecars::~NoSidecars() {
  CPLSetThreadLocalConfigOption(pam_option, was_set_ ? before_.c_str() : nullptr);
}

GDALDatasetUniquePtr create_geotiff(const OutputFile& output, int width, int height,
                                    GDALDataType type, const std::vector<std::string>& options) {
  CPLStringList list = option_list(options);
  if (list.FetchNameValue("BIGTIFF") == nullptr) {
    list.SetNameValue("BIGTIFF", "IF_SAFER");
  }
  forget_gdal_messages();
  GDALDatasetUniquePtr dataset(
      geotiff_driver().Create(output.temporary().c_str(), width, height, 1, type, list.List()));
  if (dataset == nullptr) {
    fail_to_write(output, gdal_failure());
  }
  mark_if_sparse(*dataset, options);
  return dataset;
}

void write_rows(GDALDataset& dataset, const OutputFile& output, int first, int count,
                GDALDataType type, void* pixels) {
  forget_gdal_messages();
  const int width = dataset.GetRasterXSize();
  // A block that the cache writes late fails in a later call than its own, or in none.
  if (dataset.GetRasterBand(1)->RasterIO(GF_Write, 0, first, width, count, pixels, width, count,
                                         type, 0, 0, nullptr) != CE_None ||
      !gdal_failure().empty()) {
    fail_to_write(output, gdal_failure());
  }
}

void close_written(GDALDatasetUniquePtr dataset, const OutputFile& output) {
  forget_gdal_messages();
  // Step by step: none that writes may follow one that failed (see fail_to_write).
  GDALRasterBand& band = *dataset->GetRasterBand(1);
  band.FlushCache();
  if (gdal_failure().empty()) {
    dataset->FlushCache();
  }
  // A close moves about in the file without checking that the C library could write what it holds
  // for the former place; a read checks it.
  double sample = 0;
  if (gdal_failure().empty() && band.RasterIO(GF_Read, 0, band.GetYSize() - 1, 1, 1, &sample, 1, 1,
                                              GDT_Float64, 0, 0, nullptr) == CE_None) {
    dataset.reset();
  }
  if (dataset != nullptr || !gdal_failure().empty()) {
    fail_to_write(output, gdal_failure());
  }
}

void check_written(const OutputFile& output, int width, int height, GDALDataType type) {
  forget_gdal_messages();
  const NoSidecars no_sidecars;
  const GDALDatasetUniquePtr dataset(
      GDALDataset::Open(output.temporary().c_str(), GDAL_OF_RASTER | GDAL_OF_VERBOSE_ERROR));
  const std::string what = "the file does not read back as it was written";
  if (dataset == nullptr || dataset->GetRasterXSize() != width ||
      dataset->GetRasterYSize() != height || dataset->GetRasterCount() != 1 ||
      dataset->GetRasterBand(1)->GetRasterDataType() != type) {
    fail_to_write(output, what + (dataset == nullptr ? ": " + gdal_failure() : ""));
  }
  std::vector<std::byte> row(static_cast<std::size_t>(width) *
                             static_cast<std::size_t>(GDALGetDataTypeSizeBytes(type)));
  if (dataset->GetRasterBand(1)->RasterIO(GF_Read, 0, height - 1, width, 1, row.data(), width, 1,
                                          type, 0, 0, nullptr) != CE_None) {
    fail_to_write(output, what + ": " + gdal_failure());
  }
}

void fail_to_write(const OutputFile& output, const std::string& why) {
  // The file may be open still. At its close libtiff would follow links between directories that
  // were never written, for ever if pixels happen to lie there; in an empty file it finds none.
  [[maybe_unused]] const int emptied = truncate(output.temporary().c_str(), 0);
  throw Failure("cannot write " + in_quotes(output.name()) +
                (why.empty() ? "" : ": " + replaced(why, output.temporary(), output.name())));
}

void warn_of_other_format(const std::string& name) {
  const std::string suffix = CPLString(CPLGetExtension(name.c_str())).tolower();
  if (!suffix.empty() && suffix != "tif" && suffix != "tiff" && suffix != "gtiff") {
    warn(in_quotes(name) + " is written as GeoTIFF, whatever its name");
  }
}

}  // namespace sarnum::tool
