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
  double bowRows = 0.0;         // a line bows down by this many rows at the anchor ...
  double bowHalfPx = 0.0;       // ... and by none this many columns left and right of it; 0: straight

  bool isInGroove() const { return rootShareFirst > 0.0 || rootShareLast > 0.0; }
};

struct TProfile {
  std::vector<TPiece> pieces;  // left to right
  double tiltSlope = 0.0;      // the whole stripe is sheared by this slope around pivotX
  double pivotX = 0.0;
  bool hasSeam = false;
  cv::Point2d seam;
  std::vector<TFeature> features;
  TMeasures measures;
  std::vector<TPiece> reflections;  // of the flanks on each other
  double deeper = 1.0;              // grooves: +1 where depth grows down the image, -1 where it grows up
};

// The feature points that disturbances aim at: the shoulders of a groove, all points of another joint.
std::vector<cv::Point2d> toesOf(const TProfile& profile);

// Row and slope of the centre line of a piece at a column.
double rowAt(const TProfile& profile, const TPiece& piece, double x);
double slopeAt(const TProfile& profile, const TPiece& piece, double x);

TProfile buildProfile(TJoint joint, const TGeometry& geometry, cv::Size size);

}  // namespace scenes
