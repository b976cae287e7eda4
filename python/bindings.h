// The submodules of the Python package, one source each.
#ifndef SARNUM_PYTHON_BINDINGS_H
#define SARNUM_PYTHON_BINDINGS_H

#include <pybind11/pybind11.h>

namespace sarnum::python {

void bind_fft(pybind11::module_& module);
void bind_numeric(pybind11::module_& module);
void bind_linalg(pybind11::module_& module);
void bind_filters(pybind11::module_& module);
void bind_imaging(pybind11::module_& module);

}  // namespace sarnum::python

#endif
