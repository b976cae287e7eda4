#include "parallel.h"

#include <algorithm>
#include <atomic>
#include <memory>
#include <new>
#include <system_error>
#include <thread>

namespace sarnum {

namespace {

/// A loop as its threads see it.
class Loop {
 public:
  Loop(const Run& run, std::size_t count, std::size_t units, PieceBody body)
      : run_(run), count_(count), units_(units), body_(body) {}

  /// Pieces until none are left, on a thread of its own.
  void work(unsigned worker) {
    for (std::size_t piece = next_++; piece < count_ && !stopped_; piece = next_++) {
      body_(worker, piece);
      ++done_;
    }
  }

  /// The same on the calling thread, which tells what all of them have done.
  void work_and_report() {
    for (std::size_t piece = next_++; piece < count_ && !stopped_; piece = next_++) {
      body_(0, piece);
      ++done_;
      report();
    }
  }

  /// The rest of the progress, when all threads have ended.
  bool finish() {
    if (!stopped_ && reported_ < done_) {
      report();
    }
    return !stopped_;
  }

 private:
  void report() {
    const std::size_t done = done_;
    const std::size_t units = (done - reported_) * units_;
    reported_ = done;
    if (run_.progress.advance != nullptr && !run_.progress.advance(run_.progress.context, units)) {
      stopped_ = true;
    }
  }

  const Run& run_;
  const std::size_t count_;
  const std::size_t units_;
  const PieceBody body_;
  std::atomic<std::size_t> next_{0};
  std::atomic<std::size_t> done_{0};
  std::atomic<bool> stopped_{false};
  std::size_t reported_ = 0;
};

/// As many threads beside the calling one as are wanted and as the system provides.
class Threads {
 public:
  Threads(Loop& loop, unsigned count)
      : threads_(count > 0 ? new (std::nothrow) std::thread[count] : nullptr) {
    for (; threads_ != nullptr && started_ < count; ++started_) {
      try {
        threads_[started_] = std::thread(&Loop::work, &loop, started_ + 1);
      } catch (const std::system_error&) {
        return;
      } catch (const std::bad_alloc&) {
        return;
      }
    }
  }
  Threads(const Threads&) = delete;
  Threads& operator=(const Threads&) = delete;
  ~Threads() {
    for (unsigned i = 0; i < started_; ++i) {
      threads_[i].join();
    }
  }

 private:
  std::unique_ptr<std::thread[]> threads_;
  unsigned started_ = 0;
};

}  // namespace

bool for_each_piece(const Run& run, std::size_t count, std::size_t units, PieceBody body) {
  Loop loop(run, count, units, body);
  {
    const std::size_t most = std::min<std::size_t>(run.threads, count);
    const Threads others(loop, most > 1 ? static_cast<unsigned>(most - 1) : 0);
    loop.work_and_report();
  }
  return loop.finish();
}

}  // namespace sarnum
