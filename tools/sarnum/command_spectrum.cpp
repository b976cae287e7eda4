// sarnum spectrum: the two-dimensional transform of a whole raster.
//
// FFT_2D needs the spectrum in memory. The image needs no room of its own: its rows are read
// into the first part of the rows that they become.
#include <cpl_conv.h>
#include <cpl_string.h>
#include <sarnum/sarnum.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>

#include "commands.h"
#include "geotiff.h"
#include "messages.h"
#include "output.h"
#include "picture.h"
#include "progress.h"
#include "raster_input.h"

namespace sarnum::tool {
namespace {

constexpr int longest_side = 1 << 29;

/// The rows of a spectrum, one after the other in memory.
class Spectrum {
 public:
  Spectrum(const RasterInput& input)
      : width_(padded(input, input.width())),
        height_(padded(input, input.height())),
        is_double_(input.type().code == TD_FLOAT64 || input.type().code == TD_COMPLEX_FLOAT64) {
    const double needed = static_cast<double>(row_bytes()) * height_;
    const auto present = static_cast<double>(CPLGetPhysicalRAM());
    const auto bytes = static_cast<std::size_t>(row_bytes()) * static_cast<std::size_t>(height_);
    const bool fits = needed <= present || present <= 0;
    if (fits) {
      storage_.reset(new (std::nothrow) std::byte[bytes]);
    }
    if (storage_ == nullptr) {
      constexpr double gibibyte = 1024.0 * 1024.0 * 1024.0;
      throw Failure(CPLString().Printf(
          "the spectrum of '%s' has %d x %d samples and needs %.3g GiB of memory, %s; take a "
          "smaller part of the image",
          input.path().c_str(), width_, height_, needed / gibibyte,
          fits ? "which are not to be had"
               : CPLString().Printf("this machine has %.3g", present / gibibyte).c_str()));
    }
    for (int y = 0; y < height_; ++y) {
      rows_.push_back(storage_.get() + static_cast<std::size_t>(y) * row_bytes());
    }
  }

  int width() const { return width_; }
  int height() const { return height_; }
  GDALDataType type() const { return is_double_ ? GDT_CFloat64 : GDT_CFloat32; }
  void** rows() { return rows_.data(); }
  void* row(int y) { return rows_[static_cast<std::size_t>(y)]; }

  /// Squared magnitudes of a row, with the zero frequency in the middle.
  void power(int y, std::vector<double>& out) {
    std::vector<double>& re = out;
    std::vector<double> im(out.size());
    Transform_to_double(row((y + height_ / 2) % height_),
                        is_double_ ? TD_COMPLEX_FLOAT64 : TD_COMPLEX_FLOAT32, re.data(), im.data(),
                        width_);
    for (std::size_t i = 0; i < re.size(); ++i) {
      re[i] = re[i] * re[i] + im[i] * im[i];
    }
    std::rotate(out.begin(), out.begin() + (width_ + 1) / 2, out.end());
  }

 private:
  static int padded(const RasterInput& input, int size) {
    if (size > longest_side) {
      throw Failure(in_quotes(input.path()) + " is too large for a spectrum: no side may exceed " +
                    std::to_string(longest_side) + " pixels");
    }
    return 1 << CFFTClass().CeilPowerOfTwo(size);
  }

  std::size_t row_bytes() const {
    return static_cast<std::size_t>(width_) * (is_double_ ? 2 * sizeof(double) : 2 * sizeof(float));
  }

  int width_;
  int height_;
  bool is_double_;
  std::unique_ptr<std::byte[]> storage_;
  std::vector<void*> rows_;
};

void transform(const RasterInput& input, Spectrum& spectrum, Progress& progress) {
  constexpr double end_of_reading = 0.05;
  constexpr double end_of_transform = 0.9;
  const ProgressSpan reading{progress, 0.0, end_of_reading};
  for (int y = 0; y < input.height(); ++y) {
    input.read_rows(y, 1, spectrum.row(y));
    reading.update((y + 1.0) / input.height());
  }
  ProgressMeter<CMeterInfo> meter({progress, end_of_reading, end_of_transform});
  if (CFFTClass().FFT_2D(spectrum.rows(), spectrum.rows(), input.width(), input.height(),
                         input.type().code, &meter) == 0) {
    throw std::bad_alloc();
  }
}

void write(const RasterInput& input, Spectrum& spectrum, const OutputFile& output,
           const std::vector<std::string>& options) {
  const NoSidecars no_sidecars;
  GDALDatasetUniquePtr dataset =
      create_geotiff(output, spectrum.width(), spectrum.height(), spectrum.type(), options);
  // A spectrum lies in the domain of frequency, so nothing that places the image holds for it.
  dataset->SetMetadataItem("SARNUM_QUANTITY", "spectrum");
  dataset->SetMetadataItem("SARNUM_IMAGE_SIZE",
                           CPLString().Printf("%d x %d", input.width(), input.height()));
  for (int y = 0; y < spectrum.height(); ++y) {
    write_rows(*dataset, output, y, 1, spectrum.type(), spectrum.row(y));
  }
  close_written(std::move(dataset), output);
  check_written(output, spectrum.width(), spectrum.height(), spectrum.type());
}

void draw(Spectrum& spectrum, const OutputFile& picture) {
  // A few strong lines on a floor of noise: most of the floor dark, the lines not cut off.
  constexpr Picture::Stretch for_spectra{5.0, 99.9};
  Picture image(spectrum.width(), spectrum.height(), for_spectra);
  std::vector<double> row(static_cast<std::size_t>(spectrum.width()));
  for (int y = 0; y < spectrum.height(); ++y) {
    spectrum.power(y, row);
    image.add_row(row);
  }
  image.write(picture);
}

}  // namespace

void run_spectrum(const ConversionArguments& arguments) {
  check_creation_options(arguments.creation_options);
  const RasterInput input(arguments.input);
  OutputFile output(arguments.output, arguments.overwrite, input.files());
  PictureFile picture(arguments.picture, arguments.overwrite, input.files(), output);
  warn_of_other_format(arguments.output);
  Spectrum spectrum(input);

  Progress progress(arguments.show_progress);
  progress.update(0.0);
  transform(input, spectrum, progress);
  write(input, spectrum, output, arguments.creation_options);
  if (picture) {
    draw(spectrum, *picture);
  }
  put_in_place({&output, picture.get()});
  progress.finish();
}

}  // namespace sarnum::tool
