/// @file
/// Spectral filters that keep, or remove, the band round the strongest bin of a complex signal,
/// wherever that bin lies: neither is a high-pass or a low-pass in the usual sense.
///
/// Both copy the n samples into N = Add_to_Power_of_2(n) zero-padded ones, transform them by fft(),
/// find the peak band among the N bins, set bins to zero, transform back by ifft() and resample
/// the N results onto the n samples by Scale(). Mind three things:
/// - **Nothing divides by the length**: what passes comes back multiplied by the length of the
///   transform. ifft() also rounds to single precision.
/// - **The result is stretched, not cut**: output k is the result at k·(N−1)/(n−1), also over the
///   padding. Only where N = n (a power of two from 2 to 2^28, or 2^30) do samples stay in place. A
///   single sample gets the first of two results.
/// - **The band**: from the strongest bin p (the first of equal ones), bins to its left and to its
///   right, circularly, belong to it while their magnitude is above the mean magnitude; the bound
///   of a side is the last bin that was. A side whose very first bin is not above the mean has
///   **bound 0**, not p. A band that lies across the end of the spectrum (upper < lower) wraps. So
///   a pure tone in bin p ≠ 0 has the band 0 … 0: FilterHighSp removes it, and FilterLowSp keeps
///   it. A flat spectrum, an impulse's, has the band 0 … 0 too. To keep a single bin, zero the
///   others of fft() yourself.
///
/// For n ≤ 0 or n > 2^30, and when storage (3·N doubles) cannot be had, nothing is changed. Calls
/// on different arrays may run on any number of threads.
#ifndef SARNUM_FILTERS_PEAK_BAND_H
#define SARNUM_FILTERS_PEAK_BAND_H

#include "sarnum/export.h"

/// Keeps the peak band and sets all other bins to zero.
///
/// @param re, im  n samples each, filtered in place; two distinct arrays.
SARNUM_API void FilterHighSp(double* re, double* im, int n);

/// Sets the peak band to zero and keeps all other bins; tells mean and standard deviation of what
/// remains.
///
/// The exponent of its transforms is trunc(log2(n)), of the length before padding: where n is no
/// power of two they cover the first 2^exponent samples alone, and the rest of the N "bins" are
/// samples as they came. For a spectral filter in the usual sense, pad to a power of two first.
///
/// @param re, im  n samples each, filtered in place; two distinct arrays.
/// @param meanRe, meanIm    means of the N results before they are resampled.
/// @param sigmaRe, sigmaIm  standard deviations of the same, sqrt(Σ (x − mean)²/N). The four
///                          outputs are distinct.
SARNUM_API void FilterLowSp(double* re, double* im, int n, double* meanRe, double* meanIm,
                            double* sigmaRe, double* sigmaIm);

#endif
