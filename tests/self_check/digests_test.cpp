// The digests of what the routines compute: the published ones on every machine and at every level
// of instructions, and what docs/numbers.md says in other states of the floating-point unit.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cfenv>
#include <cstdint>
#include <string>
#include <vector>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

#include "digests.h"
#include "forced_level.h"
#include "temporary_folder.h"

namespace {

using namespace sarnum::self_check;
using namespace testing;

/// The names of those that are not the published ones.
std::vector<std::string> differing_digests() {
  const TemporaryFolder folder;
  std::vector<std::string> names;
  for (const Digest& digest : computed_digests(folder.file(""))) {
    if (digest.value != digest.published) {
      names.push_back(digest.name);
    }
  }
  return names;
}

bool is_of_subnormal_numbers(const std::string& name) {
  return name.starts_with(of_subnormal_numbers);
}

class Digests : public TestWithParam<std::size_t> {
 protected:
  void SetUp() override {
    if (GetParam() >= ForcedLevel::runnable()) {
      GTEST_SKIP() << "this CPU does not run " << ForcedLevel::names[GetParam()];
    }
  }
};

INSTANTIATE_TEST_SUITE_P(Levels, Digests, Range<std::size_t>(0, 4),
                         [](const auto& of) { return ForcedLevel::names[of.param]; });

TEST_P(Digests, AreThePublishedOnes) {
  const ForcedLevel forced(GetParam());
  EXPECT_THAT(differing_digests(), IsEmpty());
}

/// As another library that was built with fast math may have left it.
bool flush_subnormal_numbers([[maybe_unused]] bool flush) {
#if defined(__x86_64__)
  constexpr unsigned to_zero_and_from_zero = 0x8040;
  _mm_setcsr((_mm_getcsr() & ~to_zero_and_from_zero) | (flush ? to_zero_and_from_zero : 0));
#elif defined(__aarch64__)
  asm volatile("msr fpcr, %0" : : "r"(flush ? std::uint64_t{1} << 24 : 0));
#else
  return false;
#endif
  return true;
}

TEST_P(Digests, ChangeWithFlushedSubnormalNumbersOnlyWhereThereAreSome) {
  if (!flush_subnormal_numbers(true)) {
    GTEST_SKIP() << "this CPU does not flush them";
  }
  const ForcedLevel forced(GetParam());
  const std::vector<std::string> changed = differing_digests();
  flush_subnormal_numbers(false);
  EXPECT_THAT(changed, AllOf(Each(Truly(is_of_subnormal_numbers)),
                             Contains(of_subnormal_numbers + std::string("fft(double)"))));
}

// Nothing is promised of values then, but that a call stays within its arrays and ends, and that it
// leaves nothing behind for later ones.
TEST(Rounding, OfTheCallerEndsWithIt) {
  for (const int direction : {FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO}) {
    std::fesetround(direction);
    const std::vector<std::string> changed = differing_digests();
    std::fesetround(FE_TONEAREST);
    EXPECT_THAT(changed, Contains("fft(double)"));
  }
  EXPECT_THAT(differing_digests(), IsEmpty());
}

}  // namespace
