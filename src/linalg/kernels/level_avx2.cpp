// The update for x86-64 CPUs with AVX2; compiled with its options.
#define SARNUM_LEVEL avx2
#define SARNUM_VECTOR_BYTES 32
#include "linalg/kernels/passes.h"
