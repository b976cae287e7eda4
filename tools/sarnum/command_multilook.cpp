// sarnum multilook: averages looks with NoncoherentAccumulationR, then gives the output the
// input's georeferencing, which the library knows nothing of.
//
// The library averages samples as they are. Where only valid ones are to count, it averages twice,
// the samples with zero for the invalid ones and their validity, 1 or 0: the quotient is the mean
// of the valid ones. Decibels become power in the raster that it reads (see sample_view.h), and
// means become decibels when they are copied to the output.
#include <cpl_string.h>
#include <sarnum/host/standalone.h>
#include <sarnum/sarnum.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string_view>

#include "commands.h"
#include "description.h"
#include "geotiff.h"
#include "looks.h"
#include "messages.h"
#include "output.h"
#include "picture.h"
#include "progress.h"
#include "raster_input.h"
#include "report.h"
#include "sample_view.h"

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
  const char* const quantity = input.dataset().GetMetadataItem(quantity_item);
  const bool has_power = quantity != nullptr && !EQUAL(quantity, quantity_decibel);
  const std::string sign = input.sign_of_decibels();
  if (arguments.from_decibel && has_power) {
    warn(name + " holds " + quantity + "; its values are taken as decibels");
  } else if (!arguments.from_decibel && !sign.empty()) {
    warn(name + " seems to hold decibels (" + sign +
         "): they are averaged as they are; for mean power give --from-db");
  } else if (arguments.to_decibel && has_power && EQUAL(quantity, quantity_amplitude)) {
    warn(name + " holds amplitude: the decibels will be those of its mean, not of mean power");
  }
  const auto nodata = nodata_of(input.band());
  if (nodata && arguments.nodata.empty()) {
    warn(name + " has nodata value " + CPLString().Printf("%.9g", *nodata) +
         ": such samples are averaged like all others; --nodata skip leaves them out");
  }
}

/// One run of the library, from the raster that GDAL opens by `source`.
void run_library(const RasterInput& input, const std::string& source, const OutputFile& output,
                 Looks looks, const std::vector<std::string>& creation_options,
                 ProgressSpan progress) {
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
  const int status = NoncoherentAccumulationR(output.temporary().c_str(), source.c_str(),
                                              looks.across, looks.down, &meter);
  const std::string failure =
      replaced(replaced(host::raster_failure(), output.temporary(), in_quotes(output.name())),
               one_line(source), input.path());
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
    description.metadata.SetNameValue(quantity_item,
                                      arguments.to_decibel ? quantity_decibel : quantity_intensity);
  }
  description.metadata.SetNameValue("SARNUM_LOOKS", looks.text().c_str());
  description.metadata.SetNameValue("SARNUM_SOURCE", input.path().c_str());
  description.metadata.SetNameValue("SARNUM_VERSION", build_info().version);
  return description;
}

GDALDatasetUniquePtr reopen(const OutputFile& output, unsigned access) {
  forget_gdal_messages();
  GDALDatasetUniquePtr dataset(GDALDataset::Open(output.temporary().c_str(),
                                                 GDAL_OF_RASTER | access | GDAL_OF_VERBOSE_ERROR));
  if (dataset == nullptr) {
    fail_to_write(output, gdal_failure());
  }
  return dataset;
}

/// Rows of means that the library has left in a scratch file.
class MeanReader {
 public:
  explicit MeanReader(const OutputFile& file) : file_(file), dataset_(reopen(file, 0)) {}

  int width() const { return dataset_->GetRasterXSize(); }
  int height() const { return dataset_->GetRasterYSize(); }

  std::vector<float> read(int row) const {
    std::vector<float> means(static_cast<std::size_t>(width()));
    if (dataset_->GetRasterBand(1)->RasterIO(GF_Read, 0, row, width(), 1, means.data(), width(), 1,
                                             GDT_Float32, 0, 0, nullptr) != CE_None) {
      fail_to_write(file_, gdal_failure());
    }
    return means;
  }

 private:
  const OutputFile& file_;
  GDALDatasetUniquePtr dataset_;
};

/// Copies means to the output: divided by the share of valid samples, where `shares` are given,
/// and as decibels where these are asked for.
void finish_means(const RasterInput& input, const MeanReader& means, const MeanReader* shares,
                  const OutputFile& output, const MultilookArguments& arguments,
                  const Description& description) {
  GDALDatasetUniquePtr dataset = create_geotiff(output, means.width(), means.height(), GDT_Float32,
                                                arguments.creation_options);
  description.apply(*dataset, output.name());
  const bool is_scaled = arguments.to_decibel && !arguments.from_decibel;
  const double scale = is_scaled ? input.band().GetScale() : 1;
  const double offset = is_scaled ? input.band().GetOffset() : 0;
  std::int64_t without_logarithm = 0;
  for (int y = 0; y < means.height(); ++y) {
    std::vector<float> row = means.read(y);
    if (shares != nullptr) {
      const std::vector<float> share = shares->read(y);
      std::transform(row.begin(), row.end(), share.begin(), row.begin(),
                     [](float mean, float part) { return part > 0 ? mean / part : no_value; });
    }
    if (arguments.to_decibel) {
      for (float& mean : row) {
        const double power = mean * scale + offset;
        without_logarithm += power <= 0 ? 1 : 0;
        mean = power > 0 ? static_cast<float>(10 * std::log10(power)) : no_value;
      }
    }
    write_rows(*dataset, output, y, 1, GDT_Float32, row.data());
  }
  close_written(std::move(dataset), output);
  if (without_logarithm > 0) {
    warn(std::to_string(without_logarithm) + " pixels of " + in_quotes(output.name()) +
         " have a mean of zero or less, which has no decibels, and became nodata");
  }
}

/// An output that is never put in place is a scratch file beside it. Its end would remove it too,
/// but could not say that it failed.
void remove_scratch(const OutputFile& scratch) {
  if (unlink(scratch.temporary().c_str()) != 0) {
    throw Failure("cannot remove " + in_quotes(scratch.temporary()) + ", a scratch file of " +
                  in_quotes(scratch.name()) + ": " + std::strerror(errno));
  }
}

/// Writes the temporary file of the output.
void average(const RasterInput& input, const OutputFile& output,
             const MultilookArguments& arguments, Looks looks, Progress& progress) {
  constexpr double share_of_library = 0.98;
  const Description description = described(input, arguments, looks);
  const SampleRule rule{skips_nodata(arguments), arguments.from_decibel};
  const std::string source = rule.skips_invalid || rule.from_decibel
                                 ? name_of_view(input, rule, View::values)
                                 : input.path();
  const NoSidecars no_sidecars;
  if (!rule.skips_invalid && !arguments.to_decibel) {
    run_library(input, source, output, looks, arguments.creation_options,
                {progress, 0.0, share_of_library});
    GDALDatasetUniquePtr dataset = reopen(output, GDAL_OF_UPDATE);
    description.apply(*dataset, output.name());
    close_written(std::move(dataset), output);
    return;
  }
  const OutputFile means(output.name(), true, {});
  const double middle = rule.skips_invalid ? share_of_library / 2 : share_of_library;
  run_library(input, source, means, looks, {}, {progress, 0.0, middle});
  if (!rule.skips_invalid) {
    finish_means(input, MeanReader(means), nullptr, output, arguments, description);
    remove_scratch(means);
    return;
  }
  const OutputFile shares(output.name(), true, {});
  run_library(input, name_of_view(input, rule, View::validity), shares, looks, {},
              {progress, middle, share_of_library});
  const MeanReader share_reader(shares);
  finish_means(input, MeanReader(means), &share_reader, output, arguments, description);
  remove_scratch(means);
  remove_scratch(shares);
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
  const auto reduced = [](int size, int by) { return size / by + (size % by != 0 ? 1 : 0); };
  check_written(output, reduced(input.width(), looks.across), reduced(input.height(), looks.down),
                GDT_Float32);
  if (picture) {
    draw_raster(output, *picture);
  }
  put_in_place({&output, picture.get()});
  progress.finish();
}

}  // namespace sarnum::tool
