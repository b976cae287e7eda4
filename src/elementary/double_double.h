// Sums and products without rounding errors, and numbers of twice the digits of a double.
//
// Everything is a template on the type that carries it, so that the same source serves doubles and
// vectors of them. Functions have internal linkage: a copy made of a level's instructions must
// never be the one that the linker keeps for callers on lesser CPUs. Values hold as long as nothing
// overflows and no product comes near the subnormal numbers.
#pragma once

#include <cfloat>

#if defined(__FAST_MATH__) || FLT_EVAL_METHOD != 0
#error "These operations need the roundings of IEEE 754 double, each where it stands."
#endif

namespace sarnum {

/// The number hi + lo, where hi is the sum rounded.
template <class Real>
struct DoubleDoubleOf {
  Real hi;
  Real lo;
};
using DoubleDouble = DoubleDoubleOf<double>;

namespace {

/// a + b, exactly (Knuth).
template <class Real>
constexpr DoubleDoubleOf<Real> two_sum(Real a, Real b) {
  const Real sum = a + b;
  const Real of_b = sum - a;
  return {sum, (a - (sum - of_b)) + (b - of_b)};
}

/// a + b, exactly where |a| ≥ |b| or a = 0 (Dekker).
template <class Real>
constexpr DoubleDoubleOf<Real> fast_two_sum(Real a, Real b) {
  const Real sum = a + b;
  return {sum, b - (sum - a)};
}

/// x as the sum of two numbers of 26 bits each (Veltkamp), for |x| < 2^996.
template <class Real>
constexpr DoubleDoubleOf<Real> halves(Real x) {
  const Real scaled = x * 134217729.0;  // 2^27 + 1
  const Real upper = scaled - (scaled - x);
  return {upper, x - upper};
}

/// The rounding error of a·b, exactly (Dekker).
template <class Real>
constexpr Real product_error(Real a, Real b, Real product) {
  const auto x = halves(a);
  const auto y = halves(b);
  return ((x.hi * y.hi - product) + x.hi * y.lo + x.lo * y.hi) + x.lo * y.lo;
}

/// a·b, exactly.
template <class Real>
constexpr DoubleDoubleOf<Real> two_product(Real a, Real b) {
  const Real product = a * b;
  return {product, product_error(a, b, product)};
}

/// Relative error at most 3·2^−106 (Joldes, Muller, Popescu 2017, algorithm 6).
template <class Real>
constexpr DoubleDoubleOf<Real> operator+(DoubleDoubleOf<Real> a, DoubleDoubleOf<Real> b) {
  const auto high = two_sum(a.hi, b.hi);
  const auto low = two_sum(a.lo, b.lo);
  const auto sum = fast_two_sum<Real>(high.hi, high.lo + low.hi);
  return fast_two_sum<Real>(sum.hi, low.lo + sum.lo);
}

template <class Real>
constexpr DoubleDoubleOf<Real> operator-(DoubleDoubleOf<Real> a) {
  return {-a.hi, -a.lo};
}

/// Relative error below 7·2^−106 (the same, algorithm 10).
template <class Real>
constexpr DoubleDoubleOf<Real> operator*(DoubleDoubleOf<Real> a, DoubleDoubleOf<Real> b) {
  const auto high = two_product(a.hi, b.hi);
  return fast_two_sum<Real>(high.hi, high.lo + (a.hi * b.lo + a.lo * b.hi));
}

}  // namespace
}  // namespace sarnum
