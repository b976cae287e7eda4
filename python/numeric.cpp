#include "bindings.h"
namespace sarnum::python {
void bind_numeric(pybind11::module_& module) {
  module.doc() = "";
}
}  // namespace sarnum::python
