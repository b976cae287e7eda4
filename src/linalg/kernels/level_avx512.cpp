// The update for x86-64 CPUs with AVX-512 F, DQ, BW and VL; compiled with its options.
#define SARNUM_LEVEL avx512
#define SARNUM_VECTOR_BYTES 64
#include "linalg/kernels/passes.h"
