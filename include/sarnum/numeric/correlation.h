/// @file
/// Circular cross-correlation of two sequences at one lag.
///
/// The first sequence is periodic with its length n1: sample j of the second meets sample
/// (j + s) mod n1 of the first. The result is a raw sum: for the normalised correlation of
/// sequences of one length divide by the product of their norms (for the correlation coefficient,
/// take off the means first).
///
/// For the linear correlation append n2 − 1 zeros to the first sequence, pass N = n1 + n2 − 1 as
/// its length, and take the lags of the sequences without the zeros: 1 − n2 ≤ s ≤ n1 − 1. From
/// s = n1 on the sum has wrapped round to lag s − N.
///
/// Lags are accepted where the two overlap in at least one sample without wrapping:
/// 1 − n2 ≤ s ≤ n1 − 1. Any other lag gives 0, indistinguishable from a zero sum. The
/// same goes for n1 < 1 or n2 < 1. Terms are added in ascending j, in double. Nothing is allocated;
/// calls may run on any number of threads.
#ifndef SARNUM_NUMERIC_CORRELATION_H
#define SARNUM_NUMERIC_CORRELATION_H

#include "sarnum/export.h"

/// Real form: Σ a[(j + s) mod n1]·b[j] over j = 0 … n2−1, with its sign.
/// @param a  n1 doubles.
/// @param b  n2 doubles.
SARNUM_API double Correl(double* a, double* b, int n1, int n2, int s);

/// Complex form: the magnitude |Σ z1[(j + s) mod n1]·conj(z2[j])| over j = 0 … n2−1.
/// @param re1, im1  n1 doubles each, the parts of z1.
/// @param re2, im2  n2 doubles each, the parts of z2.
SARNUM_API double Correl(double* re1, double* im1, double* re2, double* im2, int n1, int n2, int s);

#endif
