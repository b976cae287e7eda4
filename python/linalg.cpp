#include "bindings.h"
namespace sarnum::python {
void bind_linalg(pybind11::module_& module) {
  module.doc() = "";
}
}  // namespace sarnum::python
