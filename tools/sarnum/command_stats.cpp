// sarnum stats: extremes with their positions, mean and standard deviation of the first band.
#include <sarnum/sarnum.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "commands.h"
#include "description.h"
#include "progress.h"
#include "raster_input.h"
#include "report.h"
#include "running_statistics.h"

namespace sarnum::tool {
namespace {

/// Delivers rows as values or amplitudes, NaN where a sample is nodata.
class ValueReader {
 public:
  explicit ValueReader(const RasterInput& input)
      : input_(input),
        nodata_(nodata_of(input.band())),
        pixels_(size(input.rows_in_a_block()) * input.type().bytes()),
        values_(size(input.rows_in_a_block())) {
    if (nodata_ && input.type().is_complex()) {
      re_.resize(values_.size());
      im_.resize(values_.size());
    }
  }

  std::span<const double> read(int first, int rows) {
    const auto count = static_cast<int>(size(rows));
    const int code = input_.type().code;
    input_.read_rows(first, rows, pixels_.data());
    Transform_to_double(pixels_.data(), code, values_.data(), count);
    if (nodata_) {
      if (input_.type().is_complex()) {
        Transform_to_double(pixels_.data(), code, re_.data(), im_.data(), count);
      }
      for (std::size_t i = 0; i < size(rows); ++i) {
        if (re_.empty() ? is_nodata(values_[i], nodata_)
                        : im_[i] == 0 && is_nodata(re_[i], nodata_)) {
          values_[i] = std::numeric_limits<double>::quiet_NaN();
        }
      }
    }
    return std::span(values_).first(size(rows));
  }

 private:
  std::size_t size(int rows) const {
    return static_cast<std::size_t>(input_.width()) * static_cast<std::size_t>(rows);
  }

  const RasterInput& input_;
  std::optional<double> nodata_;
  std::vector<std::byte> pixels_;
  std::vector<double> values_;
  std::vector<double> re_;  // with im_ for nodata among complex samples, else empty
  std::vector<double> im_;
};

RunningStatistics statistics_of(const RasterInput& input, Progress& progress) {
  progress.update(0.0);
  RunningStatistics statistics;
  ValueReader reader(input);
  const int rows = input.rows_in_a_block();
  for (int first = 0; first < input.height(); first += rows) {
    const int count = std::min(rows, input.height() - first);
    statistics.add(reader.read(first, count));
    progress.update(static_cast<double>(first + count) / input.height());
  }
  return statistics;
}

const char* quantity_of(const RasterInput& input) {
  return input.type().is_complex() ? "amplitude" : "value";
}

std::string json(const RasterInput& input, const RunningStatistics& statistics) {
  const auto extreme = [&](const std::optional<RunningStatistics::Extreme>& found) {
    return found ? Json{{"value", json_number(found->value)},
                        {"column", found->position % input.width()},
                        {"row", found->position / input.width()}}
                 : Json();
  };
  const Json object = {
      {"file", input.path()},
      {"band", 1},
      {"width", input.width()},
      {"height", input.height()},
      {"pixel_type", input.type().name},
      {"quantity", quantity_of(input)},
      {"nodata", json_number(nodata_of(input.band()))},
      {"valid", statistics.valid()},
      {"invalid", statistics.seen() - statistics.valid()},
      {"infinite", statistics.infinite()},
      {"min", extreme(statistics.minimum())},
      {"max", extreme(statistics.maximum())},
      {"mean", json_number(statistics.mean())},
      {"standard_deviation", json_number(statistics.standard_deviation())},
  };
  return text_of(object);
}

std::string text(const RasterInput& input, const RunningStatistics& statistics) {
  const auto value = [](const std::optional<double>& figure) {
    return figure ? number(*figure) : "none";
  };
  const auto extreme = [&](const std::optional<RunningStatistics::Extreme>& found) {
    return found ? exact_number(found->value) + " at column " +
                       std::to_string(found->position % input.width()) + ", row " +
                       std::to_string(found->position / input.width())
                 : "none";
  };
  const std::int64_t invalid = statistics.seen() - statistics.valid();
  Report report;
  report.line("File", input.path());
  report.lines_on_pixels(input);
  report.line("Quantity", quantity_of(input));
  const std::optional<double> nodata = nodata_of(input.band());
  report.line("Nodata", nodata ? exact_number(*nodata) : "none");
  report.line("Samples", statistics.valid() == 0 ? "no valid samples: all are nodata or NaN"
                                                 : std::to_string(statistics.valid()) + " valid, " +
                                                       std::to_string(invalid) + " nodata or NaN");
  if (statistics.infinite() > 0) {
    report.line("Infinite", std::to_string(statistics.infinite()) +
                                " of the valid, left out of mean and standard deviation");
  }
  report.line("Minimum", extreme(statistics.minimum()));
  report.line("Maximum", extreme(statistics.maximum()));
  report.line("Mean", value(statistics.mean()));
  report.line("Standard deviation", value(statistics.standard_deviation()));
  return report.text();
}

}  // namespace

void run_stats(const StatsArguments& arguments) {
  const RasterInput input(arguments.input);
  Progress progress(arguments.show_progress);
  const RunningStatistics statistics = statistics_of(input, progress);
  const std::string report = arguments.json ? json(input, statistics) : text(input, statistics);
  // A terminal that shows both must not get the report in the middle of the line of progress.
  const bool shows_report = isatty(STDOUT_FILENO) == 1;
  if (shows_report) {
    progress.finish();
  }
  print(report);
  if (!shows_report) {
    progress.finish();
  }
}

}  // namespace sarnum::tool
