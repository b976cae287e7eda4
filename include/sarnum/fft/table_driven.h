/// @file
/// Table-driven transforms: the same radix-2 complex FFTs without any trigonometric call.
///
/// They take bit reversals, twiddle factors and exchanges from the process-wide tables
/// (tables.h), so init_ibitr(m) comes first, with the m of the transforms: the tables serve one
/// length, N = 2^m, at a time. Data are transformed in place, natural order in and out.
///
/// Forward forms do not scale; all inverse forms divide by N, so that a forward transform followed
/// by its inverse returns the input. fft_Fast(double*, double*, int) gives the values of
/// fft(double*, double*, int), element for element. The inverse forms differ from the reference
/// ifft(double*, double*, int), which neither divides nor keeps double precision.
///
/// Without tables, or with the tables of another length, a call is outside the contract: it
/// returns without touching the data.
///
/// Any number of these transforms may run at the same time on different arrays, but none during
/// an init_ibitr() or delete_ibitr().
#ifndef SARNUM_FFT_TABLE_DRIVEN_H
#define SARNUM_FFT_TABLE_DRIVEN_H

#include "sarnum/export.h"

/// Forward transform in double precision. re and im are two distinct arrays of N doubles.
SARNUM_API void fft_Fast(double* re, double* im, int m);

/// Inverse transform in double precision throughout, divided by N.
SARNUM_API void ifft_Fast(double* re, double* im, int m);

/// Forward transform in single precision, with the twiddle factors of the double tables rounded
/// to float. re and im are two distinct arrays of N floats.
SARNUM_API void fft_Fast(float* const re, float* const im, int m);

/// Inverse transform in single precision, divided by N.
SARNUM_API void ifft_Fast(float* const re, float* const im, int m);

/// Forward transform in single precision of an interleaved array: 2·N floats, the real part of
/// element k at 2k, its imaginary part at 2k + 1. The values of the split form.
SARNUM_API void fft_Fast(float* const data, int m);

/// Inverse transform in single precision of an interleaved array, divided by N.
SARNUM_API void ifft_Fast(float* const data, int m);

#endif
