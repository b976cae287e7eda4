#include "raster_input.h"

#include <cpl_conv.h>
#include <cpl_string.h>
#include <fcntl.h>
#include <gdal_pam.h>
#include <sarnum/host/standalone.h>
#include <sarnum/sarnum.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <utility>

#include "geotiff.h"
#include "messages.h"

namespace sarnum::tool {
namespace {

/// Types of GDAL without one of the library are delivered in the next larger.
PixelType pixel_type(GDALRasterBand& band) {
  switch (band.GetRasterDataType()) {
    case GDT_Byte: {
      const char* const kind = band.GetMetadataItem("PIXELTYPE", "IMAGE_STRUCTURE");
      if (kind != nullptr && EQUAL(kind, "SIGNEDBYTE")) {
        return {TD_INT8, "TD_INT8", GDT_Byte};
      }
      return {TD_UINT8, "TD_UINT8", GDT_Byte};
    }
#if GDAL_VERSION_NUM >= GDAL_COMPUTE_VERSION(3, 7, 0)
    case GDT_Int8:
      return {TD_INT8, "TD_INT8", GDT_Int8};
#endif
    case GDT_UInt16:
      return {TD_UINT16, "TD_UINT16", GDT_UInt16};
    case GDT_Int16:
      return {TD_INT16, "TD_INT16", GDT_Int16};
    case GDT_UInt32:
      return {TD_UINT32, "TD_UINT32", GDT_UInt32};
    case GDT_Int32:
      return {TD_INT32, "TD_INT32", GDT_Int32};
    case GDT_Float32:
      return {TD_FLOAT32, "TD_FLOAT32", GDT_Float32};
    case GDT_CFloat32:
      return {TD_COMPLEX_FLOAT32, "TD_COMPLEX_FLOAT32", GDT_CFloat32};
    case GDT_CInt16:
      return {TD_COMPLEX_INT16, "TD_COMPLEX_INT16", GDT_CInt16};
    case GDT_CInt32:
      return {TD_COMPLEX_INT32, "TD_COMPLEX_INT32", GDT_CInt32};
    default:
      if (GDALDataTypeIsComplex(band.GetRasterDataType()) != 0) {
        return {TD_COMPLEX_FLOAT64, "TD_COMPLEX_FLOAT64", GDT_CFloat64};
      }
      return {TD_FLOAT64, "TD_FLOAT64", GDT_Float64};
  }
}

/// Refuses what GDAL would wait on for ever, or explain badly.
void check_file(const std::string& path, bool could_not_be_opened) {
  if (path.empty()) {
    throw UsageFailure("the name of the input is empty");
  }
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) {
    // Not every name that GDAL opens is that of a file.
    if (could_not_be_opened && errno != ENAMETOOLONG &&
        gdal_failure().find("such file") != std::string::npos) {
      throw Failure("cannot open " + in_quotes(path) + ": " + std::strerror(errno));
    }
    return;
  }
  if (!S_ISREG(status.st_mode) && !S_ISDIR(status.st_mode)) {
    throw Failure("cannot open " + in_quotes(path) + ": it is not a regular file");
  }
  if (!could_not_be_opened) {
    return;
  }
  if (S_ISDIR(status.st_mode)) {
    throw Failure("cannot open " + in_quotes(path) + ": it is a folder; name a raster file in it");
  }
  if (access(path.c_str(), R_OK) != 0) {
    throw Failure("cannot open " + in_quotes(path) + ": " + std::strerror(errno));
  }
  if (status.st_size == 0) {
    throw Failure("cannot open " + in_quotes(path) + ": the file is empty");
  }
}

/// While it lives, nothing arrives on stderr: some libraries that GDAL opens files with write there
/// themselves what GDAL then reports. Debug messages, where the user asked for them, pass.
class QuietStderr {
 public:
  QuietStderr() {
    if (CPLGetConfigOption("CPL_DEBUG", nullptr) != nullptr) {
      return;
    }
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (nowhere >= 0) {
      kept_ = fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
      if (kept_ >= 0) {
        dup2(nowhere, STDERR_FILENO);
      }
      close(nowhere);
    }
  }
  ~QuietStderr() {
    if (kept_ >= 0) {
      dup2(kept_, STDERR_FILENO);
      close(kept_);
    }
  }
  QuietStderr(const QuietStderr&) = delete;
  QuietStderr& operator=(const QuietStderr&) = delete;

 private:
  int kept_ = -1;
};

/// GDAL keeps some of what it finds out while reading beside the file, unless told not to.
void forbid_sidecar(GDALDataset& dataset) {
  if (auto* const pam = dynamic_cast<GDALPamDataset*>(&dataset)) {
    pam->SetPamFlags(pam->GetPamFlags() | GPF_NOSAVE);
  }
}

/// The number of bytes of a file up to the end of a block of a TIFF; nothing when the block
/// was never written.
std::optional<std::uint64_t> end_of_block(GDALRasterBand& band, int x, int y) {
  const auto item = [&](const char* what) {
    return band.GetMetadataItem(CPLString().Printf("BLOCK_%s_%d_%d", what, x, y), "TIFF");
  };
  const char* const offset = item("OFFSET");
  if (offset == nullptr) {
    return std::nullopt;
  }
  const std::uint64_t begin = std::strtoull(offset, nullptr, 10);
  const char* const size = item("SIZE");
  return begin + (size != nullptr ? std::strtoull(size, nullptr, 10) : 0);
}

/// Refuses a TIFF of which blocks were never written. GDAL reads them as zeros or nodata: they are
/// the trace of an interrupted program, or meant so, which is believed where nodata marks them or
/// the tool itself has left them out. Blocks beyond the end of the file are read likewise, and are
/// never meant.
void check_for_holes(const std::string& path, GDALDataset& dataset) {
  GDALRasterBand& band = *dataset.GetRasterBand(1);
  const GDALDriver* const driver = dataset.GetDriver();
  VSIStatBufL status;
  if (driver == nullptr || !EQUAL(driver->GetDescription(), "GTiff") ||
      VSIStatL(path.c_str(), &status) != 0 ||
      (band.GetDataCoverageStatus(0, 0, band.GetXSize(), band.GetYSize(), 0, nullptr) &
       GDAL_DATA_COVERAGE_STATUS_EMPTY) == 0) {
    return;
  }
  int block_width = 1;
  int block_height = 1;
  band.GetBlockSize(&block_width, &block_height);
  const int across = divide_rounding_up(band.GetXSize(), block_width);
  const int down = divide_rounding_up(band.GetYSize(), block_height);
  const bool is_meant = is_marked_as_sparse(dataset);
  bool holes = false;
  for (int y = 0; y < down; ++y) {
    for (int x = 0; x < across; ++x) {
      const std::optional<std::uint64_t> end = end_of_block(band, x, y);
      if (end && *end > static_cast<std::uint64_t>(status.st_size)) {
        throw Failure(in_quotes(path) + " is truncated: it has " + std::to_string(status.st_size) +
                      " bytes but its pixels reach byte " + std::to_string(*end) +
                      "; copy or make it again");
      }
      if (!end && !nodata_of(band) && !is_meant) {
        throw Failure(in_quotes(path) +
                      " is incomplete: parts of it were never written; make it again, or, if they "
                      "are meant to be zero, copy it with gdal_translate first");
      }
      holes = holes || (!end && !is_meant);
    }
  }
  if (holes) {
    warn("parts of " + in_quotes(path) + " were never written and are read as nodata");
  }
}

/// The part of a file of several rasters that is most likely the image: complex, or else long in
/// two directions, unlike a table or a list. Empty when there are no parts.
std::string likeliest_image(GDALDataset& dataset) {
  const CPLStringList parts(dataset.GetMetadata("SUBDATASETS"), FALSE);
  const QuietStderr quiet;
  std::string likeliest;
  std::pair<bool, int> best{false, -1};
  for (int k = 1;; ++k) {
    const char* const name = parts.FetchNameValue(CPLString().Printf("SUBDATASET_%d_NAME", k));
    if (name == nullptr) {
      return likeliest;
    }
    std::pair<bool, int> rank{false, 0};
    const GDALDatasetUniquePtr part(GDALDataset::Open(name, GDAL_OF_RASTER));
    if (part != nullptr && part->GetRasterCount() > 0) {
      forbid_sidecar(*part);
      const int shorter_side = std::min(part->GetRasterXSize(), part->GetRasterYSize());
      const GDALDataType type = part->GetRasterBand(1)->GetRasterDataType();
      rank = {shorter_side > 1 && GDALDataTypeIsComplex(type) != 0, shorter_side};
    }
    if (rank > best) {
      best = rank;
      likeliest = name;
    }
  }
}

/// Adds the files of a raster. The parts of a virtual raster are looked into: they may lie in
/// truncated or unfinished files, and consist of further files.
void collect_files(const std::string& path, GDALDataset& dataset, int depth,
                   std::vector<std::string>& collected) {
  constexpr int deepest = 8;
  const GDALDriver* const driver = dataset.GetDriver();
  const bool is_virtual = driver != nullptr && EQUAL(driver->GetDescription(), "VRT");
  const CPLStringList files(dataset.GetFileList());
  for (int i = 0; i < files.size(); ++i) {
    collected.emplace_back(files[i]);
    if (!is_virtual || path == files[i] || depth == deepest) {
      continue;
    }
    const GDALDatasetUniquePtr source(GDALDataset::Open(files[i], GDAL_OF_RASTER));
    if (source != nullptr && source->GetRasterCount() > 0) {
      forbid_sidecar(*source);
      check_for_holes(files[i], *source);
      collect_files(files[i], *source, depth + 1, collected);
    }
  }
}

/// Gives GDAL a small cache, enough for one row of blocks of the raster, so that memory does
/// not grow with the image. GDAL_CACHEMAX in the environment has the last word.
void limit_gdal_cache(GDALRasterBand& band) {
  if (CPLGetConfigOption("GDAL_CACHEMAX", nullptr) != nullptr) {
    return;
  }
  constexpr GIntBig smallest = GIntBig{64} << 20;
  int block_width = 1;
  int block_height = 1;
  band.GetBlockSize(&block_width, &block_height);
  const GIntBig row_of_blocks = GIntBig{divide_rounding_up(band.GetXSize(), block_width)} *
                                block_width * block_height *
                                GDALGetDataTypeSizeBytes(band.GetRasterDataType());
  const GIntBig largest = std::max(CPLGetPhysicalRAM() / 4, smallest);
  GDALSetCacheMax64(std::min(smallest + row_of_blocks, largest));
}

}  // namespace

void register_drivers() {
  GDALAllRegister();
  if (GDALDriver* const memory = GetGDALDriverManager()->GetDriverByName("MEM")) {
    memory->pfnOpen = nullptr;
  }
}

RasterInput::RasterInput(const std::string& path) : path_(path) {
  check_file(path, false);
  forget_gdal_messages();
  {
    const QuietStderr quiet;
    dataset_.reset(
        GDALDataset::Open(path.c_str(), GDAL_OF_RASTER | GDAL_OF_READONLY | GDAL_OF_VERBOSE_ERROR));
  }
  if (dataset_ == nullptr) {
    check_file(path, true);
    throw Failure("cannot open " + in_quotes(path) + ": " +
                  replaced(replaced(gdal_failure(), path + ": ", ""), "`" + path + "' ", "it is "));
  }
  forbid_sidecar(*dataset_);
  if (dataset_->GetRasterCount() < 1) {
    const std::string part = likeliest_image(*dataset_);
    throw Failure(in_quotes(path) + " holds no raster band" +
                  (part.empty() ? "" : "; name one of its parts, e.g. " + in_quotes(part)));
  }
  limit_gdal_cache(band());
  type_ = pixel_type(band());
  gaps_.emplace(band(), path);
  check_for_holes(path, *dataset_);
  if (const std::string missing = host::missing_samples(path.c_str()); !missing.empty()) {
    throw Failure(missing);
  }
  read_first_sample();
  for (const std::string& warning : gdal_warnings()) {
    warn(in_quotes(path) + ": " + warning);
  }
  files_.push_back(path);
  collect_files(path, *dataset_, 0, files_);
  if (dataset_->GetRasterCount() > 1) {
    warn(in_quotes(path) + " has " + std::to_string(dataset_->GetRasterCount()) +
         " bands; only band 1 is used" + (gaps_->has_mask() ? ", with its mask" : ""));
  }
}

/// Some lies of a header, such as one on the width, show when the first block is asked for: before
/// rows of that width are made. Others show in a message only.
void RasterInput::read_first_sample() const {
  double sample[2];
  if (band().RasterIO(GF_Read, 0, 0, 1, 1, sample, 1, 1, GDT_CFloat64, 0, 0, nullptr) != CE_None ||
      !gdal_failure().empty()) {
    fail_with_gdal_reason("cannot read row 0 of " + in_quotes(path_) +
                          ", which may be truncated or damaged");
  }
}

void RasterInput::read(int column, int row, int columns, int rows, void* pixels) const {
  forget_gdal_messages();
  if (band().RasterIO(GF_Read, column, row, columns, rows, pixels, columns, rows,
                      type_.delivered_as, 0, 0, nullptr) != CE_None ||
      !gdal_failure().empty()) {
    fail_with_gdal_reason((rows == 1 ? "cannot read row " + std::to_string(row)
                                     : "cannot read rows " + std::to_string(row) + " to " +
                                           std::to_string(row + rows - 1)) +
                          " of " + in_quotes(path_) + ", which may be truncated or damaged");
  }
}

int RasterInput::rows_in_a_block() const {
  constexpr int pixels_in_a_block = 1 << 18;
  return std::clamp(pixels_in_a_block / width(), 1, height());
}

SampleReader::SampleReader(const RasterInput& input, int most_rows, bool marks_gaps)
    : input_(input),
      marks_gaps_(marks_gaps),
      count_(size(most_rows)),
      pixels_(size(most_rows) * input.type().bytes()),
      re_(size(most_rows)),
      im_(input.type().is_complex() ? size(most_rows) : 0) {}

void SampleReader::read(int first, int rows) {
  count_ = size(rows);
  const auto count = static_cast<int>(count_);
  const int code = input_.type().code;
  input_.read(0, first, input_.width(), rows, pixels_.data());
  if (input_.type().is_complex()) {
    Transform_to_double(pixels_.data(), code, re_.data(), im_.data(), count);
  } else {
    Transform_to_double(pixels_.data(), code, re_.data(), count);
  }
  if (marks_gaps_) {
    input_.gaps().mark(0, first, input_.width(), re(), im());
  }
}

}  // namespace sarnum::tool
