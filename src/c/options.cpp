#include "c/options.h"

#include <thread>

namespace sarnum {

sarnum_status CallRun::read(const sarnum_options* given, std::size_t samples) {
  if (given == nullptr) {
    return SARNUM_OK;
  }
  constexpr OptionsKind kind{"options", "SARNUM_OPTIONS_INIT",
                             offsetof(sarnum_options, context) + sizeof(void*)};
  if (const sarnum_status status = read_options(kind, given, options_); status != SARNUM_OK) {
    return status;
  }
  constexpr int most_threads = 1024;
  if (options_.threads < 0 || options_.threads > most_threads) {
    return refused("options->threads", options_.threads,
                   "pass 1 to 1024, or 0 for one thread per processor");
  }
  if (samples >= least_shared_work) {
    threads_ = options_.threads > 0 ? static_cast<unsigned>(options_.threads)
                                    : std::clamp(std::thread::hardware_concurrency(), 1U, 1024U);
  }
  return SARNUM_OK;
}

bool CallRun::advance(void* self, std::size_t units) {
  auto& run = *static_cast<CallRun*>(self);
  run.done_ = std::min(run.done_ + units, run.total_);
  return run.options_.progress(run.options_.context, static_cast<double>(run.done_) /
                                                         static_cast<double>(run.total_)) == 0;
}

sarnum_status CallRun::status_of(Outcome outcome) {
  switch (outcome) {
    case Outcome::complete:
      return SARNUM_OK;
    case Outcome::stopped:
      return failure(SARNUM_CANCELLED,
                     "options->progress asked to stop: the output may be incomplete.");
    default:
      return no_memory("work storage");
  }
}

}  // namespace sarnum
