#include "side_by_side.h"

#include <benchmark/benchmark.h>
#include <sarnum/sarnum.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdio>
#include <fstream>
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

/// What was measured of one piece, in microseconds.
struct Row {
  const Piece* piece;
  double ours;
  double peers;
};

/// Without the pieces that an argument has filtered out.
std::vector<Row> rows_of(const std::vector<Piece>& pieces, const LeastTimes& times) {
  std::vector<Row> rows;
  for (const Piece& piece : pieces) {
    if (times.has(piece.name) && times.has(peer_of(piece))) {
      rows.push_back({&piece, times.of(piece.name), times.of(peer_of(piece))});
    }
  }
  return rows;
}

void print(const std::vector<Row>& rows) {
  std::printf("%-40s %12s %12s  %-10s %6s %7s\n", "work", "ours, us", "peer, us", "peer", "ratio",
              "target");
  for (const auto& [piece, ours, peers] : rows) {
    std::printf("%-40s %12.2f %12.2f  %-10s %6.2f", piece->name.c_str(), ours, peers,
                piece->peer.name.c_str(), ours / peers);
    if (piece->peer.target > 0.0) {
      std::printf(" %7.2f", piece->peer.target);
    }
    std::printf("\n");
  }
}

bool write_json(const std::vector<Row>& rows, const char* path) {
  nlohmann::ordered_json table = nlohmann::ordered_json::array();
  for (const auto& [piece, ours, peers] : rows) {
    table.push_back({{"work", piece->name},
                     {"ours_us", ours},
                     {"peer", piece->peer.name},
                     {"peer_us", peers},
                     {"ratio", ours / peers}});
    if (piece->peer.target > 0.0) {
      table.back()["target"] = piece->peer.target;
    }
  }
  const sarnum::BuildInfo info = sarnum::build_info();
  std::ofstream file(path);
  file << nlohmann::ordered_json{{"sarnum", info.version},
                                 {"instruction_set", info.instruction_set},
                                 {"rows", table}}
              .dump(1)
       << "\n";
  file.close();
  if (!file) {
    std::fprintf(stderr, "cannot write %s\n", path);
  }
  return file.good();
}

}  // namespace

int run_side_by_side(const std::vector<Piece>& pieces, int argc, char** argv) {
  if (argc < 2 || argv[1][0] == '-') {
    std::fprintf(stderr, "usage: %s FILE.json [arguments of Google Benchmark]\n", argv[0]);
    return 2;
  }
  const char* const path = argv[1];
  std::vector<char*> arguments(argv, argv + argc);
  arguments.erase(arguments.begin() + 1);
  char interleave[] = "--benchmark_enable_random_interleaving=true";
  arguments.push_back(interleave);
  int count = static_cast<int>(arguments.size());
  benchmark::Initialize(&count, arguments.data());
  if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) {
    return 2;
  }
  for (const Piece& piece : pieces) {
    if (!is_right(piece)) {
      return 1;
    }
    add(piece, piece.name, piece.ours);
    add(piece, peer_of(piece), piece.peer.work);
  }
  LeastTimes times;
  benchmark::RunSpecifiedBenchmarks(&times);
  const std::vector<Row> rows = rows_of(pieces, times);
  print(rows);
  return write_json(rows, path) ? 0 : 1;
}
