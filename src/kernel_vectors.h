// What the sources of kernels share: vectors of a level's width, and loops that the compiler
// unrolls. For sources that are compiled once per set of instructions: internal linkage only, and
// nothing of the standard library, lest the linker keep such a copy for callers on lesser CPUs.
#pragma once

#if defined(__x86_64__) && (defined(__FMA__) || defined(__AVX512F__))
#include <immintrin.h>
#endif

#include <cstring>

#define SARNUM_CONCATENATED(a, b) a##b
#define SARNUM_QUOTED(text) #text
#define SARNUM_NAME_OF(level) SARNUM_QUOTED(level)
#if defined(SARNUM_PLAIN_FORMS)
#define SARNUM_INLINE inline
#define SARNUM_NOINLINE
#else
#define SARNUM_INLINE inline __attribute__((always_inline))
#define SARNUM_NOINLINE __attribute__((noinline))
#endif

namespace sarnum {
namespace {

#if defined(SARNUM_PLAIN_FORMS)
template <class T, int lanes>
struct VectorOf;
#else
template <class T, int lanes>
struct VectorOf {
  using Type __attribute__((vector_size(lanes * sizeof(T)))) = T;
};
#endif
template <class T>
struct VectorOf<T, 1> {
  using Type = T;
};
/// Of one lane: a number.
template <class T, int lanes>
using Vector = typename VectorOf<T, lanes>::Type;

template <class Vec>
SARNUM_INLINE Vec read(const void* from) {
  Vec value;
  std::memcpy(&value, from, sizeof value);
  return value;
}

template <class Vec>
SARNUM_INLINE void write(void* to, Vec value) {
  std::memcpy(to, &value, sizeof value);
}

template <class To, class From>
SARNUM_INLINE To convert(From value) {
  if constexpr (sizeof(To) <= sizeof(double) && sizeof(From) <= sizeof(double)) {
    return static_cast<To>(value);
  } else {
#if defined(__AVX512F__) && !defined(__clang__)
    // g++ 12 widens this one half by half.
    if constexpr (sizeof(From) == 32 && sizeof(To) == 64) {
      return reinterpret_cast<To>(_mm512_maskz_cvtps_pd(0xff, reinterpret_cast<__m256>(value)));
    }
#endif
#if !defined(SARNUM_PLAIN_FORMS)
    return __builtin_convertvector(value, To);
#endif
  }
}

constexpr int log2_of(int power) {
  return power == 1 ? 0 : 1 + log2_of(power / 2);
}

template <int value>
struct Constant {
  constexpr operator int() const { return value; }
};

/// body(Constant<0>), …, body(Constant<count − 1>): arrays indexed by these stay in registers.
template <int count, class Body>
SARNUM_INLINE void unrolled(const Body& body) {
  if constexpr (count > 0) {
    unrolled<count - 1>(body);
    body(Constant<count - 1>{});
  }
}

}  // namespace
}  // namespace sarnum
