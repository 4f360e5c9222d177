// Light in a frame: seams by their contrast, and exposure.
#pragma once

#include <pybind11/pybind11.h>

namespace python {

void addLight(pybind11::module_& module);

}  // namespace python
