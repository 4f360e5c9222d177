// Sweeps and advice, from what settings saw in the frames.
#pragma once

#include <pybind11/pybind11.h>

namespace python {

void addSearch(pybind11::module_& module);

}  // namespace python
