// Linear algebra against LAPACK and BLAS (OpenBLAS on one thread), and fits against their plain
// formulas. Results are checked against the plain definition, not against the peer.
//
// OpenBLAS may fuse multiplications and additions: where the CPU can, it needs half the operations.
// Matrices that a routine consumes are copied anew on both sides. Ours are of long double.
#include <cblas.h>
#include <lapacke.h>
#include <sarnum/sarnum.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <memory>
#include <numeric>
#include <string>
#include <vector>

#include "plain_linear_algebra.h"
#include "side_by_side.h"

namespace {

using oracle::Doubles;
using oracle::LongDoubles;
using oracle::Matrix;

/// 0 for equal results.
template <class A, class B>
double difference(const std::vector<A>& actual, const std::vector<B>& expected) {
  return std::ranges::equal(actual, expected) ? 0.0 : std::numeric_limits<double>::infinity();
}

/// What both sides work on and with.
struct System {
  System(int order, int columns)
      : n(order),
        given(oracle::random_values(order * columns, order)),
        consumed(given),
        result(static_cast<std::size_t>(order * order)),
        peer_given(given.begin(), given.end()),
        peer_consumed(peer_given),
        pivots(static_cast<std::size_t>(order)),
        room(static_cast<std::size_t>(64 * order)) {}

  int n;
  LongDoubles given, consumed, result;
  Doubles peer_given, peer_consumed;
  std::vector<lapack_int> pivots;
  Doubles room;
};

/// The peer's system is another one, of the same numbers: its matrices are stored by columns.
Piece solution(int n, double target) {
  auto s = std::make_shared<System>(n, n + 1);
  return {.name = "Solve_System/" + std::to_string(n),
          .ours =
              [=] {
                s->consumed = s->given;
                Solve_System(n, s->consumed.data(), s->result.data());
              },
          .peer = {"LAPACK",
                   [=] {
                     const lapack_int one = 1;
                     lapack_int info = 0;
                     s->peer_consumed = s->peer_given;
                     LAPACK_dgesv(&s->n, &one, s->peer_consumed.data(), &s->n, s->pivots.data(),
                                  &s->peer_consumed[static_cast<std::size_t>(n * n)], &s->n, &info);
                   },
                   target},
          .difference =
              [=] {
                Matrix<double> plain(s->given, n + 1);
                Doubles expected = oracle::solve(n, plain);
                expected.insert(expected.end(), plain.values.begin(), plain.values.end());
                LongDoubles actual(s->result.begin(), s->result.begin() + n);
                actual.insert(actual.end(), s->consumed.begin(), s->consumed.end());
                return difference(actual, expected);
              }};
}

Piece inversion(int n, double target) {
  auto s = std::make_shared<System>(n, n);
  return {.name = "MatrixInversion/" + std::to_string(n),
          .ours = [=] { MatrixInversion(n, s->given.data(), s->result.data()); },
          .peer = {"LAPACK",
                   [=] {
                     const auto room_size = static_cast<lapack_int>(s->room.size());
                     lapack_int info = 0;
                     s->peer_consumed = s->peer_given;
                     double* const a = s->peer_consumed.data();
                     LAPACK_dgetrf(&s->n, &s->n, a, &s->n, s->pivots.data(), &info);
                     LAPACK_dgetri(&s->n, a, &s->n, s->pivots.data(), s->room.data(), &room_size,
                                   &info);
                   },
                   target},
          .difference = [=] { return difference(s->result, oracle::inverse(n, s->given)); }};
}

Piece product(int n, double target) {
  auto s = std::make_shared<System>(n, n);
  return {
      .name = "Matrix_Multiply/" + std::to_string(n),
      .ours = [=] { Matrix_Multiply(s->given.data(), s->given.data(), s->result.data(), n, n, n); },
      .peer = {"BLAS",
               [=] {
                 const double* const a = s->peer_given.data();
                 cblas_dgemm(CblasRowMajor, CblasNoTrans, CblasNoTrans, n, n, n, 1.0, a, n, a, n,
                             0.0, s->peer_consumed.data(), n);
               },
               target},
      .difference =
          [=] {
            // The first and the last rows: all of it takes the plain loop too long.
            double worst = 0.0;
            for (const int row : {0, n - 8}) {
              const auto begin = [&](auto& values) { return values.begin() + row * n; };
              const Matrix<double> some({begin(s->given), begin(s->given) + 8 * n}, n);
              worst = std::max(worst,
                               difference(LongDoubles(begin(s->result), begin(s->result) + 8 * n),
                                          oracle::multiply(some, {s->given, n}, 8, n, n)));
            }
            return worst;
          }};
}

/// Samples of a surface, and the coefficients that ours and the plain formula give.
struct Samples {
  explicit Samples(int number) : count(number) {
    const LongDoubles random = oracle::random_values(3 * count, count);
    x.assign(random.begin(), random.begin() + count);
    y.assign(random.begin() + count, random.begin() + 2 * count);
    z.assign(random.begin() + 2 * count, random.end());
  }

  int count;
  Doubles x, y, z;
  Doubles ours, plain;
};

/// Exponents (t, q) of a polynomial's terms: y^q·x^(t − q).
std::vector<std::pair<int, int>> terms_of(int degree) {
  std::vector<std::pair<int, int>> terms;
  for (int t = 0; t <= degree; ++t) {
    for (int q = 0; q <= t; ++q) {
      terms.emplace_back(t, q);
    }
  }
  return terms;
}

Piece interpolation(int order, int count, double target) {
  auto s = std::make_shared<Samples>(count);
  return {.name = "CLagrangeInterpolation2D/" + std::to_string(order),
          .ours =
              [=] {
                const CLagrangeInterpolation2D fit(order, count, s->x.data(), s->y.data(),
                                                   s->z.data());
                s->ours.assign(fit.coefficients, fit.coefficients + fit.termCount);
              },
          .peer = {"formula",
                   [=] {
                     const auto terms = terms_of(order);
                     const auto power = [&](std::size_t i, double times, int r, int t) {
                       const auto [tr, qr] = terms[static_cast<std::size_t>(r)];
                       const auto [tt, qt] = terms[static_cast<std::size_t>(t)];
                       return std::pow(s->y[i], static_cast<double>(tr - qr + tt - qt)) * times *
                              std::pow(s->x[i], static_cast<double>(qr + qt));
                     };
                     s->plain = oracle::fit(
                         static_cast<int>(terms.size()), s->x.size(),
                         [&](std::size_t i, int r, int t) { return power(i, 1.0, r, t); },
                         [&](std::size_t i, int r) { return power(i, s->z[i], r, 0); });
                   },
                   target},
          .difference = [=] { return difference(s->ours, s->plain); }};
}

double squared_power(double base, int exponent) {
  double power = 1.0;
  for (; exponent > 0; exponent /= 2, base *= base) {
    power *= exponent % 2 == 1 ? base : 1.0;
  }
  return power;
}

/// The plain formula has an array for each term, and one sum after another.
Piece surface(int degree, int count, double target) {
  auto s = std::make_shared<Samples>(count);
  s->ours.resize(terms_of(degree).size());
  return {
      .name = "mnk2/" + std::to_string(degree),
      .ours = [=] { mnk2(degree, count, s->z.data(), s->x.data(), s->y.data(), s->ours.data()); },
      .peer = {"formula",
               [=] {
                 const auto terms = terms_of(degree);
                 const int n = static_cast<int>(terms.size());
                 std::vector<Doubles> columns;
                 for (const auto& [t, q] : terms) {
                   Doubles& column = columns.emplace_back();
                   for (std::size_t i = 0; i < s->x.size(); ++i) {
                     column.push_back(squared_power(s->y[i], q) * squared_power(s->x[i], t - q));
                   }
                 }
                 columns.push_back(s->z);
                 Matrix<double> a(n, n + 1);
                 for (int r = 1; r <= n; ++r) {
                   for (int c = 1; c <= n + 1; ++c) {
                     const Doubles& other = columns[static_cast<std::size_t>(c - 1)];
                     a(r, c) =
                         std::inner_product(other.begin(), other.end(),
                                            columns[static_cast<std::size_t>(r - 1)].begin(), 0.0);
                   }
                 }
                 s->plain = oracle::solve(n, a);
               },
               target},
      .difference = [=] { return difference(s->ours, s->plain); }};
}

}  // namespace

int main(int argc, char** argv) {
  openblas_set_num_threads(1);
  std::vector<Piece> pieces;
  for (const auto& [n, target] :
       {std::pair{4, 1.0}, {8, 1.0}, {12, 1.0}, {16, 1.0}, {64, 0.0}, {512, 2.5}}) {
    pieces.push_back(solution(n, target));
    pieces.push_back(inversion(n, target));
  }
  pieces.push_back(product(1024, 2.5));
  pieces.push_back(interpolation(5, 10'000, 0.04));
  pieces.push_back(surface(4, 10'000, 0.2));
  return run_side_by_side(pieces, argc, argv);
}
