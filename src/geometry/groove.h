// Where the lit stripe ends along a line.
#pragma once

#include "support/scratch.h"

#include <opencv2/core.hpp>

#include <vector>

namespace weld {

inline const cv::Point2f kNoGroovePos{-1.0F, -1.0F};

// See TBaseWeld::modifySingleVGroovePos. supportDistPx: distance within which stripe points support the line;
// minDrop: brightness drop, grey levels, that must be exceeded to move the position. The image must be 8-bit
// grey, BGR or BGRA, or empty; anything else raises cv::Exception.
cv::Point2f refineGroovePos(const std::vector<cv::Point2f>& stripePts, cv::Point2f roughPos, float k, float b,
                            const cv::Mat& image, double supportDistPx, double minDrop,
                            TScratch* scratch = nullptr);

}  // namespace weld
