// Raster layers: a band of rows in memory, moved down a file by its user.
//
// What a file could not take or give ends in the thread's failure memory: a layer is used by a
// routine that asks for the status of opening and creating only.
#include "sarnum/host/file_layer.h"

#include <algorithm>
#include <exception>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "host/standalone/raster_file.h"
#include "host/standalone/raster_status.h"

namespace {

using sarnum::host::OpenFile;
using sarnum::host::RasterFile;
using sarnum::host::remember_raster_failure;

constexpr const char* open_action = "cannot open";
constexpr const char* create_action = "cannot create";
constexpr const char* write_action = "cannot write";

}  // namespace

class CFileLayer::Raster {
 public:
  /// Null, with the failure remembered, when the file cannot be opened or created.
  static std::unique_ptr<Raster> open(const char* path);
  static std::unique_ptr<Raster> create(const char* path, int width, int height,
                                        const std::vector<std::string>& options);
  /// A created file that was not closed is removed.
  ~Raster();
  Raster(const Raster&) = delete;
  Raster& operator=(const Raster&) = delete;

  int width() const { return width_; }
  int height() const { return height_; }
  const std::string& path() const { return path_; }
  const OpenFile& lifetime() const { return lifetime_; }

  bool set_band(int rows);
  float* row_address(int row);
  bool write(const void* data, int column, int row, int count);
  void shift(int rows);
  void close() noexcept;

 private:
  Raster(const char* path, bool writable) : path_(path), writable_(writable) {}

  bool allocate_band(int rows);
  float* address(int row) {
    return band_.data() +
           static_cast<std::size_t>(row - first_row_) * static_cast<std::size_t>(width_);
  }
  void load();
  void load_row(int row);
  void remember(std::string_view action, std::string_view reason) noexcept {
    remember_raster_failure(action, path_, reason, lifetime_);
  }

  std::string path_;
  bool writable_;
  OpenFile lifetime_ = std::make_shared<const char>();
  std::unique_ptr<RasterFile> file_;
  int width_ = 0;
  int height_ = 0;

  std::vector<float> band_;
  int first_row_ = 0;
  int rows_ = 0;
  bool loaded_ = false;

  /// Reading: a row of blocks known to be unreadable, so that a bad file costs one attempt a
  /// block and not one a row.
  int unreadable_block_row_ = -1;
};

std::unique_ptr<CFileLayer::Raster> CFileLayer::Raster::open(const char* path) {
  std::unique_ptr<Raster> raster(new Raster(path, false));
  std::string reason;
  raster->file_ = sarnum::host::open_raster_file(path, reason);
  if (raster->file_ != nullptr) {
    raster->width_ = raster->file_->width();
    raster->height_ = raster->file_->height();
    if (raster->allocate_band(1)) {
      return raster;
    }
    reason = "out of memory";
  }
  remember_raster_failure(open_action, path, reason);
  return nullptr;
}

std::unique_ptr<CFileLayer::Raster> CFileLayer::Raster::create(
    const char* path, int width, int height, const std::vector<std::string>& options) {
  // All storage is had before the file is touched.
  std::unique_ptr<Raster> raster(new Raster(path, true));
  raster->width_ = width;
  raster->height_ = height;
  std::string reason = "out of memory";
  if (raster->allocate_band(1)) {
    raster->file_ = sarnum::host::create_raster_file(path, width, height, options, reason);
  }
  if (raster->file_ == nullptr) {
    remember_raster_failure(create_action, path, reason);
    return nullptr;
  }
  return raster;
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
  loaded_ = false;
  return true;
}

bool CFileLayer::Raster::set_band(int rows) {
  if (allocate_band(rows)) {
    return true;
  }
  remember(writable_ ? write_action : "cannot read",
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
  file_->pass(first_row_);
  const int count = std::min(rows_, height_ - first_row_);
  std::string reason;
  if (first_row_ / file_->block_height() != unreadable_block_row_ &&
      file_->read(first_row_, count, address(first_row_), reason)) {
    return;
  }
  for (int row = first_row_; row < first_row_ + count; ++row) {
    load_row(row);
  }
}

void CFileLayer::Raster::load_row(int row) {
  const int block_row = row / file_->block_height();
  std::string reason;
  if (block_row != unreadable_block_row_ && file_->read(row, 1, address(row), reason)) {
    return;
  }
  std::fill_n(address(row), width_, std::numeric_limits<float>::quiet_NaN());
  if (block_row != unreadable_block_row_) {
    unreadable_block_row_ = block_row;
    remember("cannot read row " + std::to_string(row) + " of", reason);
  }
}

bool CFileLayer::Raster::write(const void* data, int column, int row, int count) {
  std::string reason;
  if (!writable_ || data == nullptr || row < 0 || row >= height_ || column < 0 || count < 1 ||
      count > width_ - column) {
    reason = writable_ ? "the values lie outside the raster" : "it is being read";
  } else if (file_->write(static_cast<const float*>(data), column, row, count, reason)) {
    return true;
  }
  remember(write_action, reason);
  return false;
}

void CFileLayer::Raster::shift(int rows) {
  if (rows > 0) {
    first_row_ += std::min(rows, height_ - first_row_);
    loaded_ = false;
  }
}

CFileLayer::Raster::~Raster() {
  if (file_ != nullptr && writable_) {
    remember(write_action, "it was not closed");
    file_->abandon();
  }
  close();
}

void CFileLayer::Raster::close() noexcept {
  std::string reason;
  if (file_ != nullptr && !file_->close(reason)) {
    remember(writable_ ? write_action : "cannot close", reason);
  }
  file_.reset();
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
auto guarded(const char* action, const char* path, const OpenFile& file, Work work) noexcept
    -> decltype(work()) {
  try {
    return work();
  } catch (const std::exception& error) {
    remember_raster_failure(action, path, error.what(), file);
    return {};
  }
}

int refuse(const char* action, const char* path, const OpenFile& file = {}) {
  remember_raster_failure(action, path, "the layer does not know the mode asked for", file);
  return 0;
}

}  // namespace

CFileLayer::CFileLayer(CMeterInfoBase* /*meter*/) {}

CFileLayer::~CFileLayer() = default;

int CFileLayer::Open(const char* path, unsigned long mode, int index, unsigned long access) {
  sarnum::host::forget_past_failure(raster_ != nullptr ? raster_->lifetime() : nullptr);
  Close();
  if (path == nullptr || mode != open_mode || index != 0 || access != open_access) {
    return refuse(open_action, path != nullptr ? path : "");
  }
  return guarded(open_action, path, {}, [&] {
    raster_ = Raster::open(path);
    return raster_ != nullptr ? 1 : 0;
  });
}

int CFileLayer::Create(const char* path, int width, int height, int type, unsigned long mode,
                       unsigned long format, ExtraTag* extra, int flag) {
  const std::vector<std::string> options = sarnum::host::take_creation_options();
  sarnum::host::forget_past_failure(raster_ != nullptr ? raster_->lifetime() : nullptr);
  Close();
  if (path == nullptr || width < 1 || height < 1 || type != pixel_type_float32 ||
      mode != create_mode || format != create_format || extra != nullptr || flag != 0) {
    return refuse(create_action, path != nullptr ? path : "");
  }
  return guarded(create_action, path, {}, [&] {
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
    return refuse("cannot set the band of", path, raster_->lifetime());
  }
  return guarded("cannot set the band of", path, raster_->lifetime(),
                 [&] { return raster_->set_band(rows) ? 1 : 0; });
}

void* CFileLayer::GetRowAddr(int row) {
  if (raster_ == nullptr) {
    return nullptr;
  }
  return guarded("cannot read", raster_->path().c_str(), raster_->lifetime(),
                 [&] { return raster_->row_address(row); });
}

int CFileLayer::WriteRow(void* data, int column, int row, int count, int d) {
  if (raster_ == nullptr) {
    return 0;
  }
  const char* const path = raster_->path().c_str();
  if (d != 1) {
    return refuse(write_action, path, raster_->lifetime());
  }
  return guarded(write_action, path, raster_->lifetime(),
                 [&] { return raster_->write(data, column, row, count) ? 1 : 0; });
}

int CFileLayer::ShiftBlock(int rows, int d) {
  if (raster_ == nullptr) {
    return 0;
  }
  if (rows < 0 || d != 1) {
    return refuse("cannot move the band of", raster_->path().c_str(), raster_->lifetime());
  }
  raster_->shift(rows);
  return 1;
}

void CFileLayer::Close() {
  if (raster_ != nullptr) {
    raster_->close();
  }
  raster_.reset();
}
