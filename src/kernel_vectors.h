// What the sources of kernels share: vectors of a level's width, and loops that the compiler
// unrolls. For sources that are compiled once per set of instructions: internal linkage only, and
// nothing of the standard library, lest the linker keep such a copy for callers on lesser CPUs.
#pragma once

#if defined(__x86_64__) && (defined(__FMA__) || defined(__AVX512F__))
#include <immintrin.h>
#endif

#define SARNUM_CONCATENATED(a, b) a##b
#define SARNUM_QUOTED(text) #text
#define SARNUM_NAME_OF(level) SARNUM_QUOTED(level)
#if defined(SARNUM_PLAIN_FORMS)
#define SARNUM_INLINE inline
#else
#define SARNUM_INLINE inline __attribute__((always_inline))

namespace sarnum {
namespace {

template <class T, int lanes>
struct VectorOf {
  using Type __attribute__((vector_size(lanes * sizeof(T)))) = T;
};
template <class T, int lanes>
using Vector = typename VectorOf<T, lanes>::Type;

template <class Vec>
SARNUM_INLINE Vec read(const void* from) {
  Vec value;
  __builtin_memcpy(&value, from, sizeof value);
  return value;
}

template <class Vec>
SARNUM_INLINE void write(void* to, Vec value) {
  __builtin_memcpy(to, &value, sizeof value);
}

template <class To, class From>
SARNUM_INLINE To convert(From value) {
#if defined(__AVX512F__) && !defined(__clang__)
  // g++ 12 widens this one half by half.
  if constexpr (sizeof(From) == 32 && sizeof(To) == 64) {
    return reinterpret_cast<To>(_mm512_maskz_cvtps_pd(0xff, reinterpret_cast<__m256>(value)));
  }
#endif
  return __builtin_convertvector(value, To);
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
#endif
