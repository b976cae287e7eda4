// sarnum multilook: averages looks with NoncoherentAccumulationR, then gives the output the
// input's georeferencing, which the library knows nothing of.
//
// The library averages samples as they are. Where only valid ones are to count, or decibels are
// undone or made, the means are those of look_means.h.
#include <cpl_string.h>
#include <sarnum/host/standalone.h>
#include <sarnum/sarnum.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string_view>

#include "commands.h"
#include "description.h"
#include "elementary/functions.h"
#include "geotiff.h"
#include "look_means.h"
#include "looks.h"
#include "messages.h"
#include "output.h"
#include "picture.h"
#include "progress.h"
#include "quantity.h"
#include "raster_input.h"
#include "report.h"

namespace sarnum::tool {
namespace {

constexpr float no_value = std::numeric_limits<float>::quiet_NaN();

bool skips_nodata(const MultilookArguments& arguments) {
  return arguments.nodata == "skip";
}

Looks choose_looks(const RasterInput& input, const MultilookArguments& arguments) {
  if (!arguments.square) {
    return parse_looks(arguments.looks);
  }
  const Spacing spacing = ground_spacing(input, arguments.spacing, arguments.incidence);
  const Looks looks = square_looks(spacing, arguments.looks.empty()
                                                ? std::nullopt
                                                : std::optional(parse_most_looks(arguments.looks)));
  if (!arguments.quiet) {
    print("looks " + looks.text() + ", pixels of " +
          CPLString().Printf("%.4g x %.4g", spacing.across * looks.across,
                             spacing.down * looks.down) +
          " on the ground\n");
  }
  return looks;
}

/// The name as a shell takes it for a file.
std::string for_shell(const std::string& name) {
  const std::string file = name.starts_with('-') ? "./" + name : name;
  const auto is_plain = [](char c) {
    return std::isalnum(static_cast<unsigned char>(c)) != 0 ||
           std::string_view("_-./=,+:").find(c) != std::string_view::npos;
  };
  return std::all_of(file.begin(), file.end(), is_plain) ? file
                                                         : in_quotes(replaced(file, "'", "'\\''"));
}

void check_input(const RasterInput& input, const MultilookArguments& arguments) {
  const std::string name = in_quotes(input.path());
  if (input.type().is_complex()) {
    const std::string stem = CPLGetBasename(input.path().c_str());
    throw Failure(name +
                  " holds complex pixels, which cannot be averaged; first run: sarnum detect " +
                  for_shell(input.path()) + " " + for_shell(stem + "_intensity.tif"));
  }
  const std::optional<Quantity> quantity = noted_quantity(input);
  const bool has_power = quantity && *quantity != Quantity::decibel;
  const std::string evidence = evidence_of_decibels(input);
  if (arguments.from_decibel && has_power) {
    warn(name + " holds " + name_of(*quantity) + "; its values are taken as decibels");
  } else if (!arguments.from_decibel && !evidence.empty()) {
    warn(name + " seems to hold decibels (" + evidence +
         "): they are averaged as they are; for mean power give --from-db");
  } else if (arguments.to_decibel && quantity == Quantity::amplitude) {
    warn(name + " holds amplitude: the decibels will be those of its mean, not of mean power");
  }
  if (input.gaps().may_exist() && arguments.nodata.empty()) {
    warn(name + " has " + (input.gaps().nodata() ? "nodata value " : "") + input.gaps().text() +
         ": such samples are averaged like all others; --nodata skip leaves them out");
  }
}

/// Averages by the library.
void run_library(const RasterInput& input, const OutputFile& output, Looks looks,
                 const std::vector<std::string>& creation_options, ProgressSpan progress) {
  std::vector<const char*> options;
  options.reserve(creation_options.size());
  for (const std::string& option : creation_options) {
    options.push_back(option.c_str());
  }
  if (!options.empty() &&
      !host::set_creation_options(options.data(), static_cast<int>(options.size()))) {
    throw std::bad_alloc();
  }
  ProgressMeter<CCustomMeterInfo> meter(progress);
  host::clear_raster_failure();
  const int status = NoncoherentAccumulationR(output.temporary().c_str(), input.path().c_str(),
                                              looks.across, looks.down, &meter);
  const std::string failure = with_name(host::raster_failure(), output.temporary(), output.name());
  if (status != 1 || !failure.empty()) {
    throw Failure(failure.empty() ? "multilooking of " + in_quotes(input.path()) + " to " +
                                        in_quotes(output.name()) + " failed"
                                  : failure + (options.empty() ? "" : " (given --co options)"));
  }
}

/// What stays true of the raster once its samples are averaged, and how that was done.
Description described(const RasterInput& input, const MultilookArguments& arguments, Looks looks) {
  Description description(input);
  description.enlarge_pixels(looks.across, looks.down);
  if (skips_nodata(arguments) || arguments.to_decibel) {
    // A mean, or its logarithm, may happen to be the number that marked a sample.
    description.nodata = no_value;
  } else if (arguments.from_decibel && description.nodata && !std::isnan(*description.nodata)) {
    description.nodata.reset();
  }
  if (arguments.from_decibel || arguments.to_decibel) {
    description.scale.reset();  // they have been applied
    description.offset.reset();
    description.unit = arguments.to_decibel ? "dB" : "";
    if (!arguments.to_decibel && is_label_of_decibels(description.band_description)) {
      description.band_description.clear();
    }
    description.metadata.SetNameValue(
        quantity_item, name_of(arguments.to_decibel ? Quantity::decibel : Quantity::intensity));
  }
  description.metadata.SetNameValue("SARNUM_SOURCE", input.path().c_str());
  description.metadata.SetNameValue("SARNUM_VERSION", build_info().version);
  return description;
}

GDALDatasetUniquePtr reopen(const OutputFile& output) {
  forget_gdal_messages();
  GDALDatasetUniquePtr dataset(GDALDataset::Open(
      output.temporary().c_str(), GDAL_OF_RASTER | GDAL_OF_UPDATE | GDAL_OF_VERBOSE_ERROR));
  if (dataset == nullptr) {
    fail_to_write(output, gdal_failure());
  }
  return dataset;
}

/// Writes means: as decibels, where these are asked for.
void write_means(const RasterInput& input, LookMeans means, const OutputFile& output,
                 const MultilookArguments& arguments, const Description& description,
                 ProgressSpan progress) {
  GDALDatasetUniquePtr dataset = create_geotiff(output, means.width(), means.height(), GDT_Float32,
                                                arguments.creation_options);
  description.apply(*dataset, output.name());
  const bool is_scaled = arguments.to_decibel && !arguments.from_decibel;
  const double scale = is_scaled ? input.band().GetScale() : 1;
  const double offset = is_scaled ? input.band().GetOffset() : 0;
  std::int64_t without_logarithm = 0;
  std::vector<float> row(static_cast<std::size_t>(means.width()));
  for (int y = 0; y < means.height(); ++y) {
    const std::vector<double>& values = means.row(y);
    std::transform(values.begin(), values.end(), row.begin(), [&](double mean) {
      if (!arguments.to_decibel) {
        return static_cast<float>(mean);
      }
      const double power = mean * scale + offset;
      without_logarithm += power <= 0 ? 1 : 0;
      return power > 0 ? static_cast<float>(10 * decimal_logarithm(power)) : no_value;
    });
    write_rows(*dataset, output, y, 1, GDT_Float32, row.data());
    progress.update((y + 1.0) / means.height());
  }
  close_written(std::move(dataset), output);
  if (without_logarithm > 0) {
    warn(std::to_string(without_logarithm) + " pixels of " + in_quotes(output.name()) +
         " have a mean of zero or less, which has no decibels, and became nodata");
  }
}

/// Writes the temporary file of the output.
void average(const RasterInput& input, const OutputFile& output,
             const MultilookArguments& arguments, Looks looks, Progress& progress) {
  constexpr double share_of_averaging = 0.98;
  const ProgressSpan span{progress, 0.0, share_of_averaging};
  const Description description = described(input, arguments, looks);
  const SampleRule rule{skips_nodata(arguments), arguments.from_decibel};
  const NoSidecars no_sidecars;
  if (rule.skips_gaps || rule.from_decibel || arguments.to_decibel) {
    write_means(input, {input, looks, rule}, output, arguments, description, span);
    return;
  }
  run_library(input, output, looks, arguments.creation_options, span);
  GDALDatasetUniquePtr dataset = reopen(output);
  mark_if_sparse(*dataset, arguments.creation_options);
  description.apply(*dataset, output.name());
  close_written(std::move(dataset), output);
}

}  // namespace

void run_multilook(const MultilookArguments& arguments) {
  if (!arguments.square) {
    if (arguments.looks.empty()) {
      throw UsageFailure("how many looks? Give --looks ACROSSxDOWN, e.g. 4x4, or --square");
    }
    parse_looks(arguments.looks);
  }
  check_creation_options(arguments.creation_options);
  const RasterInput input(arguments.input);
  OutputFile output(arguments.output, arguments.overwrite, input.files());
  PictureFile picture(arguments.picture, arguments.overwrite, input.files(), output);
  check_input(input, arguments);
  warn_of_other_format(arguments.output);
  const Looks looks = choose_looks(input, arguments);

  Progress progress(arguments.show_progress);
  progress.update(0.0);
  average(input, output, arguments, looks, progress);
  check_written(output, divide_rounding_up(input.width(), looks.across),
                divide_rounding_up(input.height(), looks.down), GDT_Float32);
  if (picture) {
    draw_raster(output, *picture);
  }
  put_in_place({&output, picture.get()});
  progress.finish();
}

}  // namespace sarnum::tool
