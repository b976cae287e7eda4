// Transforms of many lines by a plan, wherever their samples lie.
#pragma once

#include <cstddef>

#include "fft/plan.h"
#include "parallel.h"

namespace sarnum {

/// Lines of complex samples. Sample j of line k is at j·stride + k·distance, in samples.
template <class Real>
struct Lines {
  Real* re;
  Real* im;  ///< null: interleaved in re
  std::size_t count;
  std::ptrdiff_t stride;
  std::ptrdiff_t distance;
};

/// One line whose samples adjoin each other.
template <class Real>
void transform_line(const Plan<Real>& plan, Direction direction, Scaling scaling, Real* re,
                    Real* im);

// Progress gets 0 units when the storage is there, then one for each line.

template <class Real>
Outcome transform_lines(const Plan<Real>& plan, Direction direction, Scaling scaling,
                        const Lines<Real>& lines, const Run& run);

/// Replaces each line by its circular correlation with a reference of at most the plan's length.
/// @param im  null: interleaved in re
template <class Real>
Outcome compress_lines(const Plan<Real>& plan, const Real* reference_re, const Real* reference_im,
                       std::size_t reference_count, const Lines<Real>& lines, const Run& run);

}  // namespace sarnum
