// What one frame of a run gave.
#pragma once

#include "zelWeldDetect.h"

#include <opencv2/core.hpp>

#include <optional>
#include <string>
#include <vector>

namespace tool {

struct TFrameRecord {
  int frame = 0;
  std::string file;
  bool startsSequence = false;
  TTrackedSeam tracked;                      // in the prepared image
  std::optional<cv::Point2d> seam;           // the seam point there; none when lost or the joint has none
  std::optional<cv::Point2d> storedSeam;     // the same in the stored image
  std::vector<cv::Point2d> storedStripePts;  // tracked.line.stripePts in the stored image
  double ms = 0.0;                           // time of the detection alone
  const TFrameTrace* trace = nullptr;        // what happened; good until the tracker's next frame
  std::string fault;                         // by its label; empty: none that is known

  // Of this frame itself, not one that is held.
  std::optional<cv::Point2d> foundSeam() const {
    return tracked.state == TSeamState::found ? storedSeam : std::nullopt;
  }
};

}  // namespace tool
