// mnk2: polynomials in two variables fitted by least squares.
//
// The normal equations grow by some samples at a time, all their sums side by side: they are
// independent, where each alone would wait for its own last addition. A term's values are not kept
// from one lot of samples to the next; the arrays for them, which each call is to leave allocated,
// are left unwritten, so that they take up addresses and hardly any memory.
#include <algorithm>
#include <array>
#include <cstddef>
#include <memory>
#include <new>

#include "linalg/elimination.h"
#include "linalg/kernels/pack.h"
#include "linalg/kernels/update.h"
#include "sarnum/linalg/least_squares.h"

#if defined(__ELF__)
/// There when a program runs with a leak checker, whatever this library was built with.
// NOLINTNEXTLINE(bugprone-reserved-identifier)
extern "C" void __lsan_ignore_object(const void* object) __attribute__((weak));
#endif

namespace {

constexpr int largest_degree = 4;
constexpr std::size_t most_terms = 15;
constexpr std::size_t most_samples = 64;  // at a time

/// The values of all terms, and then the value to fit, for some samples.
using Values = std::array<std::array<double, most_terms + 1>, most_samples>;

using Doubles = std::unique_ptr<double[]>;

Doubles allocate(std::size_t count) {
  return Doubles(new (std::nothrow) double[count]);
}

/// Leaves an array allocated for ever, as each call is to do with its work storage.
void abandon(Doubles& array) {
  [[maybe_unused]] const double* const kept = array.release();
#if defined(__ELF__)
  if (__lsan_ignore_object != nullptr) {
    __lsan_ignore_object(kept);
  }
#endif
}  // NOLINT(clang-analyzer-cplusplus.NewDeleteLeaks)

/// x^0 … x^degree by repeated squaring: the fourth power is a square of the square.
template <std::size_t degree>
std::array<double, degree + 1> powers(double x) {
  std::array<double, degree + 1> power = {1.0};
  for (std::size_t e = 1; e <= degree; ++e) {
    power[e] = e == 1 ? x : power[e / 2] * power[e - e / 2];
  }
  return power;
}

/// The terms of a degree: those that share a power of v after each other, so that the compiler
/// keeps the powers in registers. Those of a higher degree might overflow where these do not.
template <std::size_t degree>
void evaluate_terms(double u, double v, double* terms) {
  const auto u_power = powers<degree>(u);
  const auto v_power = powers<degree>(v);
  for (std::size_t q = 0; q <= degree; ++q) {
    for (std::size_t p = 0; p + q <= degree; ++p) {
      terms[(p + q) * (p + q + 1) / 2 + q] = v_power[q] * u_power[p];
    }
  }
}

constexpr std::array evaluate_terms_of = {evaluate_terms<0>, evaluate_terms<1>, evaluate_terms<2>,
                                          evaluate_terms<3>, evaluate_terms<4>};
static_assert(evaluate_terms_of.size() == largest_degree + 1);

/// Adds the products of each of the first `terms` values of a sample and its first `columns` ones.
void add_products(double* system, std::size_t terms, std::size_t columns, Values& values,
                  std::size_t samples) {
  if (const auto update = sarnum::update_level_in_use().update; update != nullptr) {
    std::array<double, sarnum::whole_tiles(most_terms) * most_samples> factors;
    constexpr std::ptrdiff_t stride = most_terms + 1;
    sarnum::pack_factors(factors.data(), values[0].data(), 1, stride, terms, samples, 1.0);
    update({.sources = {values[0].data(), stride},
            .depth = samples,
            .targets = {system, static_cast<std::ptrdiff_t>(columns)},
            .rows = terms,
            .columns = columns,
            .factors = factors.data(),
            .triangle = nullptr,
            .divisors = nullptr});
    return;
  }
  for (std::size_t i = 0; i < samples; ++i) {
    for (std::size_t r = 0; r < terms; ++r) {
      for (std::size_t s = 0; s < columns; ++s) {
        system[r * columns + s] += values[i][r] * values[i][s];
      }
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

  std::fill_n(system.get(), term_count * columns, 0.0);
  const auto evaluate = evaluate_terms_of[static_cast<std::size_t>(degree)];
  Values values;
  for (std::size_t first = 0; first < samples; first += most_samples) {
    const std::size_t number = std::min(most_samples, samples - first);
    for (std::size_t i = 0; i < number; ++i) {
      evaluate(u[first + i], v[first + i], values[i].data());
      values[i][term_count] = z[first + i];
    }
    add_products(system.get(), term_count, columns, values, number);
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
