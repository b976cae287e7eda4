// mnk2: polynomials in two variables fitted by least squares.
//
// The matrix of the normal equations is symmetric to the last bit, so that the half above the
// diagonal is summed, with the right-hand side as one more column of it. All its sums grow by a few
// samples at a time: they are independent, where each alone would wait for its own last addition.
#include <algorithm>
#include <array>
#include <cstddef>
#include <memory>
#include <new>

#include "linalg/elimination.h"
#include "sarnum/linalg/least_squares.h"

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define SARNUM_LEAKS_ARE_CHECKED
#endif
#endif
#if defined(__SANITIZE_ADDRESS__) && !defined(_MSC_VER)
#define SARNUM_LEAKS_ARE_CHECKED
#endif
#if defined(SARNUM_LEAKS_ARE_CHECKED)
#include <sanitizer/lsan_interface.h>
#endif

namespace {

constexpr int largest_degree = 4;
constexpr std::size_t most_terms = 15;

using Doubles = std::unique_ptr<double[]>;

Doubles allocate(std::size_t count) {
  return Doubles(new (std::nothrow) double[count]);
}

/// Leaves an array allocated for ever, as each call is to do with its work storage.
void abandon(Doubles& array) {
  [[maybe_unused]] const double* const kept = array.release();
#if defined(SARNUM_LEAKS_ARE_CHECKED)
  __lsan_ignore_object(kept);
#endif
}  // NOLINT(clang-analyzer-cplusplus.NewDeleteLeaks)

/// x^0 … x^degree by repeated squaring: the fourth power is a square of the square.
std::array<double, largest_degree + 1> powers(double x) {
  const double square = x * x;
  return {1.0, x, square, x * square, square * square};
}

/// Adds `count` samples from the first on to the upper half of the normal equations, one after
/// another in every sum. Several at a time, so that a sum is loaded and stored once for all of
/// them.
template <std::size_t count>
void add_samples(double* system, const std::array<Doubles, most_terms>& terms, const double* z,
                 std::size_t first, std::size_t term_count) {
  double samples[count][most_terms + 1];
  for (std::size_t k = 0; k < count; ++k) {
    for (std::size_t r = 0; r < term_count; ++r) {
      samples[k][r] = terms[r][first + k];
    }
    samples[k][term_count] = z[first + k];
  }
  const std::size_t columns = term_count + 1;
  for (std::size_t r = 0; r < term_count; ++r) {
    double* const row = system + r * columns;
    for (std::size_t s = r; s < columns; ++s) {
      double sum = row[s];
      for (std::size_t k = 0; k < count; ++k) {
        sum += samples[k][r] * samples[k][s];
      }
      row[s] = sum;
    }
  }
}

}  // namespace

void mnk2(int degree, int count, double* z, double* u, double* v, double* c) {
  if (degree < 0 || degree > largest_degree) {
    return;
  }
  const auto term_count = static_cast<std::size_t>((degree + 1) * (degree + 2) / 2);
  const auto samples = static_cast<std::size_t>(std::max(count, 0));
  const std::size_t columns = term_count + 1;
  std::array<Doubles, most_terms> terms;
  for (std::size_t r = 0; r < term_count; ++r) {
    terms[r] = allocate(samples);
    if (terms[r] == nullptr) {
      return;
    }
  }
  Doubles system = allocate(term_count * columns);
  Doubles solution = allocate(term_count);
  if (system == nullptr || solution == nullptr) {
    return;
  }

  for (std::size_t i = 0; i < samples; ++i) {
    const auto u_power = powers(u[i]);
    const auto v_power = powers(v[i]);
    std::size_t term = 0;
    for (std::size_t t = 0; t <= static_cast<std::size_t>(degree); ++t) {
      for (std::size_t q = 0; q <= t; ++q) {
        terms[term++][i] = v_power[q] * u_power[t - q];
      }
    }
  }

  std::fill_n(system.get(), term_count * columns, 0.0);
  std::size_t i = 0;
  for (; i + 8 <= samples; i += 8) {
    add_samples<8>(system.get(), terms, z, i, term_count);
  }
  for (; i < samples; ++i) {
    add_samples<1>(system.get(), terms, z, i, term_count);
  }
  for (std::size_t r = 1; r < term_count; ++r) {
    for (std::size_t s = 0; s < r; ++s) {
      system[r * columns + s] = system[s * columns + r];
    }
  }

  sarnum::solve_onto_diagonal(system.get(), term_count);
  for (std::size_t k = 0; k < term_count; ++k) {
    solution[k] = system[k * columns + k];
  }
  std::copy_n(solution.get(), term_count, c);

  for (std::size_t r = 0; r < term_count; ++r) {
    abandon(terms[r]);
  }
  abandon(system);
  abandon(solution);
}
