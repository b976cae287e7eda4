// Progress of long calls: the library's meters drive what the caller passed as `progress`.
//
// A meter is called on the thread that does the work, without Python's lock: it takes the lock for
// each report, and there are at most about a hundred of them, because taking the lock back from
// busy threads can take milliseconds. An exception that a report raises ends the reports; the work
// goes on, and the exception is raised when it has ended.
#ifndef SARNUM_PYTHON_PROGRESS_H
#define SARNUM_PYTHON_PROGRESS_H

#include <pybind11/pybind11.h>

#include <cstdint>
#include <exception>

#include "lock.h"
#include "sarnum/host/meter.h"

namespace sarnum::python {

namespace py = pybind11;

/// What the caller wants to be told: nothing (None), progress(done, total), or total and
/// update(steps) of an object like a bar of tqdm.
class Progress {
 public:
  /// @throws TypeError for anything else.
  Progress(const char* function, py::object target) : target_(std::move(target)) {
    is_bar_ = py::hasattr(target_, "update");
    if (!target_.is_none() && !is_bar_ && PyCallable_Check(target_.ptr()) == 0) {
      throw py::type_error(std::string(function) +
                           "(): progress must be callable as progress(done, total), or have "
                           "update() and total as a bar of tqdm has");
    }
  }

  void begin(int total) {
    total_ = total;
    done_ = reported_ = 0;
    begun_ = true;
    if (is_bar_) {
      guarded([&] { target_.attr("total") = total_; });
    }
  }

  void step() {
    ++done_;
    if (!target_.is_none() &&
        (done_ >= total_ || done_ * 100 / total_ > reported_ * 100 / total_)) {
      guarded([&] {
        if (is_bar_) {
          target_.attr("update")(done_ - reported_);
        } else {
          target_(done_, total_);
        }
      });
      reported_ = done_;
    }
  }

  /// Whether the work came so far as to tell its range.
  bool begun() const { return begun_; }

  /// With Python's lock, after the work: raises what a report has raised.
  void end() {
    if (exception_) {
      std::rethrow_exception(std::exchange(exception_, nullptr));
    }
  }

 private:
  template <typename Report>
  void guarded(Report report) {
    if (!exception_) {
      const Locked lock;
      try {
        report();
      } catch (const py::error_already_set&) {
        exception_ = std::current_exception();
      }
    }
  }

  py::object target_;
  bool is_bar_ = false;
  bool begun_ = false;
  std::int64_t total_ = 0;
  std::int64_t done_ = 0;
  std::int64_t reported_ = 0;
  std::exception_ptr exception_;
};

/// A meter of either kind that tells a Progress.
template <typename Base>
class Meter final : public Base {
 public:
  explicit Meter(Progress& progress) : progress_(progress) {}

  void SetRange(int lower, int upper) override { progress_.begin(upper - lower); }
  void StepIt() override { progress_.step(); }

 private:
  Progress& progress_;
};

}  // namespace sarnum::python

#endif
