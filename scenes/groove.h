// Groove joints described by TGroove: rigid bodies of lines and circles, turned by the tilt, with their full
// truth.
#pragma once

#include "scenes/profile.h"

#include <optional>
#include <vector>

namespace scenes {

constexpr bool isGroove(TJoint joint) {
  return joint == TJoint::vGroove || joint == TJoint::singleBevel || joint == TJoint::uGroove ||
         joint == TJoint::flareV || joint == TJoint::flareBevel;
}

// Needs geometry.groove. A radius too long for its flank leaves out the pieces that it eats up.
TProfile buildGroove(TJoint joint, const TGeometry& geometry, cv::Size size);

// From the groove's own frame (x across it to the right, y deeper) to the image.
struct TPlacing {
  double sin = 0.0;  // of the tilt
  double cos = 1.0;
  double deeper = 1.0;  // +1: depth grows down the image, -1: up
  double farPx = 1e4;   // plates reach this far, beyond the frame
  cv::Point2d operator()(cv::Point2d p) const {
    return {p.x * cos - deeper * p.y * sin, p.x * sin + deeper * p.y * cos};
  }
};

struct TRay {
  cv::Point2d at;
  cv::Point2d along;  // any length; pieces of the stripe point to the right
};

// What the truth of a groove is taken from, in the image. A side without such a part leaves it empty.
struct TGrooveParts {
  std::optional<cv::Point2d> leftShoulder, rightShoulder;
  std::optional<cv::Point2d> leftRoot, rightRoot;
  std::optional<TRay> leftPlate, rightPlate;
  std::optional<TRay> leftFlank, rightFlank;
  cv::Point2d root;
  TMeasures measures;  // those that the builder knows; the others follow from the parts
};

// V, single bevel and U (groove_flanks.cpp); flare V and flare bevel (groove_flares.cpp): append the pieces, left
// to right, and give the parts.
TGrooveParts layOutFlanks(TJoint joint, const TGeometry& geometry, const TPlacing& placing, TProfile& profile);
TGrooveParts layOutFlares(TJoint joint, const TGeometry& geometry, const TPlacing& placing, TProfile& profile);

// A straight piece from a to b. A vertical or overhanging one is hidden: it adds nothing.
void addLinePiece(cv::Point2d a, cv::Point2d b, const TPiece& look, TProfile& profile);

struct TCircle {
  cv::Point2d centre;
  double radiusPx = 0.0;
};

// The part of a circle's half in the image (lower: +1, upper: -1) from a to b, up to the half's ends where a or b
// lies on the other half.
void addArcPiece(const TCircle& circle, double half, cv::Point2d a, cv::Point2d b, const TPiece& look,
                 TProfile& profile);

inline double dot(cv::Point2d a, cv::Point2d b) {
  return a.x * b.x + a.y * b.y;
}
inline double cross(cv::Point2d a, cv::Point2d b) {
  return a.x * b.y - a.y * b.x;
}
double lengthOf(cv::Point2d v);
cv::Point2d crossing(const TRay& a, const TRay& b);  // of two that are not parallel
double angleDeg(const TRay& ray);                    // in -90..90, y down

}  // namespace scenes
