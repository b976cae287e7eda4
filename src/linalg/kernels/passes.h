// The update in vectors. Included once by the source of each level.
//
// The columns are done a few vectors at a time. Those columns of all sources are copied to a panel
// that stays in the first-level cache, finished there if there is a triangle, and added to one tile
// of targets after another: a tile's sums stay in registers from the first source to the last.
//
// Internal linkage only, as kernel_vectors.h says.
#pragma once

#include <cstddef>

#include "kernel_vectors.h"
#include "linalg/kernels/update.h"

#define SARNUM_TABLE_OF(level) SARNUM_CONCATENATED(update_level_, level)

namespace sarnum {
namespace {

using std::size_t;

constexpr int lanes = SARNUM_VECTOR_BYTES / static_cast<int>(sizeof(double));
using Vec = Vector<double, lanes>;

/// Sums of as many vectors and rows fill half of the registers: enough to hide the latency of the
/// additions, and the other half is free for the factors and the products.
constexpr int vectors = 2;
constexpr int rows_at_once = lanes == 8 ? 8 : 4;
constexpr size_t width = size_t{vectors} * lanes;

SARNUM_INLINE Vec read(const double* from) {
  Vec value;
  __builtin_memcpy(&value, from, sizeof value);
  return value;
}

SARNUM_INLINE void write(double* to, Vec value) {
  __builtin_memcpy(to, &value, sizeof value);
}

/// Adds multiples of `depth` rows of a panel to a whole tile.
SARNUM_INLINE void add_to_tile(double* tile, std::ptrdiff_t stride, const double* factors,
                               const double* panel, size_t depth) {
  for (size_t first = 0; first < tile_rows; first += rows_at_once) {
    double* rows[rows_at_once];
    Vec sums[rows_at_once][vectors];
    unrolled<rows_at_once>([&](auto row) {
      rows[row] = tile + static_cast<std::ptrdiff_t>(first + row) * stride;
      unrolled<vectors>([&](auto v) { sums[row][v] = read(rows[row] + v * lanes); });
    });
    for (size_t k = 0; k < depth; ++k) {
      Vec source[vectors];
      unrolled<vectors>([&](auto v) { source[v] = read(panel + k * width + v * lanes); });
      unrolled<rows_at_once>([&](auto row) {
        const double factor = factors[k * tile_rows + first + row];
        unrolled<vectors>([&](auto v) { sums[row][v] += factor * source[v]; });
      });
    }
    unrolled<rows_at_once>([&](auto row) {
      unrolled<vectors>([&](auto v) { write(rows[row] + v * lanes, sums[row][v]); });
    });
  }
}

/// Some columns of some rows into a panel or a tile, which is filled up to whole tiles by copies of
/// the last column and row: what is computed from those raises no exceptions of its own.
SARNUM_INLINE void fill(double* to, const double* from, std::ptrdiff_t stride, size_t rows,
                        size_t columns) {
  for (size_t r = 0; r % tile_rows != 0 || r < rows; ++r, to += width) {
    if (columns == width) {
      unrolled<vectors>([&](auto v) { write(to + v * lanes, read(from + v * lanes)); });
    } else {
      for (size_t c = 0; c < width; ++c) {
        to[c] = from[c < columns ? c : columns - 1];
      }
    }
    from += r + 1 < rows ? stride : 0;
  }
}

/// The same columns and rows of a panel or a tile, without what fills it up, back.
SARNUM_INLINE void put_back(double* to, std::ptrdiff_t stride, const double* from, size_t rows,
                            size_t columns) {
  for (size_t r = 0; r < rows; ++r, to += stride, from += width) {
    if (columns == width) {
      unrolled<vectors>([&](auto v) { write(to + v * lanes, read(from + v * lanes)); });
    } else {
      for (size_t c = 0; c < columns; ++c) {
        to[c] = from[c];
      }
    }
  }
}

void finish_sources(double* panel, const Update& u) {
  constexpr std::ptrdiff_t stride = width;
  for (size_t first = 0; first < u.depth; first += tile_rows) {
    double* const tile = panel + first * width;
    const double* const factors = u.triangle + first * u.depth;
    add_to_tile(tile, stride, factors, panel, first);
    const size_t rows = u.depth - first < tile_rows ? u.depth - first : tile_rows;
    for (size_t k = 0; k < rows; ++k) {
      for (size_t v = 0; v < width; v += lanes) {
        double* const source = tile + k * width + v;
        if (u.divisors != nullptr) {
          write(source, read(source) / u.divisors[first + k]);
        }
        for (size_t r = k + 1; r < rows; ++r) {
          double* const later = tile + r * width + v;
          write(later, read(later) + factors[(first + k) * tile_rows + r] * read(source));
        }
      }
    }
  }
}

void update(const Update& u) {
  constexpr std::ptrdiff_t stride = width;
  alignas(64) double panel[largest_depth * width];
  for (size_t column = 0; column < u.columns; column += width) {
    const size_t columns = u.columns - column < width ? u.columns - column : width;
    double* const sources = u.sources.first + column;
    fill(panel, sources, u.sources.stride, u.depth, columns);
    if (u.triangle != nullptr) {
      finish_sources(panel, u);
      put_back(sources, u.sources.stride, panel, u.depth, columns);
    }
    for (size_t first = 0; first < u.rows; first += tile_rows) {
      const size_t rows = u.rows - first < tile_rows ? u.rows - first : tile_rows;
      double* const target =
          u.targets.first + static_cast<std::ptrdiff_t>(first) * u.targets.stride + column;
      const double* const factors = u.factors + first * u.depth;
      if (rows == tile_rows && columns == width) {
        add_to_tile(target, u.targets.stride, factors, panel, u.depth);
      } else {
        alignas(64) double tile[tile_rows * width];
        fill(tile, target, u.targets.stride, rows, columns);
        add_to_tile(tile, stride, factors, panel, u.depth);
        put_back(target, u.targets.stride, tile, rows, columns);
      }
    }
  }
}

}  // namespace

extern const UpdateLevel SARNUM_TABLE_OF(SARNUM_LEVEL);
const UpdateLevel SARNUM_TABLE_OF(SARNUM_LEVEL) = {SARNUM_NAME_OF(SARNUM_LEVEL), update};

}  // namespace sarnum
