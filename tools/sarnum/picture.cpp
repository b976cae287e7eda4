#include "picture.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <filesystem>
#include <limits>

#include "elementary/functions.h"
#include "gaps.h"
#include "geotiff.h"
#include "messages.h"
#include "raster_input.h"

namespace sarnum::tool {
namespace {

constexpr int largest_side = 2048;
constexpr double no_value = std::numeric_limits<double>::quiet_NaN();

double percentile(std::vector<double>& values, double percent) {
  const auto at = static_cast<std::ptrdiff_t>(
      std::lround(percent / 100.0 * static_cast<double>(values.size() - 1)));
  std::nth_element(values.begin(), values.begin() + at, values.end());
  return values[static_cast<std::size_t>(at)];
}

GDALDriver& driver(const char* name) {
  GDALDriver* const found = GetGDALDriverManager()->GetDriverByName(name);
  if (found == nullptr) {
    throw Failure(std::string("--picture: this GDAL has no ") + name + " driver");
  }
  return *found;
}

}  // namespace

Picture::Picture(int width, int height, Stretch stretch)
    : width_(width),
      reduction_(divide_rounding_up(std::max(width, height), largest_side)),
      columns_(divide_rounding_up(width, reduction_)),
      lines_(divide_rounding_up(height, reduction_)),
      stretch_(stretch),
      sums_(static_cast<std::size_t>(columns_)),
      counts_(static_cast<std::size_t>(columns_)) {
  means_.reserve(static_cast<std::size_t>(columns_) * static_cast<std::size_t>(lines_));
}

void Picture::add_row(std::span<const double> row) {
  std::size_t sample = 0;
  for (std::size_t column = 0; column < sums_.size(); ++column) {
    const std::size_t end = std::min(sample + static_cast<std::size_t>(reduction_), row.size());
    for (; sample < end; ++sample) {
      if (std::isfinite(row[sample])) {
        sums_[column] += row[sample];
        counts_[column] += 1;
      }
    }
  }
  if (++rows_in_line_ == reduction_) {
    finish_line();
  }
}

void Picture::finish_line() {
  for (std::size_t column = 0; column < sums_.size(); ++column) {
    means_.push_back(counts_[column] > 0 ? sums_[column] / counts_[column] : no_value);
    sums_[column] = 0;
    counts_[column] = 0;
  }
  rows_in_line_ = 0;
}

std::vector<std::uint8_t> Picture::grey_levels() const {
  std::vector<double> shown = means_;
  if (std::none_of(shown.begin(), shown.end(), [](double value) { return value < 0; })) {
    for (double& value : shown) {
      value = value > 0 ? decimal_logarithm(value) : no_value;
    }
  }
  std::vector<double> values;
  std::copy_if(shown.begin(), shown.end(), std::back_inserter(values),
               [](double value) { return std::isfinite(value); });
  std::vector<std::uint8_t> grey(shown.size(), 0);
  if (values.empty()) {
    return grey;
  }
  const double low = percentile(values, stretch_.low_percent);
  const double high = percentile(values, stretch_.high_percent);
  std::transform(shown.begin(), shown.end(), grey.begin(), [low, high](double value) {
    if (!std::isfinite(value)) {
      return std::uint8_t{0};
    }
    const double level = high > low ? (value - low) / (high - low) : 0.5;
    return static_cast<std::uint8_t>(std::lround(1.0 + 254.0 * std::clamp(level, 0.0, 1.0)));
  });
  return grey;
}

void Picture::write(const OutputFile& output) const {
  Picture whole = *this;
  if (whole.rows_in_line_ > 0) {
    whole.finish_line();
  }
  std::vector<std::uint8_t> grey = whole.grey_levels();
  const NoSidecars no_sidecars;
  forget_gdal_messages();
  const GDALDatasetUniquePtr memory(
      driver("MEM").Create("", columns_, lines_, 1, GDT_Byte, nullptr));
  if (memory == nullptr ||
      memory->GetRasterBand(1)->RasterIO(GF_Write, 0, 0, columns_, lines_, grey.data(), columns_,
                                         lines_, GDT_Byte, 0, 0, nullptr) != CE_None) {
    fail_to_write(output, gdal_failure());
  }
  GDALDatasetUniquePtr png(driver("PNG").CreateCopy(output.temporary().c_str(), memory.get(), FALSE,
                                                    nullptr, nullptr, nullptr));
  if (png == nullptr) {
    fail_to_write(output, gdal_failure());
  }
  close_written(std::move(png), output);
  check_written(output, columns_, lines_, GDT_Byte);
}

void draw_raster(const OutputFile& raster, const OutputFile& picture) {
  forget_gdal_messages();
  const NoSidecars no_sidecars;
  const GDALDatasetUniquePtr dataset(
      GDALDataset::Open(raster.temporary().c_str(), GDAL_OF_RASTER | GDAL_OF_VERBOSE_ERROR));
  if (dataset == nullptr) {
    fail_to_write(raster, gdal_failure());
  }
  GDALRasterBand& band = *dataset->GetRasterBand(1);
  const Gaps gaps(band, raster.name());
  const int width = band.GetXSize();
  constexpr Picture::Stretch for_images{2.0, 98.0};
  Picture image(width, band.GetYSize(), for_images);
  std::vector<double> row(static_cast<std::size_t>(width));
  for (int y = 0; y < band.GetYSize(); ++y) {
    if (band.RasterIO(GF_Read, 0, y, width, 1, row.data(), width, 1, GDT_Float64, 0, 0, nullptr) !=
        CE_None) {
      fail_to_write(raster, gdal_failure());
    }
    gaps.mark(0, y, width, row, {});
    image.add_row(row);
  }
  image.write(picture);
}

PictureFile::PictureFile(const std::string& name, bool overwrite,
                         const std::vector<std::string>& inputs, const OutputFile& raster) {
  if (name.empty()) {
    return;
  }
  if (!CPLString(name).tolower().ends_with(".png")) {
    throw UsageFailure("--picture " + in_quotes(name) + ": the picture is a PNG; name it so");
  }
  file_.emplace(name, overwrite, inputs);
  const auto place = [](const OutputFile& file) {
    return std::filesystem::weakly_canonical(std::filesystem::absolute(file.target()));
  };
  if (place(*file_) == place(raster)) {
    throw UsageFailure("--picture " + in_quotes(name) + " is also the output; choose another name");
  }
}

}  // namespace sarnum::tool
