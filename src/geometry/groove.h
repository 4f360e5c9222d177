// Where the lit stripe ends along a line.
#pragma once

#include "trace/frame.h"

#include <opencv2/core.hpp>

namespace weld {

inline const cv::Point2f kNoGroovePos{-1.0F, -1.0F};

// A position on the line y = k * x + b.
struct TRoughPos {
  cv::Point2f pos;
  float k = 0.0F;
  float b = 0.0F;
};

struct TGrooveRule {
  double supportDistPx;  // distance within which stripe points support the line
  double minDrop;        // brightness drop, grey levels, that must be exceeded to move the position
};

// See TBaseWeld::modifySingleVGroovePos. The frame's image must be 8-bit grey, BGR or BGRA, or empty; anything
// else raises cv::Exception.
cv::Point2f refineGroovePos(const TFrame& frame, TPointView stripePts, const TRoughPos& rough,
                            const TGrooveRule& rule);

}  // namespace weld
