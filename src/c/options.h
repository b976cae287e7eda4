// Reading the options that the caller of the C interface gives: structures that begin with their
// size, of this version, of an earlier or of a later one.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "c/status.h"
#include "parallel.h"

namespace sarnum {

/// A structure of options: its name and its macro in messages, and its size in version 1.0. No
/// header declares a smaller one.
struct OptionsKind {
  const char* name;
  const char* initializer;
  std::size_t least_size;
};

/// Reads a structure that the caller's header may declare shorter or longer than ours. Members
/// that it lacks keep their defaults; members that we lack must be 0.
/// @param options  the defaults; receives what was given.
template <class Options>
sarnum_status read_options(const OptionsKind& kind, const Options* given, Options& options) {
  std::size_t size = 0;
  std::memcpy(&size, given, sizeof(size));
  constexpr std::size_t largest = 4096;
  // All members end at multiples of that size or in pairs: none is read in part.
  if (size < kind.least_size || size > largest || size % sizeof(size) != 0) {
    return failure(SARNUM_INVALID_ARGUMENT, kind.name, "->size is ", size, ": begin with ",
                   kind.initializer, ", which sets it.");
  }
  const auto* const bytes = reinterpret_cast<const unsigned char*>(given);
  for (std::size_t unknown = sizeof(Options); unknown < size; ++unknown) {
    if (bytes[unknown] != 0) {
      return failure(SARNUM_UNSUPPORTED, kind.name, "->size is ", size, ": byte ", unknown,
                     " is not 0 and belongs to an option that this version (", SARNUM_VERSION,
                     ") does not know; leave the option at 0 or install a later library.");
    }
  }
  std::memcpy(&options, bytes, std::min(size, sizeof(Options)));
  return SARNUM_OK;
}

/// Work below this many samples stays on the calling thread: making and joining one thread takes 20
/// to 30 microseconds, in which a transform does some 2^14 samples; where the other processor is
/// busy too, two threads begin to gain at eight times that.
constexpr std::size_t least_shared_work = std::size_t{1} << 17;

/// How a call runs, from what the caller asked for.
class CallRun {
 public:
  /// @param samples  of the whole work
  sarnum_status read(const sarnum_options* given, std::size_t samples);

  /// Runs work that has this many units of progress. If there is no storage for several threads,
  /// it runs again on one.
  /// @param work  Outcome (const Run&)
  template <class Work>
  sarnum_status perform(std::size_t units, const Work& work) noexcept {
    return guarded([&] {
      total_ = units;
      threads_ = static_cast<unsigned>(std::min<std::size_t>(threads_, units));
      Outcome outcome = work(run());
      if (outcome == Outcome::no_storage && threads_ > 1) {
        threads_ = 1;
        outcome = work(run());
      }
      return status_of(outcome);
    });
  }

 private:
  Run run() { return {threads_, {options_.progress != nullptr ? &advance : nullptr, this}}; }
  static sarnum_status status_of(Outcome outcome);
  static bool advance(void* self, std::size_t units);

  sarnum_options options_ = SARNUM_OPTIONS_INIT;
  unsigned threads_ = 1;
  std::size_t total_ = 0;
  std::size_t done_ = 0;
};

}  // namespace sarnum
