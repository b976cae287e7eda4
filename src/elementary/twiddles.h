// Cosines and sines of the angles of transforms, each the nearest to the exact one: the same on
// every CPU, by every compiler, whichever way an angle is reached.
//
// Angle r of a transform of length N = 2^m is 2π·r/N in this order of operations, each rounded: in
// double, or in float for twiddles in float. What is asked for is the cosine and the sine of that
// rounded angle.
#pragma once

#include <cstddef>

namespace sarnum {

/// e^(−ix) of a forward transform is c − i·s.
template <class Real>
struct Twiddle {
  Real c;
  Real s;
};

/// The twiddle of angle r < N/2, for 1 ≤ m ≤ 30: slow, and needs no storage.
template <class Real>
Twiddle<Real> twiddle_at(int m, std::size_t r);

/// One level of instructions; see instruction_set.h.
struct TwiddleLevel {
  const char* name;

  /// The N/2 twiddles of a length in the order that LaneOrder in fft/twiddles.h states for vectors
  /// of 2^v lanes, v ≤ 4: N entries.
  void (*double_lanes)(double* table, int m, int v);
  void (*float_lanes)(float* table, int m, int v);
  /// Those of angles in double, rounded to float.
  void (*rounded_lanes)(float* table, int m, int v);

  /// The N/2 twiddles in the order of their angles.
  void (*in_order)(double* cosine, double* sine, int m);
};

template <class Table>
class Levels;

extern Levels<TwiddleLevel> twiddle_levels;

/// The one that is used.
const TwiddleLevel& twiddle_level_in_use();

}  // namespace sarnum
