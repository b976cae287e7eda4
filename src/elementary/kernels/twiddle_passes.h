// Twiddles in vectors, and one by one where a vector has one lane. Included once by the source of
// each level, and by that of single twiddles.
//
// Lanes hold adjacent angles. A vector is the product of a point that all its lanes share, which
// comes from the table of groups, and of the points of its lanes, which are made once for as many
// vectors as the table has groups. The product is near the twiddle but for δ, the distance of the
// rounded angle from the exact one, about which it is then turned.
#pragma once

#include <cstddef>

#include "elementary/circle.h"
#include "elementary/twiddles.h"
#include "kernel_vectors.h"

namespace sarnum {
namespace {

using std::size_t;

#if defined(SARNUM_PLAIN_FORMS)
template <class, int>
struct NumbersOf;
#else
template <class Real, int lanes>
struct NumbersOf {
  using Type = Vector<Real, lanes>;
};
#endif
template <class Real>
struct NumbersOf<Real, 1> {
  using Type = Real;
};
template <class Real, int lanes>
using Numbers = typename NumbersOf<Real, lanes>::Type;

/// The rounding error of a·b. A fused multiply-add gives the same number sooner.
template <class Real>
SARNUM_INLINE Real error_of(Real a, Real b, Real product) {
#if defined(__FMA__)
  if constexpr (sizeof(Real) == 8) {
    return __builtin_fma(a, b, -product);
  } else if constexpr (sizeof(Real) == 16) {
    return reinterpret_cast<Real>(_mm_fmsub_pd(a, b, product));
  } else if constexpr (sizeof(Real) == 32) {
    return reinterpret_cast<Real>(_mm256_fmsub_pd(a, b, product));
  }
#if defined(__AVX512F__)
  else if constexpr (sizeof(Real) == 64) {
    return reinterpret_cast<Real>(_mm512_fmsub_pd(a, b, product));
  }
#endif
#else
  return product_error(a, b, product);
#endif
}

/// As the compiler's conversion of vectors, and of numbers.
template <class To, class From>
SARNUM_INLINE To converted(From value) {
  if constexpr (sizeof(To) <= sizeof(double) && sizeof(From) <= sizeof(double)) {
    return static_cast<To>(value);
  } else {
    return convert<To>(value);
  }
}

template <class Value, class Element>
SARNUM_INLINE Value read_from(const Element* from) {
  if constexpr (sizeof(Value) == sizeof(Element)) {
    return *from;
  } else {
    return read<Value>(from);
  }
}

template <class Element, class Value>
SARNUM_INLINE void write_to(Element* to, Value value) {
  if constexpr (sizeof(Value) == sizeof(Element)) {
    *to = value;
  } else {
    write(to, value);
  }
}

template <class Real>
SARNUM_INLINE PointOf<Real> in_all_lanes(const Point& point) {
  const Real zero{};
  return {{point.c.hi - zero, point.c.lo - zero}, {point.s.hi - zero, point.s.lo - zero}};
}

// --- Angles in double --------------------------------------------------------------------------

constexpr double two_pi = 0x1.921fb54442d18p2;
constexpr double two_pi_error = -0x1.1a62633145c07p-52;  ///< two_pi − 2π

/// The twiddles of angles two_pi·turns, rounded, where a·b has the angles 2π·turns.
template <class Real>
SARNUM_INLINE Twiddle<Real> turned_product(double, const PointOf<Real>& a, const PointOf<Real>& b,
                                           Real turns) {
  const Real x = two_pi * turns;
  const Real delta = two_pi_error * turns - error_of(two_pi + Real{}, turns, x);

  const Real cc = a.c.hi * b.c.hi;
  const Real ss = a.s.hi * b.s.hi;
  const auto c = fast_two_sum<Real>(cc, -ss);
  const Real c_lo =
      c.lo + ((error_of(a.c.hi, b.c.hi, cc) - error_of(a.s.hi, b.s.hi, ss)) +
              ((a.c.hi * b.c.lo + a.c.lo * b.c.hi) - (a.s.hi * b.s.lo + a.s.lo * b.s.hi)));
  const Real sc = a.s.hi * b.c.hi;
  const Real cs = a.c.hi * b.s.hi;
  const auto s = fast_two_sum<Real>(sc, cs);
  const Real s_lo =
      s.lo + ((error_of(a.s.hi, b.c.hi, sc) + error_of(a.c.hi, b.s.hi, cs)) +
              ((a.s.hi * b.c.lo + a.s.lo * b.c.hi) + (a.c.hi * b.s.lo + a.c.lo * b.s.hi)));
  return {c.hi + (c_lo - delta * s.hi), s.hi + (s_lo + delta * c.hi)};
}

// --- Angles in float ---------------------------------------------------------------------------

constexpr double float_two_pi = 0x1.921fb6p2;
constexpr double float_two_pi_rest = -0x1.777a5cf72cecep-23;  ///< 2π − float_two_pi

template <class Real>
SARNUM_INLINE Real rounded_to_float(Real x) {
  using Narrow = Numbers<float, static_cast<int>(sizeof(Real) / sizeof(double))>;
  return converted<Real>(converted<Narrow>(x));
}

/// The same of angles in float: turns, their product with float_two_pi, each rounded.
template <class Real>
SARNUM_INLINE Twiddle<Real> turned_product(float, const PointOf<Real>& a, const PointOf<Real>& b,
                                           Real turns) {
  const Real x = rounded_to_float<Real>(float_two_pi * rounded_to_float(turns));
  const Real delta = (x - float_two_pi * turns) - float_two_pi_rest * turns;
  const Real half = 0.5 * delta;
  const Real c = a.c.hi * b.c.hi - a.s.hi * b.s.hi;
  const Real s = a.s.hi * b.c.hi + a.c.hi * b.s.hi;
  return {c - delta * (s + half * c), s + delta * (c - half * s)};
}

// --- All angles of a length --------------------------------------------------------------------

/// The points of adjacent lanes, at multiples of the angle of the root of order 2^m.
template <class Real>
SARNUM_INLINE PointOf<Real> lanes_from(int m, size_t first) {
  const auto read = [first](const double* part) { return read_from<Real>(part + first); };
  const Circle::Lanes& lanes = circle.lanes[m];
  return {{read(lanes.c_hi), read(lanes.c_lo)}, {read(lanes.s_hi), read(lanes.s_lo)}};
}

/// store(vector, turns of its first lane, lane, twiddles of `width` lanes from `lane` on) for all
/// vectors of 2^v adjacent angles, in the order of groups.
template <class Kind, int width, class Store>
SARNUM_INLINE void for_vectors(int m, int v, const Store& store) {
  using Real = Numbers<double, width>;
  const size_t vectors = ((size_t{1} << m) / 2) >> v;
  const size_t inner = vectors < size_t{1} << group_bits ? vectors : size_t{1} << group_bits;
  const size_t outer = inner == 0 ? 0 : vectors / inner;
  const double step = 1.0 / static_cast<double>(size_t{1} << m);
  // What the bits of `high` from each one on contribute.
  Circle::Group from_bit[32] = {};
  for (Circle::Group& none : from_bit) {
    none = circle.group[0];
  }
  for (size_t high = 0; high < outer; ++high) {
    if (high != 0) {
      int bit = 0;
      while ((high >> bit & 1) == 0) {
        ++bit;
      }
      const auto& above = from_bit[bit + 1];
      const int order = group_bits + 2 + bit;
      const Circle::Group reached = {above.point * circle.root[order],
                                     above.turns + 1.0 / static_cast<double>(size_t{1} << order)};
      for (int k = 0; k <= bit; ++k) {
        from_bit[k] = reached;
      }
    }
    for (size_t lane = 0; lane < size_t{1} << v; lane += width) {
      auto of_lanes = lanes_from<Real>(m, lane);
      if (high != 0) {
        of_lanes = of_lanes * in_all_lanes<Real>(from_bit[0].point);
      }
      Real turns = from_bit[0].turns + Real{};
      for (int k = 0; k < width; ++k) {
        const double of_lane = static_cast<double>(lane + static_cast<size_t>(k)) * step;
        if constexpr (width == 1) {
          turns += of_lane;
        } else {
          turns[k] += of_lane;
        }
      }
      for (size_t group = 0; group < inner; ++group) {
        const Circle::Group& shared = circle.group[group];
        store(high * inner + group, shared.turns + from_bit[0].turns, lane,
              turned_product(Kind{}, in_all_lanes<Real>(shared.point), of_lanes,
                             shared.turns + turns));
      }
    }
  }
}

template <class Angle, class Stored, int width>
void in_vectors_of(Stored* table, int m, int v) {
  for_vectors<Angle, width>(m, v, [=](size_t vector, double, size_t lane, auto twiddle) {
    Stored* const to = table + ((2 * vector) << v) + lane;
    write_to(to, converted<Numbers<Stored, width>>(twiddle.c));
    write_to(to + (size_t{1} << v), converted<Numbers<Stored, width>>(twiddle.s));
  });
}

constexpr int full_width = SARNUM_VECTOR_BYTES / static_cast<int>(sizeof(double));

/// By vectors as wide as the level's, or as the lanes asked for where those are fewer.
template <class Angle, class Stored, int width = full_width>
void in_lanes(Stored* table, int m, int v) {
  if constexpr (width > 1) {
    if (width > 1 << v) {
      return in_lanes<Angle, Stored, width / 2>(table, m, v);
    }
  }
  in_vectors_of<Angle, Stored, width>(table, m, v);
}

template <int width = full_width>
void in_order(double* cosine, double* sine, int m) {
  if constexpr (width > 1) {
    if (width > (1 << m) / 2) {
      return in_order<width / 2>(cosine, sine, m);
    }
  }
  int v = 0;
  while (1 << v < width) {
    ++v;
  }
  const auto n = static_cast<double>(size_t{1} << m);
  for_vectors<double, width>(m, v, [=](size_t, double turns, size_t, auto twiddle) {
    const auto angle = static_cast<size_t>(turns * n);
    write_to(cosine + angle, twiddle.c);
    write_to(sine + angle, twiddle.s);
  });
}

}  // namespace

#define SARNUM_TWIDDLES_OF(level) SARNUM_CONCATENATED(twiddle_level_, level)
extern const TwiddleLevel SARNUM_TWIDDLES_OF(SARNUM_LEVEL);
const TwiddleLevel SARNUM_TWIDDLES_OF(SARNUM_LEVEL) = {
    .name = SARNUM_NAME_OF(SARNUM_LEVEL),
    .double_lanes = in_lanes<double, double>,
    .float_lanes = in_lanes<float, float>,
    .rounded_lanes = in_lanes<double, float>,
    .in_order = in_order<>,
};

}  // namespace sarnum
