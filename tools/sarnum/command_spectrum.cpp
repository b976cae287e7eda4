// sarnum spectrum: the two-dimensional transform of a whole raster, and back.
//
// The transforms need their result in memory. The input needs no room of its own: its rows are
// read into the first part of the rows that they become.
#include <cpl_conv.h>
#include <cpl_string.h>
#include <sarnum/sarnum.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <span>

#include "commands.h"
#include "description.h"
#include "geotiff.h"
#include "messages.h"
#include "output.h"
#include "picture.h"
#include "progress.h"
#include "quantity.h"
#include "raster_input.h"

namespace sarnum::tool {
namespace {

constexpr int longest_side = 1 << 29;
constexpr const char* image_size_item = "SARNUM_IMAGE_SIZE";
constexpr const char* zero_frequency_item = "SARNUM_ZERO_FREQUENCY";
constexpr const char* in_the_middle = "middle";

/// The rows of a complex raster, one after the other in memory.
class ComplexRaster {
 public:
  /// @param path  names the input in a message.
  ComplexRaster(const std::string& path, int width, int height, bool is_double)
      : width_(width), height_(height), is_double_(is_double) {
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
          "the transform of '%s' has %d x %d samples and needs %.3g GiB of memory, %s; take a "
          "smaller part of the image",
          path.c_str(), width_, height_, needed / gibibyte,
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
  int code() const { return is_double_ ? TD_COMPLEX_FLOAT64 : TD_COMPLEX_FLOAT32; }
  void** rows() { return rows_.data(); }
  void* row(int y) { return rows_[static_cast<std::size_t>(y)]; }

  /// Exchanges the halves of each row and of the columns, which brings the zero frequency from the
  /// middle to the first sample or back. The sides are powers of two.
  void exchange_halves() {
    const std::size_t half = row_bytes() / 2;
    for (int y = 0; width_ > 1 && y < height_; ++y) {
      auto* const bytes = static_cast<std::byte*>(row(y));
      std::swap_ranges(bytes, bytes + half, bytes + half);
    }
    std::rotate(rows_.begin(), rows_.begin() + height_ / 2, rows_.end());
  }

  /// Exchanges the real and imaginary parts of all samples, which are doubles, and multiplies them.
  void exchange_parts(double factor) {
    for (int y = 0; y < height_; ++y) {
      auto* const parts = static_cast<double*>(row(y));
      for (std::ptrdiff_t i = 0; i < 2 * std::ptrdiff_t{width_}; i += 2) {
        const double re = parts[i];
        parts[i] = parts[i + 1] * factor;
        parts[i + 1] = re * factor;
      }
    }
  }

  /// Squared magnitudes of a row.
  void power(int y, std::vector<double>& out) {
    std::vector<double> im(out.size());
    Transform_to_double(row(y), code(), out.data(), im.data(), width_);
    for (std::size_t i = 0; i < out.size(); ++i) {
      out[i] = out[i] * out[i] + im[i] * im[i];
    }
  }

 private:
  std::size_t row_bytes() const {
    return static_cast<std::size_t>(width_) * (is_double_ ? 2 * sizeof(double) : 2 * sizeof(float));
  }

  int width_;
  int height_;
  bool is_double_;
  std::unique_ptr<std::byte[]> storage_;
  std::vector<void*> rows_;
};

/// Storage for the spectrum of an image, padded to powers of two.
ComplexRaster room_for_spectrum(const RasterInput& input) {
  const auto padded = [&input](int size) {
    if (size > longest_side) {
      throw Failure(in_quotes(input.path()) + " is too large for a spectrum: no side may exceed " +
                    std::to_string(longest_side) + " pixels");
    }
    return 1 << CFFTClass().CeilPowerOfTwo(size);
  };
  return {input.path(), padded(input.width()), padded(input.height()),
          input.type().code == TD_FLOAT64 || input.type().code == TD_COMPLEX_FLOAT64};
}

/// Storage for the image of a spectrum, which is as large as the spectrum.
ComplexRaster room_for_image(const RasterInput& input) {
  if (input.type().code != TD_COMPLEX_FLOAT32 && input.type().code != TD_COMPLEX_FLOAT64) {
    throw Failure(in_quotes(input.path()) + " holds " + input.type().name +
                  " pixels, but a spectrum holds complex floats; --inverse takes what sarnum "
                  "spectrum has written");
  }
  const auto is_power_of_two = [](int size) { return (size & (size - 1)) == 0; };
  if (!is_power_of_two(input.width()) || !is_power_of_two(input.height()) ||
      std::max(input.width(), input.height()) >= longest_side) {
    throw Failure(CPLString().Printf(
        "'%s' has %d x %d samples, but --inverse needs sides that are powers of two below 2^29; "
        "take the whole spectrum, not a part",
        input.path().c_str(), input.width(), input.height()));
  }
  return {input.path(), input.width(), input.height(), input.type().code == TD_COMPLEX_FLOAT64};
}

bool has_zero_in_the_middle(const RasterInput& spectrum) {
  const char* const where = spectrum.dataset().GetMetadataItem(zero_frequency_item);
  return where != nullptr && EQUAL(where, in_the_middle);
}

/// Reads the input into the first part of the rows. One sample that is not finite makes all of a
/// spectrum NaN, and samples without a meaning change all of it: the former are refused and the
/// latter warned of, unless both are to be zero.
void read(const RasterInput& input, ComplexRaster& raster, bool makes_gaps_zero,
          ProgressSpan progress) {
  const std::size_t pixel_bytes = input.type().bytes();
  SampleReader reader(input, 1, false);
  const std::span<double> re = reader.re();
  const std::span<const double> im = reader.im();
  const auto is_finite = [&](std::size_t i) {
    return std::isfinite(re[i]) && (im.empty() || std::isfinite(im[i]));
  };
  std::int64_t not_finite = 0;
  std::int64_t unsuitable = 0;
  for (int y = 0; y < input.height(); ++y) {
    reader.read(y, 1);
    for (std::size_t i = 0; i < re.size(); ++i) {
      not_finite += is_finite(i) ? 0 : 1;
    }
    input.gaps().mark(0, y, input.width(), re, im);
    auto* pixel = static_cast<std::byte*>(raster.row(y));
    std::copy_n(reader.pixels(), re.size() * pixel_bytes, pixel);
    for (std::size_t i = 0; i < re.size(); ++i, pixel += pixel_bytes) {
      const auto is_set = [](std::byte byte) { return byte != std::byte{0}; };
      if (!is_finite(i) && std::any_of(pixel, pixel + pixel_bytes, is_set)) {
        ++unsuitable;
        if (makes_gaps_zero) {
          std::fill_n(pixel, pixel_bytes, std::byte{0});
        }
      }
    }
    progress.update((y + 1.0) / input.height());
  }
  if (!makes_gaps_zero && not_finite > 0) {
    throw Failure(std::to_string(not_finite) + " samples of " + in_quotes(input.path()) +
                  " are NaN or infinite and would make all of the result NaN; --nodata zero makes "
                  "them zero");
  }
  if (!makes_gaps_zero && unsuitable > 0) {
    warn(std::to_string(unsuitable) + " samples of " + in_quotes(input.path()) +
         " are nodata or masked but not zero, and are transformed like all others; --nodata zero "
         "makes them zero");
  }
}

/// In double precision, which CFFTClass::IFFT_2D does not keep: the forward transform is the
/// inverse one when the parts of samples are exchanged before and after. What it divides by is a
/// power of two, so multiplying by that again is exact.
void inverse_of_doubles(ComplexRaster& raster, CMeterInfo& meter) {
  raster.exchange_parts(1.0);
  CFFTClass().FFT_2D(raster.rows(), raster.rows(), raster.width(), raster.height(), raster.code(),
                     &meter);
  raster.exchange_parts(static_cast<double>(raster.width()) * raster.height());
}

void transform(const SpectrumArguments& arguments, const RasterInput& input, ComplexRaster& raster,
               Progress& progress) {
  constexpr double end_of_reading = 0.05;
  constexpr double end_of_transform = 0.9;
  read(input, raster, arguments.nodata == "zero", {progress, 0.0, end_of_reading});
  ProgressMeter<CMeterInfo> meter({progress, end_of_reading, end_of_transform});
  CFFTClass fourier;
  if (arguments.inverse) {
    if (arguments.centred || has_zero_in_the_middle(input)) {
      raster.exchange_halves();
    }
    if (raster.code() == TD_COMPLEX_FLOAT64) {
      inverse_of_doubles(raster, meter);
    } else {
      fourier.IFFT_2D(raster.rows(), raster.rows(), raster.width(), raster.height(), raster.code(),
                      &meter);
    }
  } else if (arguments.centred) {
    fourier.FFT_2D_NEW(raster.rows(), raster.rows(), input.width(), input.height(),
                       input.type().code, 1, &meter);
  } else {
    fourier.FFT_2D(raster.rows(), raster.rows(), input.width(), input.height(), input.type().code,
                   &meter);
  }
  // Not every transform can report that it found no storage; without it, none makes its steps.
  if (!meter.is_finished()) {
    throw std::bad_alloc();
  }
}

std::string size_text(const RasterInput& input) {
  return std::to_string(input.width()) + " x " + std::to_string(input.height());
}

/// What a file says of itself. Neither a spectrum nor what comes back from one has a place on the
/// ground: the domain of frequency has none, and padding and filtering lie between.
void describe(const SpectrumArguments& arguments, const RasterInput& input, GDALDataset& output) {
  if (arguments.inverse) {
    const char* const size = input.dataset().GetMetadataItem(image_size_item);
    if (size != nullptr) {
      output.SetMetadataItem(image_size_item, size);
    }
    if (size != nullptr && size != size_text(input)) {
      warn("the image proper is the upper left " + std::string(size) + " pixels of " +
           in_quotes(arguments.output) + "; the rest is padding");
    }
    return;
  }
  output.SetMetadataItem(quantity_item, "spectrum");
  output.SetMetadataItem(zero_frequency_item, arguments.centred ? in_the_middle : "first");
  output.SetMetadataItem(image_size_item, size_text(input).c_str());
}

void write(const SpectrumArguments& arguments, const RasterInput& input, ComplexRaster& raster,
           const OutputFile& output) {
  const NoSidecars no_sidecars;
  GDALDatasetUniquePtr dataset = create_geotiff(output, raster.width(), raster.height(),
                                                raster.type(), arguments.creation_options);
  describe(arguments, input, *dataset);
  for (int y = 0; y < raster.height(); ++y) {
    write_rows(*dataset, output, y, 1, raster.type(), raster.row(y));
  }
  close_written(std::move(dataset), output);
  check_written(output, raster.width(), raster.height(), raster.type());
}

/// The picture of a spectrum has the zero frequency in its middle, whatever the file has.
void draw(const SpectrumArguments& arguments, ComplexRaster& raster, const OutputFile& picture) {
  // A few strong lines on a floor of noise: most of the floor dark, the lines not cut off.
  constexpr Picture::Stretch for_spectra{5.0, 99.9};
  constexpr Picture::Stretch for_images{2.0, 98.0};
  if (!arguments.inverse && !arguments.centred) {
    raster.exchange_halves();
  }
  Picture image(raster.width(), raster.height(), arguments.inverse ? for_images : for_spectra);
  std::vector<double> row(static_cast<std::size_t>(raster.width()));
  for (int y = 0; y < raster.height(); ++y) {
    raster.power(y, row);
    image.add_row(row);
  }
  image.write(picture);
}

}  // namespace

void run_spectrum(const SpectrumArguments& arguments) {
  check_creation_options(arguments.creation_options);
  const RasterInput input(arguments.input);
  OutputFile output(arguments.output, arguments.overwrite, input.files());
  PictureFile picture(arguments.picture, arguments.overwrite, input.files(), output);
  warn_of_other_format(arguments.output);
  ComplexRaster raster = arguments.inverse ? room_for_image(input) : room_for_spectrum(input);

  Progress progress(arguments.show_progress);
  progress.update(0.0);
  transform(arguments, input, raster, progress);
  write(arguments, input, raster, output);
  if (picture) {
    draw(arguments, raster, *picture);
  }
  put_in_place({&output, picture.get()});
  progress.finish();
}

}  // namespace sarnum::tool
