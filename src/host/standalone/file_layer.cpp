// Raster layers on GDAL: a band of rows in memory, moved down the file by its user.
//
// GDAL answers with a status, with messages to a handler, or (a raw file that is too short)
// not at all. Every call that can fail runs inside a GdalScope, which keeps the messages off the
// screen, and ends in the thread's failure memory. Blocks that the band has passed are taken out
// of GDAL's cache one by one: its limit is a share of the machine's memory, which would be
// filled with rows that nobody asks for again, while blocks that the band still touches (a tile
// is higher than a band) must stay or be decoded again.
#include "sarnum/host/file_layer.h"

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
#include <mutex>
#include <new>
#include <string>
#include <vector>

#include "host/standalone/missing_samples.h"
#include "host/standalone/raster_status.h"

namespace {

using sarnum::host::forbid_sidecar;
using sarnum::host::register_drivers_once;
using sarnum::host::remember_raster_failure;

constexpr const char* open_action = "cannot open";
constexpr const char* create_action = "cannot create";
constexpr const char* write_action = "cannot write";

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

bool file_exists(const std::string& path) {
  VSIStatBufL status;
  return VSIStatExL(path.c_str(), &status, VSI_STAT_EXISTS_FLAG) == 0;
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
  if (std::string missing = sarnum::host::missing_samples(dataset); !missing.empty()) {
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

}  // namespace

namespace sarnum::host {

void register_drivers_once() {
  static std::once_flag registered;
  std::call_once(registered, [] {
    const GdalScope scope;
    GDALAllRegister();
  });
}

}  // namespace sarnum::host

class CFileLayer::Raster {
 public:
  /// Null, with the failure remembered, when the file cannot be opened or created.
  static std::unique_ptr<Raster> open(const char* path);
  static std::unique_ptr<Raster> create(const char* path, int width, int height,
                                        const std::vector<std::string>& options);
  ~Raster() { close(); }
  Raster(const Raster&) = delete;
  Raster& operator=(const Raster&) = delete;

  int width() const { return width_; }
  int height() const { return height_; }
  const std::string& path() const { return path_; }

  bool set_band(int rows);
  float* row_address(int row);
  bool write(void* data, int column, int row, int count);
  void shift(int rows);

 private:
  Raster(const char* path, bool writable) : path_(path), writable_(writable) {}

  void adopt(DatasetHandle dataset);
  bool allocate_band(int rows);
  float* address(int row) {
    return band_.data() +
           static_cast<std::size_t>(row - first_row_) * static_cast<std::size_t>(width_);
  }
  bool read(int row, int count, std::string& reason);
  void load();
  void load_row(int row);
  void release_blocks(std::int64_t begin_row, std::int64_t end_row);
  void trim_cache(int rows);
  bool finish();
  void close() noexcept;

  std::string path_;
  bool writable_;
  DatasetHandle dataset_;
  int width_ = 0;
  int height_ = 0;
  int block_height_ = 1;
  /// A raster of other files, which are read past its own blocks.
  bool is_composed_ = false;
  GIntBig bytes_since_trim_ = 0;

  std::vector<float> band_;
  int first_row_ = 0;
  int rows_ = 0;
  bool loaded_ = false;

  /// Reading: blocks above this row have left GDAL's cache.
  int released_to_ = 0;
  /// Reading: a row of blocks known to be unreadable, so that a bad file costs one attempt a
  /// block and not one a row.
  int unreadable_block_row_ = -1;
  /// Writing: the row of blocks that the last written row lies in.
  int written_block_row_ = -1;
  /// Writing: the file misses something that could not be stored.
  bool is_broken_ = false;
};

std::unique_ptr<CFileLayer::Raster> CFileLayer::Raster::open(const char* path) {
  register_drivers_once();
  std::unique_ptr<Raster> raster(new Raster(path, false));
  const GdalScope scope;
  DatasetHandle dataset(GDALDataset::FromHandle(GDALOpenEx(
      path, GDAL_OF_RASTER | GDAL_OF_READONLY | GDAL_OF_VERBOSE_ERROR, nullptr, nullptr, nullptr)));
  if (dataset == nullptr) {
    remember_raster_failure(open_action, path, scope.reason());
    return nullptr;
  }
  forbid_sidecar(*dataset);
  std::string reason = obstacle(*dataset);
  if (reason.empty() && scope.failed()) {
    reason = scope.reason();
  }
  if (!reason.empty()) {
    remember_raster_failure(open_action, path, reason);
    return nullptr;
  }
  raster->adopt(std::move(dataset));
  if (!raster->allocate_band(1)) {
    remember_raster_failure(open_action, path, "out of memory");
    return nullptr;
  }
  return raster;
}

std::unique_ptr<CFileLayer::Raster> CFileLayer::Raster::create(
    const char* path, int width, int height, const std::vector<std::string>& options) {
  register_drivers_once();
  // All storage is had before the file is touched.
  std::unique_ptr<Raster> raster(new Raster(path, true));
  raster->width_ = width;
  raster->height_ = height;
  if (!raster->allocate_band(1)) {
    remember_raster_failure(create_action, path, "out of memory");
    return nullptr;
  }
  CPLStringList creation_options;
  creation_options.SetNameValue("BIGTIFF", "IF_SAFER");
  for (const std::string& option : options) {
    const auto equals = option.find('=');
    if (equals == std::string::npos) {
      remember_raster_failure(create_action, path, "option '" + option + "' is not NAME=VALUE");
      return nullptr;
    }
    creation_options.SetNameValue(option.substr(0, equals).c_str(), option.c_str() + equals + 1);
  }

  GDALDriver* const driver = GetGDALDriverManager()->GetDriverByName("GTiff");
  if (driver == nullptr) {
    remember_raster_failure(create_action, path, "GDAL was built without GeoTIFF");
    return nullptr;
  }
  {
    // GDAL itself only warns of an option that it does not know, and goes on without it.
    const GdalScope scope(CE_Warning);
    if (GDALValidateCreationOptions(GDALDriver::ToHandle(driver), creation_options.List()) == 0) {
      remember_raster_failure(create_action, path, scope.reason());
      return nullptr;
    }
  }
  const GdalScope scope;
  // With the file that is replaced go its sidecars, which describe another image.
  GDALDriver::QuietDelete(path);
  const bool something_remains = file_exists(raster->path_);
  DatasetHandle dataset(
      driver->Create(path, width, height, 1, GDT_Float32, creation_options.List()));
  if (dataset == nullptr) {
    remember_raster_failure(create_action, path, scope.reason());
    if (!something_remains && file_exists(raster->path_)) {
      VSIUnlink(path);
    }
    return nullptr;
  }
  forbid_sidecar(*dataset);
  raster->adopt(std::move(dataset));
  return raster;
}

void CFileLayer::Raster::adopt(DatasetHandle dataset) {
  dataset_ = std::move(dataset);
  width_ = dataset_->GetRasterXSize();
  height_ = dataset_->GetRasterYSize();
  int block_width = 0;
  dataset_->GetRasterBand(1)->GetBlockSize(&block_width, &block_height_);
  is_composed_ = EQUAL(dataset_->GetDriverName(), "VRT");
  block_height_ = is_composed_ ? 1 : std::max(block_height_, 1);
}

/// Storage for `rows` rows from row 0 on; the present band stays when it cannot be had.
bool CFileLayer::Raster::allocate_band(int rows) {
  const auto row_count = static_cast<std::size_t>(std::min(rows, height_));
  const auto row_size = static_cast<std::size_t>(width_);
  if (row_size != 0 && row_count > std::numeric_limits<std::size_t>::max() / row_size) {
    return false;
  }
  try {
    std::vector<float> band(row_count * row_size);
    band_.swap(band);
  } catch (const std::exception&) {
    return false;
  }
  rows_ = static_cast<int>(row_count);
  first_row_ = 0;
  released_to_ = 0;
  loaded_ = false;
  return true;
}

bool CFileLayer::Raster::set_band(int rows) {
  if (allocate_band(rows)) {
    return true;
  }
  remember_raster_failure(writable_ ? write_action : "cannot read", path_,
                          "out of memory for a band of " + std::to_string(rows) + " rows");
  return false;
}

float* CFileLayer::Raster::row_address(int row) {
  if (row < first_row_ || row >= height_ || row - first_row_ >= rows_) {
    return nullptr;
  }
  if (!writable_ && !loaded_) {
    load();
    loaded_ = true;
  }
  return address(row);
}

void CFileLayer::Raster::load() {
  {
    const GdalScope scope;
    release_blocks(released_to_, first_row_);
    released_to_ = first_row_;
  }
  const int count = std::min(rows_, height_ - first_row_);
  trim_cache(count);
  std::string reason;
  if (first_row_ / block_height_ != unreadable_block_row_ && read(first_row_, count, reason)) {
    return;
  }
  for (int row = first_row_; row < first_row_ + count; ++row) {
    load_row(row);
  }
}

void CFileLayer::Raster::load_row(int row) {
  std::string reason;
  if (row / block_height_ != unreadable_block_row_ && read(row, 1, reason)) {
    return;
  }
  std::fill_n(address(row), width_, std::numeric_limits<float>::quiet_NaN());
  if (row / block_height_ != unreadable_block_row_) {
    unreadable_block_row_ = row / block_height_;
    remember_raster_failure("cannot read row " + std::to_string(row) + " of", path_, reason);
  }
}

bool CFileLayer::Raster::read(int row, int count, std::string& reason) {
  const GdalScope scope;
  const CPLErr status = dataset_->GetRasterBand(1)->RasterIO(
      GF_Read, 0, row, width_, count, address(row), width_, count, GDT_Float32, 0, 0, nullptr);
  // Some failures show in a message only, such as a table of blocks that cannot be read.
  const bool delivered = status == CE_None && !scope.failed();
  if (!delivered) {
    reason = scope.reason();
  }
  return delivered;
}

bool CFileLayer::Raster::write(void* data, int column, int row, int count) {
  if (!writable_ || data == nullptr || row < 0 || row >= height_ || column < 0 || count < 1 ||
      count > width_ - column) {
    remember_raster_failure(write_action, path_,
                            writable_ ? "the values lie outside the raster" : "it is being read");
    return false;
  }
  const GdalScope scope;
  const CPLErr status = dataset_->GetRasterBand(1)->RasterIO(GF_Write, column, row, count, 1, data,
                                                             count, 1, GDT_Float32, 0, 0, nullptr);
  const int block_row = row / block_height_;
  if (block_row != written_block_row_ && written_block_row_ >= 0) {
    const std::int64_t begin = std::int64_t{written_block_row_} * block_height_;
    release_blocks(begin, begin + block_height_);
  }
  written_block_row_ = block_row;
  const bool stored = status == CE_None && !scope.failed();
  if (!stored) {
    is_broken_ = true;
    remember_raster_failure(write_action, path_, scope.reason());
  }
  return stored;
}

void CFileLayer::Raster::shift(int rows) {
  if (rows > 0) {
    first_row_ += std::min(rows, height_ - first_row_);
    loaded_ = false;
  }
}

/// Takes the blocks from the one at `begin_row` to the last that ends at or above `end_row` out of
/// GDAL's cache. All bands: of a file with interleaved pixels GDAL keeps the neighbours too.
void CFileLayer::Raster::release_blocks(std::int64_t begin_row, std::int64_t end_row) {
  for (int i = 1; i <= dataset_->GetRasterCount(); ++i) {
    GDALRasterBand& band = *dataset_->GetRasterBand(i);
    int block_width = 0;
    int block_height = 0;
    band.GetBlockSize(&block_width, &block_height);
    if (block_width < 1 || block_height < 1) {
      continue;
    }
    const int columns = (width_ - 1) / block_width + 1;
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
void CFileLayer::Raster::trim_cache(int rows) {
  if (!is_composed_) {
    return;
  }
  bytes_since_trim_ += GIntBig{rows} * width_ * static_cast<GIntBig>(sizeof(float));
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
bool CFileLayer::Raster::finish() {
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
    if (VSILFILE* const file = VSIFOpenL(path_.c_str(), "wb")) {
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
  if (!closed) {
    remember_raster_failure(writable_ ? write_action : "cannot close", path_, scope.reason());
  }
  return closed && !is_broken_;
}

void CFileLayer::Raster::close() noexcept {
  if (dataset_ == nullptr) {
    return;
  }
  bool finished = false;
  try {
    finished = finish();
  } catch (const std::exception&) {
    remember_raster_failure(writable_ ? write_action : "cannot close", path_, "out of memory");
  }
  if (writable_ && !finished) {
    VSIUnlink(path_.c_str());
  }
}

// --- The interface: checks the values that mean something to a host, and lets nothing be thrown

namespace {

constexpr unsigned long open_mode = 272;
constexpr unsigned long open_access = 0x80000000UL;
constexpr int pixel_type_float32 = 7;
constexpr unsigned long create_mode = 273;
constexpr unsigned long create_format = 7;
constexpr int band_mode = 256;

/// The work's result, or zero and a remembered failure when it throws.
template <class Work>
auto guarded(const char* action, const char* path, Work work) noexcept -> decltype(work()) {
  try {
    return work();
  } catch (const std::exception& error) {
    remember_raster_failure(action, path, error.what());
    return {};
  }
}

int refuse(const char* action, const char* path) {
  remember_raster_failure(action, path, "the layer does not know the mode asked for");
  return 0;
}

}  // namespace

CFileLayer::CFileLayer(CMeterInfoBase* /*meter*/) {}

CFileLayer::~CFileLayer() = default;

int CFileLayer::Open(const char* path, unsigned long mode, int index, unsigned long access) {
  Close();
  if (path == nullptr || mode != open_mode || index != 0 || access != open_access) {
    return refuse(open_action, path != nullptr ? path : "");
  }
  return guarded(open_action, path, [&] {
    raster_ = Raster::open(path);
    return raster_ != nullptr ? 1 : 0;
  });
}

int CFileLayer::Create(const char* path, int width, int height, int type, unsigned long mode,
                       unsigned long format, ExtraTag* extra, int flag) {
  const std::vector<std::string> options = sarnum::host::take_creation_options();
  Close();
  if (path == nullptr || width < 1 || height < 1 || type != pixel_type_float32 ||
      mode != create_mode || format != create_format || extra != nullptr || flag != 0) {
    return refuse(create_action, path != nullptr ? path : "");
  }
  return guarded(create_action, path, [&] {
    raster_ = Raster::create(path, width, height, options);
    return raster_ != nullptr ? 1 : 0;
  });
}

int CFileLayer::Width() {
  return raster_ != nullptr ? raster_->width() : 0;
}

int CFileLayer::Height() {
  return raster_ != nullptr ? raster_->height() : 0;
}

int CFileLayer::SetBlockMode(int a, int b, int c, int columns, int rows, int d) {
  if (raster_ == nullptr) {
    return 0;
  }
  const char* const path = raster_->path().c_str();
  if (a != band_mode || b != 0 || c != 0 || columns != raster_->width() || rows < 1 || d != 1) {
    return refuse("cannot set the band of", path);
  }
  return guarded("cannot set the band of", path, [&] { return raster_->set_band(rows) ? 1 : 0; });
}

void* CFileLayer::GetRowAddr(int row) {
  if (raster_ == nullptr) {
    return nullptr;
  }
  return guarded("cannot read", raster_->path().c_str(), [&] { return raster_->row_address(row); });
}

int CFileLayer::WriteRow(void* data, int column, int row, int count, int d) {
  if (raster_ == nullptr) {
    return 0;
  }
  const char* const path = raster_->path().c_str();
  if (d != 1) {
    return refuse(write_action, path);
  }
  return guarded(write_action, path,
                 [&] { return raster_->write(data, column, row, count) ? 1 : 0; });
}

int CFileLayer::ShiftBlock(int rows, int d) {
  if (raster_ == nullptr) {
    return 0;
  }
  if (rows < 0 || d != 1) {
    return refuse("cannot move the band of", raster_->path().c_str());
  }
  raster_->shift(rows);
  return 1;
}

void CFileLayer::Close() {
  raster_.reset();
}
