// The arithmetic that all values rest on: each operation is rounded once, to its own type, and
// takes place as it is written. The build includes this first in every source.
#pragma once

#include <cfloat>

#if defined(__FAST_MATH__) || defined(_M_FP_FAST) || __FINITE_MATH_ONLY__ + 0 != 0 || \
    defined(__ASSOCIATIVE_MATH__) || defined(__RECIPROCAL_MATH__) || defined(__NO_SIGNED_ZEROS__)
#error "Options such as -ffast-math or /fp:fast change values: build without them."
#endif

#if FLT_EVAL_METHOD != 0
#error "float and double must be computed as such: on 32-bit x86, use -msse2 -mfpmath=sse."
#endif

// Other compilers than these fuse a product and a sum unless they are told not to.
#if defined(_MSC_VER) && !defined(__clang__)
#pragma fp_contract(off)
#endif
