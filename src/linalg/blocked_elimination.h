// Elimination by blocks of columns: the values of eliminate_plainly, from far fewer passes over
// the matrix.
//
// A panel of the next columns is eliminated by itself, in the plain way, in a copy whose rows carry
// along the multiples they were given and their numbers. The other columns then go through the
// same exchanges, and receive all steps of the panel at once, each element in their order.
#pragma once

#include <cstddef>

#include "linalg/elimination.h"
#include "linalg/work_storage.h"

namespace sarnum {

class BlockedElimination {
 public:
  static constexpr std::size_t panel_columns = 32;

  /// Whether so many rows are better done by blocks.
  static bool pays(std::size_t rows);

  /// Of a matrix whose first `rows` columns are to be eliminated.
  BlockedElimination(double* a, std::size_t stride, std::size_t rows);

  bool has_storage() { return storage_.get() != nullptr; }

  /// Eliminates the next panel. On false nothing was done: a zero pivot was to stop it.
  bool factor_panel(ZeroPivot zero_pivot);

  /// Exchanges rows as the last panel did, in columns begin … end − 1. Once after each panel.
  void exchange_rows(std::size_t begin, std::size_t end);

  /// Does the steps of the last panel in columns begin … end − 1.
  void update(std::size_t begin, std::size_t end);

  /// After the last panel, makes columns begin … end − 1 those of the solution: from the last row
  /// to the first, a row is divided by its pivot and its multiples are subtracted from the rows
  /// above.
  void substitute_back(std::size_t begin, std::size_t end);

  /// The first column of the last panel, and the one after it.
  std::size_t first() const { return first_; }
  std::size_t next() const { return first_ + width_; }

 private:
  // Of each row its elements in the panel, its multipliers, its number.
  static constexpr std::size_t panel_stride = 2 * panel_columns + 1;

  /// The row that now stands at first() + i stood at first() + came_from(i) before the last panel.
  std::size_t came_from(std::size_t i) {
    return static_cast<std::size_t>(storage_.get()[i * panel_stride + panel_stride - 1]);
  }

  double* a_;
  std::size_t stride_;
  std::size_t order_;
  std::size_t first_ = 0;
  std::size_t width_ = 0;
  WorkStorage storage_;
};

}  // namespace sarnum
