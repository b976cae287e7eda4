#include "linalg/blocked_elimination.h"

#include "linalg/kernels/pack.h"
#include "linalg/kernels/update.h"

namespace sarnum {

bool BlockedElimination::pays(std::size_t rows) {
  return rows >= 2 * panel_columns && update_level_in_use().update != nullptr;
}

BlockedElimination::BlockedElimination(double* a, std::size_t stride, std::size_t rows)
    : a_(a),
      stride_(stride),
      order_(rows),
      storage_(rows * panel_stride + whole_tiles(rows) * panel_columns) {}

bool BlockedElimination::factor_panel(ZeroPivot zero_pivot) {
  const std::size_t first = next();
  const std::size_t rows = order_ - first;
  const std::size_t width = std::min(rows, panel_columns);
  double* const panel = storage_.get();
  double* const packed = panel + order_ * panel_stride;
  double* const corner = a_ + first * stride_ + first;
  for (std::size_t r = 0; r < rows; ++r) {
    double* const row = panel + r * panel_stride;
    std::copy_n(corner + r * stride_, width, row);
    std::fill(row + width, row + panel_stride - 1, 0.0);
    row[panel_stride - 1] = static_cast<double>(r);
  }
  for (std::size_t k = 0; k < width && k + 1 < rows; ++k) {
    exchange_for_pivot(panel, rows, panel_stride, k, k, k, panel_stride);
    double* const pivot_row = panel + k * panel_stride + k;
    if (zero_pivot == ZeroPivot::stops && pivot_row[0] == 0.0) {
      return false;
    }
    eliminate_column<panel_columns>(pivot_row, panel_stride, rows - k - 1, width - k);
  }
  for (std::size_t r = 0; r < rows; ++r) {
    std::copy_n(panel + r * panel_stride, width, corner + r * stride_);
  }
  pack_factors(packed, panel + panel_columns, panel_stride, 1, rows, width, -1.0);
  first_ = first;
  width_ = width;
  return true;
}

void BlockedElimination::exchange_rows(std::size_t begin, std::size_t end) {
  double* const rows = a_ + first_ * stride_;
  for (std::size_t i = 0; i < order_ - first_; ++i) {
    std::size_t from = came_from(i);
    while (from < i) {
      from = came_from(from);  // where the exchange for that row put what stood there
    }
    if (from != i) {
      std::swap_ranges(rows + i * stride_ + begin, rows + i * stride_ + end,
                       rows + from * stride_ + begin);
    }
  }
}

void BlockedElimination::update(std::size_t begin, std::size_t end) {
  const double* const packed = storage_.get() + order_ * panel_stride;
  const auto stride = static_cast<std::ptrdiff_t>(stride_);
  double* const sources = a_ + first_ * stride_ + begin;
  update_level_in_use().update({.sources = {sources, stride},
                                .depth = width_,
                                .targets = {sources + width_ * stride_, stride},
                                .rows = order_ - next(),
                                .columns = end - begin,
                                .factors = packed + width_ * width_,
                                .triangle = packed,
                                .divisors = nullptr});
}

void BlockedElimination::substitute_back(std::size_t begin, std::size_t end) {
  double* const triangle = storage_.get();
  double* const factors = triangle + panel_columns * panel_columns;
  const auto stride = static_cast<std::ptrdiff_t>(stride_);
  double pivots[panel_columns];
  for (std::size_t done = order_; done > 0;) {
    // The rows from `first` on are the sources, the last of them first.
    const std::size_t first = (done - 1) / panel_columns * panel_columns;
    const std::size_t depth = done - first;
    double* const source = a_ + (done - 1) * stride_;
    const double* const corner = source + done - 1;
    for (std::size_t k = 0; k < depth; ++k) {
      pivots[k] = *(corner - k * (stride_ + 1));
    }
    pack_factors(triangle, corner, -stride, -1, depth, depth, -1.0);
    pack_factors(factors, a_ + done - 1, stride, -1, first, depth, -1.0);
    update_level_in_use().update({.sources = {source + begin, -stride},
                                  .depth = depth,
                                  .targets = {a_ + begin, stride},
                                  .rows = first,
                                  .columns = end - begin,
                                  .factors = factors,
                                  .triangle = triangle,
                                  .divisors = pivots});
    done = first;
  }
}

}  // namespace sarnum
