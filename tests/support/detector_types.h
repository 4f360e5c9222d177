// Every joint that has a detector, with a frame that holds it.
#pragma once

#include "support/painted_frame.h"
#include "zelWeldDetect.h"

namespace detector_types {

constexpr TWeldType kAll[] = {TWeldType::buttGap, TWeldType::lap, TWeldType::corner, TWeldType::plate,
                              TWeldType::stripePresence};

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
    default:
      return painted::gapFrame();
  }
}

}  // namespace detector_types
