// The kernels for x86-64 CPUs with AVX2 and FMA; compiled with its options.
#define SARNUM_LEVEL avx2
#define SARNUM_VECTOR_BYTES 32
#include "elementary/kernels/twiddle_passes.h"
