// sarnum: the command line of the library. This file knows the arguments and the exit status;
// each command has a file of its own.
#include <cpl_conv.h>
#include <fcntl.h>
#include <gdal_priv.h>
#include <sarnum/sarnum.h>
#include <unistd.h>
#include <CLI/CLI.hpp>

#include <cstdio>
#include <iostream>
#include <new>
#include <vector>

#include "commands.h"
#include "messages.h"
#include "output.h"
#include "raster_input.h"

namespace sarnum::tool {
namespace {

enum : int { status_done = 0, status_failed = 1, status_usage = 2 };

/// Leaves the parser, as --help does, when there is no command to look for.
struct SelfCheckRequest {};

struct Arguments {
  bool quiet = false;
  bool progress = false;
  MultilookArguments multilook;
  DetectArguments detect;
  SpectrumArguments spectrum;
  InfoArguments info;
  StatsArguments stats;
};

/// A program started with a standard stream closed would get its number for the next file that it
/// opens, and what is meant for the terminal would end in that file. What takes its place fails
/// when it is used, as the closed stream would.
void occupy_standard_streams() {
  for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream) {
    if (fcntl(stream, F_GETFD) == -1) {
      // The lowest free number is the stream's own.
      [[maybe_unused]] const int occupied =
          open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
    }
  }
}

/// What is wrong with the arguments. A misspelt option may only show in what is then missing.
std::string argument_fault(const CLI::App& app, const CLI::ParseError& error) {
  std::string help = "sarnum --help";
  for (const CLI::App* const command : app.get_subcommands()) {
    help = "sarnum " + command->get_name() + " --help";
    for (const std::string& word : command->remaining()) {
      if (word.starts_with('-')) {
        return "there is no option " + in_quotes(word) + " (see " + help +
               "); a file of that name is given as ./" + word;
      }
    }
  }
  return one_line(error.what()) + " (see " + help + ")";
}

std::string version_text() {
  const BuildInfo info = build_info();
  return std::string("sarnum ") + info.version + " (" + info.instruction_set + "; GDAL " +
         GDALVersionInfo("RELEASE_NAME") + ")";
}

void add_progress_options(CLI::App& command, Arguments& arguments) {
  CLI::Option* const quiet =
      command.add_flag("-q,--quiet", arguments.quiet, "Neither progress nor warnings");
  command
      .add_flag("--progress", arguments.progress, "Show progress although stderr is no terminal")
      ->excludes(quiet);
}

/// Other programs take "-" for a standard stream: here it would be a file of that name.
std::string refuse_dash_as_input(const std::string& name) {
  return name == "-"
             ? "'-' is no file; for the standard input give /vsistdin/, for a file of that name ./-"
             : "";
}

std::string refuse_dash_as_output(const std::string& name) {
  return name == "-" ? "'-' is no file, and the standard output takes none; name a file" : "";
}

void add_input(CLI::App& command, const char* name, std::string& input) {
  command.add_option(name, input, "Raster to read: any that GDAL opens; band 1 is used")
      ->required()
      ->check(refuse_dash_as_input);
}

void add_json(CLI::App& command, bool& json) {
  command.add_flag("--json", json, "One JSON object instead of text");
}

CLI::App& add_conversion(CLI::App& app, const char* name, const char* description,
                         ConversionArguments& conversion, Arguments& arguments) {
  CLI::App& command = *app.add_subcommand(name, description);
  add_input(command, "INPUT", conversion.input);
  command.add_option("OUTPUT", conversion.output, "GeoTIFF to write")
      ->required()
      ->check(refuse_dash_as_output);
  command.add_flag("--overwrite", conversion.overwrite, "Replace existing output files");
  command
      .add_option("--co", conversion.creation_options,
                  "GeoTIFF creation option, e.g. COMPRESS=DEFLATE (repeatable)")
      ->type_name("NAME=VALUE")
      ->allow_extra_args(false);
  command
      .add_option("--picture", conversion.picture,
                  "Also write a grey quick look of at most 2048 pixels a side")
      ->type_name("FILE.png")
      ->check(refuse_dash_as_output);
  add_progress_options(command, arguments);
  return command;
}

void add_multilook(CLI::App& app, Arguments& arguments) {
  CLI::App& command = add_conversion(app, "multilook", "Average looks: less speckle, fewer pixels",
                                     arguments.multilook, arguments);
  MultilookArguments& multilook = arguments.multilook;
  command
      .add_option("--looks", multilook.looks,
                  "Samples averaged into one, or with --square how many at most")
      ->type_name("ACROSSxDOWN");
  CLI::Option* const square = command.add_flag("--square", multilook.square,
                                               "Choose looks whose pixel is square on the ground");
  command
      .add_option("--spacing", multilook.spacing, "Pixel spacing of an INPUT that does not tell it")
      ->type_name("RANGExAZIMUTH")
      ->needs(square);
  command
      .add_option("--incidence", multilook.incidence,
                  "Incidence angle, where the range spacing is in slant range")
      ->type_name("DEGREES")
      ->needs(square);
  command
      .add_option("--nodata", multilook.nodata,
                  "Leave nodata and masked samples out, or average them (default)")
      ->type_name("skip|average")
      ->check(CLI::IsMember({"skip", "average"}).description(""));
  command.add_flag("--from-db", multilook.from_decibel,
                   "INPUT holds decibels: average the power 10^(x/10)");
  command.add_flag("--to-db", multilook.to_decibel, "Write the means as decibels, 10 log10");
  command.footer(
      "Averages intensity or amplitude; detect complex images first. Looks are columns x rows, at\n"
      "most 36 rows. Georeferencing follows, and metadata items tell looks and source.\n\n"
      "--square takes the spacing from the geotransform, or from the items of range and azimuth\n"
      "spacing of a radar product. Range runs across the image. It takes the fewest looks whose\n"
      "pixel has sides equal within 5 %; with --looks N the most looks up to N, their columns\n"
      "those that come nearest to a square. What it has chosen it prints.\n\n"
      "With --nodata skip a pixel without any valid sample, and with --to-db one whose mean is\n"
      "zero or less, becomes nodata, which is NaN then. NaN and what a mask or an alpha band\n"
      "leaves out count as nodata. Scale and offset of the band are applied where decibels are\n"
      "made or undone.\n\n"
      "Examples:\n  sarnum multilook intensity.tif looks.tif --looks 4x4 --picture looks.png\n"
      "  sarnum multilook intensity.tif square.tif --square --spacing 2.3x14.1 --incidence 39\n"
      "  sarnum multilook sigma0_db.tif mean_db.tif --looks 3x3 --nodata skip --from-db --to-db");
}

void add_detect(CLI::App& app, Arguments& arguments) {
  CLI::App& command = add_conversion(app, "detect", "Intensity or amplitude of pixels of any type",
                                     arguments.detect, arguments);
  CLI::Option* const amplitude =
      command.add_flag("--amplitude", arguments.detect.amplitude, "Write amplitude, |z|");
  command
      .add_flag("--intensity", arguments.detect.intensity_was_asked_for,
                "Write intensity, |z|^2: the default")
      ->excludes(amplitude);
  command.add_flag("--force", arguments.detect.force,
                   "Detect even an INPUT that holds intensity or decibels");
  command.footer(
      "Intensity is what may be averaged. Values of a real raster are taken as amplitudes, unless\n"
      "metadata of sarnum say that they are intensity or decibels: these are refused.\n"
      "Example:\n  sarnum detect slc.tif intensity.tif");
}

void add_spectrum(CLI::App& app, Arguments& arguments) {
  CLI::App& command = add_conversion(app, "spectrum", "Two-dimensional Fourier transform",
                                     arguments.spectrum, arguments);
  command.add_flag("--centred", arguments.spectrum.centred,
                   "Zero frequency in the middle, not at the first sample");
  command.add_flag("--inverse", arguments.spectrum.inverse, "From a spectrum back to the image");
  command
      .add_option("--nodata", arguments.spectrum.nodata,
                  "Take zero for nodata, masked, NaN and infinite samples")
      ->type_name("zero")
      ->check(CLI::IsMember({"zero"}).description(""));
  command.footer(
      "The sides are padded with zeros to powers of two, and the spectrum is divided by their\n"
      "product, so that --inverse returns the padded image. The picture shows log magnitude, with\n"
      "the zero frequency of a spectrum in the middle.\n\n"
      "Without --nodata zero, NaN and infinities are refused, since one of them would make all of\n"
      "the result NaN; nodata and masked samples are transformed like all others, with a warning\n"
      "where they are not zero.\n\n"
      "With --inverse, INPUT holds complex floats and has sides that are powers of two. It is\n"
      "centred if --centred says so or, of a file that sarnum has written, its metadata.\n\n"
      "Examples:\n  sarnum spectrum slc.tif spectrum.tif --picture spectrum.png\n"
      "  sarnum spectrum spectrum.tif back.tif --inverse");
}

void add_info(CLI::App& app, Arguments& arguments) {
  CLI::App& command = *app.add_subcommand("info", "What a raster is, and its equivalent looks");
  add_input(command, "FILE", arguments.info.input);
  add_json(command, arguments.info.json);
  command.add_flag("-q,--quiet", arguments.quiet, "No warnings");
  // No option group: CLI11 takes an empty word for the name of it, and parses in circles.
  std::vector<CLI::Option*> readings;
  const auto add = [&](const char* name, Quantity quantity, const char* description) {
    CLI::Option& reading = *command.add_flag_callback(
        name, [&arguments, quantity] { arguments.info.quantity = quantity; }, description);
    reading.group("What a real raster holds, for the equivalent looks");
    for (CLI::Option* const other : readings) {
      reading.excludes(other);
    }
    readings.push_back(&reading);
  };
  add("--intensity", Quantity::intensity, "Intensity");
  add("--amplitude", Quantity::amplitude, "Amplitude");
  add("--decibel", Quantity::decibel, "Decibel of intensity");
  command.footer(
      "Without them, metadata and the values themselves tell what the samples seem to be. Where\n"
      "they may be intensity as well as amplitude, both figures are printed. Scale and offset are\n"
      "applied.\n"
      "Examples:\n  sarnum info looks.tif\n  sarnum info --json looks.tif");
}

void add_stats(CLI::App& app, Arguments& arguments) {
  CLI::App& command = *app.add_subcommand("stats", "Extremes with positions, mean, deviation");
  add_input(command, "FILE", arguments.stats.input);
  add_json(command, arguments.stats.json);
  add_progress_options(command, arguments);
  command.footer(
      "Of the values of a real raster as they are stored (scale and offset are not applied), of\n"
      "the amplitudes |z| of a complex one. Nodata, NaN and what a mask or an alpha band leaves\n"
      "out are left out and counted; infinities are valid and extremes, but left out of mean and\n"
      "standard deviation (which is that of the population: divided by the number of samples).\n"
      "Positions are those of the first such sample in row order, counted from 0. In JSON, a\n"
      "figure without samples is null, infinity the string \"Infinity\" or \"-Infinity\", and a\n"
      "nodata value of NaN the string \"NaN\".\n"
      "Example:\n  sarnum stats slc.tif --json");
}

void run(const CLI::App& app, Arguments& arguments) {
  if (arguments.quiet) {
    silence_warnings();
  }
  const bool progress = arguments.progress || (!arguments.quiet && isatty(STDERR_FILENO) == 1);
  arguments.multilook.show_progress = progress;
  arguments.multilook.quiet = arguments.quiet;
  arguments.detect.show_progress = progress;
  arguments.spectrum.show_progress = progress;
  arguments.stats.show_progress = progress;
  if (app.got_subcommand("multilook")) {
    run_multilook(arguments.multilook);
  } else if (app.got_subcommand("detect")) {
    run_detect(arguments.detect);
  } else if (app.got_subcommand("spectrum")) {
    run_spectrum(arguments.spectrum);
  } else if (app.got_subcommand("stats")) {
    run_stats(arguments.stats);
  } else {
    run_info(arguments.info);
  }
}

int parse_and_run(int argc, char** argv) {
  CLI::App app("Numerical routines for radar (SAR) images", "sarnum");
  Arguments arguments;
  app.require_subcommand(1);
  app.set_version_flag("--version", version_text, "Version, instruction set and GDAL in use");
  app.add_flag_callback(
      "--self-check", [] { throw SelfCheckRequest(); },
      "Whether this machine computes the same values as every other");
  app.get_formatter()->column_width(36);
  add_detect(app, arguments);
  add_multilook(app, arguments);
  add_spectrum(app, arguments);
  add_info(app, arguments);
  add_stats(app, arguments);
  app.footer(
      "sarnum COMMAND --help tells more. Exit status: 0 done, 1 a file or the work failed,\n"
      "2 the arguments are at fault, 130 interrupted by Ctrl-C.\n"
      "Example:\n  sarnum info slc.tif");
  const auto is_asked_for = [argv](const CLI::App* command) {
    return command->check_name(argv[1]);
  };
  if (argc > 1 && argv[1][0] != '-' && app.get_subcommands(is_asked_for).empty()) {
    throw UsageFailure("there is no command " + in_quotes(argv[1]) + " (see sarnum --help)");
  }
  try {
    app.parse(argc, argv);
  } catch (const SelfCheckRequest&) {
    run_self_check();
    return status_done;
  } catch (const CLI::Success& request) {  // --help, --version
    if (app.exit(request, std::cout, std::cerr) != 0 || !std::cout.flush()) {
      throw Failure("cannot write to the standard output");
    }
    return status_done;
  } catch (const CLI::ParseError& error) {
    throw UsageFailure(argument_fault(app, error));
  }
  // Reading a .gz file would leave a note on its contents beside it.
  CPLSetConfigOption("CPL_VSIL_GZIP_WRITE_PROPERTIES", "NO");
  // Rasters are read in any order, and some by two readers: the standard input is held whole.
  if (CPLGetConfigOption("CPL_VSISTDIN_BUFFER_LIMIT", nullptr) == nullptr) {
    CPLSetConfigOption("CPL_VSISTDIN_BUFFER_LIMIT", "-1");
  }
  register_drivers();
  run(app, arguments);
  show_warnings();
  return status_done;
}

int main_without_exceptions(int argc, char** argv) noexcept {
  try {
    occupy_standard_streams();
    install_gdal_message_handler();
    install_signal_handlers();
    return parse_and_run(argc, argv);
  } catch (const UsageFailure& failure) {
    report_error(failure.what());
    return status_usage;
  } catch (const std::bad_alloc&) {
    std::fputs("sarnum: error: out of memory\n", stderr);
    return status_failed;
  } catch (const std::exception& failure) {
    report_error(failure.what());
    return status_failed;
  }
}

}  // namespace
}  // namespace sarnum::tool

int main(int argc, char** argv) {
  return sarnum::tool::main_without_exceptions(argc, argv);
}
