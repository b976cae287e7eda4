/// @file
/// Normally distributed noise.
#ifndef SARNUM_FILTERS_NOISE_H
#define SARNUM_FILTERS_NOISE_H

#include "sarnum/export.h"

/// One sample of approximately normal distribution: the sum of twenty uniform ones, with its mean
/// and variance put right (central limit theorem). It lies within ±7.75 standard deviations.
///
/// The uniform ones are rand()/RAND_MAX: the sequence is the C library's, seeded by the program
/// with srand(), and differs from platform to platform. Threads draw from the one sequence of that
/// library, as far as it allows.
/// @param variance  the square of the standard deviation; a negative one gives NaN, 0 the mean.
SARNUM_API double Noise_normal(double mean, double variance);

#endif
