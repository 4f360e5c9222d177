// Jobs, and the trackers that they make.
#pragma once

#include "zelWeldDetect.h"

#include <pybind11/pybind11.h>

#include <memory>
#include <string>

namespace python {

using TSharedJob = std::shared_ptr<TWeldJob>;

// ValueError for a text that is no job.
TSharedJob jobOfText(const std::string& text);

// The classes Job and Tracker.
void addJob(pybind11::module_& module);

}  // namespace python
