// Twiddles against MPFR: every one of the lengths up to 2^16 in every form, and how near any of all
// lengths comes to where it would round otherwise.
#include "elementary/twiddles.h"

#include <gtest/gtest.h>
#include <mpfr.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numbers>
#include <random>
#include <vector>

#include "elementary/turned_product.h"
#include "forced_level.h"
#include "instruction_set.h"

namespace sarnum {
namespace {

class Multiprecise {
 public:
  Multiprecise() { mpfr_init2(value, 400); }
  Multiprecise(const Multiprecise&) = delete;
  Multiprecise& operator=(const Multiprecise&) = delete;
  ~Multiprecise() { mpfr_clear(value); }

  /// The nearest double, which is taken away.
  double take() {
    const double nearest = mpfr_get_d(value, MPFR_RNDN);
    mpfr_sub_d(value, value, nearest, MPFR_RNDN);
    return nearest;
  }

  mpfr_t value;
};

template <class Real>
Real nearest(const Multiprecise& x) {
  return std::is_same_v<Real, float> ? mpfr_get_flt(x.value, MPFR_RNDN)
                                     : static_cast<Real>(mpfr_get_d(x.value, MPFR_RNDN));
}

/// Of the angle as the transforms define it.
template <class Real>
Twiddle<Real> exact_twiddle(int m, std::size_t r) {
  const Real two_pi = static_cast<Real>(std::numbers::pi) * Real{2};
  Multiprecise x, c, s;
  mpfr_set_d(x.value, two_pi * static_cast<Real>(r) / static_cast<Real>(1U << m), MPFR_RNDN);
  mpfr_sin_cos(s.value, c.value, x.value, MPFR_RNDN);
  return {nearest<Real>(c), nearest<Real>(s)};
}

Point exact_point(double turns) {
  Multiprecise x, c, s;
  mpfr_const_pi(x.value, MPFR_RNDN);
  mpfr_mul_d(x.value, x.value, 2 * turns, MPFR_RNDN);
  mpfr_sin_cos(s.value, c.value, x.value, MPFR_RNDN);
  if (turns == 0.25) {
    mpfr_set_zero(c.value, 1);
  }
  Point point;
  point.c = {c.take(), c.take()};
  point.s = {s.take(), s.take()};
  return point;
}

void expect_near(const Point& actual, double turns) {
  const Point exact = exact_point(turns);
  const auto error = [](DoubleDouble a, DoubleDouble b) {
    return std::abs((a.hi - b.hi) + (a.lo - b.lo));
  };
  EXPECT_LE(error(actual.c, exact.c), 0x1p-100) << turns;
  EXPECT_LE(error(actual.s, exact.s), 0x1p-100) << turns;
}

TEST(Twiddles, AreMadeOfPointsOnTheCircle) {
  for (const auto& group : circle.group) {
    expect_near(group.point, group.turns);
  }
  for (int k = 2; k <= 30; ++k) {
    const double turns = std::ldexp(1.0, -k);
    expect_near(circle.root[k], turns);
    const auto& lanes = circle.lanes[k];
    for (std::size_t i = 0; i < most_lanes && static_cast<int>(i) < 1 << (k - 1); ++i) {
      expect_near({{lanes.c_hi[i], lanes.c_lo[i]}, {lanes.s_hi[i], lanes.s_lo[i]}},
                  static_cast<double>(i) * turns);
    }
  }
}

/// The exact twiddles of 2^16, of which those of shorter lengths are every second, fourth, …
template <class Real>
const Twiddle<Real>& known(int m, std::size_t r) {
  static const auto all = [] {
    std::vector<Twiddle<Real>> made;
    for (std::size_t i = 0; i < 1 << 15; ++i) {
      made.push_back(exact_twiddle<Real>(16, i));
    }
    return made;
  }();
  return all[r << (16 - m)];
}

template <class Real>
testing::AssertionResult same(Real c, Real s, Twiddle<Real> right) {
  if (c == right.c && s == right.s && std::signbit(c) == std::signbit(right.c) &&
      std::signbit(s) == std::signbit(right.s)) {
    return testing::AssertionSuccess();
  }
  return testing::AssertionFailure()
         << std::hexfloat << c << ", " << s << " instead of " << right.c << ", " << right.s;
}

/// right(r) for all angles of a table in the order of lanes.
template <class Real, class Right>
void expect_lanes(void (*fill)(Real*, int, int), int m, int v, const Right& right,
                  std::size_t step = 1) {
  const std::size_t lanes = std::size_t{1} << v, vectors = (std::size_t{1} << m) / 2 / lanes;
  std::vector<Real> table(2 * lanes * vectors);
  fill(table.data(), m, v);
  for (std::size_t r = 0; r < lanes * vectors; r += step) {
    std::size_t vector = 0;
    for (int b = v; b < m - 1; ++b) {
      vector |= (r >> b & 1) << (m - 2 - b);
    }
    const Real* const at = table.data() + 2 * lanes * vector + r % lanes;
    ASSERT_TRUE(same(at[0], at[lanes], right(r))) << "m " << m << " v " << v << " r " << r;
  }
}

template <class Real>
Twiddle<float> rounded(const Twiddle<Real>& w) {
  return {static_cast<float>(w.c), static_cast<float>(w.s)};
}

class EveryTwiddle : public testing::TestWithParam<std::size_t> {
 protected:
  void SetUp() override {
    if (GetParam() >= twiddle_levels.runnable().size()) {
      GTEST_SKIP() << "not run by this CPU";
    }
    level = twiddle_levels.runnable()[GetParam()];
  }

  const TwiddleLevel* level = nullptr;
};

INSTANTIATE_TEST_SUITE_P(Levels, EveryTwiddle, testing::Range<std::size_t>(0, 4),
                         [](const auto& of) { return ForcedLevel::names[of.param]; });

TEST_P(EveryTwiddle, IsTheNearestToTheExactOne) {
  for (int m = 1; m <= 16; ++m) {
    for (int v = 0; v <= 4 && v < m; ++v) {
      expect_lanes<double>(level->double_lanes, m, v, [m](auto r) { return known<double>(m, r); });
      expect_lanes<float>(level->float_lanes, m, v, [m](auto r) { return known<float>(m, r); });
      expect_lanes<float>(level->rounded_lanes, m, v,
                          [m](auto r) { return rounded(known<double>(m, r)); });
    }
    const std::size_t count = std::size_t{1} << (m - 1);
    std::vector<double> cosine(count), sine(count);
    level->in_order(cosine.data(), sine.data(), m);
    for (std::size_t r = 0; r < count; ++r) {
      ASSERT_TRUE(same(cosine[r], sine[r], known<double>(m, r))) << "m " << m << " r " << r;
    }
  }
}

TEST_P(EveryTwiddle, OfALongLengthIsTheOneComputedAlone) {
  constexpr int m = 21;
  for (const int v : {0, 1, 2, 3, 4}) {
    expect_lanes<double>(
        level->double_lanes, m, v, [](auto r) { return twiddle_at<double>(m, r); }, 97);
    expect_lanes<float>(
        level->float_lanes, m, v, [](auto r) { return twiddle_at<float>(m, r); }, 97);
  }
  std::vector<double> cosine(1 << (m - 1)), sine(1 << (m - 1));
  level->in_order(cosine.data(), sine.data(), m);
  for (std::size_t r = 0; r < cosine.size(); r += 97) {
    ASSERT_TRUE(same(cosine[r], sine[r], twiddle_at<double>(m, r))) << r;
  }
}

TEST(Twiddles, ComputedAloneAreTheNearest) {
  std::mt19937_64 random(1);
  for (int m = 1; m <= 30; ++m) {
    for (int i = 0; i < 2000; ++i) {
      // All of the short lengths; then the small ones, and any.
      const std::size_t count = std::size_t{1} << (m - 1);
      const std::size_t r =
          m < 12 || i < 32 ? static_cast<std::size_t>(i) % count : random() % count;
      const auto w = twiddle_at<double>(m, r);
      const auto f = twiddle_at<float>(m, r);
      ASSERT_TRUE(same(w.c, w.s, exact_twiddle<double>(m, r))) << "m " << m << " r " << r;
      ASSERT_TRUE(same(f.c, f.s, exact_twiddle<float>(m, r))) << "m " << m << " r " << r;
    }
  }
}

/// Exact points of 2^30 as products of two.
struct Factors {
  static constexpr int bits = 15;

  Factors() {
    for (std::size_t i = 0; i < std::size_t{1} << bits; ++i) {
      fine.push_back(exact_point(static_cast<double>(i) * 0x1p-30));
      if (i % 2 == 0) {
        coarse.push_back(exact_point(static_cast<double>(i) * 0x1p-16));
      }
    }
  }

  std::vector<Point> coarse, fine;
};

/// 2^e ≤ |x| < 2^(e + 1), for what is not zero.
double power_below(double x) {
  return std::bit_cast<double>(std::bit_cast<std::uint64_t>(x) & 0x7ff0'0000'0000'0000U);
}

// The bound is derived in turned_product.h; twice that, as what is measured here is as far off.
TEST(LongTwiddles, AllRoundAsTheExactOnes) {
  const Factors factors;
  double least = 1.0;
  std::size_t hardest = 0;
  const auto look = [&](DoubleDouble value, std::size_t r) {
    const auto [nearest, rest] = fast_two_sum(value.hi, value.lo);
    const double power = power_below(nearest);
    const double toward_zero = (nearest < 0.0) != (rest < 0.0) ? 0.5 : 1.0;
    const double half = power * 0x1p-53 * (std::abs(nearest) == power ? toward_zero : 1.0);
    const double distance = half - std::abs(rest);
    if (distance < least) {
      least = distance;
      hardest = r;
    }
  };
  for (std::size_t r = 1; r < std::size_t{1} << 29; ++r) {
    const Point point = DoubleAngle::turned_product(factors.coarse[r >> Factors::bits],
                                                    factors.fine[r % (1 << Factors::bits)],
                                                    static_cast<double>(r) * 0x1p-30);
    if (r != std::size_t{1} << 28) {  // whose cosine is δ alone
      look(point.c, r);
    }
    look(point.s, r);
  }
  std::printf("nearest to the middle between two doubles: angle %zu, by 2^%.2f\n", hardest,
              std::log2(least));
  EXPECT_GT(least, 0x1p-96);
}

TEST(LongTwiddles, AllOfAnglesInFloatRoundAsTheExactOnes) {
  const Factors factors;
  double least = std::numeric_limits<double>::infinity();
  std::size_t hardest = 0, angles = 0;
  const auto look = [&](DoubleDouble value, std::size_t r) {
    const double power = power_below(value.hi);
    const auto bits = std::bit_cast<std::uint64_t>(value.hi) % (std::uint64_t{1} << 29);
    const double beyond = static_cast<double>(bits) - 0x1p28;
    const double distance =
        std::abs(beyond * power * 0x1p-52 + (value.hi < 0.0 ? -value.lo : value.lo));
    const double bound = 3 * power * 0x1p-53 + 0x1p-58;
    if (distance / bound < least) {
      least = distance / bound;
      hardest = r;
    }
  };
  // Numbers of angles that float has no digits for give the angles of their neighbours.
  for (std::size_t r = 1; r < std::size_t{1} << 29; r += std::bit_floor(r | 1U << 23) >> 23) {
    const double turns = static_cast<double>(r) * 0x1p-30;
    const float angle = 2 * static_cast<float>(std::numbers::pi) * static_cast<float>(turns);
    const double delta =
        (static_cast<double>(angle) - FloatAngle::two_pi * turns) - FloatAngle::rest * turns;
    // The sine of δ, and one minus its cosine.
    const DoubleDouble sine{delta, -delta * delta * delta / 6};
    const auto less = two_product(delta, delta / 2);
    const Point point = factors.coarse[r >> Factors::bits] * factors.fine[r % (1 << Factors::bits)];
    look(point.c + -(point.s * sine) + -(point.c * less), r);
    look(point.s + point.c * sine + -(point.s * less), r);
    ++angles;
  }
  std::printf("nearest to the middle between two floats, of %zu angles: %zu, by %.2f bounds\n",
              angles, hardest, least);
  EXPECT_GT(least, 1.0);
}

}  // namespace
}  // namespace sarnum
