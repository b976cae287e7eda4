/// @file
/// CFFTClass: one-dimensional transforms of split arrays and two-dimensional transforms
/// of whole rasters.
#ifndef SARNUM_FFT_FFT_OBJECT_H
#define SARNUM_FFT_FFT_OBJECT_H

#include "sarnum/export.h"
#include "sarnum/host/host.h"

/// Fourier transforms as members of an object that holds no data: one object, or many,
/// may serve any number of transforms and threads at once. Objects can be deleted through
/// a pointer to this class.
///
/// The one-dimensional members have the method, the layout and the bounds of the
/// reference transforms in reference.h (length N = 2^m, in place, natural order; m outside
/// 0 … 30 leaves the arrays untouched). None divides by N.
class SARNUM_API CFFTClass {
 public:
  CFFTClass();
  /// There is nothing to copy.
  /// @{
  CFFTClass(const CFFTClass&);
  CFFTClass& operator=(const CFFTClass&);
  /// @}
  virtual ~CFFTClass();

  /// Forward transform, not scaled. Computes in double precision and rounds each stored
  /// butterfly result to float.
  void fft(float* const re, float* const im, int m);

  /// Inverse transform, not scaled: the output is N times the true inverse. Computes in
  /// double precision and rounds each stored butterfly result to float.
  void ifft(float* const re, float* const im, int m);

  /// Forward transform, not scaled, in double precision.
  void fft(double* const re, double* const im, int m);

  /// Inverse transform, not scaled. Like the free ifft(double*, double*, int) it rounds
  /// every butterfly result to single precision.
  void ifft(double* const re, double* const im, int m);

  /// Forward transform, not scaled, with frequency zero in the middle when `centre` is 1: element i
  /// is multiplied by (−1)^i first, and output index k holds frequency k − N/2. Any other value
  /// of `centre` gives fft(). There is no inverse counterpart.
  /// The float form rounds each stored butterfly result to float, as fft() does.
  void fft_new(float* const re, float* const im, int m, int centre);

  /// The same in double precision.
  void fft_new(double* const re, double* const im, int m, int centre);

  /// Frequency-domain synthesis: transforms the line, replaces its spectrum X by conj(X)·H over the
  /// first n samples, and transforms back, all in the line's own arrays.
  ///
  /// Mind that the spectrum of the line is conjugated, not the reference: with H = 1 the output is
  /// N·conj(x[(N − j) mod N]). To compress a line x with a replica r (correlate x with r), let H be
  /// the spectrum of r: the compressed line is y[j] = conj(output[(N − j) mod N]) / N. Nothing is
  /// divided by N here. Samples n … N − 1 of the spectrum are not multiplied and keep their values.
  ///
  /// @param refRe, refIm  the spectrum H, at least n samples; only read.
  /// @param re, im  the line, N = 2^m samples; overwritten. Transformed by the float members fft()
  ///                and ifft(); the product is formed in single precision.
  /// @param n       samples to multiply; none for n ≤ 0, and N for more than N.
  /// @param m       0 … 30; otherwise the line is left untouched.
  void SyntAlmaz(float* refRe, float* refIm, float* re, float* im, int n, int m);

  /// The smallest m with 2^m ≥ n, as far as the rounding of ceil(log(n) / log(2)) in
  /// double precision allows: the exponent, not the power. The formula's value stands also
  /// where the quotient rounds above an integer: for n = 2^29 it is 30.
  /// @return −2147483648 for n ≤ 0.
  int CeilPowerOfTwo(int n);

  /// Forward two-dimensional transform of a raster of any pixel type, padded with zeros to
  /// N1 = 2^CeilPowerOfTwo(width) columns and N2 = 2^CeilPowerOfTwo(height) rows, divided
  /// by N1·N2. Rows are transformed before columns; each pass divides by its own length.
  ///
  /// @param src  `height` pointers to rows of `width` pixels of type TypeData; only read.
  /// @param dst  N2 pointers to rows with room for N1 complex pixels, real part first:
  ///             doubles (TD_COMPLEX_FLOAT64) for TD_FLOAT64 and TD_COMPLEX_FLOAT64, floats
  ///             (TD_COMPLEX_FLOAT32) for every other type. All N2 rows are written.
  /// @param TypeData  pixel type of src, TD_UINT8 … TD_COMPLEX_INT32. Integers become
  ///             floats. TD_COMPLEX_UINT8, TD_COMPLEX_UINT16, TD_COMPLEX_UINT32 and codes
  ///             outside 1 … 16 have no row pass: src is not read, and the columns of the
  ///             complex floats that dst already holds are transformed.
  /// @param meter  told of the progress, or null. It gets SetRange(0, N1 + N2), SetStep(1),
  ///             SetText(resource string 700 + "...") and one StepIt() per row (padding rows
  ///             included, none without a row pass) and per column. Up to 32 columns are
  ///             transformed together, and their steps follow in a burst: at a step, and after a
  ///             meter threw, dst can be up to 31 columns further than the steps say.
  ///
  /// Rows need not be adjacent or aligned. Rows of dst may overlap each other or be rows of
  /// src: the result is that of row after row (load, transform, store, then the next),
  /// then column after column.
  /// @return 1. When the work storage (two arrays as long as the longer side) cannot be had,
  ///         or a size is below 1 or its exponent above 30 (outside the contract): 0, with
  ///         dst and the meter untouched.
  int FFT_2D(void** src, void** dst, int width, int height, int TypeData, CMeterInfo* meter);

  /// FFT_2D with fft_new() as the transform of every row and column: with `centre` = 1 frequency
  /// zero comes out at pixel N1/2 of row N2/2, with any other value where FFT_2D has it. Everything
  /// else, the calls of the meter included, is as in FFT_2D.
  /// @return always 1, also where FFT_2D gives 0 and dst is untouched.
  int FFT_2D_NEW(void** src, void** dst, int width, int height, int TypeData, int centre,
                 CMeterInfo* meter);

  /// Inverse two-dimensional transform of a complex raster, not scaled: it brings a spectrum
  /// of FFT_2D back to the padded raster.
  ///
  /// @param src  `height` pointers to rows of `width` complex pixels; only read.
  /// @param dst  as many rows of the same type. Rows may overlap or be rows of src, as in
  ///             FFT_2D.
  /// @param width, height  powers of two.
  /// @param TypeData  TD_COMPLEX_FLOAT32 or TD_COMPLEX_FLOAT64. With the latter every
  ///             butterfly result is rounded to single precision, as in ifft().
  /// @param meter  as in FFT_2D, with resource string 701.
  /// @return 0 when a size is not a power of two (nothing is done, the meter is not called)
  ///         or when the work storage cannot be had (dst is untouched; the meter has its
  ///         range, step and text); otherwise 1. Also 1 for any other TypeData, with dst
  ///         untouched and the meter given its range, step and text but no steps.
  int IFFT_2D(void** src, void** dst, int width, int height, int TypeData, CMeterInfo* meter);
};

#endif
