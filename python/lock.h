// Python's lock, given up for long work and taken back.
//
// When the interpreter ends, Python ends daemon threads that ask for the lock by pthread_exit(),
// whose unwinding would meet destructors and abort the process. Such a thread waits here, for the
// end of the process, as later versions of Python have it.
#ifndef SARNUM_PYTHON_LOCK_H
#define SARNUM_PYTHON_LOCK_H

#include <pybind11/pybind11.h>

#include <chrono>
#include <thread>

namespace sarnum::python {

template <typename Take>
auto take_lock(Take take) noexcept {
  try {
    return take();
  } catch (...) {  // pthread_exit(): to leave this block would abort
    for (;;) {
      std::this_thread::sleep_for(std::chrono::hours(1));
    }
  }
}

/// Without the lock, for as long as it lives.
class Unlocked {
 public:
  Unlocked() : state_(PyEval_SaveThread()) {}
  Unlocked(const Unlocked&) = delete;
  Unlocked& operator=(const Unlocked&) = delete;
  ~Unlocked() {
    take_lock([this] { PyEval_RestoreThread(state_); });
  }

 private:
  PyThreadState* state_;
};

/// With the lock, for as long as it lives, on a thread that has given it up.
class Locked {
 public:
  Locked() : state_(take_lock(PyGILState_Ensure)) {}
  Locked(const Locked&) = delete;
  Locked& operator=(const Locked&) = delete;
  ~Locked() { PyGILState_Release(state_); }

 private:
  PyGILState_STATE state_;
};

}  // namespace sarnum::python

#endif
