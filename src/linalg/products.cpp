// Vector_Multiply and Matrix_Multiply.
//
// In the plain form the product grows by whole rows: four rows of B at a time are added to a row of
// it, so that the inner loop runs over neighbouring elements and each element's sum still has its
// order. B is worked through in blocks of rows that stay in the cache while all rows of A pass by.
//
// Large products are updates: blocks of A are packed as the factors of rows of B.
#include "sarnum/linalg/products.h"

#include <algorithm>

#include "linalg/kernels/pack.h"
#include "linalg/kernels/update.h"
#include "linalg/work_storage.h"

namespace {

constexpr std::size_t block_rows = 64;
/// Of A: as large as a part of a second-level cache, worth packing.
constexpr std::size_t packed_rows = 256;
constexpr std::size_t packed_terms = sarnum::largest_depth;
constexpr std::size_t least_packed = 24;

struct Shape {
  std::size_t rows;
  std::size_t terms;
  std::size_t columns;
};

/// t += p[0]·b[0 …] + p[1]·b[n …] + …, one addition after another, for `rows` rows of B.
void add_rows(double* __restrict t, const double* p, const double* b, std::size_t rows,
              std::size_t n) {
  std::size_t l = 0;
  for (; l + 4 <= rows; l += 4) {
    const double p0 = p[l], p1 = p[l + 1], p2 = p[l + 2], p3 = p[l + 3];
    const double* const b0 = b + l * n;
    const double* const b1 = b0 + n;
    const double* const b2 = b1 + n;
    const double* const b3 = b2 + n;
    for (std::size_t j = 0; j < n; ++j) {
      t[j] = t[j] + p0 * b0[j] + p1 * b1[j] + p2 * b2[j] + p3 * b3[j];
    }
  }
  for (; l < rows; ++l) {
    for (std::size_t j = 0; j < n; ++j) {
      t[j] += p[l] * b[l * n + j];
    }
  }
}

void multiply_plainly(const double* a, const double* b, double* product, const Shape& shape) {
  for (std::size_t first = 0; first < shape.terms; first += block_rows) {
    const std::size_t count = std::min(block_rows, shape.terms - first);
    for (std::size_t i = 0; i < shape.rows; ++i) {
      add_rows(product + i * shape.columns, a + i * shape.terms + first, b + first * shape.columns,
               count, shape.columns);
    }
  }
}

/// @return false when there is no storage or no kernel for it.
bool multiply_in_blocks(const long double* a, double* b, double* product, const Shape& shape) {
  const auto update = sarnum::update_level_in_use().update;
  const std::size_t tallest = std::min(packed_rows, sarnum::whole_tiles(shape.rows));
  sarnum::WorkStorage packed(tallest * std::min(packed_terms, shape.terms));
  if (update == nullptr || packed.get() == nullptr) {
    return false;
  }
  const auto stride = static_cast<std::ptrdiff_t>(shape.columns);
  for (std::size_t l = 0; l < shape.terms; l += packed_terms) {
    const std::size_t depth = std::min(packed_terms, shape.terms - l);
    for (std::size_t i = 0; i < shape.rows; i += packed_rows) {
      const std::size_t rows = std::min(packed_rows, shape.rows - i);
      sarnum::pack_factors(packed.get(), a + i * shape.terms + l,
                           static_cast<std::ptrdiff_t>(shape.terms), 1, rows, depth, 1.0);
      update({.sources = {b + l * shape.columns, stride},
              .depth = depth,
              .targets = {product + i * shape.columns, stride},
              .rows = rows,
              .columns = shape.columns,
              .factors = packed.get(),
              .triangle = nullptr,
              .divisors = nullptr});
    }
  }
  return true;
}

}  // namespace

void Vector_Multiply(double* a, double* b, double* out, int n) {
  for (int i = 0; i < n; ++i) {
    out[i] = a[i] * b[i];
  }
}

void Matrix_Multiply(long double* A, long double* B, long double* C, int m, int k, int n) {
  if (m <= 0 || n <= 0) {
    return;
  }
  const Shape shape = {static_cast<std::size_t>(m), static_cast<std::size_t>(std::max(k, 0)),
                       static_cast<std::size_t>(n)};
  sarnum::Narrowed b(B, shape.terms * shape.columns);
  sarnum::WorkStorage product(shape.rows * shape.columns);
  if (!b.has_storage() || product.get() == nullptr) {
    return;
  }
  std::fill_n(product.get(), shape.rows * shape.columns, 0.0);
  const bool is_large = std::min({shape.rows, shape.terms, shape.columns}) >= least_packed;
  if (!is_large || !multiply_in_blocks(A, b.get(), product.get(), shape)) {
    sarnum::Narrowed a(A, shape.rows * shape.terms);
    if (!a.has_storage()) {
      return;
    }
    multiply_plainly(a.get(), b.get(), product.get(), shape);
  }
  sarnum::widen(product.get(), shape.rows * shape.columns, C);
}
