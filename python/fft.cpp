// sarnum.fft: transforms of lines (one or many, along the last axis, in place) and of rasters.
//
// The process-wide tables of the table-driven transforms are reached through a context manager
// alone, which counts who uses them: see Tables.
#include <array>
#include <complex>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "arrays.h"
#include "bindings.h"
#include "progress.h"
#include "sarnum/fft/block_fft.h"
#include "sarnum/fft/fft_object.h"
#include "sarnum/fft/reference.h"
#include "sarnum/fft/single_precision.h"
#include "sarnum/fft/table_driven.h"
#include "sarnum/fft/tables.h"
#include "sarnum/numeric/pixel_types.h"

namespace sarnum::python {

namespace {

// --- Lines -------------------------------------------------------------------------------------

/// One transform in the layouts that it has: of_complex_floats is null where it takes pairs alone.
struct LineTransform {
  void (*of_doubles)(double*, double*, int);
  void (*of_floats)(float*, float*, int);
  void (*of_complex_floats)(float*, int) = nullptr;
};

/// Lines whose types have been checked, ready to be transformed without Python's lock.
struct LineWork {
  LinePairs pairs;
  Lines complex_lines;
  bool are_complex_doubles = false;
  int exponent = 0;

  void run(const LineTransform& transform) const {
    // No exported transform takes interleaved doubles: each line passes through a pair.
    const std::size_t n = are_complex_doubles ? std::size_t{1} << exponent : 0;
    std::vector<double> re(n);
    std::vector<double> im(n);
    for (std::size_t k = 0; k < pairs.re.starts.size(); ++k) {
      if (pairs.are_double) {
        transform.of_doubles(pairs.re.line<double>(k), pairs.im.line<double>(k), exponent);
      } else {
        transform.of_floats(pairs.re.line<float>(k), pairs.im.line<float>(k), exponent);
      }
    }
    for (std::size_t k = 0; k < complex_lines.starts.size(); ++k) {
      if (are_complex_doubles) {
        auto* const line = complex_lines.line<std::complex<double>>(k);
        for (std::size_t i = 0; i < n; ++i) {
          re[i] = line[i].real();
          im[i] = line[i].imag();
        }
        transform.of_doubles(re.data(), im.data(), exponent);
        for (std::size_t i = 0; i < n; ++i) {
          line[i] = {re[i], im[i]};
        }
      } else {
        transform.of_complex_floats(complex_lines.line<float>(k), exponent);
      }
    }
  }
};

LineWork line_work(const char* function, const LineTransform& transform, const py::object& re,
                   const py::object& im) {
  const Argument argument{function, "re"};
  LineWork work;
  if (!im.is_none()) {
    work.pairs = line_pairs_in_place(function, re, im);
    work.exponent = exponent_of(work.pairs.re.length, argument);
    return work;
  }
  const py::array array = as_array(re, argument);
  work.are_complex_doubles = has_type<std::complex<double>>(array);
  const bool takes_complex = transform.of_complex_floats != nullptr;
  if (!takes_complex || (!work.are_complex_doubles && !has_type<std::complex<float>>(array))) {
    type_error(argument, "is " + describe(array) + " and im is missing: pass " +
                             (takes_complex ? "a complex64 or complex128 array, or " : "") +
                             "the parts as two arrays of float32 or float64, as in "
                             "re, im = z.real.copy(), z.imag.copy()");
  }
  work.complex_lines = lines_in_place(array, argument);
  work.exponent = exponent_of(work.complex_lines.length, argument);
  return work;
}

void transform_lines(const char* function, const LineTransform& transform, const py::object& re,
                     const py::object& im) {
  const LineWork work = line_work(function, transform, re, im);
  const Unlocked unlocked;
  work.run(transform);
}

/// The transform as Python calls it, by the name that messages say.
auto function_of(const char* function, const LineTransform& transform) {
  return [function, &transform](const py::object& re, const py::object& im) {
    transform_lines(function, transform, re, im);
  };
}

constexpr LineTransform forward_lines{fft, fft, fft};
constexpr LineTransform inverse_lines{ifft, ifft, ifft};
constexpr LineTransform fast_forward_lines{fft_Fast, fft_Fast, fft_Fast};
constexpr LineTransform fast_inverse_lines{ifft_Fast, ifft_Fast, ifft_Fast};

constexpr LineTransform member_forward_lines{
    [](double* re, double* im, int m) { CFFTClass().fft(re, im, m); },
    [](float* re, float* im, int m) { CFFTClass().fft(re, im, m); }};
constexpr LineTransform member_inverse_lines{
    [](double* re, double* im, int m) { CFFTClass().ifft(re, im, m); },
    [](float* re, float* im, int m) { CFFTClass().ifft(re, im, m); }};
constexpr LineTransform centred_lines{
    [](double* re, double* im, int m) { CFFTClass().fft_new(re, im, m, 1); },
    [](float* re, float* im, int m) { CFFTClass().fft_new(re, im, m, 1); }};

void synthesize(const py::object& ref_re, const py::object& ref_im, const py::object& re,
                const py::object& im) {
  const char* const function = "synthesize";
  const LinePairs lines = line_pairs_in_place(function, re, im);
  if (lines.are_double) {
    type_error({function, "re"}, "and im are of float64: pass two arrays of float32");
  }
  const int m = exponent_of(lines.re.length, {function, "re"});
  const auto h_re = exact_vector<float>(ref_re, {function, "ref_re"});
  const auto h_im = exact_vector<float>(ref_im, {function, "ref_im"}, h_re.size());
  if (h_re.size() > lines.re.length) {
    value_error({function, "ref_re"}, "is longer than the lines");
  }
  const Unlocked unlocked;
  for (std::size_t k = 0; k < lines.re.starts.size(); ++k) {
    CFFTClass().SyntAlmaz(elements(h_re), elements(h_im), lines.re.line<float>(k),
                          lines.im.line<float>(k), static_cast<int>(h_re.size()), m);
  }
}

// --- Tables ------------------------------------------------------------------------------------

/// Who uses the process-wide tables: they are built for the first user and released by the last.
/// All users want one length; another one is refused until then. The mutex is taken without
/// Python's lock only, so that neither waits for the other.
class TableUsers {
 public:
  /// @return nothing on success, else what is in the way.
  std::optional<std::string> enter(int m, int& status) {
    const std::lock_guard guard(mutex_);
    status = 0;
    if (users_ > 0 && m != m_) {
      return "the tables serve transforms of 2^" + std::to_string(m_) +
             " samples, and there is one set of tables in a process: leave that context before you "
             "enter one for 2^" +
             std::to_string(m);
    }
    if (users_ == 0) {
      status = init_ibitr(m);
      if (status != 0) {
        return "there is no storage for the tables of transforms of 2^" + std::to_string(m) +
               " samples";
      }
      m_ = m;
    }
    ++users_;
    return {};
  }

  void leave() {
    const std::lock_guard guard(mutex_);
    if (--users_ == 0) {
      delete_ibitr();
    }
  }

 private:
  std::mutex mutex_;
  int users_ = 0;
  int m_ = 0;
};

TableUsers table_users;

/// Keeps the tables for as long as it lives.
class TableUse {
 public:
  explicit TableUse(int m) : m_(m) {}
  TableUse(const TableUse&) = delete;
  TableUse& operator=(const TableUse&) = delete;
  ~TableUse() { table_users.leave(); }
  int exponent() const { return m_; }

 private:
  int m_;
};

/// What `with tables(m) as t` gives. The tables stay until the context is left and the transforms
/// that run by then, in whatever thread, have ended.
class Tables {
 public:
  explicit Tables(int m) : m_(m) {
    if (m < 0 || m > 30) {
      value_error({"tables", "m"}, "is " + std::to_string(m) + ", not within 0 ... 30");
    }
  }

  int exponent() const { return m_; }

  void enter() {
    if (use_) {
      throw std::runtime_error("tables(): this context has been entered already");
    }
    int status = 0;
    std::optional<std::string> refusal;
    std::shared_ptr<TableUse> use;
    {
      const Unlocked unlocked;
      refusal = table_users.enter(m_, status);
      if (!refusal) {
        use = std::make_shared<TableUse>(m_);
      }
    }
    if (status != 0) {
      PyErr_SetString(PyExc_MemoryError, ("tables(): " + *refusal).c_str());
      throw py::error_already_set();
    }
    if (refusal) {
      throw std::runtime_error("tables(): " + *refusal);
    }
    if (use_) {  // another thread was faster
      throw std::runtime_error("tables(): this context has been entered already");
    }
    use_ = std::move(use);
  }

  void exit() {
    std::shared_ptr<TableUse> use = std::move(use_);
    use_.reset();
    const Unlocked unlocked;
    use.reset();
  }

  void transform(const char* function, const LineTransform& transform, const py::object& re,
                 const py::object& im) const {
    std::shared_ptr<TableUse> use = use_;
    if (!use) {
      throw std::runtime_error(std::string(function) +
                               "(): the tables are not there: enter their context first, as in "
                               "with sarnum.fft.tables(m) as t");
    }
    const LineWork work = line_work(function, transform, re, im);
    if (work.exponent != m_) {
      value_error({function, "re"}, "has lines of 2^" + std::to_string(work.exponent) +
                                        " samples, but the tables serve 2^" + std::to_string(m_));
    }
    const Unlocked unlocked;
    work.run(transform);
    use.reset();
  }

 private:
  int m_;
  std::shared_ptr<TableUse> use_;
};

// --- Rasters -----------------------------------------------------------------------------------

[[noreturn]] void no_storage(const char* function) {
  PyErr_SetString(PyExc_MemoryError,
                  (std::string(function) + "(): no storage for the transform").c_str());
  throw py::error_already_set();
}

int ceil_power_of_two(int n) {
  if (n < 1) {
    value_error({"ceil_power_of_two", "n"}, "is " + std::to_string(n) + ": there is no logarithm");
  }
  return CFFTClass().CeilPowerOfTwo(n);
}

py::array output_for(const py::object& out, const Argument& argument, const py::dtype& type,
                     int height, int width) {
  return out.is_none() ? py::array(type, std::vector<py::ssize_t>{height, width})
                       : as_array(out, argument);
}

py::object forward_2d(const py::object& src, const py::object& out, bool centred,
                      const py::object& progress) {
  const char* const function = "forward_2d";
  Progress reports(function, progress);
  const py::array source_array = as_array(src, {function, "src"});
  Raster source = raster(source_array, {function, "src"});
  if (source.type == TD_COMPLEX_UINT8 || source.type == TD_COMPLEX_UINT16 ||
      source.type == TD_COMPLEX_UINT32) {
    type_error({function, "src"}, "is " + describe(source_array) +
                                      ": there is no transform of complex pixels of unsigned "
                                      "integers; pass src.astype() of a signed type");
  }
  const int columns = CFFTClass().CeilPowerOfTwo(source.width);
  const int rows = CFFTClass().CeilPowerOfTwo(source.height);
  if (columns > 30 || rows > 30) {
    value_error({function, "src"}, "has more than 2^30 rows or columns");
  }
  const bool is_double = source.type == TD_FLOAT64 || source.type == TD_COMPLEX_FLOAT64;
  const py::dtype type =
      is_double ? py::dtype::of<std::complex<double>>() : py::dtype::of<std::complex<float>>();
  const Argument out_argument{function, "out"};
  py::array result = output_for(out, out_argument, type, 1 << rows, 1 << columns);
  Raster target = raster_to_write(result, out_argument, type, 1 << rows, 1 << columns);
  {
    const Unlocked unlocked;
    Meter<CMeterInfo> meter(reports);
    CFFTClass transform;
    if (centred) {
      transform.FFT_2D_NEW(source.rows.data(), target.rows.data(), source.width, source.height,
                           source.type, 1, &meter);
    } else {
      transform.FFT_2D(source.rows.data(), target.rows.data(), source.width, source.height,
                       source.type, &meter);
    }
  }
  if (!reports.begun()) {  // FFT_2D_NEW does not say so otherwise
    no_storage(function);
  }
  reports.end();
  return result;
}

py::object inverse_2d(const py::object& src, const py::object& out, const py::object& progress) {
  const char* const function = "inverse_2d";
  const Argument argument{function, "src"};
  Progress reports(function, progress);
  const py::array source_array = as_array(src, argument);
  if (!has_type<std::complex<float>>(source_array) &&
      !has_type<std::complex<double>>(source_array)) {
    type_error(argument, "is " + describe(source_array) + ": pass complex64 or complex128");
  }
  Raster source = raster(source_array, argument);
  exponent_of(source.width, argument);
  exponent_of(source.height, {function, "src.T"});
  const Argument out_argument{function, "out"};
  const py::dtype type = source_array.dtype();
  py::array result = output_for(out, out_argument, type, source.height, source.width);
  Raster target = raster_to_write(result, out_argument, type, source.height, source.width);
  int status = 0;
  {
    const Unlocked unlocked;
    Meter<CMeterInfo> meter(reports);
    status = CFFTClass().IFFT_2D(source.rows.data(), target.rows.data(), source.width,
                                 source.height, source.type, &meter);
  }
  if (status == 0) {
    no_storage(function);
  }
  reports.end();
  return result;
}

// --- Blocks ------------------------------------------------------------------------------------

/// A CVeryFastFT serves one call at a time: its row tables are laid anew in each.
class Block {
 public:
  explicit Block(int exponent) : transform_(checked(exponent)) {}

  int exponent() const { return transform_.exponent; }
  int size() const { return transform_.size; }

  using Member = int (CVeryFastFT::*)(float*, float*);
  void run(const char* function, Member member, const py::object& src, const py::object& dst) {
    const py::array source = block(src, {function, "src"});
    const py::array target = dst.is_none() ? source : block(dst, {function, "dst"});
    const Lines target_lines = lines_in_place(target, {function, dst.is_none() ? "src" : "dst"});
    float* const from = static_cast<float*>(const_cast<void*>(source.data()));
    const Unlocked unlocked;
    const std::lock_guard guard(mutex_);
    (transform_.*member)(from, target_lines.line<float>(0));
  }

 private:
  static int checked(int exponent) {
    if (exponent < 0 || exponent > 30) {
      value_error({"CVeryFastFT", "exponent"},
                  "is " + std::to_string(exponent) + ", not within 0 ... 30");
    }
    return exponent;
  }

  py::array block(const py::object& value, Argument argument) const {
    py::array array = as_array(value, argument);
    const std::int64_t floats = std::int64_t{transform_.size} * (transform_.size + 1);
    const bool is_one_line = array.ndim() == 1 && has_type<float>(array) &&
                             (array.flags() & py::array::c_style) != 0 &&
                             (array.flags() & py::detail::npy_api::NPY_ARRAY_ALIGNED_) != 0;
    if (!is_one_line) {
      type_error(argument, "is " + describe(array) +
                               ": pass one contiguous axis of float32, as in "
                               "numpy.zeros(size * (size + 1), numpy.float32)");
    }
    if (array.shape(0) != floats) {
      value_error(argument, "has " + std::to_string(array.shape(0)) + " floats, not " +
                                std::to_string(floats) + ", size * (size + 1)");
    }
    return array;
  }

  CVeryFastFT transform_;
  std::mutex mutex_;
};

// --- Bit reversal ------------------------------------------------------------------------------

py::object bit_reverse(const py::object& x, int bits) {
  if (bits < 0 || bits > 31) {
    value_error({"bit_reverse", "bits"}, "is " + std::to_string(bits) + ", not within 0 ... 31");
  }
  return elementwise<int>("bit_reverse", std::array{"x"}, std::array{x},
                          [bits](int value) { return ibitr(value, bits); });
}

}  // namespace

void bind_fft(py::module_& module) {
  module.doc() = R"(Fourier transforms of lines and of rasters, and their tables.

Lines lie along the last axis of an array of one or more axes. They have N = 2^m samples, m at most
30, and are transformed in place, in natural order. `forward` never divides by N; whether an inverse
does is the one thing to look up:

=====================================  ==================  ==========================
transform                              layouts             its inverse
=====================================  ==================  ==========================
forward, inverse                       float32 pair,       divides by N
                                       complex64
forward, inverse                       float64 pair,       does not divide, and rounds
                                       complex128          to single precision
CFFTClass.forward, .inverse            float32 pair,       does not divide
                                       float64 pair
tables(m): .forward, .inverse          float32 pair,       divides by N
                                       float64 pair,
                                       complex64,
                                       complex128
forward_2d, inverse_2d                 any pixel type      does not divide: forward_2d
                                                           divides by the number of pixels
=====================================  ==================  ==========================

A pair is two distinct arrays of one shape, the real and the imaginary parts. What cannot be worked
on in place (another type, rows with gaps, a read-only array) is refused, never copied.
Python's lock is released while a transform runs; calls on different arrays may run in any number
of threads.
)";

  module.def("forward", function_of("forward", forward_lines), py::arg("re"),
             py::arg("im") = py::none(),
             R"(forward(re, im=None)

Forward transform of lines, in place, not scaled (C++: fft).

X[k] = sum of x[n] exp(-2 pi i k n / N) over n. Float32 and complex64 lines are computed in single
precision throughout, angles included (CFFTClass.forward is more accurate), the others in double.

Parameters
----------
re : ndarray
    Lines along the last axis, overwritten: real parts, float32 or float64; or complex64 or
    complex128 when `im` is None. The last axis is contiguous and has N = 2^m elements, m = 0 ... 30.
im : ndarray, optional
    Imaginary parts: type and shape of `re`.

Notes
-----
No routine of the library takes lines of complex128: each is parted into a pair of float64, of one
line's length, and put together again. MemoryError where there is no room for that pair; nothing has
been changed then.

Examples
--------
>>> import numpy, sarnum.fft
>>> z = numpy.ones(4, numpy.complex64)
>>> sarnum.fft.forward(z)
>>> z.real
array([4., 0., 0., 0.], dtype=float32)
)");
  module.def("inverse", function_of("inverse", inverse_lines), py::arg("re"),
             py::arg("im") = py::none(),
             R"(inverse(re, im=None)

Inverse transform of lines, in place (C++: ifft).

Float32 and complex64 lines are divided by N: forward, then inverse returns the input. Float64 pairs
and complex128 lines are **not divided**, and every butterfly result is rounded to single precision:
the result is N times the true inverse, with single accuracy. For an inverse in double precision
take that of tables().

Parameters
----------
re, im : ndarray
    As in forward().
)");
  module.def("bit_reverse", bit_reverse, py::arg("x"), py::arg("bits"),
             R"(bit_reverse(x, bits)

The low `bits` bits of x in reverse order (C++: ibitr).

Parameters
----------
x : int or array_like of int32
bits : int
    0 ... 31.

Returns
-------
int or ndarray of int32
    bit_reverse(6, 3) is 3, bit_reverse(x, 0) is 0.
)");

  py::class_<Tables>(module, "tables", R"(tables(m)

Context manager of the tables of the table-driven transforms (C++: init_ibitr, delete_ibitr).

There is one set of tables in a process, for one length N = 2^m at a time. Entering the context
builds it, leaving it releases it; in between the object has the transforms that use it, forward()
and inverse(), which take lines of this length alone. Contexts of the same m may be open at the same
time, one in another or in different threads: they share the tables, and the last one releases them.
Nothing waits: entering a context of another m meanwhile is refused.

Threads may transform by one object at the same time. Leaving the context while a transform runs
releases the tables when that has ended.

Parameters
----------
m : int
    Base-2 logarithm of the length, 0 ... 30.

Attributes
----------
m : int

Raises
------
ValueError
    For m outside 0 ... 30; by a transform, for lines of another length.
RuntimeError
    On entry, when tables of another length are in use, or this object has been entered already; by
    a transform, outside the context.
MemoryError
    On entry, when there is no storage for the tables.

Notes
-----
Only Python's use of the tables is guarded: C++ code in the same process that calls init_ibitr or
delete_ibitr itself must keep away from open contexts.

Examples
--------
>>> import numpy, sarnum.fft
>>> lines = numpy.ones((3, 1024), numpy.complex64)
>>> with sarnum.fft.tables(10) as t:
...     t.forward(lines)
>>> lines[:, 0].real
array([1024., 1024., 1024.], dtype=float32)
)")
      .def(py::init<int>(), py::arg("m"))
      .def_property_readonly("m", &Tables::exponent, "Base-2 logarithm of the length.")
      .def("__enter__",
           [](const py::object& self) {
             self.cast<Tables&>().enter();
             return self;
           })
      .def("__exit__", [](Tables& self, const py::args&) { self.exit(); })
      .def(
          "forward",
          [](const Tables& self, const py::object& re, const py::object& im) {
            self.transform("forward", fast_forward_lines, re, im);
          },
          py::arg("re"), py::arg("im") = py::none(),
          R"(forward(re, im=None)

Forward transform of lines by the tables, in place, not scaled (C++: fft_Fast).

Parameters
----------
re, im : ndarray
    As in sarnum.fft.forward(), with lines of 2^m samples. Float64 pairs and complex128 lines get
    the values of sarnum.fft.forward(), element for element.
)")
      .def(
          "inverse",
          [](const Tables& self, const py::object& re, const py::object& im) {
            self.transform("inverse", fast_inverse_lines, re, im);
          },
          py::arg("re"), py::arg("im") = py::none(),
          R"(inverse(re, im=None)

Inverse transform of lines by the tables, in place, divided by N (C++: ifft_Fast).

Float64 pairs and complex128 lines keep double precision throughout, unlike sarnum.fft.inverse().

Parameters
----------
re, im : ndarray
    As in forward().
)");

  py::class_<CFFTClass> object(module, "CFFTClass", R"(CFFTClass()

Transforms as members of an object that holds no data (C++: CFFTClass). All are static: call them
by the class or by an object.
)");
  object.def(py::init<>())
      .def_static("forward", function_of("forward", member_forward_lines), py::arg("re"),
                  py::arg("im"),
                  R"(forward(re, im)

Forward transform of lines, in place, not scaled (C++: CFFTClass::fft). Float32 pairs are computed
in double precision, each stored butterfly result being rounded to float.

Parameters
----------
re, im : ndarray
    A pair of float32 or float64, as in sarnum.fft.forward().
)")
      .def_static("inverse", function_of("inverse", member_inverse_lines), py::arg("re"),
                  py::arg("im"),
                  R"(inverse(re, im)

Inverse transform of lines, in place, **not scaled**: N times the true inverse (C++:
CFFTClass::ifft). Every butterfly result is rounded to single precision, of float64 pairs too.

Parameters
----------
re, im : ndarray
    A pair of float32 or float64, as in sarnum.fft.forward().
)")
      .def_static("forward_centred", function_of("forward_centred", centred_lines), py::arg("re"),
                  py::arg("im"),
                  R"(forward_centred(re, im)

Forward transform of lines with frequency zero in the middle, in place, not scaled (C++:
CFFTClass::fft_new with centre = 1).

Element i is multiplied by (-1)^i first; output k holds frequency k - N/2. There is no inverse.

Parameters
----------
re, im : ndarray
    A pair of float32 or float64, as in sarnum.fft.forward().
)")
      .def_static("synthesize", synthesize, py::arg("ref_re"), py::arg("ref_im"), py::arg("re"),
                  py::arg("im"),
                  R"(synthesize(ref_re, ref_im, re, im)

Frequency-domain synthesis of lines, in place (C++: CFFTClass::SyntAlmaz).

Transforms each line, replaces its spectrum X by conj(X) H over the first samples, as many as H has,
and transforms back. Mind that the spectrum of the line is conjugated, not H: with H = 1 the output
is N conj(x[(N - j) mod N]). To compress a line with a replica r, let H be the spectrum of r: the
compressed line is conj(output[(N - j) mod N]) / N. Nothing is divided by N here.

Parameters
----------
ref_re, ref_im : array_like of float32
    H, 1 ... N samples; only read. Samples of the spectrum beyond them keep their values.
re, im : ndarray of float32
    Lines along the last axis, overwritten, as in sarnum.fft.forward().
)")
      .def_static("ceil_power_of_two", ceil_power_of_two, py::arg("n"),
                  R"(ceil_power_of_two(n)

The smallest m with 2^m >= n: the exponent, not the power (C++: CFFTClass::CeilPowerOfTwo).

As far as the rounding of ceil(log(n) / log(2)) allows: for n = 2^29 it may be 30.

Parameters
----------
n : int
    1 ... 2^31 - 1.
)")
      .def_static("forward_2d", forward_2d, py::arg("src"), py::arg("out") = py::none(),
                  py::kw_only(), py::arg("centred") = false, py::arg("progress") = py::none(),
                  R"(forward_2d(src, out=None, *, centred=False, progress=None)

Forward two-dimensional transform of a raster, divided by the number of pixels of the output (C++:
CFFTClass::FFT_2D; CFFTClass::FFT_2D_NEW where `centred`).

The raster is padded with zeros to N2 = 2^ceil_power_of_two(height) rows and N1 =
2^ceil_power_of_two(width) columns.

Parameters
----------
src : ndarray
    (height, width) pixels of (u)int8, (u)int16, (u)int32, float32, float64, complex64 or
    complex128; or (height, width, 2) of int8, int16 or int32, complex pixels. Only read, by rows:
    the last axis is contiguous, rows may lie anywhere (a view, every second row, upside down).
out : ndarray, optional
    (N2, N1) of complex128 for float64 and complex128 pixels, of complex64 for all others. Made anew
    when None. It may be `src`, or share memory with it: row after row is loaded, transformed and
    stored, then column after column.
centred : bool
    Whether frequency zero comes out at row N2/2, column N1/2, instead of at (0, 0).
progress : callable or object, optional
    Called as progress(done, total) up to about a hundred times, the last time with done == total.
    An object with update(), as a bar of tqdm, gets total as an attribute and update(steps) instead.
    What it raises ends the reports and is raised when the work has ended; `out` is then complete.

Returns
-------
ndarray
    `out`.
)")
      .def_static("inverse_2d", inverse_2d, py::arg("src"), py::arg("out") = py::none(),
                  py::kw_only(), py::arg("progress") = py::none(),
                  R"(inverse_2d(src, out=None, *, progress=None)

Inverse two-dimensional transform, not scaled: brings a spectrum of forward_2d() back to the padded
raster (C++: CFFTClass::IFFT_2D).

Parameters
----------
src : ndarray
    Complex64 or complex128, numbers of rows and columns powers of two; only read, by rows, as in
    forward_2d(). With complex128, too, butterfly results are rounded to single precision.
out : ndarray, optional
    Type and shape of `src`, or None. It may be `src`.
progress : callable or object, optional
    As in forward_2d().

Returns
-------
ndarray
    `out`.
)");
  for (const char* const name : {"ceil_power_of_two", "forward_2d", "inverse_2d"}) {
    module.attr(name) = object.attr(name);
  }

  py::class_<Block>(module, "CVeryFastFT", R"(CVeryFastFT(exponent)

Two-dimensional transforms of a square inside one block of floats, over rows that overlap (C++:
CVeryFastFT).

Mind the layout: row k begins size k floats into the block although it holds 2 size floats. Each row
overlaps the next by half, and what a later row writes replaces the second half of the one before:
the result is **not** the transform of a dense image, for which there is forward_2d().

Parameters
----------
exponent : int
    Base-2 logarithm of the side, 0 ... 30.

Attributes
----------
exponent, size : int
    size = 2^exponent pixels, the side.

Notes
-----
One object serves one call at a time; other threads wait. Where there is no storage to work with, the
block stays as it is. AllocateDataMemory and FreeDataMemory do
nothing and are left out, as are copies, which would share storage.
)")
      .def(py::init<int>(), py::arg("exponent"))
      .def_property_readonly("exponent", &Block::exponent, "Base-2 logarithm of the side.")
      .def_property_readonly("size", &Block::size, "The side in pixels.")
      .def(
          "forward_2d_rect",
          [](Block& self, const py::object& src, const py::object& dst) {
            self.run("forward_2d_rect", &CVeryFastFT::FFT_2D_Rect, src, dst);
          },
          py::arg("src"), py::arg("dst") = py::none(),
          R"(forward_2d_rect(src, dst=None)

Forward transform, each row and each column divided by `size` (C++: CVeryFastFT::FFT_2D_Rect).

Parameters
----------
src : ndarray of float32
    A block of size (size + 1) floats, one contiguous axis. Only read, unless dst is None or shares
    its memory.
dst : ndarray of float32, optional
    Another block, to be written; `src` when None.
)")
      .def(
          "inverse_2d_rect",
          [](Block& self, const py::object& src, const py::object& dst) {
            self.run("inverse_2d_rect", &CVeryFastFT::IFFT_2D_Rect, src, dst);
          },
          py::arg("src"), py::arg("dst") = py::none(),
          R"(inverse_2d_rect(src, dst=None)

Inverse transform, not scaled (C++: CVeryFastFT::IFFT_2D_Rect).

Parameters
----------
src, dst : ndarray of float32
    As in forward_2d_rect().
)");
}

}  // namespace sarnum::python
