// Lines and pieces of a stripe, in the memory of a frame.
#pragma once

#include "support/list.h"
#include "zelWeldToolkit.h"

#include <opencv2/core.hpp>

namespace weld {

// A line through stripe points; see TLinePara.
struct TFittedLine {
  explicit TFittedLine(TMemory* memory) : inliers(memory) {}

  double k = 0.0;
  double b = 0.0;
  bool isValid = false;
  double inlierRatio = 0.0;
  TPoints inliers;
};

// A straight piece of the stripe; see TStripePiece.
struct TPiece {
  explicit TPiece(TPoints points) : pts(std::move(points)), fitPts(pts.get_allocator()) {}

  TPoints pts;
  TPoints fitPts;
  cv::Point startPt;
  cv::Point endPt;
  float k = 0.0F;
  float b = 0.0F;
  float maxDist = TStripePiece::kUnset;
  float meanDist = TStripePiece::kUnset;
  bool isFitted = false;
};

using TPieces = TList<TPiece>;

}  // namespace weld
