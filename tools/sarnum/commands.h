// The commands, one function each. A command returns when its output is in place and throws
// a Failure or UsageFailure otherwise.
#ifndef SARNUM_TOOL_COMMANDS_H
#define SARNUM_TOOL_COMMANDS_H

#include <optional>
#include <string>
#include <vector>

#include "equivalent_looks.h"

namespace sarnum::tool {

/// What the commands that write a raster have in common.
struct ConversionArguments {
  std::string input;
  std::string output;
  std::string picture;  ///< empty: none
  std::vector<std::string> creation_options;
  bool overwrite = false;
  bool show_progress = false;
};

struct MultilookArguments : ConversionArguments {
  std::string looks;   ///< ACROSSxDOWN, or with square their number in all; empty: not given
  std::string nodata;  ///< skip, average, or empty: not given
  bool from_decibel = false;
  bool to_decibel = false;
  bool square = false;
  std::string spacing;  ///< RANGExAZIMUTH, or empty
  std::optional<double> incidence;
  bool quiet = false;
};

struct DetectArguments : ConversionArguments {
  bool amplitude = false;  ///< else intensity
  bool intensity_was_asked_for = false;
  bool force = false;  ///< even of intensity or decibels
};

struct SpectrumArguments : ConversionArguments {
  bool centred = false;  ///< zero frequency in the middle
  bool inverse = false;  ///< from a spectrum to its image
  std::string nodata;    ///< zero, or empty: not given
};

struct InfoArguments {
  std::string input;
  std::optional<Quantity> quantity;  ///< what a real raster holds, when the user tells
  bool json = false;
};

struct StatsArguments {
  std::string input;
  bool json = false;
  bool show_progress = false;
};

void run_multilook(const MultilookArguments& arguments);
void run_detect(const DetectArguments& arguments);
void run_spectrum(const SpectrumArguments& arguments);
void run_info(const InfoArguments& arguments);
void run_stats(const StatsArguments& arguments);
void run_self_check();

}  // namespace sarnum::tool

#endif
