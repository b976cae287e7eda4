// The transforms of radix2.h in vectors: the same operations on the same operands, in an order
// that moves data less. Included once by the source of each level.
//
// - The stages before the last log2(lanes) are done two or three at a time: 4 or 8 elements that
//   depend only on each other are loaded, taken through the stages in registers and stored (pass).
//   A block is finished before its neighbour, so that every cache is used as far as it reaches
//   (passes_of).
// - The last log2(lanes) stages and the bit reversal are one pass over square tiles (tile_pass).
//
// Everything here has internal linkage and nothing of the standard library is called: an inline
// function made of a level's instructions must never be the copy of it that the linker keeps for
// callers on lesser CPUs.
#pragma once

#include <cstddef>

#include "fft/kernels/level.h"
#include "kernel_vectors.h"

#define SARNUM_TABLE_OF(level) SARNUM_CONCATENATED(level_, level)

namespace sarnum {
namespace {

using std::size_t;

/// Below this many bytes a block goes through its passes whole, rather than part after part.
constexpr size_t near_cache = 32768;

// --- Vectors -----------------------------------------------------------------------------------

/// Real and imaginary parts, or cosines and sines.
template <class Part>
struct Pair {
  Part re;
  Part im;
};

/// The low `bits` bits of x, reversed.
constexpr size_t reverse(size_t x, int bits) {
  if (bits == 0) {
    return 0;
  }
  unsigned long long r = __builtin_bswap64(x);
  r = ((r >> 4) & 0x0f0f0f0f0f0f0f0fU) | ((r & 0x0f0f0f0f0f0f0f0fU) << 4);
  r = ((r >> 2) & 0x3333333333333333U) | ((r & 0x3333333333333333U) << 2);
  r = ((r >> 1) & 0x5555555555555555U) | ((r & 0x5555555555555555U) << 1);
  return static_cast<size_t>(r >> (64 - bits));
}

template <int... index>
struct Indices {};
template <int count, int... index>
struct IndicesTo : IndicesTo<count - 1, count - 1, index...> {};
template <int... index>
struct IndicesTo<0, index...> {
  using Type = Indices<index...>;
};

/// Lane l of the result is lane Pick::from(l) of a and b laid end to end.
template <class Pick, class Vec, int... lane>
SARNUM_INLINE Vec shuffle(Vec a, Vec b, Indices<lane...>) {
  return __builtin_shufflevector(a, b, Pick::from(lane)...);
}

template <class Pick, int lanes, class Vec>
SARNUM_INLINE Vec shuffle(Vec a, Vec b) {
  return shuffle<Pick>(a, b, typename IndicesTo<lanes>::Type{});
}

/// Every second lane.
template <int first>
struct Alternate {
  static constexpr int from(int lane) { return 2 * lane + first; }
};

/// Lanes of a and b in turn, from the lower (part 0) or the upper halves.
template <int part, int lanes>
struct Interleave {
  static constexpr int from(int lane) {
    return part * lanes / 2 + lane / 2 + (lane % 2 == 0 ? 0 : lanes);
  }
};

/// One part of two rows in a transposition: blocks of `distance` lanes off the diagonal change
/// places.
template <int part, int distance, int lanes>
struct Transposed {
  static constexpr int from(int lane) {
    const bool of_second = (lane & distance) != 0;
    return (lane & ~distance) + part * distance + (of_second ? lanes : 0);
  }
};

/// Rows become columns, for as many vectors as they have lanes.
template <int lanes, class Part, class Row>
SARNUM_INLINE void transpose(Row* rows, Part Row::*part) {
  unrolled<log2_of(lanes)>([&](auto step) {
    constexpr int distance = lanes >> (step + 1);
    unrolled<lanes / 2>([&](auto pair) {
      constexpr int first = pair / distance * 2 * distance + pair % distance;
      const Part a = rows[first].*part;
      const Part b = rows[first + distance].*part;
      rows[first].*part = shuffle<Transposed<0, distance, lanes>, lanes>(a, b);
      rows[first + distance].*part = shuffle<Transposed<1, distance, lanes>, lanes>(a, b);
    });
  });
}

// --- Arithmetic --------------------------------------------------------------------------------

/// Elements of type Stored, computed on in Real; each butterfly result is rounded to Rounded.
/// Between two stages values are held as they would be stored: what is rounded is narrow there too.
template <class Stored, class Real, class Rounded, int lane_count>
struct Arithmetic {
  using Element = Stored;
  using Computed = Real;
  using Held = Vector<Stored, lane_count>;
  using Value = Pair<Held>;
  using Wide = Vector<Real, lane_count>;
  using Twiddles = Pair<Wide>;
  static constexpr int lanes = lane_count;

  static SARNUM_INLINE Held load(const void* from) { return read<Held>(from); }
  static SARNUM_INLINE void store(void* to, Held value) { write(to, value); }

  static SARNUM_INLINE Wide widen(Held value) { return convert<Wide>(value); }
  static SARNUM_INLINE Held round(Wide value) {
    return convert<Held>(convert<Vector<Rounded, lanes>>(value));
  }

  template <class Twiddle>
  static SARNUM_INLINE void butterfly(Value& a, Value& b, Twiddle w) {
    const Wide a_re = widen(a.re);
    const Wide a_im = widen(a.im);
    const Wide b_re = widen(b.re);
    const Wide b_im = widen(b.im);
    const Wide t_re = b_re * w.re + b_im * w.im;
    const Wide t_im = b_im * w.re - b_re * w.im;
    b = {round(a_re - t_re), round(a_im - t_im)};
    a = {round(a_re + t_re), round(a_im + t_im)};
  }

  /// The last `stages` stages of the 2^stages elements of x. twiddle_of(stage, group) is given
  /// constants.
  template <int stages, class TwiddleOf>
  static SARNUM_INLINE void butterflies(Value* x, const TwiddleOf& twiddle_of) {
    unrolled<stages>([&](auto stage) {
      constexpr int half = 1 << (stages - 1 - stage);
      unrolled<(1 << stage)>([&](auto group) {
        const auto w = twiddle_of(stage, group);
        unrolled<half>(
            [&](auto i) { butterfly(x[group * 2 * half + i], x[group * 2 * half + half + i], w); });
      });
    });
  }
};

// --- Where elements lie: `i` is a multiple of the lanes ----------------------------------------

template <class Arithmetic>
struct SplitVectors {
  static constexpr bool is_split = true;
  using Element = typename Arithmetic::Element;

  Element* re;
  Element* im;

  SplitVectors from(size_t i) const { return {re + i, im + i}; }
  SARNUM_INLINE typename Arithmetic::Value load(size_t i) const {
    return {Arithmetic::load(re + i), Arithmetic::load(im + i)};
  }
  SARNUM_INLINE void store(size_t i, typename Arithmetic::Value value) const {
    Arithmetic::store(re + i, value.re);
    Arithmetic::store(im + i, value.im);
  }
};

/// Real and imaginary parts in turn, at any address; `swapped` takes each for the other.
template <class Arithmetic, bool swapped>
struct InterleavedVectors {
  using Value = typename Arithmetic::Value;
  static constexpr bool is_split = false;
  static constexpr int lanes = Arithmetic::lanes;
  static constexpr size_t pixel = 2 * sizeof(typename Arithmetic::Element);

  unsigned char* bytes;

  SARNUM_INLINE Value load(size_t i) const {
    const auto a = Arithmetic::load(bytes + i * pixel);
    const auto b = Arithmetic::load(bytes + i * pixel + lanes * pixel / 2);
    return {shuffle<Alternate<swapped ? 1 : 0>, lanes>(a, b),
            shuffle<Alternate<swapped ? 0 : 1>, lanes>(a, b)};
  }
  SARNUM_INLINE void store(size_t i, Value value) const {
    const auto first = swapped ? value.im : value.re;
    const auto second = swapped ? value.re : value.im;
    Arithmetic::store(bytes + i * pixel, shuffle<Interleave<0, lanes>, lanes>(first, second));
    Arithmetic::store(bytes + i * pixel + lanes * pixel / 2,
                      shuffle<Interleave<1, lanes>, lanes>(first, second));
  }
};

/// What interleaved data become between the first and the last pass: real and imaginary parts
/// vector by vector, in the place of the elements they belong to.
template <class Arithmetic>
struct BlockedVectors {
  static constexpr bool is_split = false;
  typename Arithmetic::Element* data;

  BlockedVectors from(size_t i) const { return {data + 2 * i}; }
  SARNUM_INLINE typename Arithmetic::Value load(size_t i) const {
    return {Arithmetic::load(data + 2 * i), Arithmetic::load(data + 2 * i + Arithmetic::lanes)};
  }
  SARNUM_INLINE void store(size_t i, typename Arithmetic::Value value) const {
    Arithmetic::store(data + 2 * i, value.re);
    Arithmetic::store(data + 2 * i + Arithmetic::lanes, value.im);
  }
};

/// The columns of a block: element (row, column) stands where row after row would have it.
template <class Arithmetic, bool swapped>
struct GatheredColumns {
  static constexpr bool is_split = false;
  const ColumnBlock& block;

  SARNUM_INLINE typename Arithmetic::Value load(size_t i) const {
    using Pixels = InterleavedVectors<Arithmetic, swapped>;
    const size_t row = i >> block.columns_exponent;
    const size_t column = i & ((size_t{1} << block.columns_exponent) - 1);
    auto* const pixels = static_cast<unsigned char*>(block.rows[row]) + column * Pixels::pixel;
    __builtin_prefetch(pixels + block.next_offset);
    const auto value = Pixels{pixels + block.offset}.load(0);
    return block.centred && row % 2 != 0 ? typename Arithmetic::Value{-value.re, -value.im} : value;
  }
};

/// The same when the stages are done: rows are in bit-reversed order.
template <class Arithmetic, bool swapped>
struct ScatteredColumns {
  const ColumnBlock& block;
  typename Arithmetic::Element scale;
  size_t begin;

  ScatteredColumns from(size_t i) const { return {block, scale, begin + i}; }
  SARNUM_INLINE void store(size_t i, typename Arithmetic::Value value) const {
    using Pixels = InterleavedVectors<Arithmetic, swapped>;
    const size_t row = reverse((begin + i) >> block.columns_exponent, block.m);
    const size_t column = i & ((size_t{1} << block.columns_exponent) - 1);
    Pixels{static_cast<unsigned char*>(block.rows[row]) + block.offset}.store(
        column, {value.re * scale, value.im * scale});
  }
};

// --- Passes ------------------------------------------------------------------------------------

/// `stages` stages of each of `groups` adjoining blocks. The first of them is group `first_group`
/// of its stage.
template <int stages, class A, class In, class Out>
void pass(In in, Out out, size_t block, size_t first_group, size_t groups,
          const KernelTwiddles<typename A::Computed>& w) {
  using Real = typename A::Computed;
  constexpr int parts = 1 << stages;
  const size_t step = block / parts;
  for (size_t group = 0; group < groups; ++group) {
    Pair<Real> twiddles[parts - 1];
    unrolled<stages>([&](auto stage) {
      unrolled<(1 << stage)>([&](auto k) {
        const size_t number = ((first_group + group) << stage) + k;
        const Real* const cosine = w.groups + number * w.group_stride;
        twiddles[(1 << stage) - 1 + k] = {cosine[0], cosine[w.sine_offset]};
      });
    });
    const size_t begin = group * block;
    for (size_t i = begin; i < begin + step; i += A::lanes) {
      typename A::Value x[parts];
      unrolled<parts>([&](auto part) { x[part] = in.load(i + part * step); });
      A::template butterflies<stages>(
          x, [&](auto stage, auto k) { return twiddles[(1 << stage) - 1 + k]; });
      unrolled<parts>([&](auto part) { out.store(i + part * step, x[part]); });
    }
  }
}

/// Stages to do at once of those that are left. Where eight parts of a block would stand a multiple
/// of 4096 bytes apart, their lines compete for the same few places of a first-level cache: too
/// many when real and imaginary parts lie apart.
template <class Element, class Layout>
int fused_stages(size_t block, int left) {
  if (left == 2 || left == 4) {
    return 2;
  }
  return Layout::is_split && left > 4 && block / 8 * sizeof(Element) % 4096 == 0 ? 2 : 3;
}

template <class A, class In, class Out>
void fused_pass(int stages, In in, Out out, size_t block, size_t first_group, size_t groups,
                const KernelTwiddles<typename A::Computed>& w) {
  if (stages == 2) {
    pass<2, A>(in, out, block, first_group, groups, w);
  } else {
    pass<3, A>(in, out, block, first_group, groups, w);
  }
}

/// The next `left` stages (two or more) of one block, from `in` to `out` by way of `work`.
template <class A, class In, class Work, class Out>
void passes_of(In in, Work work, Out out, size_t block, size_t group, int left,
               const KernelTwiddles<typename A::Computed>& w) {
  int stages = fused_stages<typename A::Element, In>(block, left);
  if (stages == left) {
    fused_pass<A>(stages, in, out, block, group, 1, w);
    return;
  }
  fused_pass<A>(stages, in, work, block, group, 1, w);
  if (block * 2 * sizeof(typename A::Element) > near_cache) {
    const size_t part = block >> stages;
    for (size_t k = 0; k < size_t{1} << stages; ++k) {
      const auto inner = work.from(k * part);
      passes_of<A>(inner, inner, out.from(k * part), part, (group << stages) + k, left - stages, w);
    }
    return;
  }
  for (size_t groups = 1; left > stages;) {
    left -= stages;
    block >>= stages;
    group <<= stages;
    groups <<= stages;
    stages = fused_stages<typename A::Element, Work>(block, left);
    if (stages == left) {
      fused_pass<A>(stages, work, out, block, group, groups, w);
    } else {
      fused_pass<A>(stages, work, work, block, group, groups, w);
    }
  }
}

// --- Tiles -------------------------------------------------------------------------------------
//
// After the passes 2^(m − v) blocks of 2^v elements are left, v = log2(lanes). Element k of block
// j·2^(m − 2v) + t has the number (j, t, k), digit by digit, and belongs at rev(k), rev(t), rev(j):
// the elements with one t are a square tile whose results fill the places of tile rev(t). With the
// blocks of a tile loaded in the order rev(j) and transposed, lane l has the twiddles of the index
// that ends in rev(t), l, which are adjacent in the order of the angles.

template <class A>
struct Tile {
  static constexpr int v = log2_of(A::lanes);

  typename A::Value x[A::lanes];

  /// Twiddles of stage v − 1 − skipped, a lane's angle 2^skipped steps from the next lane's: lanes
  /// at this distance, from `2^skipped` vectors of the table.
  template <int skipped>
  static SARNUM_INLINE typename A::Twiddles twiddles(const typename A::Computed* lanes, int m,
                                                     size_t index) {
    if constexpr (skipped == 0) {
      const auto* const cosines = lanes + 2 * A::lanes * index;
      return {read<typename A::Wide>(cosines), read<typename A::Wide>(cosines + A::lanes)};
    } else {
      const size_t half = size_t{1} << (m - v - 1 - skipped);
      const auto a = twiddles<skipped - 1>(lanes, m, index);
      const auto b = twiddles<skipped - 1>(lanes, m, index + half);
      return {shuffle<Alternate<0>, A::lanes>(a.re, b.re),
              shuffle<Alternate<0>, A::lanes>(a.im, b.im)};
    }
  }

  /// Loads tile t and does its stages.
  template <class In>
  SARNUM_INLINE void transform(In in, int m, size_t t, const typename A::Computed* lanes) {
    unrolled<A::lanes>(
        [&](auto row) { x[row] = in.load((reverse(row, v) << (m - v)) + t * A::lanes); });
    transpose<A::lanes>(x, &A::Value::re);
    transpose<A::lanes>(x, &A::Value::im);
    A::template butterflies<v>(x, [&](auto stage, auto group) {
      constexpr int skipped = v - 1 - stage;
      return twiddles<skipped>(lanes, m, (t << stage) + group);
    });
  }

  /// Stores the results in the places of tile t.
  template <class Out>
  SARNUM_INLINE void store(Out out, int m, size_t t, typename A::Element scale) {
    if (scale != 1) {
      unrolled<A::lanes>([&](auto row) { x[row] = {x[row].re * scale, x[row].im * scale}; });
    }
    unrolled<A::lanes>(
        [&](auto row) { out.store((reverse(row, v) << (m - v)) + t * A::lanes, x[row]); });
  }
};

template <class A, class In, class Out>
void tile_pass(In in, Out out, int m, const typename A::Computed* lanes,
               typename A::Element scale) {
  const int bits = m - 2 * Tile<A>::v;
  for (size_t t = 0; t < size_t{1} << bits; ++t) {
    const size_t partner = reverse(t, bits);
    if (t <= partner) {
      Tile<A> tile;
      tile.transform(in, m, t, lanes);
      if (t < partner) {
        Tile<A> other;
        other.transform(in, m, partner, lanes);
        other.store(out, m, t, scale);
      }
      tile.store(out, m, partner, scale);
    }
  }
}

// --- Transforms --------------------------------------------------------------------------------

/// A whole transform, with fewer lanes where tiles as wide as the vectors would not fit.
template <class Stored, class Real, class Rounded, int lanes = SARNUM_VECTOR_BYTES / sizeof(Real),
          class Work>
SARNUM_INLINE void with_lanes(int m, const Work& work) {
  if constexpr (2 * log2_of(lanes) > least_kernel_exponent) {
    if (2 * log2_of(lanes) > m) {
      return with_lanes<Stored, Real, Rounded, lanes / 2>(m, work);
    }
  }
  work(Arithmetic<Stored, Real, Rounded, lanes>{});
}

/// From `in` to `out`, by way of `work`, which may lie in the same place as either.
template <class A, class In, class Work, class Out>
void transform(In in, Work work, Out out, int m, const KernelTwiddles<typename A::Computed>& w,
               typename A::Element scale) {
  passes_of<A>(in, work, work, size_t{1} << m, 0, m - log2_of(A::lanes), w);
  tile_pass<A>(work, out, m, w.lanes, scale);
}

template <class Stored, class Real, class Rounded>
void split(Stored* re, Stored* im, int m, const KernelTwiddles<Real>& w, Stored scale) {
  with_lanes<Stored, Real, Rounded>(m, [&](auto arithmetic) {
    using A = decltype(arithmetic);
    const SplitVectors<A> x{re, im};
    transform<A>(x, x, x, m, w, scale);
  });
}

/// body(Constant<0>) or body(Constant<1>): inverse transforms take real parts for imaginary ones.
template <class Body>
SARNUM_INLINE void with_direction(bool inverse, const Body& body) {
  if (inverse) {
    body(Constant<1>{});
  } else {
    body(Constant<0>{});
  }
}

template <class Real>
void interleaved(Real* data, bool inverse, int m, const KernelTwiddles<Real>& w, Real scale) {
  with_direction(inverse, [&](auto swapped) {
    with_lanes<Real, Real, Real>(m, [&](auto arithmetic) {
      using A = decltype(arithmetic);
      const InterleavedVectors<A, swapped != 0> x{reinterpret_cast<unsigned char*>(data)};
      transform<A>(x, BlockedVectors<A>{data}, x, m, w, scale);
    });
  });
}

template <class Stored, class Real, class Rounded>
void row(Stored* re, Stored* im, bool inverse, void* to, int m, const KernelTwiddles<Real>& w,
         Stored scale) {
  with_direction(inverse, [&](auto swapped) {
    with_lanes<Stored, Real, Rounded>(m, [&](auto arithmetic) {
      using A = decltype(arithmetic);
      const SplitVectors<A> x{swapped != 0 ? im : re, swapped != 0 ? re : im};
      const InterleavedVectors<A, swapped != 0> out{static_cast<unsigned char*>(to)};
      transform<A>(x, x, out, m, w, scale);
    });
  });
}

template <class Stored, class Real, class Rounded>
void columns(const ColumnBlock& block, const KernelTwiddles<Real>& w, Stored scale) {
  using A = Arithmetic<Stored, Real, Rounded, SARNUM_VECTOR_BYTES / sizeof(Real)>;
  with_direction(block.inverse, [&](auto swapped) {
    passes_of<A>(GatheredColumns<A, swapped != 0>{block},
                 BlockedVectors<A>{static_cast<Stored*>(block.storage)},
                 ScatteredColumns<A, swapped != 0>{block, scale, 0},
                 size_t{1} << (block.m + block.columns_exponent), 0, block.m, w);
  });
}

}  // namespace

extern const Level SARNUM_TABLE_OF(SARNUM_LEVEL);
const Level SARNUM_TABLE_OF(SARNUM_LEVEL) = {
    .name = SARNUM_NAME_OF(SARNUM_LEVEL),
    .vector_bytes = SARNUM_VECTOR_BYTES,
    .double_split = split<double, double, double>,
    .float_split = split<float, float, float>,
    .double_interleaved = interleaved<double>,
    .float_interleaved = interleaved<float>,
    .double_raster = {row<double, double, double>, columns<double, double, double>},
    .float_raster = {row<float, float, float>, columns<float, float, float>},
    .double_rounded = split<double, double, float>,
    .float_rounded = split<float, double, float>,
    .double_rounded_raster = {row<double, double, float>, columns<double, double, float>},
    .float_rounded_raster = {row<float, double, float>, columns<float, double, float>},
};

}  // namespace sarnum
