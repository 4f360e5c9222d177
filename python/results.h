// What a frame gave, as Python sees it.
#pragma once

#include "zelWeldDetect.h"

#include <pybind11/pybind11.h>

#include <memory>

namespace python {

// A result that arrays over its stripe keep alive.
using TSharedLine = std::shared_ptr<const TWeldLineRes>;

struct TSeam {
  TSeamState state = TSeamState::lost;
  cv::Point2f weldPos;
  TSharedLine line;
  TJointMeasurement measurement;
  std::shared_ptr<const TFrameTrace> trace;  // null without one
};

void addResults(pybind11::module_& module);

}  // namespace python
