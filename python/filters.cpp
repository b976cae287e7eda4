// sarnum.filters: spectral filters and circular shifts of one line, in place; noise.
#include <complex>
#include <cstdlib>
#include <limits>
#include <string>

#include "arrays.h"
#include "bindings.h"
#include "sarnum/filters/noise.h"
#include "sarnum/filters/peak_band.h"
#include "sarnum/filters/shift.h"

namespace sarnum::python {

namespace {

/// The filters and shifts compute in double: pairs of float64.
LinePairs double_pairs(const char* function, const py::object& re, const py::object& im) {
  LinePairs pairs = line_pairs_in_place(function, re, im);
  if (!pairs.are_double) {
    type_error({function, "re"},
               "and im are of float32: pass float64, as in re.astype(numpy.float64)");
  }
  return pairs;
}

LinePairs to_filter(const char* function, const py::object& re, const py::object& im) {
  LinePairs pairs = double_pairs(function, re, im);
  if (pairs.re.starts.size() != 1) {
    value_error({function, "re"}, "has more than one line: filter one after another");
  }
  if (pairs.re.length > (1 << 30)) {
    value_error({function, "re"}, "has more than 2^30 samples");
  }
  return pairs;
}

void keep_peak_band(const py::object& re, const py::object& im) {
  const LinePairs lines = to_filter("keep_peak_band", re, im);
  const Unlocked unlocked;
  FilterHighSp(lines.re.line<double>(0), lines.im.line<double>(0), lines.re.length);
}

py::object remove_peak_band(const py::object& re, const py::object& im) {
  const LinePairs lines = to_filter("remove_peak_band", re, im);
  constexpr double none = std::numeric_limits<double>::quiet_NaN();  // stays without storage
  double mean_re = none, mean_im = none, sigma_re = none, sigma_im = none;
  {
    const Unlocked unlocked;
    FilterLowSp(lines.re.line<double>(0), lines.im.line<double>(0), lines.re.length, &mean_re,
                &mean_im, &sigma_re, &sigma_im);
  }
  return py::make_tuple(mean_re, mean_im, sigma_re, sigma_im);
}

void require_shift(int by, int length) {
  if (std::abs(static_cast<long long>(by)) > length) {
    value_error({"shift", "by"}, "is " + std::to_string(by) + ", more than the " +
                                     std::to_string(length) + " samples of a line");
  }
}

void shift(const py::object& re, const py::object& im, int by) {
  if (im.is_none()) {
    const py::array array = as_array(re, {"shift", "re"});
    if (!has_type<std::complex<float>>(array)) {
      type_error({"shift", "re"}, "is " + describe(array) +
                                      " and im is missing: pass a complex64 array, or the parts as "
                                      "two arrays of float64");
    }
    const Lines lines = lines_in_place(array, {"shift", "re"});
    require_shift(by, lines.length);
    const Unlocked unlocked;
    for (std::size_t k = 0; k < lines.starts.size(); ++k) {
      ShiftData(lines.line<COMPLEX_FLOAT32>(k), lines.length, by);
    }
    return;
  }
  const LinePairs lines = double_pairs("shift", re, im);
  require_shift(by, lines.re.length);
  const Unlocked unlocked;
  for (std::size_t k = 0; k < lines.re.starts.size(); ++k) {
    ShiftData(lines.re.line<double>(k), lines.im.line<double>(k), lines.re.length, by);
  }
}

py::object noise(double mean, double variance, const py::object& size) {
  if (size.is_none()) {
    return py::float_(Noise_normal(mean, variance));
  }
  py::array_t<double> result =
      py::module_::import("numpy").attr("empty")(size).cast<py::array_t<double>>();
  double* const to = result.mutable_data();
  const py::ssize_t count = result.size();
  {
    const Unlocked unlocked;
    for (py::ssize_t k = 0; k < count; ++k) {
      to[k] = Noise_normal(mean, variance);
    }
  }
  return result;
}

}  // namespace

void bind_filters(py::module_& module) {
  module.doc() = R"(Spectral filters, circular shifts, noise.)";

  module.def("keep_peak_band", keep_peak_band, py::arg("re"), py::arg("im"),
             R"(keep_peak_band(re, im)

Keeps the band round the strongest bin of a signal's spectrum and sets all others to zero, in place
(C++: FilterHighSp).

The n samples are padded to N = next_power_of_two(n). The band reaches from the strongest bin to
either side while magnitudes are above the mean; a side whose first bin is not above it has bound 0,
so that a pure tone in bin p != 0 has the band 0 ... 0 and is **removed**. Nothing divides by the
length: what passes comes back multiplied by that of the transform, with single accuracy. Where n is
no power of two, the result is stretched over the padding, not cut.

Parameters
----------
re, im : ndarray of float64
    One line, two distinct arrays, contiguous; overwritten. They stay as they are where there is no
    storage to work with (3 N doubles).
)");
  module.def("remove_peak_band", remove_peak_band, py::arg("re"), py::arg("im"),
             R"(remove_peak_band(re, im)

Sets the band of keep_peak_band() to zero and keeps all other bins, in place (C++: FilterLowSp).

Its transforms have the length 2^trunc(log2(n)): where n is no power of two they cover the first
samples alone. Pad to a power of two first.

Parameters
----------
re, im : ndarray of float64
    As in keep_peak_band().

Returns
-------
mean_re, mean_im, sigma_re, sigma_im : float
    Means and standard deviations of what remains, before it is resampled; NaN without storage.
)");
  module.def("shift", shift, py::arg("re"), py::arg("im") = py::none(), py::kw_only(),
             py::arg("by"), R"(shift(re, im=None, *, by)

Shifts lines circularly, in place: new[i + by] = old[i] (C++: ShiftData).

Shift by n // 2 to bring frequency zero to the middle, by -(n // 2) to go back.

Parameters
----------
re : ndarray
    Lines along the last axis, of float64, or of complex64 when `im` is None.
im : ndarray of float64, optional
    The imaginary parts.
by : int
    At most the length of a line in magnitude; negative to lower indices.
)");
  module.def("noise", noise, py::arg("mean"), py::arg("variance"), py::arg("size") = py::none(),
             R"(noise(mean, variance, size=None)

Samples of approximately normal distribution (C++: Noise_normal).

Each is a sum of twenty uniform ones from the C library's rand(), within 7.75 standard deviations of
the mean: seed them by seed_noise(). Threads draw from one sequence.

Parameters
----------
mean, variance : float
    The variance is the square of the standard deviation; a negative one gives NaN.
size : int or tuple of int, optional
    Shape; one float when None.
)");
  module.def(
      "seed_noise", [](unsigned seed) { std::srand(seed); }, py::arg("seed"), R"(seed_noise(seed)

Starts the sequence of noise() anew: srand() of the C library.
)");
}

}  // namespace sarnum::python
