#define SARNUM_LEVEL avx2
#define SARNUM_VECTOR_BYTES 32
#include "linalg/kernels/passes.h"
