// The shape of the stripe: where its centre line runs for a joint, before anything is drawn.
#pragma once

#include "scenes/scene.h"

#include <vector>

namespace scenes {

// A line, or half an ellipse, over a range of columns.
struct TPiece {
  double firstX = 0.0;  // lit columns: firstX <= x <= lastX
  double lastX = 0.0;
  cv::Point2d anchor;           // a point of the line; the centre of the ellipse
  double slope = 0.0;           // of the line
  double radiusXPx = 0.0;       // > 0: an ellipse
  double radiusYPx = 0.0;       // > 0: its lower half in the image, < 0: its upper half
  double rootShareFirst = 0.0;  // 0: looks like the parent surface, 1: like the root; at firstX
  double rootShareLast = 0.0;   // the same at lastX
  bool isDark = false;          // belongs to the darker one of the two surfaces
};

struct TProfile {
  std::vector<TPiece> pieces;  // left to right
  double tiltSlope = 0.0;      // the whole stripe is sheared by this slope around pivotX
  double pivotX = 0.0;
  bool hasSeam = false;
  cv::Point2d seam;
  std::vector<TFeature> features;
};

// Row and slope of the centre line of a piece at a column.
double rowAt(const TProfile& profile, const TPiece& piece, double x);
double slopeAt(const TProfile& profile, const TPiece& piece, double x);

TProfile buildProfile(TJoint joint, const TGeometry& geometry, cv::Size size);

}  // namespace scenes
