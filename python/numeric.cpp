// sarnum.numeric: functions of numbers, vectors and pixels, windows, correlation.
//
// Nothing here is worked on in place, so inputs may be anything that becomes doubles exactly.
#include <pybind11/stl.h>

#include <algorithm>
#include <array>
#include <complex>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "arrays.h"
#include "bindings.h"
#include "sarnum/numeric/correlation.h"
#include "sarnum/numeric/pixel_types.h"
#include "sarnum/numeric/scalar.h"
#include "sarnum/numeric/statistics.h"
#include "sarnum/numeric/vectors.h"
#include "sarnum/numeric/windows.h"

namespace sarnum::python {

namespace {

// --- Functions of numbers ----------------------------------------------------------------------

template <typename Result>
void bind_function(py::module_& module, const char* name, Result (*apply)(double),
                   const char* doc) {
  module.def(
      name,
      [name, apply](const py::object& x) {
        return elementwise<double>(name, std::array{"x"}, std::array{x}, apply);
      },
      py::arg("x"), doc);
}

void bind_function(py::module_& module, const char* name, double (*apply)(double, double),
                   const char* first, const char* second, const char* doc) {
  module.def(
      name,
      [=](const py::object& a, const py::object& b) {
        return elementwise<double>(name, std::array{first, second}, std::array{a, b}, apply);
      },
      py::arg(first), py::arg(second), doc);
}

void bind_functions(py::module_& module) {
  bind_function(module, "minimum", Min, "a", "b", R"(minimum(a, b)

a where b > a, otherwise b: the smaller of two, element by element (C++: Min).

On a tie, zeros of different sign included, and when either is NaN, it is b.
)");
  bind_function(module, "maximum", Max, "a", "b", R"(maximum(a, b)

a where a > b, otherwise b: the larger of two, element by element (C++: Max).

On a tie, and when either is NaN, it is b.
)");
  bind_function(module, "minimum_abs", Min_ABS, "a", "b", R"(minimum_abs(a, b)

a where |b| > |a|, otherwise b: the one nearer to zero, with its sign (C++: Min_ABS).
)");
  bind_function(module, "maximum_abs", Max_ABS, "a", "b", R"(maximum_abs(a, b)

a where |a| > |b|, otherwise b: the one farther from zero, with its sign (C++: Max_ABS).
)");
  bind_function(module, "sign", Sign, R"(sign(x)

1 where x >= 0, otherwise -1 (C++: Sign). Never 0: zero of either sign gives 1, NaN gives -1.
)");
  bind_function(module, "square", Qrt, R"(square(x)

x x (C++: Qrt, which despite its name is no root).
)");
  bind_function(module, "cube", Cube, R"(cube(x)

(x x) x (C++: Cube).
)");
  bind_function(module, "power", Power, "x", "y", R"(power(x, y)

x to the power y for positive x, as exp(y log x) (C++: Power).

The error grows with y log x: power(2, 10) need not be 1024 exactly. NaN for x <= 0 and for NaN; use
numpy.power for integral powers and for x <= 0.
)");
  bind_function(module, "radians", Radians, R"(radians(x)

Degrees to radians, (x pi) / 180 (C++: Radians).
)");
  bind_function(module, "degrees", Degrees, R"(degrees(x)

Radians to degrees, (x 180) / pi (C++: Degrees).
)");
  bind_function(module, "modulus", Modulus, "a", "b", R"(modulus(a, b)

Remainder of a / b, lifted into [0, b) for a positive divisor (C++: Modulus).

r = a - trunc(a / b) b, plus b where r is not >= 0. A negative divisor keeps this rule:
modulus(5, -3) is 2, but modulus(-5, -3) is -5. Digits are lost as |a / b| grows, and from about 13
on the result can be outside [0, b) by a rounding error of a; for the exact remainder take
numpy.fmod. NaN when b is 0 or an argument is not finite.
)");
  bind_function(module, "wrap_angle", Fmod2p, R"(wrap_angle(x)

An angle in radians, normalised to [0, 2 pi) by the steps of modulus() (C++: Fmod2p).

Of an angle of 1e10 about six decimals are left. NaN when x is not finite.
)");
  bind_function(module, "direction", AcTan, "y", "x", R"(direction(y, x)

Direction of the point (x, y) in radians, in [0, 2 pi) (C++: AcTan). y comes first.

-0 stays -0; an angle so close below zero that adding 2 pi rounds gives 2 pi itself.
)");
  bind_function(module, "log2", Power_of_two, R"(log2(x)

Base-2 logarithm, not rounded, exact for powers of two from 1 up (C++: Power_of_two).

-inf for 0, NaN for negative numbers and NaN.
)");
  bind_function(module, "next_power_of_two", Add_to_Power_of_2, R"(next_power_of_two(x)

The power of two at or above x, at least 2: the size of an FFT buffer (C++: Add_to_Power_of_2).

The test is made on the rounded quotient log(x) / log(2): 2^29 may give 2^30. Sizes above 2^30 are
out of reach: -2147483648 for 2^30 < x < 2^31 and 0 for 2^31 < x < 2^32, then 2 again. 2 for NaN.
)");
  bind_function(module, "bessel_i0", Bessel_NULL, R"(bessel_i0(x)

I0(x), the modified Bessel function of the first kind of order zero (C++: Bessel_NULL).

By its power series up to the first term not above 1e-8: for small x about 8 decimals are right, for
x from about 15 on nearly all digits. NaN for |x| from 69.3 on.
)");
}

// --- Arrays ------------------------------------------------------------------------------------

template <typename Result>
void bind_statistic(py::module_& module, const char* name, Result (*of)(double*, int),
                    const char* doc) {
  module.def(
      name,
      [name, of](const py::object& a) {
        const auto input = exact_vector<double>(a, {name, "a"});
        const Unlocked unlocked;
        return of(elements(input), static_cast<int>(input.size()));
      },
      py::arg("a"), doc);
}

py::object resample(const py::object& a, int count) {
  const auto input = exact_vector<double>(a, {"resample", "a"});
  if (count < 1) {
    value_error({"resample", "count"}, "is " + std::to_string(count) + ", less than 1");
  }
  py::array_t<double> result(count);
  double* const to = result.mutable_data();
  {
    const Unlocked unlocked;
    std::vector<double> padded(input.data(), input.data() + input.size());
    padded.push_back(padded.back());  // it is read, with a weight of about zero
    Scale(padded.data(), to, static_cast<int>(input.size()), count);
  }
  return result;
}

void bind_statistics(py::module_& module) {
  bind_statistic(module, "min_value", Min_mass, R"(min_value(a)

The smallest element of a vector (C++: Min_mass).

The first of equal ones; NaNs are passed over, but a NaN in a[0] stays.
)");
  bind_statistic(module, "max_value", Max_mass, R"(max_value(a)

The largest element of a vector (C++: Max_mass). NaN as in min_value().
)");
  bind_statistic(module, "min_abs_value", Min_mass_ABS, R"(min_abs_value(a)

The element of smallest absolute value, with its sign (C++: Min_mass_ABS). NaN as in min_value().
)");
  bind_statistic(module, "max_abs_value", Max_mass_ABS, R"(max_abs_value(a)

The element of largest absolute value, with its sign (C++: Max_mass_ABS). NaN as in min_value().
)");
  bind_statistic(module, "min_index", Min_mass_index, R"(min_index(a)

len(a) - 1, whatever the elements (C++: Min_mass_index).

**Not the position of the smallest element**: for that, call max_index() on the negated vector.
)");
  bind_statistic(module, "max_index", Max_mass_index, R"(max_index(a)

Position of the first largest element (C++: Max_mass_index). NaN as in min_value().
)");
  bind_statistic(module, "min_abs_index", Min_mass_ABS_index, R"(min_abs_index(a)

Position of the first element of smallest absolute value (C++: Min_mass_ABS_index).
)");
  bind_statistic(module, "max_abs_index", Max_mass_ABS_index, R"(max_abs_index(a)

Position of the first element of largest absolute value (C++: Max_mass_ABS_index).
)");
  bind_statistic(module, "sum", Sum_mass, R"(sum(a)

a[0] + a[1] + ..., one addition after another from 0, in double (C++: Sum_mass).
)");
  bind_statistic(module, "mean", Mean, R"(mean(a)

sum(a) / len(a) (C++: Mean).
)");
  bind_statistic(module, "magnitude", Magnitude, R"(magnitude(a)

Euclidean norm of a vector, not scaled: infinite where the sum of squares is (C++: Magnitude).
)");
  module.def("resample", resample, py::arg("a"), py::arg("count"), R"(resample(a, count)

Resamples a vector to `count` samples by linear interpolation (C++: Scale).

The first output is a[0], the last a[-1] (to rounding), those between are at even distances; a single
output is a[0]. Fewer outputs than inputs are no averages: filter first where aliasing matters.

Parameters
----------
a : array_like
    One axis, one or more samples that are exactly float64.
count : int
    At least 1.

Returns
-------
ndarray of float64
)");
}

// --- Vectors -----------------------------------------------------------------------------------

template <typename Work>
py::object vector_result(const py::array_t<double>& a, const py::object& out, const char* function,
                         Work work) {
  py::array_t<double> result = vector_to_write(out, {function, "out"}, a.size());
  double* const to = result.mutable_data();
  {
    const Unlocked unlocked;
    work(to, static_cast<int>(a.size()));
  }
  return result;
}

void bind_sum_of_vectors(py::module_& module, const char* name,
                         void (*work)(double*, double*, double*, int), const char* doc) {
  module.def(
      name,
      [=](const py::object& a, const py::object& b, const py::object& out) {
        const auto first = exact_vector<double>(a, {name, "a"});
        const auto second = exact_vector<double>(b, {name, "b"}, first.size());
        return vector_result(first, out, name, [&](double* to, int n) {
          work(elements(first), elements(second), to, n);
        });
      },
      py::arg("a"), py::arg("b"), py::arg("out") = py::none(), doc);
}

void bind_product_of_vectors(py::module_& module, const char* name,
                             double (*work)(double*, double*, int), const char* doc) {
  module.def(
      name,
      [=](const py::object& a, const py::object& b) {
        const auto first = exact_vector<double>(a, {name, "a"});
        const auto second = exact_vector<double>(b, {name, "b"}, first.size());
        const Unlocked unlocked;
        return work(elements(first), elements(second), static_cast<int>(first.size()));
      },
      py::arg("a"), py::arg("b"), doc);
}

void bind_vectors(py::module_& module) {
  bind_sum_of_vectors(module, "add", Vec_Add, R"(add(a, b, out=None)

a[i] + b[i] (C++: Vec_Add).

Parameters
----------
a, b : array_like
    Vectors of one length, exactly float64.
out : ndarray of float64, optional
    A contiguous vector of that length, made anew when None. It may be an input; where it overlaps
    one at an offset, later elements see what has been written.

Returns
-------
ndarray
    `out`.
)");
  bind_sum_of_vectors(module, "subtract", Vec_Sub, R"(subtract(a, b, out=None)

a[i] - b[i] (C++: Vec_Sub). Arguments as in add().
)");
  module.def(
      "multiply_constant",
      [](double c, const py::object& v, const py::object& out) {
        const auto input = exact_vector<double>(v, {"multiply_constant", "v"});
        return vector_result(input, out, "multiply_constant",
                             [&](double* to, int n) { Const_Multiply(c, elements(input), to, n); });
      },
      py::arg("c"), py::arg("v"), py::arg("out") = py::none(),
      R"(multiply_constant(c, v, out=None)

c v[i]; the constant comes first (C++: Const_Multiply). Arguments as in add().
)");
  module.def(
      "normalize",
      [](const py::object& v, const py::object& out) {
        const auto input = exact_vector<double>(v, {"normalize", "v"});
        return vector_result(input, out, "normalize",
                             [&](double* to, int n) { Normalize(elements(input), to, n); });
      },
      py::arg("v"), py::arg("out") = py::none(), R"(normalize(v, out=None)

v[i] / |v|; a zero vector becomes NaN (C++: Normalize). Where only the norm underflows to 0, elements
become infinite. Arguments as in add().
)");
  bind_product_of_vectors(module, "dot", Scalar_Multiply, R"(dot(a, b)

Dot product of two vectors, terms added one after another (C++: Scalar_Multiply).
)");
  bind_product_of_vectors(module, "angle", Angle, R"(angle(a, b)

Angle between two vectors in radians, acos(a b / (|a| |b|)) (C++: Angle).

The quotient is not limited: for parallel vectors it may round beyond 1, which gives NaN, as a vector
of length zero does.
)");
  module.def(
      "cross",
      [](const py::object& a, const py::object& b) {
        const auto first = exact_vector<double>(a, {"cross", "a"}, 3);
        const auto second = exact_vector<double>(b, {"cross", "b"}, 3);
        py::array_t<double> result(3);
        Cross(elements(first), elements(second), result.mutable_data());
        return result;
      },
      py::arg("a"), py::arg("b"), R"(cross(a, b)

Cross product of two vectors of three elements, as a new array (C++: Cross).
)");
}

// --- Windows -----------------------------------------------------------------------------------

template <typename Weight>
py::object window(const char* function, int n, const py::object& i, Weight weight) {
  if (n < 1) {
    value_error({function, "n"}, "is " + std::to_string(n) + ", less than 1");
  }
  py::object samples = i;
  if (i.is_none()) {
    samples = py::module_::import("numpy").attr("arange")(n, py::arg("dtype") = "int32");
  }
  return elementwise<int>(function, std::array{"i"}, std::array{samples}, weight);
}

void bind_windows(py::module_& module) {
  module.def(
      "hanning",
      [](int n, const py::object& i) {
        return window("hanning", n, i, [n](int sample) { return Hanning(sample, n); });
      },
      py::arg("n"), py::arg("i") = py::none(), R"(hanning(n, i=None)

1 - cos(2 pi i / n), i = 0 ... n - 1: **twice** the usual Hanning (von Hann) window (C++: Hanning).

It is 0 at i = 0 and 2 at n/2: 2 scipy.signal.windows.hann(n, sym=False). The three windows do not
agree in phase or scale.

Parameters
----------
n : int
    Full width, at least 1.
i : int or array_like of int32, optional
    The samples whose weights are wanted; all of 0 ... n - 1 when None. For a symmetric window of L
    weights take n = L - 1 and i = numpy.arange(L).

Returns
-------
ndarray of float64, or float for one sample
)");
  module.def(
      "hamming",
      [](int n, double alpha, const py::object& i) {
        return window("hamming", n, i, [=](int sample) { return Hamming(alpha, sample, n); });
      },
      py::arg("n"), py::arg("alpha") = 0.54, py::arg("i") = py::none(),
      R"(hamming(n, alpha=0.54, i=None)

alpha + (1 - alpha) cos(2 pi i / n), i = 0 ... n - 1: the usual Hamming window **shifted by half its
length**, 1 at i = 0 and 2 alpha - 1 at n/2 (C++: Hamming).

2 alpha - hamming(n, alpha) is scipy.signal.windows.general_hamming(n, alpha, sym=False).

Parameters
----------
n, i
    As in hanning().
alpha : float
)");
  module.def(
      "kaiser",
      [](int n, double beta, const py::object& i) {
        return window("kaiser", n, i, [=](int sample) { return Kaiser(beta, sample, n); });
      },
      py::arg("n"), py::arg("beta"), py::arg("i") = py::none(), R"(kaiser(n, beta, i=None)

The Kaiser window centred at n/2, i = 0 ... n - 1: 1/I0(beta) at i = 0, 1 at n/2 (C++: Kaiser).

scipy.signal.windows.kaiser(n, beta, sym=False), to the accuracy of bessel_i0().

Parameters
----------
n, i
    As in hanning(); NaN for i outside 0 ... n.
beta : float
    0 (a rectangle) to 69.2; NaN above.
)");
}

// --- Correlation -------------------------------------------------------------------------------

/// The real and the imaginary parts.
struct Parts {
  std::vector<double> re;
  std::vector<double> im;

  explicit Parts(const py::array_t<std::complex<double>>& z)
      : re(static_cast<std::size_t>(z.size())), im(re.size()) {
    const std::complex<double>* const from = z.data();
    const Unlocked unlocked;
    for (std::size_t k = 0; k < re.size(); ++k) {
      re[k] = from[k].real();
      im[k] = from[k].imag();
    }
  }
};

template <typename At>
py::object at_lags(py::ssize_t n1, py::ssize_t n2, std::optional<std::int64_t> lag, At at) {
  const Argument argument{"correlate", "lag"};
  if (lag) {
    const std::int64_t s = *lag;
    if (s < 1 - n2 || s > n1 - 1) {
      value_error(argument, "is " + std::to_string(s) + ", not within " + std::to_string(1 - n2) +
                                " ... " + std::to_string(n1 - 1) + ", where the two overlap");
    }
    double result = 0.0;
    {
      const Unlocked unlocked;
      result = at(static_cast<int>(s));
    }
    return py::float_(result);
  }
  py::array_t<double> result(n1 + n2 - 1);
  double* const to = result.mutable_data();
  {
    const Unlocked unlocked;
    for (py::ssize_t k = 0; k < n1 + n2 - 1; ++k) {
      to[k] = at(static_cast<int>(k + 1 - n2));
    }
  }
  return result;
}

py::object correlate(const py::object& a, const py::object& b, std::optional<std::int64_t> lag) {
  const Argument first{"correlate", "a"};
  const Argument second{"correlate", "b"};
  const py::object is_complex = py::module_::import("numpy").attr("iscomplexobj");
  if (is_complex(a).cast<bool>() || is_complex(b).cast<bool>()) {
    const auto z1 = exact_vector<std::complex<double>>(a, first);
    const auto z2 = exact_vector<std::complex<double>>(b, second);
    Parts one(z1);
    Parts two(z2);
    return at_lags(z1.size(), z2.size(), lag, [&](int s) {
      return Correl(one.re.data(), one.im.data(), two.re.data(), two.im.data(),
                    static_cast<int>(one.re.size()), static_cast<int>(two.re.size()), s);
    });
  }
  const auto x1 = exact_vector<double>(a, first);
  const auto x2 = exact_vector<double>(b, second);
  return at_lags(x1.size(), x2.size(), lag, [&](int s) {
    return Correl(elements(x1), elements(x2), static_cast<int>(x1.size()),
                  static_cast<int>(x2.size()), s);
  });
}

// --- Pixels ------------------------------------------------------------------------------------

/// Pixels of an array one after another, and the shape of what comes of them.
struct Pixels {
  py::array array;
  std::vector<py::ssize_t> shape;
  int type = 0;
  std::size_t bytes = 0;

  Pixels(const char* function, const py::object& src, bool pairs) {
    const Argument argument{function, "src"};
    array = as_array(src, argument);
    shape.assign(array.shape(), array.shape() + array.ndim());
    bytes = static_cast<std::size_t>(array.itemsize());
    if (pairs) {
      if (shape.empty() || shape.back() != 2) {
        value_error(argument, "is " + describe(array) + ": pairs need a last axis of 2");
      }
      shape.pop_back();
      bytes *= 2;
    }
    type = pixel_type(array, pairs);
    if (type == 0) {
      type_error(argument, "is " + describe(array) +
                               ", no pixel type: pass (u)int8, (u)int16, (u)int32, float32, "
                               "float64, complex64 or complex128");
    }
    array = py::module_::import("numpy").attr("ascontiguousarray")(array);
  }

  /// convert(pixels, offset, count) in portions that an int can count, without Python's lock.
  template <typename Convert>
  void run(py::ssize_t count, Convert convert) const {
    auto* const first = static_cast<char*>(const_cast<void*>(array.data()));
    const Unlocked unlocked;
    constexpr py::ssize_t portion = 1 << 30;
    for (py::ssize_t k = 0; k < count; k += portion) {
      convert(first + static_cast<std::size_t>(k) * bytes, k,
              static_cast<int>(std::min(portion, count - k)));
    }
  }
};

py::object parts(const py::object& src, bool pairs) {
  const Pixels pixels("parts", src, pairs);
  py::array_t<double> re(pixels.shape);
  py::array_t<double> im(pixels.shape);
  double* const to_re = re.mutable_data();
  double* const to_im = im.mutable_data();
  pixels.run(re.size(), [&](void* from, py::ssize_t at, int count) {
    Transform_to_double(from, pixels.type, to_re + at, to_im + at, count);
  });
  return py::make_tuple(re, im);
}

py::object amplitude(const py::object& src, bool pairs) {
  const Pixels pixels("amplitude", src, pairs);
  py::array_t<double> result(pixels.shape);
  double* const to = result.mutable_data();
  pixels.run(result.size(), [&](void* from, py::ssize_t at, int count) {
    Transform_to_double(from, pixels.type, to + at, count);
  });
  return result;
}

}  // namespace

void bind_numeric(py::module_& module) {
  module.doc() = R"(Functions of numbers, vectors and pixels, windows, correlation.

Inputs are whatever becomes float64 exactly: integers up to 2^53, float16 ... float64, lists of such
numbers. Other values are refused (TypeError), never rounded. Functions of numbers take arrays of any
shape and broadcast them; vectors have one axis and at least one element.
)";
  bind_functions(module);
  bind_statistics(module);
  bind_vectors(module);
  bind_windows(module);
  module.def("correlate", correlate, py::arg("a"), py::arg("b"), py::arg("lag") = py::none(),
             R"(correlate(a, b, lag=None)

Circular cross-correlation of two sequences (C++: Correl).

Sample j of b meets sample (j + lag) mod len(a) of a: a is periodic. Real sequences give the sum of
a[...] b[j] with its sign, complex ones the **magnitude** of the sum of a[...] conj(b[j]). Nothing
is normalised.

For the linear correlation append len(b) - 1 zeros to a, and take the first len(a) + len(b) - 1 values,
a without the zeros: its lags 1 - len(b) ... len(a) - 1. The values after them have wrapped round.

Parameters
----------
a, b : array_like
    Vectors, exactly float64 or complex128.
lag : int, optional
    1 - len(b) ... len(a) - 1. All of them, in this order, when None: len(a) + len(b) - 1 sums of len(b) terms.

Returns
-------
float, or ndarray of float64
    len(a) + len(b) - 1 values for all lags.

Examples
--------
>>> import sarnum.numeric
>>> a, b = [1.0, 2.0, 3.0], [1.0, 10.0]
>>> sarnum.numeric.correlate(a + [0.0], b)[:len(a) + len(b) - 1]
array([10., 21., 32.,  3.])
)");
  module.def("parts", parts, py::arg("src"), py::kw_only(), py::arg("pairs") = false,
             R"(parts(src, *, pairs=False)

Real and imaginary parts of pixels as float64; every value is widened exactly (C++:
Transform_to_double).

Parameters
----------
src : ndarray
    Pixels of (u)int8, (u)int16, (u)int32, float32, float64, complex64 or complex128, of any shape.
pairs : bool
    Whether the last axis, of 2, holds the parts of complex pixels of integers or floats.

Returns
-------
re, im : ndarray of float64
    `im` is +0 for real pixels.
)");
  module.def("amplitude", amplitude, py::arg("src"), py::kw_only(), py::arg("pairs") = false,
             R"(amplitude(src, *, pairs=False)

Values of real pixels, with their sign, or amplitudes of complex pixels, as float64 (C++:
Transform_to_double).

The amplitude is sqrt(re re + im im), computed in double.

Parameters
----------
src, pairs
    As in parts().

Returns
-------
ndarray of float64
)");
}

}  // namespace sarnum::python
