// Twiddles one by one, for every CPU and compiler.
#define SARNUM_LEVEL scalar
#define SARNUM_VECTOR_BYTES 8
#include "elementary/kernels/twiddle_passes.h"

namespace sarnum {

/// By the product of the roots for all bits behind those that the table of groups has.
template <class Angle>
PointOf<double> point_at(int m, size_t r) {
  const size_t bits = r << (30 - m);
  Point rest = circle.group[0].point;
  for (int k = group_bits + 2; k <= 30; ++k) {
    if ((bits >> (30 - k) & 1) != 0) {
      rest = rest * circle.root[k];
    }
  }
  size_t group = 0;
  for (int b = 0; b < group_bits; ++b) {
    group |= (bits >> (28 - b) & 1) << b;
  }
  const double turns = static_cast<double>(bits) * 0x1p-30;
  return Angle::turned_product(circle.group[group].point, rest, turns);
}

template <>
Twiddle<double> twiddle_at(int m, size_t r) {
  const Point point = point_at<DoubleAngle>(m, r);
  return {point.c.hi + point.c.lo, point.s.hi + point.s.lo};
}

template <>
Twiddle<float> twiddle_at(int m, size_t r) {
  const Point point = point_at<FloatAngle>(m, r);
  return {static_cast<float>(point.c.hi + point.c.lo), static_cast<float>(point.s.hi + point.s.lo)};
}

}  // namespace sarnum
