#include "side_by_side.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <map>

namespace {

bool is_right(const Piece& piece) {
  piece.prepare(false);
  piece.peer.work();
  piece.ours();
  const double difference = piece.difference();
  if (!(difference <= piece.tolerance)) {
    std::fprintf(stderr, "%s: the result is off by %g\n", piece.name.c_str(), difference);
    return false;
  }
  return true;
}

std::string peer_of(const Piece& piece) {
  return piece.name + " " + piece.peer.name;
}

void add(const Piece& piece, const std::string& name, const std::function<void()>& work) {
  benchmark::RegisterBenchmark(name.c_str(),
                               [&](benchmark::State& state) {
                                 piece.prepare(true);
                                 work();  // caches as a call before leaves them, on both sides
                                 for (auto _ : state) {
                                   work();
                                   benchmark::ClobberMemory();
                                 }
                               })
      ->Repetitions(9)
      ->MinTime(0.02)
      ->Unit(benchmark::kMicrosecond);
}

/// Keeps the least time of each benchmark, in place of the usual line for every repetition.
class LeastTimes : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      if (run.run_type == Run::RT_Iteration) {
        const auto [entry, is_new] =
            times_.try_emplace(run.run_name.function_name, run.GetAdjustedRealTime());
        entry->second = std::min(entry->second, run.GetAdjustedRealTime());
      }
    }
  }

  double of(const std::string& name) const { return times_.at(name); }
  bool has(const std::string& name) const { return times_.count(name) != 0; }

 private:
  std::map<std::string, double> times_;
};

void print(const std::vector<Piece>& pieces, const LeastTimes& times) {
  std::printf("%-40s %12s %12s  %-10s %6s %7s\n", "work", "ours, us", "peer, us", "peer", "ratio",
              "target");
  for (const Piece& piece : pieces) {
    if (!times.has(piece.name) || !times.has(peer_of(piece))) {
      continue;  // filtered out by an argument
    }
    const double ours = times.of(piece.name);
    const double peers = times.of(peer_of(piece));
    std::printf("%-40s %12.2f %12.2f  %-10s %6.2f", piece.name.c_str(), ours, peers,
                piece.peer.name.c_str(), ours / peers);
    if (piece.peer.target > 0.0) {
      std::printf(" %7.2f", piece.peer.target);
    }
    std::printf("\n");
  }
}

}  // namespace

int run_side_by_side(const std::vector<Piece>& pieces, int argc, char** argv) {
  for (const Piece& piece : pieces) {
    if (!is_right(piece)) {
      return 1;
    }
    add(piece, piece.name, piece.ours);
    add(piece, peer_of(piece), piece.peer.work);
  }
  std::vector<char*> arguments(argv, argv + argc);
  char interleave[] = "--benchmark_enable_random_interleaving=true";
  arguments.push_back(interleave);
  int count = static_cast<int>(arguments.size());
  benchmark::Initialize(&count, arguments.data());
  LeastTimes times;
  benchmark::RunSpecifiedBenchmarks(&times);
  print(pieces, times);
  return 0;
}
