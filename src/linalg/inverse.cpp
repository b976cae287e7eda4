// MatrixInversion: Gauss–Jordan elimination of the matrix beside the identity.
//
// Exchanges of rows leave out the last column: results depend on it, as the header explains. Of the
// left half only what later steps read is kept up to date.
//
// The columns of the right half stand in the order in which their rows became pivots, to be put in
// their places at the end. That half is then a lower triangle while the elimination goes on. Above
// it are zeros, from which every step would subtract a multiple of zero: they are left alone. This
// is so since multipliers are at most 1 in magnitude or else NaN, and a NaN makes the last pivot
// NaN and all of the inverse with it, either way. The last column, which takes no part in
// exchanges, then has its one in the last row all the time.
#include <algorithm>

#include "linalg/blocked_elimination.h"
#include "linalg/elimination.h"
#include "linalg/work_storage.h"
#include "sarnum/linalg/linear_systems.h"

namespace {

using sarnum::BlockedElimination;
using sarnum::ZeroPivot;
using std::size_t;

/// n rows of 2n columns, and one more: which row it was, as given.
struct Work {
  double* first;
  size_t order;
  size_t stride;

  double* row(size_t i) const { return first + i * stride; }
  double* right(size_t i) const { return row(i) + order; }
  double& number(size_t i) const { return row(i)[2 * order]; }

  /// Room that keeps the rows of large matrices from competing for a few places of a cache.
  static size_t stride_of(size_t order) { return 2 * order + (order < 64 ? 1 : 8); }
};

bool eliminate_plainly(const Work& w) {
  const size_t n = w.order;
  for (size_t k = 0; k < n; ++k) {
    sarnum::exchange_for_pivot(w.first, n, w.stride, k, k, k, 2 * n + 1);
    w.right(k)[k] = 1.0;
    if (w.row(k)[k] == 0.0) {
      return false;
    }
    sarnum::eliminate_column(w.row(k) + k, w.stride, n - k - 1, n + 1);
  }
  return true;
}

bool eliminate_in_blocks(BlockedElimination& blocks, const Work& w) {
  const size_t n = w.order;
  while (blocks.next() < n) {
    if (!blocks.factor_panel(ZeroPivot::stops)) {
      return false;
    }
    blocks.exchange_rows(blocks.next(), n + blocks.first());
    blocks.exchange_rows(2 * n, 2 * n + 1);
    for (size_t i = blocks.first(); i < blocks.next(); ++i) {
      w.right(i)[i] = 1.0;
    }
    blocks.update(blocks.next(), n + blocks.next());
  }
  return w.row(n - 1)[n - 1] != 0.0;
}

void set_last_column(const Work& w) {
  size_t last = 0;
  while (w.number(last) != static_cast<double>(w.order - 1)) {
    ++last;
  }
  for (size_t i = 0; i < w.order; ++i) {
    w.right(i)[last] = i == w.order - 1 ? 1.0 : 0.0;
  }
}

void substitute_plainly(const Work& w) {
  for (size_t i = w.order; i-- > 0;) {
    double* const right = w.right(i);
    const double pivot = w.row(i)[i];
    for (size_t c = 0; c < w.order; ++c) {
      right[c] /= pivot;
    }
    for (size_t j = i; j-- > 0;) {
      sarnum::subtract_multiple(w.right(j), right, w.row(j)[i], w.order);
    }
  }
}

/// @return false when the matrix is singular.
bool invert(const Work& w) {
  if (BlockedElimination::pays(w.order)) {
    BlockedElimination blocks(w.first, w.stride, w.order);
    if (blocks.has_storage()) {
      if (!eliminate_in_blocks(blocks, w)) {
        return false;
      }
      set_last_column(w);
      blocks.substitute_back(w.order, 2 * w.order);
      return true;
    }
  }
  if (!eliminate_plainly(w)) {
    return false;
  }
  set_last_column(w);
  substitute_plainly(w);
  return true;
}

}  // namespace

int MatrixInversion(int n, long double* a, long double* inverse) {
  if (n <= 0) {
    return 1;
  }
  const auto order = static_cast<size_t>(n);
  const size_t stride = Work::stride_of(order);
  sarnum::WorkStorage storage(order * stride);
  const Work w = {storage.get(), order, stride};
  if (w.first == nullptr) {
    return 0;
  }
  for (size_t i = 0; i < order; ++i) {
    for (size_t j = 0; j < order; ++j) {
      w.row(i)[j] = static_cast<double>(a[i * order + j]);
    }
    std::fill_n(w.right(i), order, 0.0);
    w.number(i) = static_cast<double>(i);
  }
  if (!invert(w)) {
    return 0;
  }
  double* const columns = w.row(0);  // close together, where the left half has done its work
  for (size_t c = 0; c < order; ++c) {
    columns[c] = w.number(c);
  }
  for (size_t i = 0; i < order; ++i) {
    for (size_t c = 0; c < order; ++c) {
      sarnum::widen(w.right(i)[c], inverse + i * order + static_cast<size_t>(columns[c]));
    }
  }
  return 1;
}
