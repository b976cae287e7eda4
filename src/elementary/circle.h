// Points of the unit circle in twice the digits of a double, of which all twiddles are made.
//
// The group with the number g = Σ g_b·2^b has the angle Σ g_b/2^(b+2) of a turn, whatever the
// length of the transform: its bits in reverse order behind the point. So one table of groups
// serves all lengths, each by its first entries, and a point is the product of the table's for the
// low bits of its number, and of one root of unity for each of the others that is set.
#pragma once

#include "elementary/double_double.h"

namespace sarnum {

/// Cosine and sine of an angle.
template <class Real>
struct PointOf {
  DoubleDoubleOf<Real> c;
  DoubleDoubleOf<Real> s;
};
using Point = PointOf<double>;

namespace {

/// At the sum of both angles.
template <class Real>
constexpr PointOf<Real> operator*(const PointOf<Real>& a, const PointOf<Real>& b) {
  return {a.c * b.c + -(a.s * b.s), a.s * b.c + a.c * b.s};
}

constexpr int group_bits = 9;
constexpr int most_lanes = 16;

}  // namespace

struct Circle {
  struct Group {
    Point point;
    double turns;
  };
  /// Parts of the points at 0, 1, 2, … times the angle of a root.
  struct Lanes {
    double c_hi[most_lanes], c_lo[most_lanes], s_hi[most_lanes], s_lo[most_lanes];
  };

  Point root[31];  ///< of order 2^k, k = 2 … 30
  Group group[1 << group_bits];
  Lanes lanes[31];  ///< of the root of order 2^k
};

extern const Circle circle;

}  // namespace sarnum
