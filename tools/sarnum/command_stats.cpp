// sarnum stats: extremes with their positions, mean and standard deviation of the first band.
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <span>

#include "commands.h"
#include "progress.h"
#include "raster_input.h"
#include "report.h"
#include "running_statistics.h"

namespace sarnum::tool {
namespace {

RunningStatistics statistics_of(const RasterInput& input, Progress& progress) {
  progress.update(0.0);
  RunningStatistics statistics;
  const int rows = input.rows_in_a_block();
  SampleReader reader(input, rows);
  for (int first = 0; first < input.height(); first += rows) {
    const int count = std::min(rows, input.height() - first);
    reader.read(first, count);
    const std::span<double> values = reader.re();
    std::transform(values.begin(), values.begin() + std::ssize(reader.im()), reader.im().begin(),
                   values.begin(),
                   [](double re, double im) { return std::sqrt(re * re + im * im); });
    statistics.add(values);
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
      {"nodata", json_number(input.gaps().nodata())},
      {"mask", input.gaps().has_mask()},
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
  report.line("Nodata", input.gaps().text());
  const std::string kind = input.gaps().has_mask() ? "nodata, masked or NaN" : "nodata or NaN";
  report.line("Samples", statistics.valid() == 0 ? "no valid samples: all are " + kind
                                                 : std::to_string(statistics.valid()) + " valid, " +
                                                       std::to_string(invalid) + " " + kind);
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
