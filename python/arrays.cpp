#include "arrays.h"

#include <algorithm>
#include <bit>
#include <complex>
#include <cstdint>
#include <functional>
#include <limits>

#include "sarnum/numeric/pixel_types.h"

namespace sarnum::python {

namespace {

constexpr int largest = std::numeric_limits<int>::max();

std::string text(const py::handle& value) {
  return py::str(value);
}

std::string message(Argument argument, const std::string& fault) {
  return std::string(argument.function) + "(): " + argument.name + " " + fault;
}

/// Whether the elements of each line along the last `axes` axes follow one another.
bool is_contiguous(const py::array& array, py::ssize_t axes) {
  py::ssize_t stride = array.itemsize();
  for (py::ssize_t axis = array.ndim() - 1; axis >= array.ndim() - axes; --axis) {
    if (array.shape(axis) > 1 && array.strides(axis) != stride) {
      return false;
    }
    stride *= array.shape(axis);
  }
  return true;
}

void require_elements(const py::array& array, Argument argument) {
  if (array.size() == 0) {
    value_error(argument, "is empty: " + describe(array));
  }
  for (py::ssize_t axis = 0; axis < array.ndim(); ++axis) {
    if (array.shape(axis) > largest) {
      value_error(argument, "is " + describe(array) + ": an axis has at most 2^31 - 1 elements");
    }
  }
}

void require_contiguous(const py::array& array, Argument argument, py::ssize_t axes) {
  if (!is_contiguous(array, axes)) {
    type_error(argument, "is " + describe(array) +
                             ", whose rows are not contiguous: pass a contiguous copy, " +
                             "numpy.ascontiguousarray(" + argument.name + ")");
  }
}

/// A mask would be passed over in silence: nothing in the library knows of masks.
void require_no_mask(const py::object& value, Argument argument) {
  if (py::isinstance<py::array>(value) && py::hasattr(value, "mask")) {
    type_error(argument, "is a masked array, and no routine looks at masks: pass " +
                             std::string(argument.name) + ".filled() of some value");
  }
}

/// Lines that share memory would be transformed more than once, each time from other values.
bool are_disjoint(std::vector<void*> starts, py::ssize_t bytes) {
  if (!std::is_sorted(starts.begin(), starts.end(), std::less<>())) {
    std::sort(starts.begin(), starts.end(), std::less<>());
  }
  const auto overlap = [bytes](const void* a, const void* b) {
    return reinterpret_cast<std::uintptr_t>(b) - reinterpret_cast<std::uintptr_t>(a) <
           static_cast<std::uintptr_t>(bytes);
  };
  return std::adjacent_find(starts.begin(), starts.end(), overlap) == starts.end();
}

void require_writeable(const py::array& array, Argument argument) {
  if (!array.writeable()) {
    value_error(argument,
                "is a read-only array: pass a copy, " + std::string(argument.name) + ".copy()");
  }
}

}  // namespace

void type_error(Argument argument, const std::string& fault) {
  throw py::type_error(message(argument, fault));
}

void value_error(Argument argument, const std::string& fault) {
  throw py::value_error(message(argument, fault));
}

std::string describe(const py::array& array) {
  return "a " + text(array.dtype()) + " array of shape " + text(array.attr("shape")) +
         " and strides " + text(array.attr("strides"));
}

bool has_type(const py::array& array, const py::dtype& type) {
  return py::detail::npy_api::get().PyArray_EquivTypes_(array.dtype().ptr(), type.ptr());
}

py::array as_array(const py::object& value, Argument argument) {
  if (!py::isinstance<py::array>(value)) {
    type_error(argument,
               "is " + text(py::type::of(value).attr("__name__")) + ": pass a NumPy array");
  }
  require_no_mask(value, argument);
  return py::reinterpret_borrow<py::array>(value);
}

Lines lines_in_place(const py::array& array, Argument argument) {
  if (array.ndim() == 0) {
    value_error(argument, "has no axis: pass an array of one or more");
  }
  require_elements(array, argument);
  require_contiguous(array, argument, 1);
  if ((array.flags() & py::detail::npy_api::NPY_ARRAY_ALIGNED_) == 0) {
    type_error(argument, "is " + describe(array) + ", not aligned: pass a copy, " + argument.name +
                             ".copy()");
  }
  require_writeable(array, argument);
  Lines lines;
  lines.length = static_cast<int>(array.shape(array.ndim() - 1));
  auto* const first = static_cast<char*>(const_cast<void*>(array.data()));
  const std::function<void(py::ssize_t, char*)> collect = [&](py::ssize_t axis, char* start) {
    if (axis == array.ndim() - 1) {
      lines.starts.push_back(start);
      return;
    }
    for (py::ssize_t i = 0; i < array.shape(axis); ++i) {
      collect(axis + 1, start + i * array.strides(axis));
    }
  };
  collect(0, first);
  if (!are_disjoint(lines.starts, lines.length * array.itemsize())) {
    value_error(argument, "is " + describe(array) + ", whose lines overlap: pass a copy, " +
                              argument.name + ".copy()");
  }
  return lines;
}

LinePairs line_pairs_in_place(const char* function, const py::object& re, const py::object& im) {
  const Argument re_argument{function, "re"};
  const Argument im_argument{function, "im"};
  const py::array re_array = as_array(re, re_argument);
  const py::array im_array = as_array(im, im_argument);
  LinePairs pairs;
  pairs.are_double = has_type<double>(re_array);
  if (!pairs.are_double && !has_type<float>(re_array)) {
    type_error(re_argument, "is " + describe(re_array) +
                                ": pass two arrays of float32 or of float64, as in " +
                                "re, im = z.real.copy(), z.imag.copy()");
  }
  if (!has_type(im_array, re_array.dtype())) {
    type_error(im_argument, "is " + describe(im_array) + ", but re is of " +
                                text(re_array.dtype()) + ": pass two arrays of one type");
  }
  if (!re_array.attr("shape").equal(im_array.attr("shape"))) {
    value_error(im_argument,
                "is " + describe(im_array) + ", but re has shape " + text(re_array.attr("shape")));
  }
  pairs.re = lines_in_place(re_array, re_argument);
  pairs.im = lines_in_place(im_array, im_argument);
  std::vector<void*> all = pairs.re.starts;
  all.insert(all.end(), pairs.im.starts.begin(), pairs.im.starts.end());
  if (!are_disjoint(std::move(all), pairs.re.length * re_array.itemsize())) {
    value_error(im_argument, "overlaps re: pass two distinct arrays");
  }
  return pairs;
}

int pixel_type(const py::array& array, bool pairs) {
  struct Type {
    py::dtype type;
    int single;
    int pair;
  };
  const Type types[] = {
      {py::dtype::of<std::uint8_t>(), TD_UINT8, TD_COMPLEX_UINT8},
      {py::dtype::of<std::int8_t>(), TD_INT8, TD_COMPLEX_INT8},
      {py::dtype::of<std::uint16_t>(), TD_UINT16, TD_COMPLEX_UINT16},
      {py::dtype::of<std::int16_t>(), TD_INT16, TD_COMPLEX_INT16},
      {py::dtype::of<std::uint32_t>(), TD_UINT32, TD_COMPLEX_UINT32},
      {py::dtype::of<std::int32_t>(), TD_INT32, TD_COMPLEX_INT32},
      {py::dtype::of<float>(), TD_FLOAT32, TD_COMPLEX_FLOAT32},
      {py::dtype::of<double>(), TD_FLOAT64, TD_COMPLEX_FLOAT64},
      {py::dtype::of<std::complex<float>>(), TD_COMPLEX_FLOAT32, 0},
      {py::dtype::of<std::complex<double>>(), TD_COMPLEX_FLOAT64, 0},
  };
  for (const Type& type : types) {
    if (has_type(array, type.type)) {
      return pairs ? type.pair : type.single;
    }
  }
  return 0;
}

Raster raster(const py::array& array, Argument argument) {
  const bool pairs = array.ndim() == 3 && array.shape(2) == 2;
  if (array.ndim() != 2 && !pairs) {
    value_error(argument, "is " + describe(array) +
                              ": pass an array of rows and columns (and a third axis of 2 for " +
                              "complex pixels of integers)");
  }
  Raster result;
  result.type = pixel_type(array, pairs);
  if (result.type == 0) {
    type_error(argument, "is " + describe(array) +
                             ": pass one of (u)int8, (u)int16, (u)int32, float32, float64, " +
                             "complex64, complex128 in this machine's byte order, converted by " +
                             argument.name + ".astype()");
  }
  require_elements(array, argument);
  require_contiguous(array, argument, pairs ? 2 : 1);
  result.height = static_cast<int>(array.shape(0));
  result.width = static_cast<int>(array.shape(1));
  auto* const first = static_cast<char*>(const_cast<void*>(array.data()));
  result.rows.reserve(static_cast<std::size_t>(result.height));
  for (py::ssize_t row = 0; row < result.height; ++row) {
    result.rows.push_back(first + row * array.strides(0));
  }
  return result;
}

Raster raster_to_write(const py::array& array, Argument argument, const py::dtype& type, int height,
                       int width) {
  if (!has_type(array, type)) {
    type_error(argument, "is " + describe(array) + ": pass one of " + text(type));
  }
  if (array.ndim() != 2 || array.shape(0) != height || array.shape(1) != width) {
    value_error(argument, "is " + describe(array) + ": pass one of shape (" +
                              std::to_string(height) + ", " + std::to_string(width) + ")");
  }
  require_writeable(array, argument);
  return raster(array, argument);
}

py::array exact(const py::object& value, Argument argument, const py::dtype& type) {
  require_no_mask(value, argument);
  const py::module_ numpy = py::module_::import("numpy");
  const py::array array = numpy.attr("asarray")(value);
  bool is_exact = has_type(array, type) || (array.size() == 0 && array.dtype().kind() != 'c');
  if (!is_exact && (array.dtype().kind() == 'i' || array.dtype().kind() == 'u')) {
    const py::ssize_t digits = type.kind() == 'i'                                 ? 31
                               : type.itemsize() == (type.kind() == 'c' ? 16 : 8) ? 53
                                                                                  : 24;
    const std::int64_t bound = (std::int64_t{1} << digits) - (type.kind() == 'i' ? 1 : 0);
    is_exact = array.attr("max")().attr("__le__")(bound).cast<bool>() &&
               array.attr("min")().attr("__ge__")(-bound).cast<bool>();
  } else if (!is_exact) {
    is_exact = py::cast<bool>(numpy.attr("can_cast")(array.dtype(), type, "safe"));
  }
  if (!is_exact) {
    type_error(argument, "is " + describe(array) + ", whose values may not all be " + text(type) +
                             ": convert them yourself, numpy.asarray(" + argument.name +
                             ").astype(numpy." + text(type) + ")");
  }
  return numpy.attr("require")(array, type, "CA");
}

void require_vector(const py::array& array, Argument argument, py::ssize_t length) {
  if (array.ndim() != 1) {
    value_error(argument, "is " + describe(array) + ": pass one axis, as in ravel()");
  }
  require_elements(array, argument);
  if (length != 0 && array.shape(0) != length) {
    value_error(argument, "has " + std::to_string(array.shape(0)) + " elements, not " +
                              std::to_string(length));
  }
}

py::array_t<double> vector_to_write(const py::object& out, Argument argument, py::ssize_t length) {
  if (out.is_none()) {
    return py::array_t<double>(length);
  }
  const py::array array = as_array(out, argument);
  if (!has_type<double>(array)) {
    type_error(argument, "is " + describe(array) + ": pass one of float64");
  }
  require_vector(array, argument, length);
  lines_in_place(array, argument);
  return py::array_t<double>(array);
}

int exponent_of(int length, Argument argument) {
  if (!std::has_single_bit(static_cast<unsigned>(length)) || length > (1 << 30)) {
    value_error(argument, "has lines of " + std::to_string(length) +
                              " samples: their length must be a power of two up to 2^30");
  }
  return std::countr_zero(static_cast<unsigned>(length));
}

}  // namespace sarnum::python
