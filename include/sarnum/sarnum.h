/// @file
/// Everything sarnum exports: numerical routines for radar (SAR) imagery.
///
/// Names are global, as the suite's applications know them. **Do not define a function with the
/// name and parameters of one declared here**: a `double Mean(double*, int)` in one source file of
/// a program replaces the library's for every other file of that program, and neither the compiler
/// nor the linker reports it. Declare such a function `static` or in a namespace. (The library's
/// own calls are not affected.)
///
/// Unless a declaration says otherwise, a routine
/// - runs to completion on the caller's thread and keeps no state, so that calls on
///   different data may run at the same time;
/// - does not check its arguments: each declaration says what bad input gives;
/// - never prints, throws or ends the process;
/// - computes in the stated order on every CPU, and fuses no operation with another. Sines,
///   logarithms and the like, and twiddle factors, are the nearest to the exact ones, the same on
///   every system. Only Noise_normal() depends on the C library, by rand().
#ifndef SARNUM_SARNUM_H
#define SARNUM_SARNUM_H

#include "sarnum/build_info.h"
#include "sarnum/fft/block_fft.h"
#include "sarnum/fft/fft_object.h"
#include "sarnum/fft/reference.h"
#include "sarnum/fft/single_precision.h"
#include "sarnum/fft/table_driven.h"
#include "sarnum/fft/tables.h"
#include "sarnum/filters/noise.h"
#include "sarnum/filters/peak_band.h"
#include "sarnum/filters/shift.h"
#include "sarnum/imaging/noncoherent_accumulation.h"
#include "sarnum/linalg/interpolation.h"
#include "sarnum/linalg/least_squares.h"
#include "sarnum/linalg/linear_systems.h"
#include "sarnum/linalg/products.h"
#include "sarnum/numeric/correlation.h"
#include "sarnum/numeric/pixel_types.h"
#include "sarnum/numeric/scalar.h"
#include "sarnum/numeric/statistics.h"
#include "sarnum/numeric/vectors.h"
#include "sarnum/numeric/windows.h"

#endif
