#define SARNUM_LEVEL avx512
#define SARNUM_VECTOR_BYTES 64
#include "linalg/kernels/passes.h"
