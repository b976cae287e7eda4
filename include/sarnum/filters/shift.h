/// @file
/// Circular shift of a complex signal, typically to bring frequency zero of a spectrum to the
/// middle and back.
///
/// A positive shift moves samples to higher indices, new[i + shift] = old[i], and the last `shift`
/// samples come first; a negative one moves them to lower indices. Shift by n/2 for the middle;
/// for an odd n, go back by −(n/2). The shift is not reduced: for |shift| > n, as for n ≤ 0,
/// nothing is done. Nothing is allocated; calls on different arrays may run on any number of
/// threads.
#ifndef SARNUM_FILTERS_SHIFT_H
#define SARNUM_FILTERS_SHIFT_H

#include "sarnum/export.h"
#include "sarnum/numeric/pixel_types.h"

/// Shifts two arrays of n doubles, the parts of a signal, in place and alike.
SARNUM_API void ShiftData(double* re, double* im, int n, int shift);

/// Shifts n samples in place.
SARNUM_API void ShiftData(COMPLEX_FLOAT32* data, int n, int shift);

#endif
