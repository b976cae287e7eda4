// Loops over independent pieces of work, such as the rows of an image, on one thread or on several.
// A callback receives the progress and can stop the work.
//
// A piece belongs to one thread from its beginning to its end, and no piece reads what another one
// writes: results do not depend on the number of threads. The threads are made for one loop and
// have ended when it returns. That costs 20 to 30 microseconds per thread, and leaves nothing
// behind in a process that unloads the library or forks.
#pragma once

#include <cstddef>

namespace sarnum {

/// Receives the progress. `advance` is called on the calling thread only, with the units of work
/// done since its last call; false stops the work.
struct Progress {
  bool (*advance)(void* context, std::size_t units) = nullptr;
  void* context = nullptr;
};

/// How a call runs.
struct Run {
  unsigned threads = 1;  ///< the calling thread among them
  Progress progress;

  /// Reports that the work begins. @return false to leave it.
  bool begin() const {
    return progress.advance == nullptr || progress.advance(progress.context, 0);
  }
};

/// What became of work that needs storage.
enum class Outcome {
  complete,
  stopped,    ///< part of the output was written
  no_storage  ///< nothing was written
};

/// What a loop does for each piece: a reference to a function object.
class PieceBody {
 public:
  template <class Body>
  PieceBody(const Body& body)
      : body_(&body), call_([](const void* self, unsigned worker, std::size_t piece) {
          (*static_cast<const Body*>(self))(worker, piece);
        }) {}

  void operator()(unsigned worker, std::size_t piece) const { call_(body_, worker, piece); }

 private:
  const void* body_;
  void (*call_)(const void*, unsigned, std::size_t);
};

/// Calls body(worker, piece) for the pieces 0 … count − 1, where worker, below run.threads, is the
/// number of the thread: one buffer per worker is enough. One thread takes them in ascending order.
/// The body throws nothing.
/// @param units  of progress in each piece
/// @return false when it was stopped; pieces that had begun are then complete.
bool for_each_piece(const Run& run, std::size_t count, std::size_t units, PieceBody body);

}  // namespace sarnum
