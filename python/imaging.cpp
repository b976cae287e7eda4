// sarnum.imaging: multilooking of raster files by the library, and of arrays by its definition.
//
// The library multilooks files. An array would have to become one first, so its means are formed
// here: the same sums in the same order, hence the same values (a test compares them).
#include <pybind11/stl.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "arrays.h"
#include "bindings.h"
#include "progress.h"
#include "sarnum/host/host.h"
#include "sarnum/host/standalone.h"
#include "sarnum/imaging/noncoherent_accumulation.h"
#include "sarnum/numeric/pixel_types.h"

namespace sarnum::python {

namespace {

constexpr int max_looks_down = 36;

int divide_rounding_up(int size, int looks) {
  return size / looks + (size % looks != 0 ? 1 : 0);
}

void require_looks(const char* function, int across, int down) {
  if (across < 1) {
    value_error({function, "looks_across"}, "is " + std::to_string(across) + ", less than 1");
  }
  if (down < 1 || down > max_looks_down) {
    value_error({function, "looks_down"}, "is " + std::to_string(down) + ", not within 1 ... " +
                                              std::to_string(max_looks_down));
  }
}

/// Adds a row of samples to the sums of its looks, each in the library's order: row by row and from
/// left to right. `looks` is the number of columns if it is known here, which halves the time, or
/// 0.
template <typename T, int looks>
void add_row(const void* row, int width, int looks_across, double* sums) {
  const int across = looks != 0 ? looks : looks_across;
  const T* sample = static_cast<const T*>(row);
  const T* const end = sample + width;
  for (; end - sample >= across; sample += across) {
    double sum = *sums;
    for (int k = 0; k < across; ++k) {
      sum += static_cast<double>(static_cast<float>(sample[k]));
    }
    *sums++ = sum;
  }
  for (; sample != end; ++sample) {
    *sums += static_cast<double>(static_cast<float>(*sample));
  }
}

using AddRow = void (*)(const void*, int, int, double*);

template <typename T>
AddRow row_adder(int looks_across) {
  switch (looks_across) {
    case 2:
      return add_row<T, 2>;
    case 3:
      return add_row<T, 3>;
    case 4:
      return add_row<T, 4>;
    case 5:
      return add_row<T, 5>;
    case 8:
      return add_row<T, 8>;
    default:
      return add_row<T, 0>;
  }
}

AddRow row_adder(int type, int looks_across) {
  switch (type) {
    case TD_UINT8:
      return row_adder<std::uint8_t>(looks_across);
    case TD_INT8:
      return row_adder<std::int8_t>(looks_across);
    case TD_UINT16:
      return row_adder<std::uint16_t>(looks_across);
    case TD_INT16:
      return row_adder<std::int16_t>(looks_across);
    case TD_FLOAT32:
      return row_adder<float>(looks_across);
    default:
      return nullptr;
  }
}

py::object multilook(const py::object& image, int looks_across, int looks_down,
                     const py::object& out, const py::object& progress) {
  const char* const function = "multilook";
  const Argument argument{function, "image"};
  require_looks(function, looks_across, looks_down);
  Progress reports(function, progress);
  const py::array array = as_array(image, argument);
  const Raster source = raster(array, argument);
  const AddRow add = array.ndim() == 2 ? row_adder(source.type, looks_across) : nullptr;
  if (add == nullptr) {
    type_error(argument,
               "is " + describe(array) +
                   ": samples are (u)int8, (u)int16 or float32; convert others yourself, "
                   "image.astype(numpy.float32), and detect complex ones first, abs(image) ** 2");
  }
  if ((array.flags() & py::detail::npy_api::NPY_ARRAY_ALIGNED_) == 0) {
    type_error(argument, "is " + describe(array) + ", not aligned: pass image.copy()");
  }
  const int width = divide_rounding_up(source.width, looks_across);
  const int height = divide_rounding_up(source.height, looks_down);
  const py::dtype type = py::dtype::of<float>();
  py::array result = out.is_none() ? py::array(type, std::vector<py::ssize_t>{height, width})
                                   : as_array(out, {function, "out"});
  const Raster target = raster_to_write(result, {function, "out"}, type, height, width);
  if (py::module_::import("numpy").attr("may_share_memory")(array, result).cast<bool>()) {
    value_error({function, "out"}, "shares memory with image: pass another array");
  }
  const Lines means = lines_in_place(result, {function, "out"});
  {
    const Unlocked unlocked;
    reports.begin(height);
    std::vector<double> sums(static_cast<std::size_t>(width));
    for (int r = 0; r < height; ++r) {
      const py::ssize_t first = py::ssize_t{r} * looks_down;
      const int rows = static_cast<int>(std::min<py::ssize_t>(looks_down, source.height - first));
      std::fill(sums.begin(), sums.end(), 0.0);
      for (int k = 0; k < rows; ++k) {
        add(source.rows[static_cast<std::size_t>(first + k)], source.width, looks_across,
            sums.data());
      }
      float* const mean = means.line<float>(static_cast<std::size_t>(r));
      for (int c = 0; c < width; ++c) {
        const std::int64_t count =
            std::int64_t{std::min(looks_across, source.width - c * looks_across)} * rows;
        mean[c] = static_cast<float>(sums[static_cast<std::size_t>(c)]) / static_cast<float>(count);
      }
      reports.step();
    }
  }
  reports.end();
  return result;
}

/// The bytes of a path of any kind that open() takes.
std::string path_of(const py::object& path, Argument argument) {
  const py::module_ os = py::module_::import("os");
  auto text = os.attr("fsencode")(path).cast<std::string>();
  if (text.empty() || text.find('\0') != std::string::npos) {
    value_error(argument, "is no path: it is empty or has a zero byte");
  }
  return text;
}

void multilook_file(const py::object& output_path, const py::object& input_path, int looks_across,
                    int looks_down, const std::vector<std::string>& creation_options,
                    const py::object& progress) {
  const char* const function = "multilook_file";
  require_looks(function, looks_across, looks_down);
  Progress reports(function, progress);
  const std::string output = path_of(output_path, {function, "output_path"});
  const std::string input = path_of(input_path, {function, "input_path"});
  const py::module_ os = py::module_::import("os");
  const py::object exists = os.attr("path").attr("exists");
  const py::bytes output_bytes(output);
  const py::bytes input_bytes(input);
  if (output == input ||
      (exists(output_bytes).cast<bool>() && exists(input_bytes).cast<bool>() &&
       os.attr("path").attr("samefile")(output_bytes, input_bytes).cast<bool>())) {
    value_error({function, "output_path"}, "is the input, which creating it would replace");
  }
  std::vector<const char*> options;
  options.reserve(creation_options.size());
  for (const std::string& option : creation_options) {
    options.push_back(option.c_str());
  }
  // The host keeps one failure and one set of options for a thread.
  thread_local bool is_at_work = false;
  if (is_at_work) {
    throw std::runtime_error(std::string(function) + "(): called by the progress of another one");
  }
  struct Work {
    Work() { is_at_work = true; }
    ~Work() { is_at_work = false; }
  } const work;
  int status = 0;
  std::string failure;
  {
    const Unlocked unlocked;
    host::clear_raster_failure();
    if (!host::set_creation_options(options.data(), static_cast<int>(options.size()))) {
      failure = "no storage for the creation options";
    } else {
      Meter<CCustomMeterInfo> meter(reports);
      status =
          NoncoherentAccumulationR(output.c_str(), input.c_str(), looks_across, looks_down, &meter);
      failure = host::raster_failure();
      host::set_creation_options(nullptr, 0);
    }
  }
  if (status == 0 || !failure.empty()) {
    if (failure.empty()) {
      failure = "no storage for the rows";
    }
    // The file that it names may be no UTF-8.
    const auto text = os.attr("fsdecode")(py::bytes(std::string(function) + "(): " + failure));
    PyErr_SetObject(PyExc_OSError, text.ptr());
    throw py::error_already_set();
  }
  reports.end();
}

}  // namespace

void bind_imaging(py::module_& module) {
  module.doc() = R"(Multilooking of arrays and of raster files.)";

  module.def("multilook", multilook, py::arg("image"), py::arg("looks_across"),
             py::arg("looks_down"), py::arg("out") = py::none(), py::kw_only(),
             py::arg("progress") = py::none(),
             R"(multilook(image, looks_across, looks_down, out=None, *, progress=None)

Noncoherent accumulation (multilooking) of an array: means over adjoining rectangles of looks_down x
looks_across samples. The values are those of multilook_file() (C++: NoncoherentAccumulationR).

A sum runs in double precision, row by row and from left to right; mean = float(sum) / float(count).
The last rectangles average the samples that exist. Samples are averaged as they are: pass intensity
or amplitude. L independent looks of fully developed speckle of intensity have a variance of mean^2/L.

Parameters
----------
image : ndarray
    (height, width) samples of (u)int8, (u)int16 or float32; other types could not become 32-bit
    floats exactly and are refused, complex ones too. The last axis is contiguous, rows may lie
    anywhere.
looks_across : int
    Columns averaged into one, at least 1; may exceed the width.
looks_down : int
    Rows averaged into one, 1 ... 36; may exceed the height.
out : ndarray of float32, optional
    (ceil(height / looks_down), ceil(width / looks_across)) means; made anew when None. It must not
    share memory with `image`.
progress : callable or object, optional
    As in sarnum.fft.forward_2d(); a step is an output row.

Returns
-------
ndarray of float32
    `out`.
)");

  module.def(
      "multilook_file", multilook_file, py::arg("output_path"), py::arg("input_path"),
      py::arg("looks_across"), py::arg("looks_down"), py::kw_only(),
      py::arg("creation_options") = std::vector<std::string>(), py::arg("progress") = py::none(),
      R"(multilook_file(output_path, input_path, looks_across, looks_down, *, creation_options=(), progress=None)

Noncoherent accumulation (multilooking) of the first band of a raster file (C++:
NoncoherentAccumulationR).

Reads what GDAL reads, writes a GeoTIFF of 32-bit floats, and holds looks_down input rows and one
output row in memory at a time. Georeferencing is not carried over; the command `sarnum multilook`
does that. Files of any number may be worked on at the same time, by threads or by processes.

Parameters
----------
output_path : str or path-like
    The file to create; an existing one is replaced. Mind the order.
input_path : str or path-like
    Another file: real samples, which are read as 32-bit floats.
looks_across, looks_down : int
    As in multilook().
creation_options : sequence of str
    GDAL's, as in ["COMPRESS=DEFLATE"].
progress : callable or object, optional
    As in sarnum.fft.forward_2d(); a step is an output row. It must not call multilook_file() itself.

Raises
------
OSError
    When a file cannot be opened, created, read or written. The message names the file. Output that
    exists by then is not whole: means over rows that could not be read are NaN.
)");
}

}  // namespace sarnum::python
