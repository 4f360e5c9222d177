// Every joint that has a detector, with a frame that may hold it.
#pragma once

#include "support/painted_frame.h"
#include "zelWeldDetect.h"

#include <vector>

namespace detector_types {

inline const std::vector<TWeldType> kAll = [] {
  std::vector<TWeldType> types;
  for (const TWeldJoint& joint : weldJoints()) {
    types.push_back(joint.type);
  }
  return types;
}();

inline TWeldParams paramsFor(TWeldType type) {
  TWeldParams params;
  initWeldParameters(type, params, TWeldPosType::centre);
  return params;
}

inline cv::Mat frameFor(TWeldType type) {
  switch (type) {
    case TWeldType::lap:
      return painted::lapFrame();
    case TWeldType::corner:
      return painted::cornerFrame();
    case TWeldType::plate:
      return painted::plateFrame();
    case TWeldType::vGroove:
      return painted::grooveFrame();
    default:
      return painted::gapFrame();
  }
}

}  // namespace detector_types
