/// @file
/// CVeryFastFT: two-dimensional transforms inside one block of floats, over rows that overlap.
#ifndef SARNUM_FFT_BLOCK_FFT_H
#define SARNUM_FFT_BLOCK_FFT_H

#include "sarnum/export.h"

/// Runs CFFTClass::FFT_2D and IFFT_2D on a square of size × size complex floats that lies in one
/// contiguous block.
///
/// Mind the layout: row k begins size·k floats into the block although it holds size complex
/// pixels, that is 2·size floats. Each row therefore overlaps the next by half, rows are read
/// through that overlap, and what a later row writes replaces the second half of the one before:
/// the result is not the transform of a dense size × size image (lay row pointers 2·size floats
/// apart and call CFFTClass::FFT_2D for that). Lines are transformed one after another, rows from
/// the top, then columns from the left. A block is size·(size + 1) floats long; nothing beyond is
/// touched.
///
/// Assignment and copying are shallow: both objects then share the row tables of one of them, and
/// only one may be destroyed (the tables that an assignment overwrites are lost). One object serves
/// one call at a time; separate objects are independent.
class SARNUM_API CVeryFastFT {
 public:
  /// Fixes the side of the square, 2^exponent pixels, and allocates the row tables.
  /// @throws std::bad_alloc, as array new does, when the tables cannot be had; so it does for
  ///         exponents outside 0 … 30, whose side no int can hold.
  CVeryFastFT(int exponent);
  /// Shallow: see above.
  /// @{
  CVeryFastFT(const CVeryFastFT&);
  CVeryFastFT& operator=(const CVeryFastFT&);
  /// @}
  ~CVeryFastFT();

  /// Does nothing. @return 1.
  int AllocateDataMemory();
  /// Does nothing.
  void FreeDataMemory();

  /// Forward transform, each row and each column divided by `size`. src and dst are blocks of
  /// size·(size + 1) floats. They may be the same block or overlap: lines are read and written in
  /// the order above. A separate src is only read.
  /// @return 1, also when the work storage of the transform could not be had (dst is then
  ///         untouched).
  int FFT_2D_Rect(float* src, float* dst);

  /// Inverse transform, not scaled; otherwise as FFT_2D_Rect.
  int IFFT_2D_Rect(float* src, float* dst);

  int exponent;            ///< base-2 logarithm of the side
  int size;                ///< the side in pixels
  void** sourceRows;       ///< row table over the last source block; owned
  void** destinationRows;  ///< row table over the last destination block; owned
};

#endif
