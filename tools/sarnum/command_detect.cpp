// sarnum detect: pixels of any type to 32-bit floats, their intensity or amplitude.
#include <cpl_string.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
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

/// Whether the pixels that hold no sample become NaN: there is a mask, or samples can no longer be
/// told from the nodata value by theirs, since several values have one square. Zero alone stays
/// what it is.
bool makes_gaps_nan(const RasterInput& input, bool amplitude) {
  const std::optional<double>& nodata = input.gaps().nodata();
  return input.gaps().has_mask() ||
         (nodata && *nodata != 0.0 && (!amplitude || input.type().is_complex()));
}

/// Detects pixels and counts the samples that a 32-bit float cannot hold.
class Detector {
 public:
  explicit Detector(bool amplitude) : amplitude_(amplitude) {}

  /// `im` is empty where all pixels are real.
  void detect(std::span<const double> re, std::span<const double> im, float* out) {
    for (std::size_t i = 0; i < re.size(); ++i) {
      // Squaring the parts, not the amplitude, spares the rounding of a square root.
      const double power = re[i] * re[i] + (im.empty() ? 0 : im[i] * im[i]);
      const double value = !amplitude_ ? power : im.empty() ? re[i] : std::sqrt(power);
      out[i] = static_cast<float>(value);
      const bool is_lost =
          (std::isinf(out[i]) && std::isfinite(value)) || (out[i] == 0.0F && value != 0.0);
      lost_ += is_lost ? 1 : 0;
    }
  }

  std::int64_t lost() const { return lost_; }

 private:
  bool amplitude_;
  std::int64_t lost_ = 0;
};

/// Squares of what is a power already, or its logarithm, would be called intensity in vain.
void check_input(const RasterInput& input, const DetectArguments& arguments) {
  const std::optional<Quantity> quantity = noted_quantity(input);
  if (input.type().is_complex() || quantity == Quantity::amplitude) {
    return;
  }
  const std::string name = in_quotes(input.path());
  if (quantity && !arguments.force) {
    throw Failure(name + " holds " + name_of(*quantity) +
                  " already; to take its values as amplitudes all the same give --force");
  }
  if (quantity) {
    warn(name + " holds " + name_of(*quantity) + "; its values are taken as amplitudes");
  } else if (const std::string evidence = evidence_of_decibels(input); !evidence.empty()) {
    warn(name + " seems to hold decibels (" + evidence + "); its values are taken as amplitudes");
  } else if (!arguments.amplitude) {
    warn(name + " holds real values: they are taken as amplitudes and squared");
  }
}

/// What stays true of the raster once its samples are detected.
Description described(const RasterInput& input, bool amplitude) {
  Description description(input);
  const bool changes = !amplitude || input.type().is_complex();
  if (makes_gaps_nan(input, amplitude)) {
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
                                    name_of(amplitude ? Quantity::amplitude : Quantity::intensity));
  return description;
}

void detect(const RasterInput& input, GDALDataset& dataset, const OutputFile& output,
            bool amplitude, ProgressSpan progress) {
  const int rows = input.rows_in_a_block();
  SampleReader reader(input, rows, makes_gaps_nan(input, amplitude));
  std::vector<float> samples(static_cast<std::size_t>(input.width()) *
                             static_cast<std::size_t>(rows));
  Detector detector(amplitude);
  for (int first = 0; first < input.height(); first += rows) {
    const int count = std::min(rows, input.height() - first);
    reader.read(first, count);
    detector.detect(reader.re(), reader.im(), samples.data());
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
  check_input(input, arguments);
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
