/// @file
/// Single-precision transforms: radix-2 complex FFTs on float arrays, split or interleaved.
///
/// Method, length (N = 2^m, 2^0 … 2^30), order and bounds are those of the reference transforms in
/// reference.h. Everything is computed in float, the angles of the twiddle factors included, so
/// the CFFTClass members of the same layout, which compute in double, are more accurate: by a
/// factor of 1.2 for N = 4, which grows to 4 for N = 2^18. A split pair and the equivalent
/// interleaved array give the same values.
///
/// The forward forms do not scale; unlike ifft(double*, double*, int), the inverse forms divide
/// by N: a forward transform followed by an inverse one returns the input.
///
/// m outside 0 … 30 is outside the contract and leaves the data untouched. When the storage of the
/// twiddle factors (N/2 pairs) cannot be had, the factors are computed where they are used:
/// slower, the same values. Calls on different arrays may run on any number of threads.
#ifndef SARNUM_FFT_SINGLE_PRECISION_H
#define SARNUM_FFT_SINGLE_PRECISION_H

#include "sarnum/export.h"

/// Forward transform of a split pair, not scaled. re and im are two distinct arrays of N floats.
SARNUM_API void fft(float* const re, float* const im, int m);

/// Inverse transform of a split pair, divided by N.
SARNUM_API void ifft(float* const re, float* const im, int m);

/// Forward transform of an interleaved array, not scaled. data holds 2·N floats: the real part of
/// element k at 2k, its imaginary part at 2k + 1.
SARNUM_API void fft(float* const data, int m);

/// Inverse transform of an interleaved array, divided by N.
SARNUM_API void ifft(float* const data, int m);

#endif
