// ChangeRow_IJ and Solve_System: exported forms of what elimination.h does.
#include "sarnum/linalg/linear_systems.h"

#include "linalg/elimination.h"
#include "linalg/work_storage.h"

void ChangeRow_IJ(int i, int j, int n, long double* a) {
  if (i < 1 || i > n || j < 1 || j - 1 > n) {
    return;
  }
  const auto row = static_cast<std::size_t>(i - 1);
  const auto column = static_cast<std::size_t>(j - 1);
  const auto rows = static_cast<std::size_t>(n);
  sarnum::exchange_for_pivot(a, rows, rows + 1, row, column, row, rows + 1);
}

void Solve_System(int n, long double* a, long double* x) {
  if (n <= 0) {
    return;
  }
  const auto order = static_cast<std::size_t>(n);
  sarnum::NarrowedCopy system(a, order * (order + 1));
  if (system.get() == nullptr) {
    return;
  }
  sarnum::solve_onto_diagonal(system.get(), order);
  system.widen_back();
  for (std::size_t k = 0; k < order; ++k) {
    sarnum::widen(system.get()[k * (order + 1) + k], x + k);
  }
}
