// What all exported routines promise alike: the same values at every level of instructions, at
// every address and on every thread, and no more floating-point exceptions; no access outside their
// arrays; a stated outcome when storage lacks.
#include <gtest/gtest.h>
#include <sarnum/sarnum.h>

#include <algorithm>
#include <atomic>
#include <climits>
#include <cmath>
#include <fstream>
#include <iterator>
#include <sstream>
#include <thread>

#include "forced_level.h"
#include "routines.h"
#include "same_value.h"

namespace {

using Failing = FailingAllocations::Failing;

std::string described(const Routine& routine, const Conditions& c) {
  std::ostringstream text;
  text << routine.symbols.substr(0, routine.symbols.find('\n')) << " size " << c.size << " data "
       << c.data << " variant " << c.variant << " page " << c.page << " offset " << c.offset
       << " failing " << c.failing << (c.how == Failing::once ? "" : " and all after it");
  return text.str();
}

testing::AssertionResult equal(const Routine& routine, const Outcome& actual,
                               const Outcome& expected) {
  return routine.traits.repeats
             ? same_values(actual.values, expected.values, routine.traits.kernels_from < INT_MAX)
             : testing::AssertionSuccess();
}

void build_tables(const Routine& routine, int m) {
  if (routine.traits.uses_tables) {
    init_ibitr(m);
  }
}

TEST(EveryRoutine, IsKnown) {
  std::vector<std::string> known, exported;
  for (const Routine& routine : routines()) {
    std::istringstream lines(routine.symbols);
    for (std::string line; std::getline(lines, line);) {
      known.push_back(line);
    }
  }
  std::ifstream list(SARNUM_SYMBOLS);
  for (std::string line; std::getline(list, line);) {
    const auto version = line.find("@@SARNUM_1");
    EXPECT_EQ(version != line.npos, line.starts_with("sarnum_")) << line;
    exported.push_back(line.substr(0, version));
  }
  std::ranges::sort(known);
  std::ranges::sort(exported);
  EXPECT_EQ(known, exported);
}

TEST(EveryRoutine, HasTheValuesOfItsPlainDefinition) {
  for (const Routine& routine : routines()) {
    for (const int size : routine.sizes.lawful) {
      for (unsigned variant = 0; routine.definition != nullptr && variant < 12; ++variant) {
        const Conditions c{
            .size = size,
            .data = static_cast<Data>((static_cast<unsigned>(size) + variant) % kinds_of_data),
            .variant = variant};
        EXPECT_TRUE(equal(routine, routine.outcome(c), routine.defined_outcome(c)))
            << described(routine, c);
      }
    }
  }
}

class EveryRoutine : public testing::TestWithParam<std::size_t> {
 protected:
  void SetUp() override {
    if (GetParam() >= ForcedLevel::runnable()) {
      GTEST_SKIP() << "this CPU does not run " << ForcedLevel::names[GetParam()];
    }
  }

  /// Compares calls at this level, in arrays at inaccessible pages and at some or all offsets from
  /// a cache line, with one at the scalar level.
  void check(const Routine& routine, Conditions c, std::size_t least_offset, std::size_t step) {
    Outcome expected;
    {
      const ForcedLevel scalar(0);
      build_tables(routine, c.size);
      expected = routine.outcome(c);
      EXPECT_EQ(runs(), 0);
    }
    const ForcedLevel forced(GetParam());
    build_tables(routine, c.size);
    const auto compare = [&] {
      const Outcome outcome = routine.outcome(c);
      EXPECT_TRUE(equal(routine, outcome, expected)) << described(routine, c);
      EXPECT_TRUE((outcome.exceptions & ~expected.exceptions) == 0 || !routine.traits.repeats)
          << described(routine, c) << " raises what the scalar level does not";
    };
    for (const auto page : {Conditions::begins, Conditions::ends, Conditions::anywhere}) {
      c.page = page;
      compare();
    }
    for (c.offset = least_offset; c.offset < 64; c.offset += step) {
      compare();
    }
    const bool has_kernels =  // a matrix with a single one in it is soon done with
        GetParam() > 0 && c.size >= routine.traits.kernels_from && c.data != impulse;
    EXPECT_TRUE(has_kernels ? runs() > 0 : runs() == 0 || routine.traits.kernels_from < INT_MAX)
        << described(routine, c) << " ran " << runs() << " kernels";
  }

  static int runs() { return ForcedLevel::lines + ForcedLevel::columns + ForcedLevel::updates; }
};

INSTANTIATE_TEST_SUITE_P(Levels, EveryRoutine, testing::Range<std::size_t>(0, 4),
                         [](const auto& of) { return ForcedLevel::names[of.param]; });

TEST_P(EveryRoutine, GivesTheScalarValuesWhateverTheDataAndWhereverTheyLie) {
  for (const Routine& routine : routines()) {
    for (const int size : routine.sizes.lawful) {
      for (int data = 0; data < kinds_of_data; ++data) {
        const auto variant = static_cast<unsigned>(size + data);
        check(routine, {.size = size, .data = static_cast<Data>(data), .variant = variant % 16},
              variant % 64, 64);
      }
    }
    check(routine, {.size = routine.sizes.typical}, 0, 1);
    check(routine, {.size = routine.sizes.large}, 4, 64);
  }
}

TEST_P(EveryRoutine, IsHarmlessOutsideItsContract) {
  const ForcedLevel forced(GetParam());
  for (const Routine& routine : routines()) {
    for (const auto page : {Conditions::begins, Conditions::ends}) {
      for (const int size : routine.sizes.unlawful) {
        build_tables(routine, size);
        for (unsigned variant = 0; variant < 4; ++variant) {
          routine.outcome({.size = size, .variant = variant, .page = page});
        }
      }
      for (const int size : routine.sizes.lawful) {
        build_tables(routine, size);
        for (unsigned k = 0; k < 4; ++k) {
          const Conditions c{.size = size, .variant = Conditions::unlawful + k, .page = page};
          const Outcome outcome = routine.outcome(c);
          EXPECT_TRUE(outcome.untouched || outcome.lawful) << described(routine, c);
        }
      }
    }
  }
}

TEST(EveryRoutine, HasTheStatedOutcomeForEveryAllocationThatFails) {
  for (const Routine& routine : routines()) {
    for (const auto how : {Failing::once, Failing::persistently}) {
      const Traits& stated = routine.traits;
      Conditions c{.size = routine.sizes.typical, .how = how};
      build_tables(routine, c.size);
      const Outcome expected = routine.outcome(c);
      int needed = 0;
      for (int nth = 1; nth <= expected.allocations && !stated.allocates_in_host; ++nth) {
        c.failing = nth;
        const Outcome outcome = routine.outcome(c);
        if (!equal(routine, outcome, expected)) {
          ++needed;
          EXPECT_TRUE(outcome.untouched) << described(routine, c);
          EXPECT_EQ(outcome.values[0], std::isnan(stated.failed) ? nth : stated.failed)
              << described(routine, c);
        }
        c.failing = 0;
        EXPECT_TRUE(equal(routine, routine.outcome(c), expected)) << "after " << nth << " failed";
      }
      // Where all fail from one on, others may be needed in the place of those that only help.
      const int most = how == Failing::once || stated.needed == 0 ? stated.needed : INT_MAX;
      EXPECT_TRUE(needed >= stated.needed && needed <= most)
          << described(routine, c) << " needs " << needed;
    }
  }
}

TEST(EveryRoutine, RunsBesideEveryOther) {
  constexpr unsigned threads = 8;
  std::vector<const Routine*> all;
  std::vector<std::vector<Outcome>> alone(threads);
  const auto conditions = [](const Routine& routine, unsigned thread) {
    return Conditions{.size = routine.sizes.typical, .variant = thread};
  };
  for (const Routine& routine : routines()) {
    if (routine.traits.is_shared) {
      continue;
    }
    all.push_back(&routine);
    build_tables(routine, routine.sizes.typical);
    for (unsigned thread = 0; thread < threads; ++thread) {
      alone[thread].push_back(routine.outcome(conditions(routine, thread)));
    }
  }
  // In place of a std::barrier: that of g++ 12 for Windows loses some threads.
  std::atomic<unsigned> arrived = 0;
  const auto wait_for_all = [&arrived] {
    const unsigned meeting = arrived++ / threads;
    while (arrived / threads == meeting) {
      std::this_thread::yield();
    }
  };
  const auto run = [&](unsigned thread) {
    for (std::size_t a = 0; a < all.size(); ++a) {
      for (std::size_t b = 0; b <= a; ++b) {
        const std::size_t k = thread % 2 == 0 ? a : b;
        const Conditions c = conditions(*all[k], thread);
        EXPECT_TRUE(equal(*all[k], all[k]->outcome(c), alone[thread][k])) << described(*all[k], c);
        wait_for_all();
      }
    }
  };
  std::vector<std::jthread> running;
  for (unsigned thread = 0; thread < threads; ++thread) {
    running.emplace_back(run, thread);
  }
}

TEST(Threads, DISABLED_RaceOfTables) {
  ASSERT_EQ(init_ibitr(4), 0);
  std::jthread other([] { init_ibitr(4); });
  init_ibitr(4);
}

}  // namespace
