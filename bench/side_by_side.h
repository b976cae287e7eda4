// Work of this library beside a peer's, as ratios of times measured in one run.
//
// Each piece of work is checked before anything is timed. Repetitions of all pieces are
// interleaved in random order, so that a change of the machine's speed hits both sides; the least
// time of each counts.
#ifndef SARNUM_BENCH_SIDE_BY_SIDE_H
#define SARNUM_BENCH_SIDE_BY_SIDE_H

#include <cmath>
#include <cstddef>
#include <functional>
#include <string>
#include <vector>

/// The same work done by others, or work that shows how fast ours could be at best.
struct Peer {
  std::string name;
  std::function<void()> work;
  /// Our time ÷ the peer's that is to be reached; 0 where none is set.
  double target = 0.0;
};

/// Work that both sides do on storage of their own.
struct Piece {
  std::string name;
  std::function<void()> ours;
  Peer peer;
  /// Called before the results are checked, and with true before each timing.
  std::function<void(bool timing)> prepare = [](bool) {};
  /// How far our result is from the right one, after the peer and then we have worked.
  std::function<double()> difference;
  double tolerance = 0.0;
};

/// Test data: the same numbers on both sides, of no pattern that arithmetic could profit from.
template <class Real>
Real sample(std::size_t i) {
  return static_cast<Real>(std::sin(static_cast<double>(i * i % 1009)));
}

/// Checks, times and prints the pieces. Arguments are those of Google Benchmark, and before them
/// a file for the table as JSON. The program's status.
int run_side_by_side(const std::vector<Piece>& pieces, int argc, char** argv);

#endif
