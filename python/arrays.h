// What all bindings ask of an array before a pointer into it reaches the library.
//
// The library trusts its arguments; Python must not be able to make it read or write where it
// should not. So every array passes one of the functions below. What a function works on in place
// is refused (TypeError) where only a copy would do; what it only reads is converted where that
// loses nothing. Sizes that do not fit are a ValueError. Messages name function, argument, type,
// layout and the remedy.
#ifndef SARNUM_PYTHON_ARRAYS_H
#define SARNUM_PYTHON_ARRAYS_H

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>

#include <array>
#include <string>
#include <vector>

#include "lock.h"

namespace sarnum::python {

namespace py = pybind11;

/// The name of an argument, with that of its function, for messages.
struct Argument {
  const char* function;
  const char* name;
};

/// "function(): name fault", as TypeError or ValueError.
/// @{
[[noreturn]] void type_error(Argument argument, const std::string& fault);
[[noreturn]] void value_error(Argument argument, const std::string& fault);
/// @}

/// "a float64 array of shape (4, 8) and strides (64, 8)".
std::string describe(const py::array& array);

/// Whether the elements are of the type in this machine's byte order.
bool has_type(const py::array& array, const py::dtype& type);
template <typename T>
bool has_type(const py::array& array) {
  return has_type(array, py::dtype::of<T>());
}

/// The argument itself, which must be an array of NumPy's.
py::array as_array(const py::object& value, Argument argument);

/// Lines along the last axis of an array, of one to 2^31 − 1 elements each.
struct Lines {
  std::vector<void*> starts;
  int length = 0;

  template <typename T>
  T* line(std::size_t index) const {
    return static_cast<T*>(starts[index]);
  }
};

/// The lines of an array that is worked on in place: writeable, aligned, each line contiguous and
/// apart from the others, at least one element in all. Its type has been looked at.
Lines lines_in_place(const py::array& array, Argument argument);

/// Two arrays of one shape, of floats or of doubles, the parts of complex lines; no line
/// overlaps another one.
struct LinePairs {
  Lines re;
  Lines im;
  bool are_double = false;
};
LinePairs line_pairs_in_place(const char* function, const py::object& re, const py::object& im);

/// A raster as the library takes it: pointers to rows of pixels. The last axis is contiguous; rows
/// may lie anywhere. An array of integers with a third axis of 2 has complex pixels.
struct Raster {
  std::vector<void*> rows;
  int width = 0;
  int height = 0;
  int type = 0;  ///< TD_UINT8 …
};

/// Refuses what is not a raster of one of the pixel types, or is empty.
Raster raster(const py::array& array, Argument argument);

/// The same, to be written: of this type and shape.
Raster raster_to_write(const py::array& array, Argument argument, const py::dtype& type, int height,
                       int width);

/// The code of a pixel type, TD_UINT8 …, `pairs` being two integers a pixel; 0 if there is none.
int pixel_type(const py::array& array, bool pairs);

/// A C-contiguous array of the type, the argument itself where it is one and else converted, if
/// that changes no value: integers that the type holds exactly (up to 2^53 become doubles), but
/// doubles never become floats.
py::array exact(const py::object& value, Argument argument, const py::dtype& type);
template <typename T>
py::array_t<T> exact(const py::object& value, Argument argument) {
  return py::array_t<T>(exact(value, argument, py::dtype::of<T>()));
}

/// The same of one axis, with 1 … 2^31 − 1 elements: `length` if that is not 0.
template <typename T>
py::array_t<T> exact_vector(const py::object& value, Argument argument, py::ssize_t length = 0);

void require_vector(const py::array& array, Argument argument, py::ssize_t length);

template <typename T>
py::array_t<T> exact_vector(const py::object& value, Argument argument, py::ssize_t length) {
  py::array_t<T> array = exact<T>(value, argument);
  require_vector(array, argument, length);
  return array;
}

/// The elements of an input, for a library that takes pointers to what it only reads as if it might
/// change it.
template <typename T>
T* elements(const py::array_t<T>& array) {
  return const_cast<T*>(array.data());
}

/// A contiguous vector of doubles to be written: `out`, or a new one for None.
py::array_t<double> vector_to_write(const py::object& out, Argument argument, py::ssize_t length);

/// An uninitialised array of the shape of another.
template <typename T>
py::array_t<T> array_like(const py::array& other) {
  return py::array_t<T>(std::vector<py::ssize_t>(other.shape(), other.shape() + other.ndim()));
}

/// apply(x, y, ...) for each element of the arguments, which are broadcast against each other as
/// NumPy does; a Python number where all are numbers. Runs without Python's lock.
template <typename Input, typename Apply, std::size_t count>
py::object elementwise(const char* function, const std::array<const char*, count>& names,
                       const std::array<py::object, count>& values, Apply apply) {
  py::list inputs;
  for (std::size_t k = 0; k < count; ++k) {
    inputs.append(exact<Input>(values[k], {function, names[k]}));
  }
  const py::list together = py::module_::import("numpy").attr("broadcast_arrays")(*inputs);
  std::array<py::array_t<Input>, count> arrays;
  std::array<const Input*, count> from{};
  for (std::size_t k = 0; k < count; ++k) {
    arrays[k] = exact<Input>(together[k], {function, names[k]});
    from[k] = arrays[k].data();
  }
  const auto at = [&]<std::size_t... k>(py::ssize_t i, std::index_sequence<k...>) {
    return apply(from[k][i]...);
  };
  using Result = decltype(at(0, std::make_index_sequence<count>()));
  auto result = array_like<Result>(arrays[0]);
  Result* const to = result.mutable_data();
  const py::ssize_t size = result.size();
  {
    const Unlocked unlocked;
    for (py::ssize_t i = 0; i < size; ++i) {
      to[i] = at(i, std::make_index_sequence<count>());
    }
  }
  return arrays[0].ndim() == 0 ? result.attr("item")() : py::object(result);
}

/// The exponent of a length that must be a power of two up to 2^30.
int exponent_of(int length, Argument argument);

}  // namespace sarnum::python

#endif
