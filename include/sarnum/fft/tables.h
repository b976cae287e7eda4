/// @file
/// The process-wide tables of the table-driven transforms, and bit reversal.
///
/// There is one set of tables per process: it describes the transform length of the
/// last init_ibitr() and stays until delete_ibitr(). The set is not guarded: the
/// caller keeps init_ibitr() and delete_ibitr() apart from each other and from every
/// table-driven transform. The other transforms do not use it.
///
/// Nothing else releases the tables. While the process ends, threads and the destructors of global
/// objects can still use them. Call delete_ibitr() before you unload the library (dlclose,
/// FreeLibrary): otherwise the storage of the tables stays allocated, and nothing can release it.
#ifndef SARNUM_FFT_TABLES_H
#define SARNUM_FFT_TABLES_H

#include "sarnum/export.h"

/// The low `bits` bits of x in reverse order: bit 0 of x becomes bit bits − 1 of the
/// result. ibitr(6, 3) is 3, ibitr(x, 0) is 0.
///
/// A bit count outside 0 … 31 is outside the contract. It ends and gives what the
/// stated loop (shift the result left, append the low bit of x, shift x right
/// arithmetically) leaves in 32 bits, a negative count taken as unsigned.
SARNUM_API int ibitr(int x, int bits);

/// Builds the tables for transforms of length N = 2^m: bit reversals of 0 … N, the
/// cosines and sines of 2π·i/N for i below N/2 (the nearest doubles to those of the angle
/// rounded to double), and the list of index pairs that the
/// final permutation of a transform exchanges.
///
/// Arrays are allocated anew only for an m larger than any before it; a smaller m
/// rewrites the existing ones, and the tables then serve that m alone. (After
/// delete_ibitr() an array may have been allocated for less than a later m that is
/// still below the largest: that array is allocated anew too.)
///
/// @param m  base-2 logarithm of the length, 0 … 30. Any other m is refused with
///           result 1 and changes nothing.
/// @return 0 on success; 1, 2, 3 or 4 when the storage of the bit reversals, the
///         cosines, the sines or the pair list, in that order, could not be had. What
///         was allocated before stays for a later call with the same m; until one succeeds the
///         tables serve no length, and the table-driven transforms do nothing.
/// Not to be called while another thread builds, releases or uses the tables.
SARNUM_API int init_ibitr(int m);

/// Releases the tables. The largest m ever requested is remembered.
/// Not to be called while another thread builds or uses them.
SARNUM_API void delete_ibitr();

#endif
