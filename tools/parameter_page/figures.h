// The drawings of the parameter page: the stripe of each joint with what its parameters measure.
#pragma once

#include "zelWeldDetect.h"

#include <string>
#include <vector>

namespace tool {

struct TFigure {
  std::string name;     // of its file, without ending
  std::string caption;  // for those who cannot see it
  std::string svg;
};

// The drawings of a joint, to the scale of the default values. Joints with the same parameters share theirs.
std::vector<TFigure> figuresOf(TWeldType type);

}  // namespace tool
