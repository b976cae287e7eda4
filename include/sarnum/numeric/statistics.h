/// @file
/// Extremes, sum and mean of an array of n doubles, and linear resampling.
///
/// The first of equal extremes wins, zeros of different sign being equal. A NaN never replaces
/// another element, so that NaNs are passed over; but a NaN in a[0] stays the value of the
/// extreme, at position 0. For n ≤ 0 a value is 0 and a position 0, and nothing is read. No
/// function allocates; all may run on any number of threads with disjoint outputs.
#ifndef SARNUM_NUMERIC_STATISTICS_H
#define SARNUM_NUMERIC_STATISTICS_H

#include "sarnum/export.h"

/// The smallest element.
SARNUM_API double Min_mass(double* a, int n);

/// The largest element.
SARNUM_API double Max_mass(double* a, int n);

/// The element of smallest absolute value, with its sign.
SARNUM_API double Min_mass_ABS(double* a, int n);

/// The element of largest absolute value, with its sign.
SARNUM_API double Max_mass_ABS(double* a, int n);

/// n − 1, or 0 for n < 2, whatever the elements: not the position of the smallest one. For that,
/// call Max_mass_index on the negated array.
SARNUM_API int Min_mass_index(double* a, int n);

/// Position of the first largest element.
SARNUM_API int Max_mass_index(double* a, int n);

/// Position of the first element of smallest absolute value.
SARNUM_API int Min_mass_ABS_index(double* a, int n);

/// Position of the first element of largest absolute value.
SARNUM_API int Max_mass_ABS_index(double* a, int n);

/// a[0] + a[1] + … + a[n−1], one addition after another from 0, in double.
SARNUM_API double Sum_mass(double* a, int n);

/// Sum_mass(a, n)/n: NaN for n = 0, −0 for a negative n.
SARNUM_API double Mean(double* a, int n);

/// Resamples nIn samples to nOut by linear interpolation: the first output is in[0], the last
/// output falls on in[nIn−1] (to rounding), those between at even distances.
///
/// With step = (nIn−1)/(nOut−1), x = j·step and k = trunc(x),
/// out[j] = (in[k+1] − in[k])·(x − k) + in[k].
/// - **in[nIn] is read** for the last output, with the weight zero or, where j·step rounds above
///   nIn−1, a little more: the array must be readable one element beyond its last sample. Make
///   that element 0 or repeat the last sample; where it is not finite, neither is the output.
/// - An output between two samples whose difference is not finite is not finite either. The first
///   output is then NaN, even if in[0] is finite.
/// - Fewer outputs than inputs are no averages: samples between the points are passed over.
///   Filter first where aliasing matters.
/// - A single output has no step: nOut 1, or 0, which counts as 1, writes in[0] to out[0]. A
///   negative nOut, or nIn < 1, writes nothing.
///
/// @param in   nIn + 1 readable doubles; distinct from out.
/// @param out  nOut doubles.
SARNUM_API void Scale(double* in, double* out, int nIn, int nOut);

#endif
