// The arithmetic of twiddles, for one or for many at once.
//
// An angle of a transform is a rounded product, and so not quite 2π·turns. Two points of the circle
// whose angles add up to 2π·turns are multiplied, and the product is turned by the small angle δ
// that is missing: (c, s) becomes (c − δ·s, s + δ·c).
//
// Error bound of angles in double, u = 2^−53, absolute, before the last addition rounds:
//
// - A root of unity is off by at most u², rounded to two doubles a part. A product of points in
//   double-double adds at most 7u²·(|ac·bc| + |as·bs|) + 3u² ≤ 10u² to each part, 15u² to the
//   distance from the exact point. The two factors here contain one root for each bit of an angle's
//   number that is set, 29 at most: together they are off by less than 29·(1 + 15)·u² = 464u².
// - Their product here: the rounded products of parts and the sums of these are kept with their
//   errors; what is left out, lo·lo, is below u²; the sums that make up `lo` are below 4u and
//   rounded seven times, by less than 16u² together.
// - |δ| < 3.2u: half a unit of a product below π is 2u, and π·(2^−53 relative) 1.2u more. Its own
//   rounding, that of δ·c, the lacking digits of c there, and δ²/2 are below 4u² + 4u² + 4u² + 6u².
//
// The sum is below 500u² < 2^−97. The cosine of N/4 is excepted: there all but δ is zero and δ one
// rounded product, and so is what has angle 0. The test of twiddles goes through all 2^29 angles
// and finds no cosine or sine nearer than 2^−91 to the middle between two doubles: all are rounded
// as the exact ones would be, by whichever factors they are reached.
//
// For fast_two_sum: the first factor's angle is a multiple of some step, 0 and N/4 among them, and
// the second one's is less than the step. So |cos a·cos b| ≥ |sin a·sin b| unless cos a = 0, and
// |sin a·cos b| ≥ |cos a·sin b| unless sin a = 0.
#pragma once

#include "elementary/circle.h"
#include "kernel_vectors.h"

namespace sarnum {
namespace {

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

/// Angles in double: two_pi·turns.
struct DoubleAngle {
  static constexpr double two_pi = 0x1.921fb54442d18p2;
  static constexpr double excess = -0x1.1a62633145c07p-52;  ///< two_pi − 2π

  /// A point whose parts, hi + lo, are the twiddle.
  template <class Real>
  static SARNUM_INLINE PointOf<Real> turned_product(const PointOf<Real>& a, const PointOf<Real>& b,
                                                    Real turns) {
    const Real all_two_pi = two_pi + Real{};
    const Real delta = excess * turns - error_of(all_two_pi, turns, all_two_pi * turns);

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
    return {{c.hi, c_lo - delta * s.hi}, {s.hi, s_lo + delta * c.hi}};
  }
};

/// Angles in float: turns and their product with two_pi rounded to it, so that δ reaches 2^−21 and
/// its square counts.
///
/// Error bound for m > 16, where the second factor's angle is below 2^−10 of a turn, or 2^−7.3. By
/// what it changes, and its low part, three roundings (of the larger product, the difference and
/// the last subtraction) and one omission err by 2^−61 each; δ³/6 and the rest by less than 2^−65.
/// The first factor's low part is left out: half a unit in the last place of its part, which is one
/// unit of the result where that is in the binade below. Where it is smaller still, the factor's
/// part is below 2^−6.3 and its low part below 2^−59.3. The last addition rounds by half a unit.
/// Together: 3 half units of the double result, and 2^−58. The test of twiddles goes through all
/// angles and finds none as near as that to the middle between two floats; of m ≤ 16 it compares
/// all twiddles.
struct FloatAngle {
  static constexpr double two_pi = 0x1.921fb6p2;
  static constexpr double rest = -0x1.777a5cf72cecep-23;  ///< 2π − two_pi

  template <class Real>
  static SARNUM_INLINE Real rounded(Real x) {
    using Narrow = Vector<float, static_cast<int>(sizeof(Real) / sizeof(double))>;
    return convert<Real>(convert<Narrow>(x));
  }

  /// A point whose parts, hi + lo, rounded to double and then to float, are the twiddle. The second
  /// factor is a small turn, and what it changes is added last.
  template <class Real>
  static SARNUM_INLINE PointOf<Real> turned_product(const PointOf<Real>& a, const PointOf<Real>& b,
                                                    Real turns) {
    const Real x = rounded(two_pi * rounded(turns));
    const Real delta = (x - two_pi * turns) - rest * turns;
    const Real half = 0.5 * delta;
    const Real less = (b.c.hi - 1.0) + b.c.lo;
    const Real c_change = a.c.hi * less - a.s.hi * b.s.hi;
    const Real s_change = a.s.hi * less + a.c.hi * b.s.hi;
    const Real c = a.c.hi + c_change;
    const Real s = a.s.hi + s_change;
    return {{a.c.hi, c_change - delta * (s + half * c)},
            {a.s.hi, s_change + delta * (c - half * s)}};
  }
};

}  // namespace
}  // namespace sarnum
