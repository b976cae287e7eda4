// Twiddles in vectors, and one by one where a vector has one lane. Included once by the source of
// each level, and by that of single twiddles.
//
// Lanes hold adjacent angles. A vector is the product of a point that all its lanes share, which
// comes from the table of groups, and of the points of its lanes, which are made once for as many
// vectors as the table has groups.
#pragma once

#include <cstddef>

#include "elementary/turned_product.h"
#include "elementary/twiddles.h"

namespace sarnum {
namespace {

using std::size_t;

template <class Real>
SARNUM_INLINE PointOf<Real> in_all_lanes(const Point& point) {
  const Real zero{};
  return {{point.c.hi - zero, point.c.lo - zero}, {point.s.hi - zero, point.s.lo - zero}};
}

/// The angles that the table of groups has no bits for, one after the other.
class Walk {
 public:
  /// Bit b of a step's number is the root of order 2^(first + b·further).
  Walk(int first, int further) : first_(first), further_(further) {
    from_bit_[0] = circle.group[0];
  }

  const Circle::Group& here() const { return from_bit_[0]; }

  SARNUM_NOINLINE void go_on() {
    if (++number_ == 1) {
      for (Circle::Group& none : from_bit_) {
        none = circle.group[0];
      }
    }
    int bit = 0;
    while ((number_ >> bit & 1) == 0) {
      ++bit;
    }
    const int order = first_ + bit * further_;
    const Circle::Group& above = from_bit_[bit + 1];
    const Circle::Group reached = {above.point * circle.root[order],
                                   above.turns + 1.0 / static_cast<double>(size_t{1} << order)};
    for (; bit >= 0; --bit) {
      from_bit_[bit] = reached;
    }
  }

 private:
  int first_, further_;
  size_t number_ = 0;
  Circle::Group from_bit_[31 - group_bits];  ///< what the bits from each one on contribute
};

constexpr double lane_numbers[most_lanes] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};

/// Points of adjacent lanes, and the part of a turn that each is at.
template <class Real>
struct Fine {
  PointOf<Real> points;
  Real turns;
};

/// From multiples of the angle of length 2^m, the first being number `lane`, as far as the walk is.
template <class Real>
SARNUM_NOINLINE void turn(PointOf<Real>& points, const Point& by) {
  points = points * in_all_lanes<Real>(by);
}

template <class Real>
SARNUM_INLINE Fine<Real> fine_at(int m, size_t lane, const Circle::Group& here) {
  const Circle::Lanes& lanes = circle.lanes[m];
  PointOf<Real> points = {{read<Real>(lanes.c_hi + lane), read<Real>(lanes.c_lo + lane)},
                          {read<Real>(lanes.s_hi + lane), read<Real>(lanes.s_lo + lane)}};
  if (here.turns != 0.0) {
    turn(points, here.point);
  }
  return {points,
          here.turns + read<Real>(lane_numbers + lane) / static_cast<double>(size_t{1} << m)};
}

template <class Angle, class Real>
SARNUM_INLINE Twiddle<Real> twiddle_of(const Circle::Group& shared, const Fine<Real>& fine) {
  const auto point = Angle::turned_product(in_all_lanes<Real>(shared.point), fine.points,
                                           Real(shared.turns + fine.turns));
  return {point.c.hi + point.c.lo, point.s.hi + point.s.lo};
}

constexpr size_t all_groups = size_t{1} << group_bits;

template <class Angle, class Stored, int width>
void in_vectors_of(Stored* table, int m, int v) {
  using Real = Vector<double, width>;
  const size_t vectors = ((size_t{1} << m) / 2) >> v;
  const size_t lanes = size_t{1} << v;
  Walk walk(group_bits + 2, 1);
  for (size_t begin = 0; begin < vectors; begin += all_groups) {
    if (begin != 0) {
      walk.go_on();
    }
    const size_t groups = vectors < all_groups ? vectors : all_groups;
    for (size_t lane = 0; lane < lanes; lane += width) {
      const Fine<Real> fine = fine_at<Real>(m, lane, walk.here());
      Stored* to = table + 2 * lanes * begin + lane;
      for (size_t group = 0; group < groups; ++group, to += 2 * lanes) {
        const auto twiddle = twiddle_of<Angle>(circle.group[group], fine);
        write(to, convert<Vector<Stored, width>>(twiddle.c));
        write(to + lanes, convert<Vector<Stored, width>>(twiddle.s));
      }
    }
  }
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

/// Some adjacent vectors for each group, so that memory far apart is written in whole lines.
template <int width = full_width>
void in_order(double* cosine, double* sine, int m) {
  if constexpr (width > 1) {
    if (width > (1 << m) / 2) {
      return in_order<width / 2>(cosine, sine, m);
    }
  }
  using Real = Vector<double, width>;
  constexpr size_t most_steps = 16;
  const size_t vectors = (size_t{1} << m) / 2 / width;
  const size_t groups = vectors < all_groups ? vectors : all_groups;
  const size_t steps = groups == 0 ? 0 : vectors / groups;
  const auto n = static_cast<double>(size_t{1} << m);
  Walk walk(m - log2_of(width), -1);
  for (size_t step = 0; step < steps;) {
    Fine<Real> fine[most_steps];
    const size_t begin = step * width;
    size_t count = 0;
    for (; step < steps && count < most_steps; ++step, ++count) {
      if (step != 0) {
        walk.go_on();
      }
      fine[count] = fine_at<Real>(m, 0, walk.here());
    }
    for (size_t group = 0; group < groups; ++group) {
      const Circle::Group& shared = circle.group[group];
      size_t angle = static_cast<size_t>(shared.turns * n) + begin;
      for (size_t k = 0; k < count; ++k, angle += width) {
        const auto twiddle = twiddle_of<DoubleAngle>(shared, fine[k]);
        write(cosine + angle, twiddle.c);
        write(sine + angle, twiddle.s);
      }
    }
  }
}

}  // namespace

#define SARNUM_TWIDDLES_OF(level) SARNUM_CONCATENATED(twiddle_level_, level)
extern const TwiddleLevel SARNUM_TWIDDLES_OF(SARNUM_LEVEL);
const TwiddleLevel SARNUM_TWIDDLES_OF(SARNUM_LEVEL) = {
    .name = SARNUM_NAME_OF(SARNUM_LEVEL),
    .double_lanes = in_lanes<DoubleAngle, double>,
    .float_lanes = in_lanes<FloatAngle, float>,
    .rounded_lanes = in_lanes<DoubleAngle, float>,
    .in_order = in_order<>,
};

}  // namespace sarnum
