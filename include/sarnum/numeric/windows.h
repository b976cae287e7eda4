/// @file
/// Weighting windows, one sample at a time: the weight of sample i of n. Fill an array by a loop
/// over i. All are pure: they may be called from any thread.
///
/// The three do not agree in phase or scale, so look before you exchange one for another:
///
/// | window | i = 0 | i = n/2 | i = n |
/// |---|---|---|---|
/// | `Hanning` | 0 | 2 | 0 |
/// | `Hamming` | 1 | 2·alpha − 1 | 1 |
/// | `Kaiser` | 1/I0(beta) | 1 | 1/I0(beta) |
///
/// Source: F. J. Harris, "On the use of windows for harmonic analysis with the discrete Fourier
/// transform", Proc. IEEE 66, 1978, gives the usual forms.
#ifndef SARNUM_NUMERIC_WINDOWS_H
#define SARNUM_NUMERIC_WINDOWS_H

#include "sarnum/export.h"

/// 1 − cos(2π·i/n): twice the usual Hanning (von Hann) window. Multiply by 0.5 for that.
/// @return NaN for n = 0.
SARNUM_API double Hanning(int i, int n);

/// alpha + (1 − alpha)·cos(2π·i/n): the usual Hamming window shifted by half its length, largest
/// at its ends. 2·alpha − Hamming(alpha, i, n) is the usual one.
/// @param alpha  0.54 for the Hamming window.
/// @return NaN for n = 0.
SARNUM_API double Hamming(double alpha, int i, int n);

/// I0(beta·sqrt(1 − t²))/I0(beta), with t = (i − n/2)/(n/2): the Kaiser window, centred at n/2.
///
/// n is its full width: over i = 0 … n−1 it lacks its last sample, as suits a transform of n
/// samples. For a symmetric window of L weights take n = L − 1.
/// @param beta  0 (a rectangle) to 69.2; above that I0 is NaN here, and so is the weight.
/// @return NaN for i outside 0 … n and for n = 0.
SARNUM_API double Kaiser(double beta, int i, int n);

/// I0(x), the modified Bessel function of the first kind of order zero, by its power series
/// Σ (x²/4)^k/(k!)² (M. Abramowitz and I. A. Stegun, Handbook of Mathematical Functions, 9.6.12).
///
/// It ends with the first term not above 1e-8, an absolute bound: for small x about 8 decimals are
/// right, for x from about 15 on nearly all digits. Even: I0(−x) = I0(x).
/// @return NaN for NaN, and for |x| from 69.3 on, where powers and factorials overflow before their
///         quotients have become small.
SARNUM_API double Bessel_NULL(double x);

#endif
