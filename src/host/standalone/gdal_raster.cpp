// Raster files on GDAL.
//
// GDAL answers with a status, with messages to a handler, or (a raw file that is too short)
// not at all. Every call that can fail runs inside a GdalScope, which keeps the messages off the
// screen. Blocks that a layer has passed are taken out of GDAL's cache one by one: its limit is a
// share of the machine's memory, which would be filled with rows that nobody asks for again, while
// blocks that the band still touches (a tile is higher than a band) must stay or be decoded again.
#include <cpl_conv.h>
#include <cpl_error.h>
#include <cpl_string.h>
#include <cpl_vsi.h>
#include <gdal.h>
#include <gdal_priv.h>

#include <algorithm>
#include <cstdint>
#include <exception>
#include <limits>
#include <memory>
#include <mutex>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "host/standalone/missing_samples.h"
#include "host/standalone/output_target.h"
#include "host/standalone/raster_file.h"

namespace sarnum::host {

namespace {

/// Columns of which rows are made before anything is read.
constexpr int widest_on_trust = 1 << 24;

/// Bytes of rows that a composed raster delivers before GDAL's cache is trimmed, and the size
/// that it is trimmed to.
constexpr GIntBig trim_interval = GIntBig{64} << 20;

/// While it lives, GDAL prints nothing on this thread, writes nothing beside a file that it
/// reads, and its first message of at least the given severity is kept.
class GdalScope {
 public:
  explicit GdalScope(CPLErr severity = CE_Failure)
      : severity_(severity), gzip_properties_("CPL_VSIL_GZIP_WRITE_PROPERTIES", "NO", false) {
    CPLPushErrorHandlerEx(&GdalScope::keep, this);
  }
  ~GdalScope() { CPLPopErrorHandler(); }
  GdalScope(const GdalScope&) = delete;
  GdalScope& operator=(const GdalScope&) = delete;

  bool failed() const { return failed_; }
  std::string reason() const { return message_.empty() ? "no reason is known" : message_; }

 private:
  static void CPL_STDCALL keep(CPLErr severity, CPLErrorNum /*number*/, const char* message) {
    auto& scope = *static_cast<GdalScope*>(CPLGetErrorHandlerUserData());
    if (severity < scope.severity_ || scope.failed_) {
      return;
    }
    scope.failed_ = true;
    try {
      scope.message_ = message;
    } catch (const std::bad_alloc&) {
      // The failure counts even where its text cannot be kept.
    }
  }

  CPLErr severity_;
  CPLConfigOptionSetter gzip_properties_;
  bool failed_ = false;
  std::string message_;
};

/// Closes without a word; a close whose outcome matters is made by Raster::close().
struct DatasetCloser {
  void operator()(GDALDataset* dataset) const {
    const GdalScope scope;
    GDALClose(GDALDataset::ToHandle(dataset));
  }
};
using DatasetHandle = std::unique_ptr<GDALDataset, DatasetCloser>;

/// A number that no file has where there is none.
std::uint64_t size_of(const std::string& path) {
  VSIStatBufL status;
  return VSIStatExL(path.c_str(), &status, VSI_STAT_EXISTS_FLAG | VSI_STAT_SIZE_FLAG) == 0
             ? static_cast<std::uint64_t>(status.st_size)
             : std::numeric_limits<std::uint64_t>::max();
}

/// Why an opened dataset cannot be delivered as rows of floats; empty when it can.
std::string obstacle(GDALDataset& dataset) {
  if (dataset.GetRasterCount() == 0) {
    const char* const inner =
        CSLFetchNameValue(dataset.GetMetadata("SUBDATASETS"), "SUBDATASET_1_NAME");
    return inner == nullptr ? "it has no raster band"
                            : std::string("it holds several rasters; name one, such as ") + inner;
  }
  if (GDALDataTypeIsComplex(dataset.GetRasterBand(1)->GetRasterDataType()) != 0) {
    return "its pixels are complex; make a real raster of it first (sarnum detect)";
  }
  if (std::string missing = host::missing_samples(dataset); !missing.empty()) {
    return missing;
  }
  // Some lies of a header show when the first sample is asked for. Where it cannot be read others
  // may be, but rows of a width that may be such a lie are not made on trust.
  const GdalScope scope;
  float sample = 0.0F;
  const bool delivered = dataset.GetRasterBand(1)->RasterIO(GF_Read, 0, 0, 1, 1, &sample, 1, 1,
                                                            GDT_Float32, 0, 0, nullptr) == CE_None;
  if (scope.failed() && (delivered || dataset.GetRasterXSize() > widest_on_trust)) {
    return scope.reason();
  }
  return {};
}

class GdalRaster final : public RasterFile {
 public:
  GdalRaster() = default;
  /// Of a file that is created.
  explicit GdalRaster(std::string target) : target_(std::move(target)), writable_(true) {}
  void adopt(DatasetHandle dataset);

  int width() const override { return dataset_->GetRasterXSize(); }
  int height() const override { return dataset_->GetRasterYSize(); }
  int block_height() const override { return block_height_; }
  bool read(int row, int count, float* to, std::string& reason) override;
  void pass(int row) override;
  bool write(const float* from, int column, int row, int count, std::string& reason) override;
  void abandon() noexcept override { is_broken_ = true; }
  bool close(std::string& reason) noexcept override;

 private:
  void release_blocks(std::int64_t begin_row, std::int64_t end_row);
  void trim_cache(int rows);
  bool finish(std::string& reason);

  std::string target_;
  bool writable_ = false;
  DatasetHandle dataset_;
  int block_height_ = 1;
  /// A raster of other files, which are read past its own blocks.
  bool is_composed_ = false;
  /// Its bytes are signed, which the pixel type of GDAL before 3.7 does not say.
  bool has_signed_bytes_ = false;
  GIntBig bytes_since_trim_ = 0;

  /// Reading: blocks above this row have left GDAL's cache.
  int released_to_ = 0;
  /// Writing: the row of blocks that the last written row lies in.
  int written_block_row_ = -1;
  /// Writing: the file misses something that could not be stored.
  bool is_broken_ = false;
};

void GdalRaster::adopt(DatasetHandle dataset) {
  dataset_ = std::move(dataset);
  int block_width = 0;
  GDALRasterBand& band = *dataset_->GetRasterBand(1);
  band.GetBlockSize(&block_width, &block_height_);
  const char* const kind = band.GetRasterDataType() == GDT_Byte
                               ? band.GetMetadataItem("PIXELTYPE", "IMAGE_STRUCTURE")
                               : nullptr;
  has_signed_bytes_ = kind != nullptr && EQUAL(kind, "SIGNEDBYTE");
  is_composed_ = EQUAL(dataset_->GetDriverName(), "VRT");
  block_height_ = is_composed_ ? 1 : std::max(block_height_, 1);
}

bool GdalRaster::read(int row, int count, float* to, std::string& reason) {
  trim_cache(count);
  const GdalScope scope;
  const CPLErr status = dataset_->GetRasterBand(1)->RasterIO(
      GF_Read, 0, row, width(), count, to, width(), count, GDT_Float32, 0, 0, nullptr);
  // Some failures show in a message only, such as a table of blocks that cannot be read.
  const bool delivered = status == CE_None && !scope.failed();
  if (!delivered) {
    reason = scope.reason();
  }
  const std::size_t samples = static_cast<std::size_t>(count) * static_cast<std::size_t>(width());
  for (std::size_t i = 0; has_signed_bytes_ && i < samples; ++i) {
    to[i] -= to[i] > 127.0F ? 256.0F : 0.0F;
  }
  return delivered;
}

void GdalRaster::pass(int row) {
  const GdalScope scope;
  release_blocks(released_to_, row);
  released_to_ = row;
}

bool GdalRaster::write(const float* from, int column, int row, int count, std::string& reason) {
  const GdalScope scope;
  const CPLErr status = dataset_->GetRasterBand(1)->RasterIO(GF_Write, column, row, count, 1,
                                                             const_cast<float*>(from), count, 1,
                                                             GDT_Float32, 0, 0, nullptr);
  const int block_row = row / block_height_;
  if (block_row != written_block_row_ && written_block_row_ >= 0) {
    const std::int64_t begin = std::int64_t{written_block_row_} * block_height_;
    release_blocks(begin, begin + block_height_);
  }
  written_block_row_ = block_row;
  const bool stored = status == CE_None && !scope.failed();
  if (!stored) {
    is_broken_ = true;
    reason = scope.reason();
  }
  return stored;
}

/// Takes the blocks from the one at `begin_row` to the last that ends at or above `end_row` out of
/// GDAL's cache. All bands: of a file with interleaved pixels GDAL keeps the neighbours too.
void GdalRaster::release_blocks(std::int64_t begin_row, std::int64_t end_row) {
  for (int i = 1; i <= dataset_->GetRasterCount(); ++i) {
    GDALRasterBand& band = *dataset_->GetRasterBand(i);
    int block_width = 0;
    int block_height = 0;
    band.GetBlockSize(&block_width, &block_height);
    if (block_width < 1 || block_height < 1) {
      continue;
    }
    const int columns = (width() - 1) / block_width + 1;
    for (std::int64_t y = begin_row / block_height; y < end_row / block_height; ++y) {
      for (int x = 0; x < columns; ++x) {
        // The status also tells that nothing was cached yet; a failed write sends a message.
        band.FlushBlock(x, static_cast<int>(y), writable_ ? TRUE : FALSE);
      }
    }
  }
}

/// The cached blocks of a composed raster belong to its sources, out of reach: now and then the
/// least recently used blocks go, whosever they are. Not at every band, because a row of high
/// tiles may be larger than what is kept, and would be decoded for every band again.
void GdalRaster::trim_cache(int rows) {
  if (!is_composed_) {
    return;
  }
  bytes_since_trim_ += GIntBig{rows} * width() * static_cast<GIntBig>(sizeof(float));
  if (bytes_since_trim_ < trim_interval) {
    return;
  }
  bytes_since_trim_ = 0;
  const GdalScope scope;
  while (GDALGetCacheUsed64() > trim_interval && GDALFlushCacheBlock() != 0) {
  }
}

/// Writes what GDAL still holds and closes the file. Nothing more is written after a failure:
/// libtiff would follow links between directories that were never written, for ever if samples
/// happen to lie there. In an empty file it finds none.
bool GdalRaster::finish(std::string& reason) {
  const GdalScope scope;
  if (writable_ && !is_broken_) {
    GDALRasterBand& band = *dataset_->GetRasterBand(1);
    band.FlushCache(false);
    if (!scope.failed()) {
      dataset_->FlushCache(false);
    }
    // A close moves about in the file without checking that the C library could write what it
    // holds for the former place; a read checks it.
    float sample = 0.0F;
    const int row = std::max(written_block_row_, 0) * block_height_;
    is_broken_ = scope.failed() || band.RasterIO(GF_Read, 0, row, 1, 1, &sample, 1, 1, GDT_Float32,
                                                 0, 0, nullptr) != CE_None;
  }
  if (is_broken_) {
    if (VSILFILE* const file = VSIFOpenL(target_.c_str(), "wb")) {
      VSIFCloseL(file);
    }
  }
  GDALDatasetH const handle = GDALDataset::ToHandle(dataset_.release());
#if GDAL_VERSION_NUM >= GDAL_COMPUTE_VERSION(3, 7, 0)
  const bool closed = GDALClose(handle) == CE_None && !scope.failed();
#else
  GDALClose(handle);
  const bool closed = !scope.failed();
#endif
  const bool finished = closed && !is_broken_;
  if (!finished) {
    reason = scope.reason();
  }
  return finished;
}

bool GdalRaster::close(std::string& reason) noexcept {
  bool finished = false;
  try {
    finished = finish(reason);
  } catch (const std::exception&) {
    reason = "out of memory";
  }
  if (writable_ && !finished) {
    VSIUnlink(target_.c_str());
  }
  return finished;
}

}  // namespace

void register_drivers_once() {
  static std::once_flag registered;
  std::call_once(registered, [] {
    const GdalScope scope;
    GDALAllRegister();
  });
}

std::unique_ptr<RasterFile> open_raster_file(const char* path, std::string& reason) {
  register_drivers_once();
  const GdalScope scope;
  DatasetHandle dataset(GDALDataset::FromHandle(GDALOpenEx(
      path, GDAL_OF_RASTER | GDAL_OF_READONLY | GDAL_OF_VERBOSE_ERROR, nullptr, nullptr, nullptr)));
  if (dataset == nullptr) {
    reason = scope.reason();
    return nullptr;
  }
  forbid_sidecar(*dataset);
  reason = obstacle(*dataset);
  if (reason.empty() && scope.failed()) {
    reason = scope.reason();
  }
  if (!reason.empty()) {
    return nullptr;
  }
  auto raster = std::make_unique<GdalRaster>();
  raster->adopt(std::move(dataset));
  return raster;
}

std::unique_ptr<RasterFile> create_raster_file(const char* path, int width, int height,
                                               const std::vector<std::string>& options,
                                               std::string& reason) {
  register_drivers_once();
  CPLStringList creation_options;
  creation_options.SetNameValue("BIGTIFF", "IF_SAFER");
  for (const std::string& option : options) {
    const auto equals = option.find('=');
    if (equals == std::string::npos) {
      reason = "option '" + option + "' is not NAME=VALUE";
      return nullptr;
    }
    creation_options.SetNameValue(option.substr(0, equals).c_str(), option.c_str() + equals + 1);
  }

  GDALDriver* const driver = GetGDALDriverManager()->GetDriverByName("GTiff");
  if (driver == nullptr || driver->pfnCreate == nullptr) {
    reason = "GDAL was built without GeoTIFF";
    return nullptr;
  }
  {
    // GDAL itself only warns of an option that it does not know, and goes on without it.
    const GdalScope scope(CE_Warning);
    if (GDALValidateCreationOptions(GDALDriver::ToHandle(driver), creation_options.List()) == 0) {
      reason = scope.reason();
      return nullptr;
    }
  }
  if (reason = why_not_a_file(path); !reason.empty()) {
    return nullptr;
  }
  // All storage is had before the file is touched.
  const std::string target = target_of(path);
  auto raster = std::make_unique<GdalRaster>(target);
  const std::vector<std::string> stale = companions_of(path);
  const GdalScope scope;
  const std::uint64_t old_size = size_of(target);
  // GDALDriver::Create() would first delete what it finds under that name, whatever it is, with all
  // files that belong to it in GDAL's eyes: other bands of a scene share some of them.
  DatasetHandle dataset(
      driver->pfnCreate(path, width, height, 1, GDT_Float32, creation_options.List()));
  if (dataset == nullptr) {
    reason = scope.reason();
    if (size_of(target) != old_size) {
      VSIUnlink(target.c_str());
    }
    return nullptr;
  }
  for (const std::string& name : stale) {
    VSIUnlink(name.c_str());
  }
  forbid_sidecar(*dataset);
  raster->adopt(std::move(dataset));
  return raster;
}

}  // namespace sarnum::host
