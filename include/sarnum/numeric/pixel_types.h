/// @file
/// Pixel type codes of the suite's rasters, and conversion of raw pixels to double.
#ifndef SARNUM_NUMERIC_PIXEL_TYPES_H
#define SARNUM_NUMERIC_PIXEL_TYPES_H

#include "sarnum/export.h"

/// Pixel type codes ("TypeData"). A complex pixel is two elements side by side, real part
/// first; pixels follow one another without padding. Codes 1 … 8 are real, 9 … 16 complex;
/// the floating complex types come before the integer ones.
enum : int {
  TD_UINT8 = 1,             ///< 1 byte
  TD_INT8 = 2,              ///< 1 byte
  TD_UINT16 = 3,            ///< 2 bytes
  TD_INT16 = 4,             ///< 2 bytes
  TD_UINT32 = 5,            ///< 4 bytes
  TD_INT32 = 6,             ///< 4 bytes
  TD_FLOAT32 = 7,           ///< 4 bytes, IEEE single
  TD_FLOAT64 = 8,           ///< 8 bytes, IEEE double
  TD_COMPLEX_FLOAT32 = 9,   ///< 8 bytes, the layout of COMPLEX_FLOAT32
  TD_COMPLEX_FLOAT64 = 10,  ///< 16 bytes
  TD_COMPLEX_UINT8 = 11,    ///< 2 bytes
  TD_COMPLEX_INT8 = 12,     ///< 2 bytes
  TD_COMPLEX_UINT16 = 13,   ///< 4 bytes
  TD_COMPLEX_INT16 = 14,    ///< 4 bytes
  TD_COMPLEX_UINT32 = 15,   ///< 8 bytes
  TD_COMPLEX_INT32 = 16     ///< 8 bytes
};

/// One complex sample of two 32-bit floats.
struct COMPLEX_FLOAT32 {
  float re;  ///< real part
  float im;  ///< imaginary part
};

/// Real and imaginary parts of n pixels as doubles. Every value is widened exactly; a real
/// pixel has the imaginary part +0.
///
/// @param src   n pixels of the given type, of any alignment; only read.
/// @param type  a pixel type code; for any other value nothing is written.
/// @param re, im  two distinct arrays of n doubles, neither overlapping src.
/// @param n     pixel count; for n ≤ 0 nothing is read or written.
SARNUM_API void Transform_to_double(void* src, int type, double* re, double* im, int n);

/// Values of n real pixels, or amplitudes of n complex pixels, as doubles.
///
/// A real pixel is widened exactly and keeps its sign. The amplitude is
/// sqrt(re·re + im·im), computed in double: it overflows to infinity, or underflows, where
/// the sum of squares does (components beyond about 1e154 or below 1e-154, possible with
/// TD_COMPLEX_FLOAT64 only).
///
/// @param src   n pixels of the given type, of any alignment; only read.
/// @param type  a pixel type code; for any other value nothing is written.
/// @param out   n doubles, not overlapping src.
/// @param n     pixel count; for n ≤ 0 nothing is read or written.
SARNUM_API void Transform_to_double(void* src, int type, double* out, int n);

#endif
