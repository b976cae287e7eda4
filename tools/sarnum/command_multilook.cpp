// sarnum multilook: averages looks with NoncoherentAccumulationR, then gives the output the
// input's georeferencing, which the library knows nothing of.
#include <cpl_string.h>
#include <sarnum/host/standalone.h>
#include <sarnum/sarnum.h>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <string_view>

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

constexpr int most_looks_down = 36;

struct Looks {
  int across;
  int down;
};

Looks parse_looks(const std::string& text) {
  const auto fail = [&text](const std::string& why) {
    throw UsageFailure("--looks " + in_quotes(text) + ": " + why);
  };
  const auto number = [&](std::string_view digits) {
    int value = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    if (error == std::errc::result_out_of_range) {
      fail("the number is too large");
    }
    if (error != std::errc{} || end != digits.data() + digits.size()) {
      fail("give ACROSSxDOWN, e.g. 4x4");
    }
    return value;
  };
  const std::size_t cross = text.find_first_of("xX");
  if (cross == std::string::npos) {
    fail("give ACROSSxDOWN, e.g. 4x4");
  }
  const Looks looks{number(std::string_view(text).substr(0, cross)),
                    number(std::string_view(text).substr(cross + 1))};
  if (looks.across < 1 || looks.down < 1) {
    fail("there is at least one look each way");
  }
  if (looks.down > most_looks_down) {
    fail("there are at most " + std::to_string(most_looks_down) + " looks down");
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

void check_input(const RasterInput& input) {
  if (input.type().is_complex()) {
    const std::string stem = CPLGetBasename(input.path().c_str());
    throw Failure(in_quotes(input.path()) +
                  " holds complex pixels, which cannot be averaged; first run: sarnum detect " +
                  for_shell(input.path()) + " " + for_shell(stem + "_intensity.tif"));
  }
  const std::string sign = input.sign_of_decibels();
  if (!sign.empty()) {
    warn(in_quotes(input.path()) + " seems to hold decibels (" + sign +
         "): they are averaged as they are; for mean power convert to 10^(dB/10) first");
  }
  if (const auto nodata = nodata_of(input.band())) {
    warn(in_quotes(input.path()) + " has nodata value " + CPLString().Printf("%.9g", *nodata) +
         ": such samples are averaged like all others");
  }
}

void run_library(const RasterInput& input, const OutputFile& output, Looks looks,
                 const std::vector<std::string>& creation_options, Progress& progress) {
  std::vector<const char*> options;
  options.reserve(creation_options.size());
  for (const std::string& option : creation_options) {
    options.push_back(option.c_str());
  }
  if (!options.empty() &&
      !host::set_creation_options(options.data(), static_cast<int>(options.size()))) {
    throw std::bad_alloc();
  }
  constexpr double share_of_library = 0.98;
  ProgressMeter<CCustomMeterInfo> meter({progress, 0.0, share_of_library});
  host::clear_raster_failure();
  const int status = NoncoherentAccumulationR(output.temporary().c_str(), input.path().c_str(),
                                              looks.across, looks.down, &meter);
  const std::string failure =
      replaced(host::raster_failure(), output.temporary(), in_quotes(output.name()));
  if (status != 1 || !failure.empty()) {
    throw Failure(failure.empty() ? "multilooking of " + in_quotes(input.path()) + " to " +
                                        in_quotes(output.name()) + " failed"
                                  : failure + (options.empty() ? "" : " (given --co options)"));
  }
}

void describe_output(const OutputFile& output, Description description, Looks looks) {
  description.enlarge_pixels(looks.across, looks.down);
  const NoSidecars no_sidecars;
  forget_gdal_messages();
  GDALDatasetUniquePtr dataset(GDALDataset::Open(
      output.temporary().c_str(), GDAL_OF_RASTER | GDAL_OF_UPDATE | GDAL_OF_VERBOSE_ERROR));
  if (dataset == nullptr) {
    fail_to_write(output, gdal_failure());
  }
  description.apply(*dataset, output.name());
  close_written(std::move(dataset), output);
}

}  // namespace

void run_multilook(const MultilookArguments& arguments) {
  const Looks looks = parse_looks(arguments.looks);
  check_creation_options(arguments.creation_options);
  const RasterInput input(arguments.input);
  OutputFile output(arguments.output, arguments.overwrite, input.files());
  PictureFile picture(arguments.picture, arguments.overwrite, input.files(), output);
  check_input(input);
  warn_of_other_format(arguments.output);

  Progress progress(arguments.show_progress);
  progress.update(0.0);
  run_library(input, output, looks, arguments.creation_options, progress);
  describe_output(output, Description(input), looks);
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
