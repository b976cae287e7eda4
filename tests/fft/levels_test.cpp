// Every instruction-set level this CPU can run gives the values of the plain forms.
#include <gtest/gtest.h>
#include <sarnum/sarnum.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <span>
#include <vector>

#include "fft/kernels/level.h"
#include "transform_forms.h"

namespace {

using sarnum::Level;

const Level* inner;
int kernel_runs;

template <auto member>
struct Counted;
template <class... Arguments, void (*Level::*member)(Arguments...)>
struct Counted<member> {
  static void run(Arguments... arguments) {
    ++kernel_runs;
    (inner->*member)(arguments...);
  }
};

/// Forces a level, for the tables of 2^m too, and counts the kernels it runs.
class Forced {
 public:
  Forced(const Level* level, int m) : counted_(*level) {
    inner = level;
    counted_.double_split = Counted<&Level::double_split>::run;
    counted_.float_split = Counted<&Level::float_split>::run;
    counted_.float_interleaved = Counted<&Level::float_interleaved>::run;
    counted_.double_rounded = Counted<&Level::double_rounded>::run;
    counted_.float_rounded = Counted<&Level::float_rounded>::run;
    sarnum::force_level(&counted_);
    EXPECT_STREQ(sarnum::build_info().instruction_set, level->name);
    EXPECT_EQ(init_ibitr(m), 0);
  }
  Forced(const Forced&) = delete;
  Forced& operator=(const Forced&) = delete;
  ~Forced() { sarnum::force_level(nullptr); }

 private:
  Level counted_;
};

/// Real parts then imaginary parts: an impulse, and noise of many sizes with and without samples
/// that are missing or infinite.
template <class Real>
std::vector<std::vector<Real>> test_lines(std::size_t n) {
  using Limits = std::numeric_limits<Real>;
  std::vector<std::vector<Real>> lines(1, std::vector<Real>(2 * n));
  lines[0][n / 3] = Real{1};
  for (const Real scale : {Real{1}, Limits::max() / 8, Limits::min(), 50 * Limits::denorm_min()}) {
    lines.push_back(oracle::random_values<Real>(2 * n, static_cast<unsigned>(n)));
    for (Real& value : lines.back()) {
      value *= scale;
    }
  }
  lines.push_back(lines[1]);
  lines.back().front() = Limits::infinity();
  lines.back().back() = Limits::quiet_NaN();
  return lines;
}

/// The values of one form for all lines, one after another, at addresses `offset` elements further.
template <class Real>
std::vector<Real> results(const forms::Form<Real>& form, std::vector<std::vector<Real>> lines,
                          int m, std::size_t offset) {
  std::vector<Real> all;
  for (auto& line : lines) {
    line.insert(line.begin(), offset, Real{7});
    form.transform(line.data() + offset, line.data() + offset + (std::size_t{1} << m), m);
    all.insert(all.end(), line.begin(), line.end());
  }
  return all;
}

template <class Real>
void check_levels(int m) {
  const auto levels = sarnum::runnable_levels();
  const auto lines = test_lines<Real>(std::size_t{1} << m);
  const auto offset = static_cast<std::size_t>(m % 4);
  for (const auto& form : forms::all<Real>()) {
    std::vector<Real> expected;
    for (const Level* const level : levels) {
      SCOPED_TRACE(testing::Message() << form.name << " m=" << m << ' ' << level->name);
      const Forced forced(level, m);
      kernel_runs = 0;
      const auto actual = results(form, lines, m, offset);
      const bool has_kernel = level->vector_bytes != 0 && m >= sarnum::least_kernel_exponent;
      ASSERT_EQ(kernel_runs, has_kernel ? static_cast<int>(lines.size()) : 0);
      if (expected.empty()) {
        expected = actual;
      }
      for (std::size_t i = 0; i < expected.size(); ++i) {
        ASSERT_TRUE(actual[i] == expected[i] || (std::isnan(actual[i]) && std::isnan(expected[i])))
            << i << ": " << actual[i] << ", expected " << expected[i];
      }
    }
  }
}

TEST(Levels, GiveTheValuesOfThePlainForms) {
  ASSERT_GE(sarnum::runnable_levels().size(), 2U);
  ASSERT_STREQ(sarnum::runnable_levels().front()->name, "scalar");
  for (const int m : {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 16}) {
    check_levels<double>(m);
    check_levels<float>(m);
  }
}

TEST(Levels, TablesOfAnotherLevelServeThePlainForm) {
  for (const Level* const level : sarnum::runnable_levels()) {
    auto line = oracle::random_values<double>(512, 1);
    auto expected = line;
    const Forced forced(level, 8);
    sarnum::force_level(sarnum::runnable_levels().front());
    fft_Fast(line.data(), line.data() + 256, 8);
    fft(expected.data(), expected.data() + 256, 8);
    EXPECT_EQ(line, expected);
  }
}

}  // namespace
