// Multiples of rows added to other rows: the work that eliminations, substitutions and products
// spend their time on, compiled for each set of instructions from one source (passes.h).
//
// Every element receives its terms one after another, a multiplication and an addition each, in
// the order of the source rows: the values are those of the plain loops.
#pragma once

#include <cstddef>

namespace sarnum {

/// Row r begins at first + r·stride; the stride may be negative.
struct Rows {
  double* first;
  std::ptrdiff_t stride;
};

/// targets[r] += Σ factor(r, k)·sources[k], k ascending, over some columns. No source is a target.
///
/// With a triangle the sources are first finished in place: one after another, source k is divided
/// by divisors[k], if there are any, and then added to the sources after it by factors of its own.
struct Update {
  Rows sources;
  std::size_t depth;  ///< their number, at most largest_depth
  Rows targets;
  std::size_t rows;
  std::size_t columns;
  const double* factors;   ///< of the targets, packed in tiles
  const double* triangle;  ///< of the sources, packed likewise; or null
  const double* divisors;  ///< or null
};

constexpr std::size_t largest_depth = 256;

/// Factors are packed in tiles of as many rows: factor (r, k) of `depth` is number
/// (r / tile_rows · depth + k)·tile_rows + r % tile_rows. Copies of the last row's fill up the last
/// tile, as rows of the update are filled up: neither raises exceptions that no row of its own
/// does.
constexpr std::size_t tile_rows = 8;

/// The update as one set of instructions does it; null for the scalar one, where the plain loops
/// of the callers do all the work.
struct UpdateLevel {
  const char* name;
  void (*update)(const Update&);
};

template <class Table>
class Levels;

/// Those that this CPU runs; see instruction_set.h.
extern Levels<UpdateLevel> update_levels;

/// The one that linear algebra uses.
const UpdateLevel& update_level_in_use();

}  // namespace sarnum
