// sarnum.linalg: linear systems, least-squares fits, interpolation.
//
// The library takes matrices of long double and computes in double. Here matrices are of float64;
// what the library would consume is a copy, and what it leaves are doubles, so nothing is lost.
#include <array>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "arrays.h"
#include "bindings.h"
#include "sarnum/linalg/interpolation.h"
#include "sarnum/linalg/least_squares.h"
#include "sarnum/linalg/linear_systems.h"
#include "sarnum/linalg/products.h"

namespace sarnum::python {

namespace {

constexpr double not_a_number = std::numeric_limits<double>::quiet_NaN();

[[noreturn]] void singular(const char* function, const char* fault) {
  const py::object type = py::module_::import("numpy.linalg").attr("LinAlgError");
  PyErr_SetString(type.ptr(), (std::string(function) + "(): " + fault).c_str());
  throw py::error_already_set();
}

/// A matrix of doubles, converted exactly.
struct Matrix {
  std::vector<long double> elements;
  int rows = 0;
  int columns = 0;

  Matrix(const py::object& value, Argument argument) {
    const auto array = exact<double>(value, argument);
    constexpr int largest = std::numeric_limits<int>::max();
    if (array.ndim() != 2 || array.size() == 0 || array.shape(0) > largest ||
        array.shape(1) > largest) {
      value_error(argument, "is " + describe(array) + ": pass rows and columns, not empty");
    }
    rows = static_cast<int>(array.shape(0));
    columns = static_cast<int>(array.shape(1));
    const double* const first = array.data();
    const py::ssize_t size = array.size();
    const Unlocked unlocked;
    elements.assign(first, first + size);
  }

  static Matrix square(const py::object& value, Argument argument) {
    Matrix matrix(value, argument);
    if (matrix.rows != matrix.columns) {
      value_error(argument, "has " + std::to_string(matrix.rows) + " rows and " +
                                std::to_string(matrix.columns) + " columns: pass a square one");
    }
    return matrix;
  }
};

py::array_t<double> doubles(const std::vector<long double>& elements,
                            const std::vector<py::ssize_t>& shape) {
  py::array_t<double> result(shape);
  double* to = result.mutable_data();
  {
    const Unlocked unlocked;
    for (const long double element : elements) {
      *to++ = static_cast<double>(element);
    }
  }
  return result;
}

void change_row(const py::object& a, int i, int j) {
  const char* const function = "change_row";
  const py::array array = as_array(a, {function, "a"});
  if (!has_type<long double>(array) || (array.flags() & py::array::c_style) == 0) {
    type_error({function, "a"}, "is " + describe(array) +
                                    ": it works in place on a contiguous array of longdouble, as "
                                    "from a.astype(numpy.longdouble, order=\"C\")");
  }
  if (array.ndim() != 2 || array.shape(1) != array.shape(0) + 1) {
    value_error({function, "a"}, "is " + describe(array) + ": pass n rows of n + 1 columns");
  }
  const Lines lines = lines_in_place(array, {function, "a"});
  const int n = lines.length - 1;
  if (i < 0 || i >= n || j < 0 || j > n) {
    value_error({function, "i, j"}, "are " + std::to_string(i) + ", " + std::to_string(j) +
                                        ", outside the matrix (they count from 0)");
  }
  const Unlocked unlocked;
  ChangeRow_IJ(i + 1, j + 1, n, lines.line<long double>(0));
}

py::object solve(const py::object& a, const py::object& b) {
  const Matrix matrix = Matrix::square(a, {"solve", "a"});
  const int n = matrix.rows;
  const auto right = exact_vector<double>(b, {"solve", "b"}, n);
  const auto size = static_cast<std::size_t>(n);
  std::vector<long double> x(size, not_a_number);
  {
    const double* side = right.data();
    const Unlocked unlocked;
    std::vector<long double> system;
    system.reserve(size * (size + 1));
    for (auto row = matrix.elements.begin(); row != matrix.elements.end(); row += n) {
      system.insert(system.end(), row, row + n);
      system.push_back(*side++);
    }
    Solve_System(n, system.data(), x.data());
  }
  return doubles(x, {n});
}

double log_abs_determinant(const py::object& a) {
  Matrix matrix = Matrix::square(a, {"log_abs_determinant", "a"});
  double result = 0.0;
  int status = 0;
  {
    const Unlocked unlocked;
    status = LnAbsDeterminant(&result, matrix.rows, matrix.elements.data());
  }
  if (status == 0) {
    singular("log_abs_determinant", "a pivot is zero or not a number, or there is no storage");
  }
  return result;
}

py::object inverse(const py::object& a, bool bordered) {
  Matrix matrix = Matrix::square(a, {"inverse", "a"});
  const int n = matrix.rows;
  const auto size = static_cast<std::size_t>(n);
  int status = 0;
  {
    const Unlocked unlocked;
    if (bordered) {  // a row and a column of the identity, which no exchange moves
      std::vector<long double> wide((size + 1) * (size + 1), 0.0L);
      for (std::size_t k = 0; k < size * size; ++k) {
        wide[k / size * (size + 1) + k % size] = matrix.elements[k];
      }
      wide.back() = 1.0L;
      status = MatrixInversion(n + 1, wide.data(), wide.data());
      for (std::size_t k = 0; k < size * size; ++k) {
        matrix.elements[k] = wide[k / size * (size + 1) + k % size];
      }
    } else {
      status = MatrixInversion(n, matrix.elements.data(), matrix.elements.data());
    }
  }
  if (status == 0) {
    singular("inverse", "a pivot is zero, or there is no storage");
  }
  return doubles(matrix.elements, {n, n});
}

py::object matrix_multiply(const py::object& a, const py::object& b) {
  Matrix left(a, {"matrix_multiply", "a"});
  Matrix right(b, {"matrix_multiply", "b"});
  if (left.columns != right.rows) {
    value_error({"matrix_multiply", "b"}, "has " + std::to_string(right.rows) +
                                              " rows, but a has " + std::to_string(left.columns) +
                                              " columns");
  }
  std::vector<long double> product(
      static_cast<std::size_t>(left.rows) * static_cast<std::size_t>(right.columns), not_a_number);
  {
    const Unlocked unlocked;
    Matrix_Multiply(left.elements.data(), right.elements.data(), product.data(), left.rows,
                    left.columns, right.columns);
  }
  return doubles(product, {left.rows, right.columns});
}

py::object multiply_elements(const py::object& a, const py::object& b, const py::object& out) {
  const char* const function = "multiply_elements";
  const auto first = exact_vector<double>(a, {function, "a"});
  const auto second = exact_vector<double>(b, {function, "b"}, first.size());
  py::array_t<double> result = vector_to_write(out, {function, "out"}, first.size());
  double* const to = result.mutable_data();
  {
    const Unlocked unlocked;
    Vector_Multiply(elements(first), elements(second), to, static_cast<int>(first.size()));
  }
  return result;
}

py::object solve_small(const py::object& a, const py::object& b) {
  const Matrix matrix = Matrix::square(a, {"solve_small", "a"});
  constexpr int most = 5;
  if (matrix.rows > most) {
    value_error({"solve_small", "a"}, "has more than 5 rows: take solve()");
  }
  const auto right = exact_vector<double>(b, {"solve_small", "b"}, matrix.rows);
  double rows[most][most] = {};
  for (std::size_t k = 0; k < matrix.elements.size(); ++k) {
    const auto n = static_cast<std::size_t>(matrix.rows);
    rows[k / n][k % n] = static_cast<double>(matrix.elements[k]);
  }
  std::vector<double> side(right.data(), right.data() + right.size());
  py::array_t<double> x(matrix.rows);
  if (lin_yr(matrix.rows, rows, side.data(), x.mutable_data()) != 1) {
    singular("solve_small", "no row repairs a pivot of zero");
  }
  return x;
}

py::object fit_polynomial(const py::object& x, const py::object& y, int terms) {
  const char* const function = "fit_polynomial";
  const auto at = exact_vector<double>(x, {function, "x"});
  const auto values = exact_vector<double>(y, {function, "y"}, at.size());
  if (terms < 1 || terms > 5) {
    value_error({function, "terms"}, "is " + std::to_string(terms) + ", not within 1 ... 5");
  }
  std::vector<double> c(static_cast<std::size_t>(terms), not_a_number);
  {
    const Unlocked unlocked;
    mnk(terms, static_cast<int>(at.size()), elements(values), elements(at), c.data());
  }
  return py::array_t<double>(terms, c.data());
}

py::object fit_surface(const py::object& u, const py::object& v, const py::object& z, int degree) {
  const char* const function = "fit_surface";
  const auto first = exact_vector<double>(u, {function, "u"});
  const auto second = exact_vector<double>(v, {function, "v"}, first.size());
  const auto values = exact_vector<double>(z, {function, "z"}, first.size());
  if (degree < 0 || degree > 4) {
    value_error({function, "degree"}, "is " + std::to_string(degree) + ", not within 0 ... 4");
  }
  const int terms = (degree + 1) * (degree + 2) / 2;
  std::vector<double> c(static_cast<std::size_t>(terms), not_a_number);
  {
    const Unlocked unlocked;
    mnk2(degree, static_cast<int>(first.size()), elements(values), elements(first),
         elements(second), c.data());
  }
  return py::array_t<double>(terms, c.data());
}

py::object plane(const py::object& corners) {
  const auto p = exact<double>(corners, {"plane", "corners"});
  if (p.ndim() != 2 || p.shape(1) != 3 || p.shape(0) < 3 || p.shape(0) > 4) {
    value_error({"plane", "corners"},
                "is " + describe(p) + ": pass three or four points (x, y, z), one a row");
  }
  const double* const v = p.data();
  double a = 0.0, b = 0.0, c = 0.0;
  if (GetRectInterpolationCoefficients(&a, &b, &c, v[0], v[1], v[2], v[3], v[4], v[5], v[6], v[7],
                                       v[8], 0.0, 0.0, 0.0) == 0) {
    singular("plane", "the first three points lie on one line");
  }
  return py::make_tuple(a, b, c);
}

using Surface = CLagrangeInterpolation2D;

std::unique_ptr<Surface> surface(int order, const py::object& x, const py::object& y,
                                 const py::object& z) {
  const char* const function = "CLagrangeInterpolation2D";
  const auto first = exact_vector<double>(x, {function, "x"});
  const auto second = exact_vector<double>(y, {function, "y"}, first.size());
  const auto values = exact_vector<double>(z, {function, "z"}, first.size());
  if (order < 0) {
    value_error({function, "order"}, "is " + std::to_string(order) + ", less than 0");
  }
  std::unique_ptr<Surface> made;
  {
    const Unlocked unlocked;
    made = std::make_unique<Surface>(order, static_cast<int>(first.size()), elements(first),
                                     elements(second), elements(values));
  }
  if (made->GetSuccessFlag() == 0) {
    PyErr_SetString(PyExc_MemoryError, "CLagrangeInterpolation2D(): no storage for the fit");
    throw py::error_already_set();
  }
  return made;
}

/// An array of the object's, which lives as long as somebody looks at it.
py::array_t<double> view(const py::object& self, double* elements, bool writeable) {
  py::array_t<double> array(self.cast<Surface&>().termCount, elements, self);
  if (!writeable) {
    array.attr("flags").attr("writeable") = false;
  }
  return array;
}

}  // namespace

void bind_linalg(py::module_& module) {
  module.doc() = R"(Linear systems, least-squares fits, interpolation.

Matrices have rows and columns and are exactly float64 (a longdouble matrix is refused: elements
would be rounded); the arithmetic is that of float64. Inputs are only read. No routine looks for
pivots that are small: ask a result whether it is finite.
)";

  module.def("change_row", change_row, py::arg("a"), py::arg("i"), py::arg("j"),
             R"(change_row(a, i, j)

Brings a pivot into row i by successive exchange, in place (C++: ChangeRow_IJ).

Each row k = i + 1 ... n - 1 in turn is exchanged with row i, over columns i ... n, when its element
in column j is larger in magnitude than the one row i has by then. The lower rows come out in another
order than after one exchange with the maximum.

Parameters
----------
a : ndarray of longdouble
    (n, n + 1), contiguous; changed.
i, j : int
    Row and column of the pivot, **counted from 0** (in C++ from 1).
)");
  module.def("solve", solve, py::arg("a"), py::arg("b"), R"(solve(a, b)

Solves a x = b by elimination with the pivots of change_row() (C++: Solve_System).

Parameters
----------
a : array_like
    (n, n).
b : array_like
    n elements.

Returns
-------
ndarray of float64
    x. Infinities or NaN, or large values, where the system is singular; NaN without storage.
)");
  module.def("log_abs_determinant", log_abs_determinant, py::arg("a"), R"(log_abs_determinant(a)

Logarithm of the absolute determinant (C++: LnAbsDeterminant).

It is the sum of ln|pivot| / ln(2.71828), so 1.0000006727 times the natural logarithm, because
2.71828 is not quite e: multiply by numpy.log(2.71828) for that.

Parameters
----------
a : array_like
    (n, n).

Raises
------
numpy.linalg.LinAlgError
    When a pivot is exactly zero, or not a number.
)");
  module.def("inverse", inverse, py::arg("a"), py::kw_only(), py::arg("bordered") = false,
             R"(inverse(a, *, bordered=False)

Inverse by elimination to both sides (C++: MatrixInversion).

**The last column is that of the inverse only when no exchange of rows moved the last row**: else it
is another column of it. `bordered` gives the true inverse: the matrix is bordered with a row and a
column of the identity, which no exchange moves.

Parameters
----------
a : array_like
    (n, n).
bordered : bool

Returns
-------
ndarray of float64
    (n, n).

Raises
------
numpy.linalg.LinAlgError
    When a pivot is exactly zero.
)");
  module.def("matrix_multiply", matrix_multiply, py::arg("a"), py::arg("b"),
             R"(matrix_multiply(a, b)

Matrix product; each sum runs in ascending order, from 0.0 (C++: Matrix_Multiply).

Parameters
----------
a, b : array_like
    (m, k) and (k, n).

Returns
-------
ndarray of float64
    (m, n); NaN without storage.
)");
  module.def("multiply_elements", multiply_elements, py::arg("a"), py::arg("b"),
             py::arg("out") = py::none(), R"(multiply_elements(a, b, out=None)

a[i] b[i] (C++: Vector_Multiply). Arguments as in sarnum.numeric.add().
)");
  module.def("solve_small", solve_small, py::arg("a"), py::arg("b"), R"(solve_small(a, b)

Solves up to five equations by elimination without a search for pivots (C++: lin_yr).

A pivot that is exactly zero is repaired by adding later rows; one that is only small is used as it
is. The last pivot is not tested: where it is zero, x has infinities or NaN.

Parameters
----------
a : array_like
    (n, n), n = 1 ... 5.
b : array_like
    n elements.

Raises
------
numpy.linalg.LinAlgError
    When no later row repairs a zero pivot.
)");
  module.def("fit_polynomial", fit_polynomial, py::arg("x"), py::arg("y"), py::arg("terms"),
             R"(fit_polynomial(x, y, terms)

Least-squares fit y = c[0] + c[1] x + ... + c[terms - 1] x^(terms - 1), by normal equations (C++:
mnk, whose order of arguments is y, x).

Bring x to the range -1 ... 1 or so first.

Parameters
----------
x, y : array_like
    Vectors of one length.
terms : int
    1 ... 5.

Returns
-------
ndarray of float64
    c, lowest power first. With too few different x it is NaN, not finite, or large.
)");
  module.def("fit_surface", fit_surface, py::arg("u"), py::arg("v"), py::arg("z"),
             py::arg("degree"), R"(fit_surface(u, v, z, degree)

Least-squares fit of a polynomial in two variables to scattered samples (C++: mnk2, whose order of
arguments is z, u, v).

The terms are, by total degree t and in it q = 0 ... t, v^q u^(t - q): 1, u, v, u^2, u v, v^2, ...
(CLagrangeInterpolation2D has another order.) **Every call keeps storage for ever**: about 8 M len(z)
bytes for M terms. A program that fits often had better use CLagrangeInterpolation2D.

Parameters
----------
u, v, z : array_like
    Coordinates and values, vectors of one length.
degree : int
    0 ... 4.

Returns
-------
ndarray of float64
    (degree + 1) (degree + 2) / 2 coefficients.
)");
  module.def("plane", plane, py::arg("corners"), R"(plane(corners)

The plane z = a x + b y + c through three points (C++: GetRectInterpolationCoefficients).

Parameters
----------
corners : array_like
    (3, 3) or (4, 3): points (x, y, z). The fourth is never looked at.

Returns
-------
a, b, c : float

Raises
------
numpy.linalg.LinAlgError
    When the three points lie on one line.
)");

  py::class_<Surface>(module, "CLagrangeInterpolation2D",
                      R"(CLagrangeInterpolation2D(order, x, y, z)

Polynomial z(x, y) of all terms up to a total degree, fitted by least squares when the object is made
(C++: CLagrangeInterpolation2D).

The terms are, by total degree t = 0 ... order and in it j = 0 ... t, x^j y^(t - j): 1, y, x, y^2,
x y, x^2, ... (fit_surface() has another order.) Have more samples than the N = (order + 1) (order +
2) / 2 terms, bring the coordinates to the range -1 ... 1 or so, and ask a value whether it is finite.

Parameters
----------
order : int
    Total degree, at least 0. The fit takes about 8 N^2 bytes.
x, y, z : array_like
    Coordinates and values, vectors of one length.

Attributes
----------
order : int
    C++: GetPolynomOrder.
success : bool
    C++: GetSuccessFlag. Always true: where there is no storage, the constructor raises MemoryError.
coefficients : ndarray of float64
    One for each term; they may be changed.
first_exponents, second_exponents : ndarray of float64
    Powers of x and of y in each term, read-only.
)")
      .def(py::init(&surface), py::arg("order"), py::arg("x"), py::arg("y"), py::arg("z"))
      .def(
          "__call__",
          [](Surface& self, const py::object& x, const py::object& y) {
            return elementwise<double>(
                "CLagrangeInterpolation2D", std::array{"x", "y"}, std::array{x, y},
                [&](double u, double v) { return self.GetInterpolatedValue(u, v); });
          },
          py::arg("x"), py::arg("y"), R"(__call__(x, y)

The polynomial at points, element by element (C++:
CLagrangeInterpolation2D::GetInterpolatedValue).
)")
      .def_property_readonly("order", &Surface::GetPolynomOrder,
                             "Total degree (C++: CLagrangeInterpolation2D::GetPolynomOrder).")
      .def_property_readonly(
          "success", [](Surface& self) { return self.GetSuccessFlag() != 0; },
          "Whether there was storage (C++: CLagrangeInterpolation2D::GetSuccessFlag).")
      .def_property_readonly(
          "coefficients",
          [](const py::object& self) {
            return view(self, self.cast<Surface&>().coefficients, true);
          },
          "One for each term; they may be changed.")
      .def_property_readonly(
          "first_exponents",
          [](const py::object& self) {
            return view(self, self.cast<Surface&>().firstExponents, false);
          },
          "Power of x in each term.")
      .def_property_readonly(
          "second_exponents",
          [](const py::object& self) {
            return view(self, self.cast<Surface&>().secondExponents, false);
          },
          "Power of y in each term.");
}

}  // namespace sarnum::python
