// The arithmetic of every transform of the library.
//
// A transform is m stages of butterflies over elements in natural order, one twiddle factor a
// group of butterflies, and a bit-reversal permutation at the end. The forms differ in four
// choices, which are the parameters here: where the elements lie (Samples), the type that the
// butterflies compute in and the type each result is rounded to (Arithmetic), where the
// twiddles come from, and the direction. Whether an inverse divides by the length is up to it. Each
// result depends on the order of the operations written down below; no other order, and no fused
// multiply-add, may take its place. These plain forms define the values; transform.h has the choice
// between them and the kernels that give the same values faster.
#pragma once

#include <cstddef>

#include "fft/bit_reversal.h"
#include "fft/twiddles.h"

namespace sarnum {

/// Lengths the transforms are defined for: 2^0 … 2^30.
constexpr bool is_transform_exponent(int m) {
  return m >= 0 && m <= 30;
}

template <class Real>
struct Complex {
  Real re;
  Real im;
};

/// Elements in two arrays: real parts and imaginary parts.
template <class Real>
struct SplitSamples {
  using Element = Real;

  Real* re;
  Real* im;

  Complex<Real> load(std::size_t i) const { return {re[i], im[i]}; }
  void store(std::size_t i, Complex<Real> value) const {
    re[i] = value.re;
    im[i] = value.im;
  }
};

/// Elements in one array, the real part of each before its imaginary part.
template <class Real>
struct InterleavedSamples {
  using Element = Real;

  Real* data;

  Complex<Real> load(std::size_t i) const { return {data[2 * i], data[2 * i + 1]}; }
  void store(std::size_t i, Complex<Real> value) const {
    data[2 * i] = value.re;
    data[2 * i + 1] = value.im;
  }
};

/// Butterflies computed in `Computed`, each of their results rounded to `Rounded` before it is
/// stored.
template <class Computed, class Rounded>
struct Arithmetic {
  using Real = Computed;

  static Real round(Real value) { return static_cast<Real>(static_cast<Rounded>(value)); }
};

/// x[a], x[b] become x[a] + x[b]·(c − is) and x[a] − x[b]·(c − is).
template <class Arithmetic, class Samples>
void butterfly(Samples x, std::size_t a, std::size_t b, Twiddle<typename Arithmetic::Real> w) {
  using Real = typename Arithmetic::Real;
  using Element = typename Samples::Element;
  const auto first = x.load(a);
  const auto second = x.load(b);
  const Real a_re = first.re;
  const Real a_im = first.im;
  const Real b_re = second.re;
  const Real b_im = second.im;
  const Real t_re = b_re * w.c + b_im * w.s;
  const Real t_im = b_im * w.c - b_re * w.s;
  x.store(b, {static_cast<Element>(Arithmetic::round(a_re - t_re)),
              static_cast<Element>(Arithmetic::round(a_im - t_im))});
  x.store(a, {static_cast<Element>(Arithmetic::round(a_re + t_re)),
              static_cast<Element>(Arithmetic::round(a_im + t_im))});
}

/// One group: butterflies of the `half` elements from `begin` on with the `half` elements after
/// them, all with one twiddle.
template <class Arithmetic, class Samples>
void butterfly_group(Samples x, std::size_t begin, std::size_t half,
                     Twiddle<typename Arithmetic::Real> w) {
  for (std::size_t i = begin; i < begin + half; ++i) {
    butterfly<Arithmetic>(x, i, i + half, w);
  }
}

/// The m stages. Stage s has 2^s groups, each over 2^(m − s) adjoining elements.
/// @param twiddle_of  the forward twiddle of a group, by the number of the group.
template <class Arithmetic, Direction direction, class Samples, class TwiddleOf>
void butterflies(Samples x, int m, const TwiddleOf& twiddle_of) {
  const std::size_t n = std::size_t{1} << m;
  for (std::size_t group_count = 1; group_count < n; group_count *= 2) {
    const std::size_t half = n / (2 * group_count);
    for (std::size_t group = 0; group < group_count; ++group) {
      auto w = twiddle_of(group);
      if constexpr (direction == Direction::inverse) {
        w.s = -w.s;
      }
      butterfly_group<Arithmetic>(x, group * 2 * half, half, w);
    }
  }
}

template <class Samples>
void exchange(Samples x, std::size_t i, std::size_t j) {
  const auto at_i = x.load(i);
  x.store(i, x.load(j));
  x.store(j, at_i);
}

/// Calls visit(i, j) for the pairs of elements that change places, j being i with its m bits
/// reversed, by ascending i.
template <class Visit>
void for_each_exchange(int m, const Visit& visit) {
  const int n = 1 << m;
  for (int i = 0; i < n; ++i) {
    const int j = reverse_low_bits(i, m);
    if (j > i) {
      visit(i, j);
    }
  }
}

/// Their number: all indices but the 2^ceil(m/2) that are their own reversals, in pairs.
constexpr int exchange_count(int m) {
  return ((1 << m) - (1 << (m + 1) / 2)) / 2;
}

/// Brings the results of the stages into natural order.
template <class Samples>
void permute_bit_reversed(Samples x, int m) {
  for_each_exchange(m, [x](int i, int j) {
    exchange(x, static_cast<std::size_t>(i), static_cast<std::size_t>(j));
  });
}

/// Multiplies all 2^m elements, in their own precision.
template <class Samples>
void multiply(Samples x, int m, typename Samples::Element factor) {
  for (std::size_t i = 0; i < std::size_t{1} << m; ++i) {
    const auto value = x.load(i);
    x.store(i, {value.re * factor, value.im * factor});
  }
}

}  // namespace sarnum
