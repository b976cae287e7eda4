// Progress on stderr as GDAL's programs show it, and the meters that carry the library's
// progress there.
#ifndef SARNUM_TOOL_PROGRESS_H
#define SARNUM_TOOL_PROGRESS_H

#include <sarnum/sarnum.h>
#include <unistd.h>

#include <chrono>
#include <string>

namespace sarnum::tool {

/// One line, 0...10...20 ... 90...100 - done. The last number waits for finish(): a user who
/// reads "done" has a finished file. On a terminal, work that has taken some seconds also tells
/// how long the rest may take, behind the numbers, until they move there.
class Progress {
 public:
  using Clock = std::chrono::steady_clock;

  explicit Progress(bool shown, bool tells_time_left = isatty(STDERR_FILENO) == 1,
                    Clock::time_point (*now)() = Clock::now)
      : shown_(shown), tells_time_left_(tells_time_left), now_(now), begin_(now()) {}

  /// Shows that `fraction` of the work is done; it never goes back.
  void update(double fraction);
  void finish();

 private:
  std::string time_left(double fraction) const;
  void show(std::string text, const std::string& note, bool ends_line);

  bool shown_;
  bool tells_time_left_;
  Clock::time_point (*now_)();
  Clock::time_point begin_;
  int ticks_ = -1;    // fortieths shown so far
  std::string note_;  // what stands behind them
};

/// A part of the whole progress, from `begin` to `end` of it.
struct ProgressSpan {
  Progress& progress;
  double begin;
  double end;

  void update(double fraction) const { progress.update(begin + (end - begin) * fraction); }
};

/// A meter of the library (CMeterInfo or CCustomMeterInfo) that advances a progress line.
template <class Meter>
class ProgressMeter final : public Meter {
 public:
  explicit ProgressMeter(ProgressSpan span) : span_(span) {}

  void SetRange(int lower, int upper) override {
    steps_ = static_cast<double>(upper) - lower;
    done_ = 0;
  }

  void StepIt() override {
    done_ += 1;
    if (steps_ > 0) {
      span_.update(done_ / steps_);
    }
  }

  /// Whether all steps of the range have been made.
  bool is_finished() const { return steps_ > 0 && done_ == steps_; }

 private:
  ProgressSpan span_;
  double steps_ = 0;
  double done_ = 0;
};

}  // namespace sarnum::tool

#endif
