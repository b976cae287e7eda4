// Raster files of flat samples with an ENVI header beside them, by the C library alone: for systems
// without GDAL. Reads and writes go straight to the file, so that each tells whether it succeeded;
// a layer asks for whole rows.
//
// Files are opened by the C library because it takes the path as the application's other calls do,
// in the character set of the system.
#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <limits>
#include <memory>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "host/standalone/envi_header.h"
#include "host/standalone/raster_file.h"
#include "host/standalone/raster_status.h"
#include "sarnum/host/standalone.h"

namespace sarnum::host {

namespace {

std::string system_reason() noexcept {
  try {
    return std::generic_category().message(errno != 0 ? errno : EIO);
  } catch (const std::exception&) {
    return "out of memory";
  }
}

/// A file of any size, or none.
class File {
 public:
  File() = default;
  File(const std::string& path, const char* mode) : file_(open(path, mode), std::fclose) {
    if (file_ != nullptr) {
      std::setvbuf(file_.get(), nullptr, _IONBF, 0);
    }
  }

  bool is_open() const { return file_ != nullptr; }

  /// 0 where it cannot be told.
  std::uint64_t size() {
#if defined(_WIN32)
    const std::int64_t end = _fseeki64(file_.get(), 0, SEEK_END) == 0 ? _ftelli64(file_.get()) : 0;
#else
    const std::int64_t end = fseeko(file_.get(), 0, SEEK_END) == 0 ? ftello(file_.get()) : 0;
#endif
    return static_cast<std::uint64_t>(std::max<std::int64_t>(end, 0));
  }

  bool read(std::uint64_t position, void* to, std::size_t bytes) {
    return seek(position) && std::fread(to, 1, bytes, file_.get()) == bytes;
  }
  bool write(std::uint64_t position, const void* from, std::size_t bytes) {
    return seek(position) && std::fwrite(from, 1, bytes, file_.get()) == bytes;
  }

  bool close() {
    errno = 0;
    return file_ == nullptr || std::fclose(file_.release()) == 0;
  }

 private:
  static std::FILE* open(const std::string& path, const char* mode) {
    errno = 0;
    return std::fopen(path.c_str(), mode);
  }

  bool seek(std::uint64_t position) {
    errno = 0;
    if (position > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max())) {
      return false;
    }
#if defined(_WIN32)
    return _fseeki64(file_.get(), static_cast<std::int64_t>(position), SEEK_SET) == 0;
#else
    return fseeko(file_.get(), static_cast<off_t>(position), SEEK_SET) == 0;
#endif
  }

  std::unique_ptr<std::FILE, int (*)(std::FILE*)> file_{nullptr, std::fclose};
};

/// The names that the header of a raster may have, the one that it is given here first.
std::vector<std::string> header_names(const std::string& path) {
  std::vector<std::string> names = {path + ".hdr"};
  const std::size_t dot = path.find_last_of("./\\");
  if (dot != std::string::npos && path[dot] == '.' && path.substr(dot) != ".hdr") {
    names.push_back(path.substr(0, dot) + ".hdr");
  }
  return names;
}

struct OpenedRaster {
  File file;
  std::uint64_t bytes = 0;
  std::string header_name;
  EnviHeader header;
};

/// @return why the raster cannot be read, or the empty string.
std::string open_with_header(const std::string& path, OpenedRaster& raster) {
  constexpr std::uint64_t longest_header = std::uint64_t{1} << 24;
  raster.file = File(path, "rb");
  if (!raster.file.is_open()) {
    return system_reason();
  }
  raster.bytes = raster.file.size();
  for (std::string& name : header_names(path)) {
    File header(name, "rb");
    if (!header.is_open()) {
      continue;
    }
    const std::uint64_t length = header.size();
    std::string text(length <= longest_header ? static_cast<std::size_t>(length) : 0, ' ');
    std::string complaint = text.empty() || !header.read(0, text.data(), text.size())
                                ? "it cannot be read"
                                : parse_envi_header(text, raster.header);
    raster.header_name = std::move(name);
    return complaint.empty() ? "" : "the header '" + raster.header_name + "': " + complaint;
  }
  return "there is no header '" + path + ".hdr'";
}

std::string if_too_short(const std::string& path, const OpenedRaster& raster) {
  const EnviHeader& header = raster.header;
  return header.fits(raster.bytes)
             ? ""
             : "'" + path + "' is truncated: it has " + std::to_string(raster.bytes) +
                   " bytes but its header says " + std::to_string(header.bands) + " bands of " +
                   std::to_string(header.width) + " x " + std::to_string(header.height) +
                   " pixels; copy or make it again";
}

class EnviRaster final : public RasterFile {
 public:
  explicit EnviRaster(OpenedRaster raster)
      : raster_(std::move(raster)), width_(raster_.header.width), height_(raster_.header.height) {}
  EnviRaster(std::string path, int width, int height)
      : created_(std::move(path)), width_(width), height_(height) {}

  int width() const override { return width_; }
  int height() const override { return height_; }
  bool read(int row, int count, float* to, std::string& reason) override;
  bool write(const float* from, int column, int row, int count, std::string& reason) override;
  bool close(std::string& reason) noexcept override;

  /// Makes both files, or none.
  bool create(std::string& reason);

 private:
  OpenedRaster raster_;
  std::string created_;  ///< the path of a created raster
  int width_;
  int height_;
  std::vector<unsigned char> samples_;  ///< a row as the file has it
  bool is_broken_ = false;
};

bool EnviRaster::read(int row, int count, float* to, std::string& reason) {
  const EnviHeader& header = raster_.header;
  const auto pixels = static_cast<std::uint64_t>(width_);
  // No longer than the file, since the header fits it.
  samples_.resize(header.pixel_stride * (pixels - 1) + header.type->bytes);
  for (int i = 0; i < count; ++i, to += width_) {
    const std::uint64_t line = static_cast<std::uint64_t>(row + i) * header.line_stride;
    if (!raster_.file.read(header.first + line, samples_.data(), samples_.size())) {
      reason = system_reason();
      return false;
    }
    header.type->convert(samples_.data(), header.pixel_stride, header.swapped, to, width_);
  }
  return true;
}

std::uint64_t position_of(int row, int column, int width) {
  return (static_cast<std::uint64_t>(row) * static_cast<std::uint64_t>(width) +
          static_cast<std::uint64_t>(column)) *
         sizeof(float);
}

bool EnviRaster::write(const float* from, int column, int row, int count, std::string& reason) {
  if (raster_.file.write(position_of(row, column, width_), from,
                         static_cast<std::size_t>(count) * sizeof(float))) {
    return true;
  }
  reason = system_reason();
  is_broken_ = true;
  return false;
}

bool EnviRaster::create(std::string& reason) {
  // All storage is had before a file is touched.
  const std::string text = envi_header_text(width_, height_);
  const std::string name = header_names(created_).front();
  raster_.header_name = name;
  OpenedRaster replaced;
  const bool has_header =
      open_with_header(created_, replaced).empty() && replaced.header.fills(replaced.bytes);
  replaced.file.close();
  raster_.file = File(created_, "wb");
  if (!raster_.file.is_open()) {
    reason = system_reason();
    return false;
  }
  // With the file that is replaced goes its header under another name: it describes another image.
  if (has_header) {
    std::remove(replaced.header_name.c_str());
  }
  if (File header(name, "wb"); !header.is_open()) {
    reason = system_reason();
    raster_.header_name.clear();
    is_broken_ = true;
  } else if (!header.write(0, text.data(), text.size()) || !header.close()) {
    reason = system_reason();
    is_broken_ = true;
  }
  if (is_broken_) {
    std::string of_closing;
    close(of_closing);
    reason = "its header '" + name + "': " + reason;
  }
  return !is_broken_;
}

bool EnviRaster::close(std::string& reason) noexcept {
  const bool is_created = !created_.empty();
  const std::uint64_t bytes = position_of(height_, 0, width_);
  bool finished = !is_broken_;
  if (finished && is_created && raster_.file.size() < bytes) {
    finished = raster_.file.write(bytes - 1, "", 1);  // samples that were not written are zero
  }
  if (!finished) {
    reason = system_reason();
  }
  if (!raster_.file.close() && finished) {
    reason = system_reason();
    finished = false;
  }
  if (!finished && is_created) {
    std::remove(created_.c_str());
    std::remove(raster_.header_name.c_str());
  }
  return finished;
}

}  // namespace

std::unique_ptr<RasterFile> open_raster_file(const char* path, std::string& reason) {
  OpenedRaster raster;
  reason = open_with_header(path, raster);
  if (reason.empty()) {
    reason = if_too_short(path, raster);
    char sample = 0;  // a folder can be opened, and has a size
    if (reason.empty() && !raster.file.read(raster.header.first, &sample, 1)) {
      reason = system_reason();
    }
  }
  return reason.empty() ? std::make_unique<EnviRaster>(std::move(raster)) : nullptr;
}

std::unique_ptr<RasterFile> create_raster_file(const char* path, int width, int height,
                                               const std::vector<std::string>& options,
                                               std::string& reason) {
  if (!options.empty()) {
    reason = "option '" + options.front() + "' is not known: rasters of flat samples have none";
    return nullptr;
  }
  auto raster = std::make_unique<EnviRaster>(path, width, height);
  return raster->create(reason) ? std::move(raster) : nullptr;
}

const char* missing_samples(const char* path) noexcept {
  try {
    OpenedRaster raster;
    return keep_text(open_with_header(path, raster).empty() ? if_too_short(path, raster) : "");
  } catch (const std::exception&) {
    return "out of memory";
  }
}

}  // namespace sarnum::host
