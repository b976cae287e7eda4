// sarnum._sarnum: the compiled part of the package, which python/sarnum/__init__.py gives its
// names.
#include <pybind11/pybind11.h>

#include "bindings.h"
#include "sarnum/build_info.h"

namespace py = pybind11;

PYBIND11_MODULE(_sarnum, module) {
  py::options options;
  options.disable_function_signatures();

  module.def(
      "build_info",
      [] {
        const sarnum::BuildInfo info = sarnum::build_info();
        return py::make_tuple(info.version, info.instruction_set);
      },
      R"(build_info()

Version and instruction-set level of the loaded library (C++: sarnum::build_info).

Returns
-------
version : str
    "major.minor.patch".
instruction_set : str
    Level at which the numerical kernels run on this CPU. Values are the same at every level.
)");

  py::module_ fft = module.def_submodule("fft");
  py::module_ numeric = module.def_submodule("numeric");
  py::module_ linalg = module.def_submodule("linalg");
  py::module_ filters = module.def_submodule("filters");
  py::module_ imaging = module.def_submodule("imaging");
  sarnum::python::bind_fft(fft);
  sarnum::python::bind_numeric(numeric);
  sarnum::python::bind_linalg(linalg);
  sarnum::python::bind_filters(filters);
  sarnum::python::bind_imaging(imaging);
}
