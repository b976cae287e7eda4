#include "digests.h"

#include <sarnum/c.h>
#include <sarnum/sarnum.h>

#include <algorithm>
#include <bit>
#include <cstddef>
#include <deque>
#include <functional>
#include <limits>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>

namespace sarnum::self_check {
namespace {

/// Binary exponents that numbers are drawn from, both included.
struct Range {
  int least, most;
};
constexpr Range ordinary = {-8, 0}, wide = {-30, 30}, subnormal = {-1100, -1100};

template <class Real>
using BitsOf = std::conditional_t<sizeof(Real) == 4, std::uint32_t, std::uint64_t>;

/// The data of one digest and the hash of what comes of them.
class Digester {
 public:
  explicit Digester(const std::string& name) {
    for (const char c : name) {
      state_ = mixed(state_ ^ static_cast<unsigned char>(c));
    }
  }

  std::uint64_t value() const { return hash_; }

  /// From now on a zero has no sign.
  void ignore_signs_of_zeros() { zeros_are_alike_ = true; }

  std::uint64_t bits() {
    state_ += 0x9e3779b97f4a7c15U;
    return mixed(state_);
  }

  /// A number of either sign; a subnormal one where the exponent is below all others.
  template <class Real>
  Real number(Range exponents) {
    if constexpr (std::is_same_v<Real, long double>) {
      return number<double>(exponents);
    } else {
      using Bits = BitsOf<Real>;
      constexpr int fraction_bits = std::numeric_limits<Real>::digits - 1;
      constexpr Bits sign = ~(~Bits{0} >> 1), fraction = (Bits{1} << fraction_bits) - 1;
      const auto choices = static_cast<std::uint64_t>(exponents.most - exponents.least + 1);
      const int exponent = exponents.least + static_cast<int>((bits() >> 32) % choices);
      const int biased = std::max(exponent + std::numeric_limits<Real>::max_exponent - 1, 0);
      const auto random = static_cast<Bits>(bits());
      return std::bit_cast<Real>((random & (sign | fraction)) | static_cast<Bits>(biased)
                                                                    << fraction_bits);
    }
  }

  template <class Real>
  std::vector<Real> numbers(std::size_t count, Range exponents = ordinary) {
    std::vector<Real> made(count);
    for (Real& one : made) {
      one = number<Real>(exponents);
    }
    return made;
  }

  void add(int value) { add_bits(static_cast<std::uint64_t>(std::int64_t{value})); }
  void add(double value) { add_real(value); }
  void add(float value) { add_real(value); }
  /// The library leaves doubles in it.
  void add(long double value) { add_real(static_cast<double>(value)); }
  template <class T>
  void add(const std::vector<T>& values) {
    for (const T& value : values) {
      add(value);
    }
  }

 private:
  static std::uint64_t mixed(std::uint64_t x) {
    x = (x ^ (x >> 30)) * 0xbf58476d1ce4e5b9U;
    x = (x ^ (x >> 27)) * 0x94d049bb133111ebU;
    return x ^ (x >> 31);
  }

  void add_bits(std::uint64_t bits) { hash_ = mixed(hash_ + 0x9e3779b97f4a7c15U) ^ mixed(bits); }

  /// Looks at bits alone: a unit that takes subnormal numbers for zero compares them so.
  template <class Real>
  void add_real(Real value) {
    using Bits = BitsOf<Real>;
    constexpr auto infinity = std::bit_cast<Bits>(std::numeric_limits<Real>::infinity());
    const auto bits = std::bit_cast<Bits>(value);
    const Bits magnitude = bits & (~Bits{0} >> 1);
    const bool is_nan = magnitude > infinity;
    add_bits(is_nan ? infinity + 1 : magnitude == 0 && zeros_are_alike_ ? 0 : bits);
  }

  std::uint64_t state_ = 0, hash_ = 0;
  bool zeros_are_alike_ = false;
};

struct Row {
  std::string name;
  std::function<void(Digester&)> digest;
};
using Rows = std::vector<Row>;

// --- Routines on arrays: by the types of their parameters

/// What an int says, and how long arrays are then.
struct Shape {
  std::vector<int> sizes;
  std::size_t (*elements)(int size);
  bool zeros_are_alike;
};
std::size_t of_a_line(int exponent) {
  return std::size_t{2} << exponent;
}
std::size_t of_a_vector(int count) {
  return static_cast<std::size_t>(count) + 40;
}
std::size_t of_a_matrix(int order) {
  return static_cast<std::size_t>((order + 1) * (order + 1));
}
const Shape lines = {{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 18}, of_a_line, true};
const Shape vectors = {{1, 2, 3, 5, 16, 33, 100, 1000}, of_a_vector, false};
const Shape signals = {vectors.sizes, of_a_vector, true};
const Shape matrices = {{1, 2, 3, 4, 5, 24, 33, 64, 70, 130}, of_a_matrix, false};

/// The arguments of one call: random arrays and numbers, and the size as every int.
struct Arguments {
  Digester& digester;
  int size;
  std::size_t elements;
  Range range;
  std::tuple<std::deque<std::vector<double>>, std::deque<std::vector<float>>,
             std::deque<std::vector<long double>>>
      arrays = {};

  template <class Parameter>
  Parameter make() {
    if constexpr (std::is_same_v<Parameter, int>) {
      return size;
    } else if constexpr (std::is_pointer_v<Parameter>) {
      using Element = std::remove_pointer_t<Parameter>;
      auto& of_its_type = std::get<std::deque<std::vector<Element>>>(arrays);
      of_its_type.push_back(digester.numbers<Element>(elements, range));
      return of_its_type.back().data();
    } else {
      return digester.number<Parameter>(range);
    }
  }

  template <class Result, class... Parameters>
  void call(Result (*routine)(Parameters...)) {
    const std::tuple<Parameters...> made{make<Parameters>()...};
    if constexpr (std::is_void_v<Result>) {
      std::apply(routine, made);
    } else {
      digester.add(std::apply(routine, made));
    }
    std::apply([&](const auto&... of) { (add_all(of), ...); }, arrays);
  }

  void add_all(const auto& of_a_type) {
    for (const auto& array : of_a_type) {
      digester.add(array);
    }
  }
};

/// @param routine  a function, or a lambda that calls one.
template <class Routine>
Row on_arrays(const std::string& name, const Shape& shape, Routine routine,
              const std::vector<Range>& ranges = {ordinary, wide}) {
  return {name, [=, &shape](Digester& d) {
            if (shape.zeros_are_alike) {
              d.ignore_signs_of_zeros();
            }
            for (const int size : shape.sizes) {
              for (const Range range : ranges) {
                Arguments{d, size, shape.elements(size), range}.call(+routine);
              }
            }
          }};
}

template <class Real>
void add_transforms_of_lines(Rows& rows, const std::string& type) {
  const auto add = [&](const std::string& name, auto transform) {
    rows.push_back(on_arrays(name + "(" + type + ")", lines, transform));
  };
  add("fft", [](Real* re, Real* im, int m) { fft(re, im, m); });
  add("ifft", [](Real* re, Real* im, int m) { ifft(re, im, m); });
  add("fft_Fast", [](Real* re, Real* im, int m) {
    init_ibitr(m);
    fft_Fast(re, im, m);
  });
  add("ifft_Fast", [](Real* re, Real* im, int m) {
    init_ibitr(m);
    ifft_Fast(re, im, m);
  });
  add("CFFTClass::fft", [](Real* re, Real* im, int m) { CFFTClass().fft(re, im, m); });
  add("CFFTClass::ifft", [](Real* re, Real* im, int m) { CFFTClass().ifft(re, im, m); });
  add("CFFTClass::fft_new", [](Real* re, Real* im, int m) {
    CFFTClass().fft_new(re, im, m, 1);
    CFFTClass().fft_new(re, im, m, 0);
  });
}

void add_interleaved_transforms(Rows& rows) {
  const auto add = [&](const std::string& name, auto transform) {
    rows.push_back(on_arrays(name + "(float, interleaved)", lines, transform));
  };
  add("fft", [](float* data, int m) { fft(data, m); });
  add("ifft", [](float* data, int m) { ifft(data, m); });
  add("fft_Fast", [](float* data, int m) {
    init_ibitr(m);
    fft_Fast(data, m);
  });
  add("ifft_Fast", [](float* data, int m) {
    init_ibitr(m);
    ifft_Fast(data, m);
  });
}

void add_filters(Rows& rows) {
  rows.push_back(on_arrays("CFFTClass::SyntAlmaz", lines,
                           [](float* ref_re, float* ref_im, float* re, float* im, int m) {
                             CFFTClass().SyntAlmaz(ref_re, ref_im, re, im, (1 << m) * 2 / 3, m);
                           }));
  rows.push_back(on_arrays("FilterHighSp", signals, FilterHighSp));
  rows.push_back(on_arrays("FilterLowSp", signals, FilterLowSp));
  rows.push_back(on_arrays("ShiftData(double)", vectors,
                           [](double* re, double* im, int n) { ShiftData(re, im, n, n / 3); }));
  rows.push_back(on_arrays("ShiftData(COMPLEX_FLOAT32)", vectors, [](float* data, int n) {
    std::vector<COMPLEX_FLOAT32> line;
    for (int i = 0; i < n / 2; ++i) {
      line.push_back({data[2 * i], data[2 * i + 1]});
    }
    ShiftData(line.data(), n / 2, -n / 5);
    for (const COMPLEX_FLOAT32& one : line) {
      *data++ = one.re;
      *data++ = one.im;
    }
  }));
}

void add_vectors(Rows& rows) {
  const auto add = [&](const char* name, auto routine) {
    rows.push_back(on_arrays(name, vectors, routine));
  };
  add("Max_mass", Max_mass);
  add("Max_mass_ABS", Max_mass_ABS);
  add("Max_mass_ABS_index", Max_mass_ABS_index);
  add("Max_mass_index", Max_mass_index);
  add("Min_mass", Min_mass);
  add("Min_mass_ABS", Min_mass_ABS);
  add("Min_mass_ABS_index", Min_mass_ABS_index);
  add("Min_mass_index", Min_mass_index);
  add("Sum_mass", Sum_mass);
  add("Mean", Mean);
  add("Magnitude", Magnitude);
  add("Angle", Angle);
  add("Scalar_Multiply", Scalar_Multiply);
  add("Vec_Add", Vec_Add);
  add("Vec_Sub", Vec_Sub);
  add("Vector_Multiply", Vector_Multiply);
  add("Const_Multiply", Const_Multiply);
  add("Normalize", Normalize);
  add("Cross", Cross);
  add("Scale", [](double* in, double* out, int n) { Scale(in, out, n / 2 + 1, n); });
  add("Correl(real)",
      [](double* a, double* b, int n) { return Correl(a, b, n, n / 2 + 1, n / 3); });
  add("Correl(complex)", [](double* re1, double* im1, double* re2, double* im2, int n) {
    return Correl(re1, im1, re2, im2, n / 2 + 1, n, -n / 3);
  });
}

void add_linear_algebra(Rows& rows) {
  const auto add = [&](const char* name, auto routine) {
    rows.push_back(on_arrays(name, matrices, routine));
  };
  add("ChangeRow_IJ", [](int n, long double* a) { ChangeRow_IJ(1, n / 2 + 1, n, a); });
  add("Solve_System", Solve_System);
  add("LnAbsDeterminant", LnAbsDeterminant);
  add("MatrixInversion", MatrixInversion);
  add("Matrix_Multiply", [](long double* a, long double* b, long double* c, int n) {
    Matrix_Multiply(a, b, c, n, n / 2 + 1, n);
  });
}

void add_fits(Rows& rows) {
  const auto add = [&](const char* name, auto routine) {
    rows.push_back(on_arrays(name, vectors, routine));
  };
  add("lin_yr", [](double* a, double* b, double* x, int n) {
    return lin_yr(n, reinterpret_cast<double(*)[5]>(a), b, x);
  });
  add("mnk", [](double* y, double* x, double* c, int n) {
    for (int terms = 1; terms <= 5; c += terms++) {
      mnk(terms, n, y, x, c);
    }
  });
  add("mnk2", [](double* z, double* u, double* v, double* c, int n) {
    for (int degree = 0; degree <= 4; ++degree) {
      mnk2(degree, n, z, u, v, c);
      c += (degree + 1) * (degree + 2) / 2;
    }
  });
  add("CLagrangeInterpolation2D", [](double* x, double* y, double* z, double* c, int n) {
    double values = 0;
    for (int order = 0; order <= 4; ++order) {
      CLagrangeInterpolation2D fit(order, n, x, y, z);
      c = std::copy_n(fit.coefficients, fit.termCount, c);
      values += fit.GetInterpolatedValue(z[0], z[1]);
    }
    return values;
  });
  add("GetRectInterpolationCoefficients", GetRectInterpolationCoefficients);
}

// --- Routines on numbers

/// Numbers of all sizes, whole ones, powers of two and their neighbours, and the special ones.
std::vector<double> scalars(Digester& d) {
  constexpr double infinity = std::numeric_limits<double>::infinity();
  std::vector<double> all = {0.0, -0.0, infinity, -infinity,
                             std::numeric_limits<double>::quiet_NaN()};
  for (const Range range : {Range{-8, 6}, wide, Range{-200, 200}}) {
    const auto some = d.numbers<double>(400, range);
    all.insert(all.end(), some.begin(), some.end());
  }
  for (int i = 1; i <= 100; ++i) {
    all.insert(all.end(), {static_cast<double>(i), static_cast<double>(-i)});
  }
  for (std::int64_t power = 1; power <= std::int64_t{1} << 40; power *= 2) {
    for (const std::int64_t near : {power - 1, power, power + 1}) {
      all.push_back(static_cast<double>(near));
    }
  }
  return all;
}

template <class Result>
Row on_numbers(const char* name, Result (*routine)(double)) {
  return {name, [=](Digester& d) {
            for (const double x : scalars(d)) {
              d.add(routine(x));
            }
          }};
}

Row on_pairs(const char* name, double (*routine)(double, double)) {
  return {name, [=](Digester& d) {
            const std::vector<double> values = scalars(d);
            for (const double special : {0.0, -0.0, values[2], values[4], 1.0, 1.5, -2.5}) {
              for (const double x : values) {
                d.add(routine(special, x));
                d.add(routine(x, special));
              }
            }
            for (int i = 0; i < 2000; ++i) {
              const auto pair = d.numbers<double>(2, {-4, 3});
              d.add(routine(pair[0], pair[1]));
            }
          }};
}

/// The weights of a whole window, and a few beside it.
Row of_windows(const char* name, const std::vector<double>& parameters,
               double (*weight)(double parameter, int i, int n)) {
  return {name, [=](Digester& d) {
            for (const double parameter : parameters) {
              for (const int n : vectors.sizes) {
                for (int i = -2; i <= n + 2; ++i) {
                  d.add(weight(parameter, i, n));
                }
              }
            }
          }};
}

void add_scalars(Rows& rows) {
  rows.insert(rows.end(),
              {on_numbers("Sign", Sign),
               on_numbers("Qrt", Qrt),
               on_numbers("Cube", Cube),
               on_numbers("Radians", Radians),
               on_numbers("Degrees", Degrees),
               on_numbers("Fmod2p", Fmod2p),
               on_numbers("Power_of_two", Power_of_two),
               on_numbers("Add_to_Power_of_2", Add_to_Power_of_2),
               on_numbers("Bessel_NULL", Bessel_NULL),
               on_pairs("Min", Min),
               on_pairs("Max", Max),
               on_pairs("Min_ABS", Min_ABS),
               on_pairs("Max_ABS", Max_ABS),
               on_pairs("Modulus", Modulus),
               on_pairs("Power", Power),
               on_pairs("AcTan", AcTan),
               of_windows("Hanning", {0}, [](double, int i, int n) { return Hanning(i, n); }),
               of_windows("Hamming", {0.5, 0.54, 2}, Hamming),
               of_windows("Kaiser", {0, 0.5, 2.5, 6, 20, 65}, Kaiser),
               {"CFFTClass::CeilPowerOfTwo", [](Digester& d) {
                  for (int bit = 0; bit <= 30; ++bit) {
                    for (const int near : {-1, 0, 1}) {
                      d.add(CFFTClass().CeilPowerOfTwo((1 << bit) + near));
                    }
                  }
                }}});
}

// --- Rasters

/// Raw pixels of a type; each element has its own bits, whatever their order in memory.
std::vector<unsigned char> pixels(Digester& d, int type, int count) {
  std::vector<unsigned char> raw;
  const auto append = [&](auto element) {
    const auto* const bytes = reinterpret_cast<const unsigned char*>(&element);
    raw.insert(raw.end(), bytes, bytes + sizeof element);
  };
  for (int i = 0; i < (type > TD_FLOAT64 ? 2 * count : count); ++i) {
    switch (type) {
      case TD_FLOAT32:
      case TD_COMPLEX_FLOAT32:
        append(d.number<float>(ordinary));
        break;
      case TD_FLOAT64:
      case TD_COMPLEX_FLOAT64:
        append(d.number<double>(ordinary));
        break;
      case TD_UINT8:
      case TD_INT8:
      case TD_COMPLEX_UINT8:
      case TD_COMPLEX_INT8:
        append(static_cast<std::uint8_t>(d.bits()));
        break;
      case TD_UINT16:
      case TD_INT16:
      case TD_COMPLEX_UINT16:
      case TD_COMPLEX_INT16:
        append(static_cast<std::uint16_t>(d.bits()));
        break;
      default:
        append(static_cast<std::uint32_t>(d.bits()));
    }
  }
  return raw;
}

template <class Element>
std::vector<void*> row_pointers(std::vector<Element>& block, int rows) {
  std::vector<void*> pointers;
  for (std::size_t row = 0; row < static_cast<std::size_t>(rows); ++row) {
    pointers.push_back(block.data() + row * (block.size() / static_cast<std::size_t>(rows)));
  }
  return pointers;
}

using RasterTransform = int (*)(void** from, void** to, int width, int height, int type);

/// A raster of each size, and its transform, which is an array of Real that is not empty before.
template <class Real>
Row of_rasters(const std::string& name, int type, RasterTransform transform,
               const std::vector<std::pair<int, int>>& sizes) {
  return {name + "(type " + std::to_string(type) + ")", [=](Digester& d) {
            d.ignore_signs_of_zeros();
            for (const auto& [width, height] : sizes) {
              const auto padded = [](int side) { return 1 << CFFTClass().CeilPowerOfTwo(side); };
              auto image = pixels(d, type, width * height);
              auto spectrum =
                  d.numbers<Real>(static_cast<std::size_t>(2 * padded(width) * padded(height)));
              d.add(transform(row_pointers(image, height).data(),
                              row_pointers(spectrum, padded(height)).data(), width, height, type));
              d.add(spectrum);
            }
          }};
}

void add_rasters(Rows& rows) {
  const auto add = [&](const std::string& name, int type, RasterTransform transform,
                       const std::vector<std::pair<int, int>>& sizes) {
    const bool gives_doubles = type == TD_FLOAT64 || type == TD_COMPLEX_FLOAT64;
    rows.push_back(gives_doubles ? of_rasters<double>(name, type, transform, sizes)
                                 : of_rasters<float>(name, type, transform, sizes));
  };
  for (int type = TD_UINT8; type <= TD_COMPLEX_INT32; ++type) {
    add("CFFTClass::FFT_2D", type,
        [](auto... image) { return CFFTClass().FFT_2D(image..., nullptr); },
        {{1, 1}, {5, 3}, {37, 21}, {150, 70}});
  }
  for (const int type : {TD_INT16, TD_COMPLEX_FLOAT32, TD_COMPLEX_FLOAT64}) {
    add("CFFTClass::FFT_2D_NEW", type,
        [](auto... image) { return CFFTClass().FFT_2D_NEW(image..., 1, nullptr); },
        {{1, 1}, {5, 3}, {37, 21}, {150, 70}});
  }
  for (const int type : {TD_COMPLEX_FLOAT32, TD_COMPLEX_FLOAT64}) {
    add("CFFTClass::IFFT_2D", type,
        [](auto... image) { return CFFTClass().IFFT_2D(image..., nullptr); },
        {{1, 2}, {8, 4}, {256, 128}});
  }
  rows.push_back({"CVeryFastFT", [](Digester& d) {
                    d.ignore_signs_of_zeros();
                    for (const int exponent : {1, 3, 7}) {
                      CVeryFastFT square(exponent);
                      auto block = d.numbers<float>(
                          static_cast<std::size_t>(square.size * (square.size + 1)));
                      auto spectrum = block;
                      d.add(square.FFT_2D_Rect(block.data(), spectrum.data()));
                      d.add(spectrum);
                      d.add(square.IFFT_2D_Rect(block.data(), spectrum.data()));
                      d.add(spectrum);
                    }
                  }});
  rows.push_back({"Transform_to_double", [](Digester& d) {
                    constexpr int count = 1000;
                    for (int type = TD_UINT8; type <= TD_COMPLEX_INT32; ++type) {
                      auto raw = pixels(d, type, count);
                      std::vector<double> re(count), im(count), amplitude(count);
                      Transform_to_double(raw.data(), type, re.data(), im.data(), count);
                      Transform_to_double(raw.data(), type, amplitude.data(), count);
                      d.add(re);
                      d.add(im);
                      d.add(amplitude);
                    }
                  }});
}

void digest_multilooking(Digester& d, const std::string& folder) {
  constexpr int width = 61, height = 75;
  const std::string in = folder + "sarnum_self_check_in", out = folder + "sarnum_self_check_out";
  CFileLayer image(nullptr);
  d.add(image.Create(in.c_str(), width, height, TD_FLOAT32, 273, 7, nullptr, 0));
  for (int row = 0; row < height; ++row) {
    d.add(image.WriteRow(d.numbers<float>(width).data(), 0, row, width, 1));
  }
  image.Close();
  for (const auto& [across, down] : {std::pair(1, 1), {4, 4}, {3, 36}, {100, 5}}) {
    CCustomMeterInfo meter;
    d.add(NoncoherentAccumulationR(out.c_str(), in.c_str(), across, down, &meter));
    d.add(image.Open(out.c_str(), 272, 0, 0x80000000UL));
    for (int row = 0; row < image.Height(); ++row, image.ShiftBlock(1, 1)) {
      const auto* const means = static_cast<const float*>(image.GetRowAddr(row));
      d.add(std::vector<float>(means, means + image.Width()));
    }
    image.Close();
  }
}

// --- The C interface

struct Plan {
  Plan(std::size_t n, sarnum_type precision) { sarnum_plan_create(n, precision, &plan); }
  Plan(const Plan&) = delete;
  Plan& operator=(const Plan&) = delete;
  ~Plan() { sarnum_plan_destroy(plan); }
  sarnum_plan* plan = nullptr;
};

constexpr sarnum_options two_threads = {sizeof(sarnum_options), 2, nullptr, nullptr};

/// Calls `use` with a plan of each length, a direction and a scaling.
template <class Use>
void with_plans(Digester& d, sarnum_type precision, const Use& use) {
  d.ignore_signs_of_zeros();
  for (const int m : {0, 1, 2, 3, 5, 8, 10, 17}) {
    const Plan p(std::size_t{1} << m, precision);
    for (const sarnum_direction direction : {SARNUM_FORWARD, SARNUM_INVERSE}) {
      for (const sarnum_scaling scaling : {SARNUM_UNSCALED, SARNUM_BY_LENGTH, SARNUM_BY_ROOT}) {
        use(p.plan, direction, scaling);
      }
    }
  }
}

template <class Real>
void add_plans(Rows& rows, const std::string& type, sarnum_type precision) {
  rows.push_back({"sarnum_transform(" + type + ")", [=](Digester& d) {
                    with_plans(d, precision, [&](auto* plan, auto direction, auto scaling) {
                      auto line = d.numbers<Real>(2 * sarnum_plan_length(plan));
                      sarnum_transform(plan, direction, scaling, line.data(), nullptr);
                      d.add(line);
                    });
                  }});
  rows.push_back({"sarnum_transform_lines(" + type + ")", [=](Digester& d) {
                    with_plans(d, precision, [&](auto* plan, auto direction, auto scaling) {
                      constexpr std::size_t count = 3;
                      auto re = d.numbers<Real>(count * sarnum_plan_length(plan)), im = re;
                      sarnum_transform_lines(plan, direction, scaling, re.data(), im.data(), count,
                                             count, 1, &two_threads);
                      d.add(re);
                      d.add(im);
                    });
                  }});
  rows.push_back({"sarnum_compress_lines(" + type + ")", [=](Digester& d) {
                    d.ignore_signs_of_zeros();
                    const Plan p(1024, precision);
                    auto reference = d.numbers<Real>(600), lines_of_two = d.numbers<Real>(4096);
                    sarnum_compress_lines(p.plan, reference.data(), nullptr, 300,
                                          lines_of_two.data(), nullptr, 2, 1, 1024, nullptr);
                    d.add(lines_of_two);
                  }});
  rows.push_back({"sarnum_transform_2d(" + type + ")", [=](Digester& d) {
                    d.ignore_signs_of_zeros();
                    const Plan across(512, precision), down(256, precision);
                    for (int pixel = SARNUM_UINT8; pixel <= SARNUM_COMPLEX_INT32; ++pixel) {
                      auto image = pixels(d, pixel, 400 * 150);
                      std::vector<Real> target(2 * 512 * 256);
                      sarnum_transform_2d(across.plan, down.plan, SARNUM_FORWARD, SARNUM_BY_ROOT,
                                          pixel, row_pointers(image, 150).data(), 400, 150,
                                          row_pointers(target, 256).data(), &two_threads);
                      d.add(target);
                    }
                  }});
}

template <class Real>
void add_looks(Rows& rows, const std::string& type, sarnum_type means_type) {
  rows.push_back({"sarnum_multilook(" + type + ")", [=](Digester& d) {
                    constexpr std::size_t width = 600, height = 220, columns = 86;
                    for (int pixel = SARNUM_UINT8; pixel <= SARNUM_COMPLEX_INT32; ++pixel) {
                      const auto image = pixels(d, pixel, width * height);
                      std::vector<Real> means(columns * 55);
                      for (int detection = pixel > SARNUM_FLOAT64 ? SARNUM_INTENSITY : SARNUM_AS_IS;
                           detection <= SARNUM_AMPLITUDE; ++detection) {
                        sarnum_multilook_options looks = SARNUM_MULTILOOK_INIT(7, 4);
                        looks.detection = detection;
                        sarnum_multilook(pixel, image.data(), width, height,
                                         static_cast<std::ptrdiff_t>(image.size() / height),
                                         means_type, means.data(), columns * sizeof(Real), &looks,
                                         &two_threads);
                        d.add(means);
                      }
                    }
                  }});
}

// --- All of them

/// A transform of an impulse consists of the factors in the tables.
void digest_tables(Digester& d) {
  d.ignore_signs_of_zeros();
  for (int m = 1; m <= 18; ++m) {
    d.add(init_ibitr(m));
    std::vector<double> re(std::size_t{1} << m), im(re.size());
    re[1] = 1.0;
    fft_Fast(re.data(), im.data(), m);
    d.add(re);
    d.add(im);
    d.add(ibitr(static_cast<int>(d.bits() >> 33), m));
  }
}

void add_subnormal_numbers(Rows& rows) {
  const auto add = [&](const std::string& name, const Shape& shape, auto routine) {
    rows.push_back(on_arrays(of_subnormal_numbers + name, shape, routine, {subnormal}));
  };
  add("fft(double)", lines, [](double* re, double* im, int m) { fft(re, im, m); });
  add("fft(float)", lines, [](float* re, float* im, int m) { fft(re, im, m); });
  add("Sum_mass", vectors, Sum_mass);
  add("Solve_System", matrices, Solve_System);
  add("AcTan", vectors, AcTan);
  add("Power", vectors, [](int n) { return Power(2.0, -1022.5 - n % 50); });
}

Rows all_rows(const std::string& folder) {
  Rows rows = {{"tables of the transforms", digest_tables}};
  add_transforms_of_lines<double>(rows, "double");
  add_transforms_of_lines<float>(rows, "float");
  add_interleaved_transforms(rows);
  add_rasters(rows);
  add_filters(rows);
  add_scalars(rows);
  add_vectors(rows);
  add_linear_algebra(rows);
  add_fits(rows);
  rows.push_back(
      {"NoncoherentAccumulationR", [=](Digester& d) { digest_multilooking(d, folder); }});
  add_plans<float>(rows, "float", SARNUM_FLOAT32);
  add_plans<double>(rows, "double", SARNUM_FLOAT64);
  add_looks<float>(rows, "float", SARNUM_FLOAT32);
  add_looks<double>(rows, "double", SARNUM_FLOAT64);
  add_subnormal_numbers(rows);
  return rows;
}

constexpr std::pair<std::string_view, std::uint64_t> published[] = {
#include "published.inc"
};

std::uint64_t published_value(std::string_view name) {
  for (const auto& [known, value] : published) {
    if (known == name) {
      return value;
    }
  }
  return 0;
}

}  // namespace

std::vector<Digest> computed_digests(const std::string& folder) {
  std::vector<Digest> digests;
  for (const Row& row : all_rows(folder)) {
    Digester digester(row.name);
    row.digest(digester);
    digests.push_back({row.name, digester.value(), published_value(row.name)});
  }
  delete_ibitr();
  return digests;
}

}  // namespace sarnum::self_check
