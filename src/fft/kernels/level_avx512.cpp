#define SARNUM_LEVEL avx512
#define SARNUM_VECTOR_BYTES 64
#include "fft/kernels/passes.h"
