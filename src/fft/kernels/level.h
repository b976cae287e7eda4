// The levels of machine instructions that the fast forms of the transforms are compiled for.
//
// Every level is compiled from the same source (passes.h) and gives the values of the plain forms
// in radix2.h; what differs is the number of lanes of a vector. The scalar level has no kernels:
// there the plain forms do all the work.
#pragma once

#include <cstddef>

namespace sarnum {

/// Twiddles as the kernels read them: see LaneOrder in twiddles.h for the order of `lanes`.
template <class Real>
struct KernelTwiddles {
  const Real* lanes;         ///< all twiddles, in vectors of cosines and vectors of sines
  const Real* groups;        ///< cosine of group 0; that of group g is g·group_stride further on
  std::size_t group_stride;  ///< in Reals
  std::size_t sine_offset;   ///< from the cosine of a group to its sine
};

/// Some columns of a raster of interleaved pixels: those that follow the byte `offset` of each row.
struct ColumnBlock {
  void* const* rows;  ///< 2^m of them
  int m;
  std::size_t offset;
  std::size_t next_offset;  ///< of the block to fetch meanwhile: rows are too far apart for a CPU
                            ///< to see it coming
  int columns_exponent;     ///< 2^columns_exponent columns, no fewer than lanes
  void* storage;            ///< room for as many pixels
  bool centred;             ///< odd rows change their sign before the transform
  bool inverse;
};

/// The transforms of rasters of elements of type Stored, computed in Real. Each result is
/// multiplied by `scale`.
template <class Stored, class Real>
struct RasterKernels {
  using Computed = Real;

  /// A split line of m ≥ least_kernel_exponent whose results go to interleaved pixels elsewhere.
  void (*row)(Stored* re, Stored* im, bool inverse, void* to, int m, const KernelTwiddles<Real>&,
              Stored scale);
  /// Columns in place, m ≥ least_column_exponent. The groups of all stages are needed.
  void (*columns)(const ColumnBlock&, const KernelTwiddles<Real>&, Stored scale);
};

/// One level. The transforms of lines, of 2^m elements with m ≥ least_kernel_exponent, are forward
/// ones where they are not told otherwise; each result is multiplied by `scale` at the end. An
/// inverse transform is a forward one with the real and the imaginary parts in each other's place.
struct Level {
  template <class Real>
  using Split = void (*)(Real* re, Real* im, int m, const KernelTwiddles<Real>&, Real scale);
  template <class Real>
  using Interleaved = void (*)(Real* data, bool inverse, int m, const KernelTwiddles<Real>&,
                               Real scale);

  const char* name;
  int vector_bytes;  ///< 0: there are no kernels

  /// Everything in double, everything in float.
  Split<double> double_split;
  Split<float> float_split;
  Interleaved<double> double_interleaved;
  Interleaved<float> float_interleaved;
  RasterKernels<double, double> double_raster;
  RasterKernels<float, float> float_raster;
  /// Computed in double, each butterfly result rounded to float.
  Split<double> double_rounded;
  void (*float_rounded)(float* re, float* im, int m, const KernelTwiddles<double>&, float scale);
  RasterKernels<double, double> double_rounded_raster;
  RasterKernels<float, double> float_rounded_raster;
};

constexpr int least_kernel_exponent = 4;
constexpr int least_column_exponent = 2;

/// The base-2 logarithm of the lanes that the kernels of a level use for a length 2^m, when they
/// compute in Real; 0 when there is no kernel.
template <class Real>
int lane_exponent(const Level& level, int m) {
  int exponent = 0;
  if (m >= least_kernel_exponent) {
    while ((sizeof(Real) << (exponent + 1)) <= static_cast<std::size_t>(level.vector_bytes) &&
           2 * (exponent + 1) <= m) {
      ++exponent;
    }
  }
  return exponent;
}

template <class Table>
class Levels;

/// Those that this CPU runs; see instruction_set.h.
extern Levels<Level> levels;

/// The one that transforms use.
const Level& level_in_use();

}  // namespace sarnum
