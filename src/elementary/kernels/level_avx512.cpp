// The kernels for x86-64 CPUs with AVX-512 F, DQ, BW and VL; compiled with its options.
#define SARNUM_LEVEL avx512
#define SARNUM_VECTOR_BYTES 64
#include "elementary/kernels/twiddle_passes.h"
