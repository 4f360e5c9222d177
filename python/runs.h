// Runs of frames: followed under one job, or under many settings.
#pragma once

#include <pybind11/pybind11.h>

namespace python {

void addRuns(pybind11::module_& module);

}  // namespace python
