// Raster files of flat samples with an ENVI header beside them, by the C library alone: for systems
// without GDAL. Reads and writes go straight to the file, so that each tells whether it succeeded;
// a layer asks for whole rows.
//
// Files are opened by the C library because it takes the path as the application's other calls do,
// in the character set of the system.
#include <dirent.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <limits>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "host/standalone/envi_header.h"
#include "host/standalone/output_target.h"
#include "host/standalone/raster_file.h"
#include "host/standalone/raster_status.h"
#include "sarnum/host/standalone.h"

namespace sarnum::host {

namespace {

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
  EnviHeader header;
};

/// @return why the file cannot be read, or the empty string.
std::string open_to_read(const std::string& path, File& file) {
  std::string reason = why_not_a_file(path);
  if (reason.empty() && !(file = File(path, "rb")).is_open()) {
    reason = system_reason();
  }
  return reason;
}

/// @return what is wrong with an open header, or the empty string.
std::string read_header(File& file, EnviHeader& header) {
  constexpr std::uint64_t longest_header = std::uint64_t{1} << 24;
  const std::uint64_t length = file.size();
  std::string text(length <= longest_header ? static_cast<std::size_t>(length) : 0, ' ');
  return text.empty() || !file.read(0, text.data(), text.size()) ? "it cannot be read"
                                                                 : parse_envi_header(text, header);
}

/// The same of a raster. Its header may lie beside a link to it, or beside what that names.
std::string open_with_header(const std::string& path, OpenedRaster& raster) {
  std::string reason = open_to_read(path, raster.file);
  if (!reason.empty()) {
    return reason;
  }
  raster.bytes = raster.file.size();
  for (const std::string& place : {path, target_of(path)}) {
    for (const std::string& name : header_names(place)) {
      if (File file; open_to_read(name, file).empty()) {
        reason = read_header(file, raster.header);
        return reason.empty() ? "" : "the header '" + name + "': " + reason;
      }
    }
  }
  return "there is no header '" + path + ".hdr'";
}

/// Whether no file but that one can have this header: none has the same name up to an extension,
/// without a header of its own. If the folder cannot be listed there may be others.
bool is_of_one_raster(const std::string& header, const std::string& path) {
  const std::size_t slash = header.find_last_of("/\\") + 1;
  const std::string stem = header.substr(slash, header.rfind('.') - slash);
  const std::string own = path.substr(slash);
  const std::unique_ptr<DIR, int (*)(DIR*)> folder(
      opendir(slash == 0 ? "." : header.substr(0, slash).c_str()), closedir);
  std::vector<std::string> names;
  for (dirent* entry = nullptr; folder != nullptr && (entry = readdir(folder.get())) != nullptr;) {
    names.emplace_back(entry->d_name);
  }
  const auto has_it = [&](const std::string& name) {
    const bool is_part = name.ends_with(".hdr") || name.starts_with(own + '.');
    return !is_part && name != own && (name == stem || name.starts_with(stem + '.')) &&
           std::find(names.begin(), names.end(), name + ".hdr") == names.end();
  };
  return folder != nullptr && std::none_of(names.begin(), names.end(), has_it);
}

/// The headers under other names than `kept` that describe a raster and nothing else.
std::vector<std::string> own_headers(const std::string& path, const std::string& kept) {
  std::vector<std::string> own;
  File raster;
  if (!open_to_read(path, raster).empty()) {
    return own;
  }
  for (const std::string& name : header_names(path)) {
    File file;
    EnviHeader header;
    if (target_of(name) != kept && open_to_read(name, file).empty() &&
        read_header(file, header).empty() && header.fills(raster.size()) &&
        is_of_one_raster(name, path)) {
      own.push_back(name);
    }
  }
  return own;
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
  EnviRaster(int width, int height) : width_(width), height_(height) {}

  int width() const override { return width_; }
  int height() const override { return height_; }
  bool read(int row, int count, float* to, std::string& reason) override;
  bool write(const float* from, int column, int row, int count, std::string& reason) override;
  void abandon() noexcept override { is_broken_ = true; }
  bool close(std::string& reason) noexcept override;

  /// Makes both files, or none.
  bool create(const std::string& path, std::string& reason);

 private:
  OpenedRaster raster_;
  std::vector<std::string> created_;  ///< the files to be removed if they cannot be completed
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

bool EnviRaster::create(const std::string& path, std::string& reason) {
  const std::string target = target_of(path);
  const std::string header_name = header_names(target).front();
  const auto fail_with_header = [&](const std::string& why) {
    reason = "its header '" + header_name + "': " + why;
    return false;
  };
  if (reason = why_not_a_file(path); !reason.empty()) {
    return false;
  }
  if (const std::string why = why_not_a_file(header_name); !why.empty()) {
    return fail_with_header(why);
  }
  // All storage is had before a file is touched.
  const std::string text = envi_header_text(width_, height_);
  created_ = {target, target_of(header_name)};
  std::vector<std::string> stale = companions_of(path);
  for (const std::string& place : {path, target}) {
    const std::vector<std::string> headers = own_headers(place, created_.back());
    stale.insert(stale.end(), headers.begin(), headers.end());
  }
  raster_.file = File(path, "wb");
  if (!raster_.file.is_open()) {
    reason = system_reason();
    return false;
  }
  // With the file that is replaced goes what describes it under other names: this is another image.
  for (const std::string& name : stale) {
    std::remove(name.c_str());
  }
  File header(header_name, "wb");
  if (!header.is_open()) {
    created_.pop_back();
  }
  if (header.is_open() && header.write(0, text.data(), text.size()) && header.close()) {
    return true;
  }
  const std::string why = system_reason();
  abandon();
  close(reason);
  return fail_with_header(why);
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
  for (const std::string& name : created_) {
    if (!finished) {
      std::remove(name.c_str());
    }
  }
  return finished;
}

}  // namespace

std::unique_ptr<RasterFile> open_raster_file(const char* path, std::string& reason) {
  OpenedRaster raster;
  reason = open_with_header(path, raster);
  if (reason.empty()) {
    reason = if_too_short(path, raster);
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
  auto raster = std::make_unique<EnviRaster>(width, height);
  return raster->create(path, reason) ? std::move(raster) : nullptr;
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
