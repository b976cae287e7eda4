// The kernels for every CPU of the architecture.
#define SARNUM_LEVEL baseline
#define SARNUM_VECTOR_BYTES 16
#include "elementary/kernels/twiddle_passes.h"
