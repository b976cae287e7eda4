// sarnum detect: pixels of any type to 32-bit floats, their intensity or amplitude.
#include <cpl_string.h>
#include <sarnum/sarnum.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>

#include "commands.h"
#include "description.h"
#include "geotiff.h"
#include "messages.h"
#include "output.h"
#include "picture.h"
#include "progress.h"
#include "raster_input.h"

namespace sarnum::tool {
namespace {

/// Whether detected samples can no longer be told from the nodata value by theirs: several values
/// have one square. Zero alone stays what it is.
bool loses_nodata(const RasterInput& input, bool amplitude) {
  const std::optional<double> nodata = nodata_of(input.band());
  return nodata && *nodata != 0.0 && (!amplitude || input.type().is_complex());
}

/// Detects a run of pixels and counts the samples that a 32-bit float cannot hold.
class Detector {
 public:
  /// @param nodata  samples of this value become NaN.
  Detector(PixelType type, bool amplitude, int width, std::optional<double> nodata)
      : type_(type),
        amplitude_(amplitude),
        nodata_(nodata),
        re_(static_cast<std::size_t>(width)),
        im_(static_cast<std::size_t>(width)),
        missing_(static_cast<std::size_t>(width)) {}

  void detect_row(std::byte* pixels, float* out) {
    const int count = static_cast<int>(re_.size());
    if (nodata_ || !amplitude_) {
      Transform_to_double(pixels, type_.code, re_.data(), im_.data(), count);
    }
    if (nodata_) {
      std::transform(re_.begin(), re_.end(), im_.begin(), missing_.begin(),
                     [this](double x, double y) {
                       return static_cast<char>(is_nodata(x, nodata_) && y == 0.0);
                     });
    }
    if (amplitude_) {
      Transform_to_double(pixels, type_.code, re_.data(), count);
    } else {
      // Squaring the parts, not the amplitude, spares the rounding of a square root.
      for (std::size_t i = 0; i < re_.size(); ++i) {
        re_[i] = re_[i] * re_[i] + im_[i] * im_[i];
      }
    }
    for (std::size_t i = 0; i < re_.size(); ++i) {
      if (missing_[i] != 0) {
        out[i] = std::numeric_limits<float>::quiet_NaN();
        continue;
      }
      out[i] = static_cast<float>(re_[i]);
      const bool is_lost =
          (std::isinf(out[i]) && std::isfinite(re_[i])) || (out[i] == 0.0F && re_[i] != 0.0);
      lost_ += is_lost ? 1 : 0;
    }
  }

  std::int64_t lost() const { return lost_; }

 private:
  PixelType type_;
  bool amplitude_;
  std::optional<double> nodata_;
  std::vector<double> re_;
  std::vector<double> im_;
  std::vector<char> missing_;
  std::int64_t lost_ = 0;
};

void warn_of_input(const RasterInput& input, const DetectArguments& arguments) {
  if (input.type().is_complex()) {
    return;
  }
  const char* const quantity = input.dataset().GetMetadataItem(quantity_item);
  if (quantity != nullptr && EQUAL(quantity, quantity_intensity)) {
    warn(in_quotes(input.path()) + " holds intensity already; its values are taken as amplitudes");
  } else if (const std::string sign = input.sign_of_decibels(); !sign.empty()) {
    warn(in_quotes(input.path()) + " seems to hold decibels (" + sign +
         "); its values are taken as amplitudes");
  } else if (!arguments.amplitude) {
    warn(in_quotes(input.path()) + " holds real values: they are taken as amplitudes and squared");
  }
}

/// What stays true of the raster once its samples are detected.
Description described(const RasterInput& input, bool amplitude) {
  Description description(input);
  const bool changes = !amplitude || input.type().is_complex();
  if (loses_nodata(input, amplitude)) {
    description.nodata = std::numeric_limits<double>::quiet_NaN();
  }
  if (!amplitude) {
    description.unit.clear();
  }
  if (changes && description.offset) {
    warn("scale and offset of " + in_quotes(input.path()) +
         " are neither applied nor carried over");
    description.scale.reset();
    description.offset.reset();
  }
  if (changes && description.scale) {
    const double scale = *description.scale;
    description.scale = amplitude ? std::abs(scale) : scale * scale;
  }
  description.metadata.SetNameValue(quantity_item,
                                    amplitude ? quantity_amplitude : quantity_intensity);
  return description;
}

void detect(const RasterInput& input, GDALDataset& dataset, const OutputFile& output,
            bool amplitude, ProgressSpan progress) {
  const int rows = input.rows_in_a_block();
  const auto width = static_cast<std::size_t>(input.width());
  std::vector<std::byte> pixels(width * static_cast<std::size_t>(rows) * input.type().bytes());
  std::vector<float> samples(width * static_cast<std::size_t>(rows));
  Detector detector(input.type(), amplitude, input.width(),
                    loses_nodata(input, amplitude) ? nodata_of(input.band()) : std::nullopt);
  for (int first = 0; first < input.height(); first += rows) {
    const int count = std::min(rows, input.height() - first);
    input.read_rows(first, count, pixels.data());
    for (int y = 0; y < count; ++y) {
      const std::size_t at = static_cast<std::size_t>(y) * width;
      detector.detect_row(pixels.data() + at * input.type().bytes(), samples.data() + at);
    }
    write_rows(dataset, output, first, count, GDT_Float32, samples.data());
    progress.update(static_cast<double>(first + count) / input.height());
  }
  if (detector.lost() > 0) {
    warn(std::to_string(detector.lost()) + " samples of " + in_quotes(output.name()) +
         " are beyond the range of 32-bit floats and became infinite or zero");
  }
}

}  // namespace

void run_detect(const DetectArguments& arguments) {
  check_creation_options(arguments.creation_options);
  const RasterInput input(arguments.input);
  OutputFile output(arguments.output, arguments.overwrite, input.files());
  PictureFile picture(arguments.picture, arguments.overwrite, input.files(), output);
  warn_of_input(input, arguments);
  warn_of_other_format(arguments.output);

  Progress progress(arguments.show_progress);
  progress.update(0.0);
  const Description description = described(input, arguments.amplitude);
  {
    const NoSidecars no_sidecars;
    GDALDatasetUniquePtr dataset = create_geotiff(output, input.width(), input.height(),
                                                  GDT_Float32, arguments.creation_options);
    description.apply(*dataset, output.name());
    constexpr double share_of_detection = 0.98;
    detect(input, *dataset, output, arguments.amplitude, {progress, 0.0, share_of_detection});
    close_written(std::move(dataset), output);
  }
  check_written(output, input.width(), input.height(), GDT_Float32);
  if (picture) {
    draw_raster(output, *picture);
  }
  put_in_place({&output, picture.get()});
  progress.finish();
}

}  // namespace sarnum::tool
