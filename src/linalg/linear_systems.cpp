// ChangeRow_IJ and Solve_System: exported forms of what elimination.h does.
#include "sarnum/linalg/linear_systems.h"

#include <functional>

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
  sarnum::Narrowed system(a, order * (order + 1));
  if (!system.has_storage()) {
    return;
  }
  sarnum::solve_onto_diagonal(system.get(), order);
  system.widen_back();
  const auto solution = [&](std::size_t k) { return system.get() + k * (order + 2); };
  // Where x lies inside the very matrix it covers one element of the diagonal at most.
  std::size_t covered = order;
  double covered_value = 0.0;
  for (std::size_t k = 0; k < order; ++k) {
    const std::less<const void*> is_before;
    if (!is_before(solution(k), x) && is_before(solution(k), x + order)) {
      covered = k;
      covered_value = *solution(k);
    }
  }
  for (std::size_t k = 0; k < order; ++k) {
    sarnum::widen(k == covered ? covered_value : *solution(k), x + k);
  }
}
