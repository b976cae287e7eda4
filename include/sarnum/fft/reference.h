/// @file
/// The reference transforms: radix-2 complex FFTs in double precision, split layout.
///
/// They need no tables. Length N = 2^m, where m is the base-2 logarithm of the length,
/// never the length itself (CFFTClass::CeilPowerOfTwo gives it). re and im are two
/// distinct arrays of N elements, transformed in place, natural order in and out.
///
/// The method is decimation in time with the twiddle factor of a group taken at its bit-reversed
/// number, one factor for a whole group, followed by a bit-reversal permutation (J. W. Cooley and
/// J. W. Tukey, "An algorithm for the machine calculation of complex Fourier series", Math. Comp.
/// 19, 1965). The rounding error grows as the square root of m.
///
/// m outside 0 … 30 is outside the contract and leaves the arrays untouched. When the
/// storage of the twiddle factors (N/2 pairs) cannot be had, the factors are computed
/// where they are used: slower, the same values. Calls on different arrays may run on
/// any number of threads.
#ifndef SARNUM_FFT_REFERENCE_H
#define SARNUM_FFT_REFERENCE_H

#include "sarnum/export.h"

/// Forward transform, not scaled: X[k] = Σ x[n]·e^(−2πi·k·n/N).
SARNUM_API void fft(double* re, double* im, int m);

/// Inverse transform, not scaled: x[n] = Σ X[k]·e^(+2πi·k·n/N). After fft() it gives N
/// times the input: divide by N where that matters.
///
/// Every butterfly result is rounded to single precision, so that for m ≥ 1 the arrays
/// end with values a float can hold: the result has single, not double, accuracy.
SARNUM_API void ifft(double* re, double* im, int m);

#endif
