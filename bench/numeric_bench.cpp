// The numeric toolkit against what bounds it. Results are checked against the plain definition.
//
// Sums add term after term, as their order is part of the result: no sum is faster than a chain
// of as many additions in registers, each of which waits for the one before ("additions"). That
// bounds sums of arrays in a cache.
//
// The other routines, and sums of long arrays, move data. Work that reads R bytes and writes W
// bytes stands beside a memcpy of (R + W)/2 bytes, which reads as many and writes as many and so
// touches R + W bytes as well ("memcpy"). What is read twice counts twice. Long sums have no
// target: they wait for additions and for memory. Where the machine writes faster than it reads,
// work that only reads, as sums and scans, has the worse part of that.
//
// Functions of numbers stand beside the same formula with the C library's functions, which are not
// always the nearest doubles.
#include <sarnum/sarnum.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "side_by_side.h"

namespace {

constexpr int few = 4096;  // stays in a cache
constexpr int many = 10'000'000;

/// Four arrays to read and two to write; shared by all pieces, for they are large.
struct Arrays {
  std::vector<double> inputs = [] {
    std::vector<double> values(std::size_t{4} * many);
    for (std::size_t i = 0; i < values.size(); ++i) {
      values[i] = sample<double>(i);
    }
    return values;
  }();
  std::vector<double> outputs = std::vector<double>(std::size_t{2} * many);

  double* a = inputs.data();
  double* b = a + many;
  double* c = b + many;
  double* d = c + many;
  double* out = outputs.data();
  double* out2 = out + many;
};

/// A chain of n additions. The compiler may neither shorten nor drop it: floating-point addition
/// is not associative, the term is known at run time only, and the result is used.
double chain_of_additions(double term, int n) {
  double sum = 0.0;
  for (int i = 0; i < n; ++i) {
    sum += term;
  }
  return sum;
}

template <class Term>
double sum_of(int n, Term term) {
  double sum = 0.0;
  for (int i = 0; i < n; ++i) {
    sum += term(i);
  }
  return sum;
}

Peer additions(const Arrays& data, int n) {
  auto result = std::make_shared<double>();
  return {"additions", [=, &data] { *result = chain_of_additions(data.a[1], n); }, 1.1};
}

/// @param bytes  that our work touches.
Peer memcpy_touching(Arrays& data, std::size_t bytes, double target = 1.5) {
  return {"memcpy", [=, &data] { std::memcpy(data.outputs.data(), data.inputs.data(), bytes / 2); },
          target};
}

/// A sum of n terms, for each of which `bytes` are read.
template <class Ours, class Definition>
Piece sum_piece(Arrays& data, const std::string& name, std::size_t bytes, int n, Ours ours,
                Definition definition) {
  auto result = std::make_shared<double>();
  return {.name = name + "/" + std::to_string(n),
          .ours = [=] { *result = ours(); },
          .peer = n == few ? additions(data, n)
                           : memcpy_touching(data, bytes * static_cast<std::size_t>(n), 0.0),
          .difference = [=] { return std::abs(*result - definition()); }};
}

void add_sums(Arrays& data, int n, std::vector<Piece>& pieces) {
  double *const a = data.a, *const b = data.b, *const c = data.c, *const d = data.d;
  const auto add = [&](const std::string& name, std::size_t bytes, auto ours, auto definition) {
    pieces.push_back(sum_piece(data, name, bytes, n, ours, definition));
  };
  const auto meets = [=](int j) { return (j + 1) % n; };  // at lag 1 the last meets the first
  add(
      "Sum_mass", 8, [=] { return Sum_mass(a, n); },
      [=] { return sum_of(n, [=](int i) { return a[i]; }); });
  add(
      "Magnitude", 8, [=] { return Magnitude(a, n); },
      [=] { return std::sqrt(sum_of(n, [=](int i) { return a[i] * a[i]; })); });
  add(
      "Scalar_Multiply", 16, [=] { return Scalar_Multiply(a, b, n); },
      [=] { return sum_of(n, [=](int i) { return a[i] * b[i]; }); });
  add(
      "Correl real", 16, [=] { return Correl(a, b, n, n, 1); },
      [=] { return sum_of(n, [=](int j) { return a[meets(j)] * b[j]; }); });
  add(
      "Correl complex", 32, [=] { return Correl(a, b, c, d, n, n, 1); },
      [=] {
        const auto re = [=](int j) { return a[meets(j)] * c[j] + b[meets(j)] * d[j]; };
        const auto im = [=](int j) { return b[meets(j)] * c[j] - a[meets(j)] * d[j]; };
        const double real = sum_of(n, re);
        const double imaginary = sum_of(n, im);
        return std::sqrt(imaginary * imaginary + real * real);
      });
}

/// Work on `many` elements that touches so many bytes each. What it gives is right when right(i)
/// holds for every element.
template <class Right>
Piece memory_piece(Arrays& data, const std::string& name, std::size_t bytes,
                   std::function<void()> ours, Right right) {
  return {.name = name,
          .ours = std::move(ours),
          .peer = memcpy_touching(data, bytes * many),
          .difference = [=] { return sum_of(many, [&](int i) { return right(i) ? 0.0 : 1.0; }); }};
}

/// Both forms of Transform_to_double, from `parts` elements a pixel.
template <class Element>
void add_conversions(Arrays& data, const std::string& name, int type, int parts,
                     std::vector<Piece>& pieces) {
  auto pixels = std::make_shared<std::vector<Element>>(static_cast<std::size_t>(parts) * many);
  for (std::size_t i = 0; i < pixels->size(); ++i) {
    (*pixels)[i] = static_cast<Element>(data.inputs[i] * 3e4);
  }
  const auto part = [=](int i, int which) {
    return which < parts
               ? static_cast<double>((*pixels)[static_cast<std::size_t>(i * parts + which)])
               : 0.0;
  };
  double *const out = data.out, *const out2 = data.out2;
  const std::size_t read = static_cast<std::size_t>(parts) * sizeof(Element);
  pieces.push_back(memory_piece(
      data, "Transform_to_double parts " + name, read + 16,
      [=] { Transform_to_double(pixels->data(), type, out, out2, many); },
      [=](int i) { return out[i] == part(i, 0) && out2[i] == part(i, 1); }));
  pieces.push_back(memory_piece(
      data, "Transform_to_double value " + name, read + 8,
      [=] { Transform_to_double(pixels->data(), type, out, many); },
      [=](int i) {
        const double re = part(i, 0);
        const double im = part(i, 1);
        return out[i] == (parts == 1 ? re : std::sqrt(re * re + im * im));
      }));
}

/// The scan `ours` finds the first element that no other `precedes`.
template <class Precedes>
Piece scan_piece(Arrays& data, const std::string& name, int (*ours)(double*, int),
                 Precedes precedes) {
  auto position = std::make_shared<int>();
  const double* const a = data.a;
  return memory_piece(
      data, name, 8, [=, &data] { *position = ours(data.a, many); },
      [=](int i) {
        const double found = a[*position];
        return !precedes(a[i], found) && (i >= *position || precedes(found, a[i]));
      });
}

/// The scan `ours` finds the value of such an element.
template <class Precedes>
Piece value_piece(Arrays& data, const std::string& name, double (*ours)(double*, int),
                  Precedes precedes) {
  auto value = std::make_shared<double>();
  const double right = *std::min_element(data.a, data.a + many, precedes);
  return memory_piece(
      data, name, 8, [=, &data] { *value = ours(data.a, many); },
      [=](int) { return std::abs(*value) == std::abs(right); });
}

void add_scans(Arrays& data, std::vector<Piece>& pieces) {
  const auto less = [](double x, double y) { return x < y; };
  const auto greater = [](double x, double y) { return x > y; };
  const auto nearer = [](double x, double y) { return std::abs(x) < std::abs(y); };
  const auto farther = [](double x, double y) { return std::abs(x) > std::abs(y); };
  pieces.push_back(value_piece(data, "Min_mass", Min_mass, less));
  pieces.push_back(value_piece(data, "Max_mass", Max_mass, greater));
  pieces.push_back(value_piece(data, "Min_mass_ABS", Min_mass_ABS, nearer));
  pieces.push_back(value_piece(data, "Max_mass_ABS", Max_mass_ABS, farther));
  pieces.push_back(scan_piece(data, "Max_mass_index", Max_mass_index, greater));
  pieces.push_back(scan_piece(data, "Min_mass_ABS_index", Min_mass_ABS_index, nearer));
  pieces.push_back(scan_piece(data, "Max_mass_ABS_index", Max_mass_ABS_index, farther));
}

void add_element_wise(Arrays& data, std::vector<Piece>& pieces) {
  double *const a = data.a, *const b = data.b, *const out = data.out;
  pieces.push_back(memory_piece(
      data, "Vec_Add", 24, [=] { Vec_Add(a, b, out, many); },
      [=](int i) { return out[i] == a[i] + b[i]; }));
  pieces.push_back(memory_piece(
      data, "Vec_Sub", 24, [=] { Vec_Sub(a, b, out, many); },
      [=](int i) { return out[i] == a[i] - b[i]; }));
  pieces.push_back(memory_piece(
      data, "Const_Multiply", 16, [=] { Const_Multiply(3.0, a, out, many); },
      [=](int i) { return out[i] == 3.0 * a[i]; }));
  const double norm = Magnitude(a, many);
  pieces.push_back(memory_piece(
      data, "Normalize", 24, [=] { Normalize(a, out, many); },
      [=](int i) { return out[i] == a[i] / norm; }));
}

/// A function of i beside its formula with the C library's functions.
template <class Ours, class Theirs>
Piece function_piece(const std::string& name, Ours ours, Theirs theirs) {
  auto our_results = std::make_shared<std::vector<double>>(few);
  auto their_results = std::make_shared<std::vector<double>>(few);
  const auto fill = [](std::vector<double>& results, auto function) {
    for (int i = 0; i < few; ++i) {
      results[static_cast<std::size_t>(i)] = function(i);
    }
  };
  return {.name = name,
          .ours = [=] { fill(*our_results, ours); },
          .peer = {"C library", [=] { fill(*their_results, theirs); }, 2.0},
          .difference =
              [=] {
                double largest = 0.0;
                for (std::size_t i = 0; i < few; ++i) {
                  const double right = (*their_results)[i];
                  largest = std::max(largest, std::abs((*our_results)[i] - right) /
                                                  std::max(1.0, std::abs(right)));
                }
                return largest;
              },
          .tolerance = 1e-15};
}

void add_functions(Arrays& data, std::vector<Piece>& pieces) {
  constexpr double two_pi = 6.283185307179586;
  double *const a = data.a, *const b = data.b;
  const auto phase = [](int i) { return i * two_pi / few; };
  const auto positive = [=](int i) { return 1.0 + std::abs(a[i]) * 1000.0; };
  pieces.push_back(function_piece(
      "Hanning", [](int i) { return Hanning(i, few); },
      [=](int i) { return 1.0 - std::cos(phase(i)); }));
  pieces.push_back(function_piece(
      "Hamming", [](int i) { return Hamming(0.54, i, few); },
      [=](int i) { return std::cos(phase(i)) * (1.0 - 0.54) + 0.54; }));
  pieces.push_back(function_piece(
      "Power", [=](int i) { return Power(positive(i), b[i]); },
      [=](int i) { return std::exp(b[i] * std::log(positive(i))); }));
  pieces.push_back(function_piece(
      "AcTan", [=](int i) { return AcTan(a[i], b[i]); },
      [=](int i) {
        const double angle = std::atan2(a[i], b[i]);
        return angle < 0.0 ? angle + two_pi : angle;
      }));
  pieces.push_back(function_piece(
      "Power_of_two", [=](int i) { return Power_of_two(positive(i)); },
      [=](int i) {
        double x = positive(i);
        double count = 0.0;
        for (; x > 2.0; ++count) {
          x *= 0.5;
        }
        return std::log(x) / std::log(2.0) + count;
      }));
  pieces.push_back(function_piece(
      "Angle", [=](int i) { return Angle(a + i, b + i, 3); },
      [=](int i) {
        const auto product = [i](const double* x, const double* y) {
          return sum_of(3, [=](int j) { return x[i + j] * y[i + j]; });
        };
        return std::acos(product(a, b) / (std::sqrt(product(a, a)) * std::sqrt(product(b, b))));
      }));
}

}  // namespace

int main(int argc, char** argv) {
  Arrays data;
  std::vector<Piece> pieces;
  add_sums(data, few, pieces);
  add_sums(data, many, pieces);
  add_conversions<std::int16_t>(data, "int16", TD_INT16, 1, pieces);
  add_conversions<std::int16_t>(data, "complex int16", TD_COMPLEX_INT16, 2, pieces);
  add_conversions<float>(data, "float32", TD_FLOAT32, 1, pieces);
  add_conversions<float>(data, "complex float32", TD_COMPLEX_FLOAT32, 2, pieces);
  add_scans(data, pieces);
  add_element_wise(data, pieces);
  add_functions(data, pieces);
  return run_side_by_side(pieces, argc, argv);
}
