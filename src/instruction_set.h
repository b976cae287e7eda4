// Which of the machine instructions that code is compiled for this CPU runs, decided once.
//
// What gains by wider vectors is compiled several times from one source, into a table of functions
// for each set of instructions, and chosen here. All give the same values. With SARNUM_PLAIN_FORMS,
// for compilers without the vectors of g++ and clang, only the plain forms are there.
#pragma once

#include <atomic>
#include <cstddef>
#include <span>

namespace sarnum {

/// From the plainest to the fastest: scalar and baseline run everywhere, then come AVX2 and
/// AVX-512.
constexpr std::size_t instruction_sets = 4;

/// How many of them this CPU runs.
std::size_t runnable_instruction_sets();

/// The tables of one family of functions, in the order of the instruction sets; null past the
/// baseline on other architectures.
template <class Table>
class Levels {
 public:
  using List = const Table* [instruction_sets];

  explicit constexpr Levels(const List& tables) : tables_(tables) {}

  /// The tables of the sets that this CPU runs, the plainest first.
  std::span<const Table* const> runnable() const { return {tables_, runnable_instruction_sets()}; }

  /// The last of them, unless another one is forced.
  const Table& in_use() const {
    const Table* const forced = forced_.load(std::memory_order_relaxed);
    return forced != nullptr ? *forced : *runnable().back();
  }

  /// For tests, between calls: `table` is in use from now on, or the best one again for null.
  void force(const Table* table) { forced_.store(table, std::memory_order_relaxed); }

 private:
  const List& tables_;
  std::atomic<const Table*> forced_{nullptr};
};

}  // namespace sarnum
