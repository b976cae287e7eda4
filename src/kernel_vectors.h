// What the sources of kernels share: vectors of a level's width, and loops that the compiler
// unrolls. For sources that are compiled once per set of instructions: internal linkage only, and
// nothing of the standard library, lest the linker keep such a copy for callers on lesser CPUs.
#pragma once

#define SARNUM_CONCATENATED(a, b) a##b
#define SARNUM_QUOTED(text) #text
#define SARNUM_NAME_OF(level) SARNUM_QUOTED(level)
#define SARNUM_INLINE inline __attribute__((always_inline))

namespace sarnum {
namespace {

template <class T, int lanes>
struct VectorOf {
  using Type __attribute__((vector_size(lanes * sizeof(T)))) = T;
};
template <class T, int lanes>
using Vector = typename VectorOf<T, lanes>::Type;

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
