// Vector_Multiply and Matrix_Multiply.
//
// The product grows by whole rows: four rows of B at a time are added to a row of it, so that the
// inner loop runs over neighbouring elements and each element's sum still has its order. B is
// worked through in blocks of rows that stay in the cache while all rows of A pass by.
#include "sarnum/linalg/products.h"

#include <algorithm>

#include "linalg/work_storage.h"

namespace {

using sarnum::Element;

constexpr std::size_t block_rows = 64;

/// t += p[0]·b[0 …] + p[1]·b[n …] + …, one addition after another, for `rows` rows of B.
void add_rows(Element* __restrict t, const Element* p, const Element* b, std::size_t rows,
              std::size_t n) {
  std::size_t l = 0;
  for (; l + 4 <= rows; l += 4) {
    const Element p0 = p[l], p1 = p[l + 1], p2 = p[l + 2], p3 = p[l + 3];
    const Element* const b0 = b + l * n;
    const Element* const b1 = b0 + n;
    const Element* const b2 = b1 + n;
    const Element* const b3 = b2 + n;
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
  const auto rows = static_cast<std::size_t>(m);
  const auto terms = static_cast<std::size_t>(std::max(k, 0));
  const auto columns = static_cast<std::size_t>(n);
  sarnum::NarrowedMatrix a(A, rows * terms);
  sarnum::NarrowedMatrix b(B, terms * columns);
  sarnum::WorkStorage<Element> product(rows * columns);
  Element* const t = product.get();
  if (a.get() == nullptr || b.get() == nullptr || t == nullptr) {
    return;
  }
  std::fill_n(t, rows * columns, Element{0});
  for (std::size_t first = 0; first < terms; first += block_rows) {
    const std::size_t count = std::min(block_rows, terms - first);
    for (std::size_t i = 0; i < rows; ++i) {
      add_rows(t + i * columns, a.get() + i * terms + first, b.get() + first * columns, count,
               columns);
    }
  }
  std::copy_n(t, rows * columns, C);
}
