// Flare V and flare bevel: tubes, or plates with a rounded edge.
#include "scenes/exact_math.h"
#include "scenes/groove.h"

#include <algorithm>
#include <cmath>

namespace scenes {
namespace {

TPiece lookOf(double shareFirst, double shareLast, bool isDark) {
  TPiece look;
  look.rootShareFirst = shareFirst;
  look.rootShareLast = shareLast;
  look.isDark = isDark;
  return look;
}

// A round side in the groove's frame: +1 the root is on its right, -1 on its left.
struct TRound {
  TCircle circle;
  double facing = 1.0;
  bool isTube = false;
  bool isDark = false;
};

cv::Point2d topOf(const TRound& round) {
  return round.circle.centre - cv::Point2d(0.0, round.circle.radiusPx);
}

// Tube: the half towards the camera. Plate: its level part, then the quarter down to the side that faces the root.
void addRound(const TRound& round, const TPlacing& placing, TProfile& p) {
  const TCircle inImage{placing(round.circle.centre), round.circle.radiusPx};
  const double half = -placing.deeper;
  if (round.isTube) {
    const cv::Point2d span{inImage.radiusPx, 0.0};
    const TPiece look = lookOf(round.facing > 0.0 ? 0.0 : 1.0, round.facing > 0.0 ? 1.0 : 0.0, round.isDark);
    addArcPiece(inImage, half, inImage.centre - span, inImage.centre + span, look, p);
    return;
  }
  const cv::Point2d touch = placing(topOf(round));
  const cv::Point2d side = placing(round.circle.centre + cv::Point2d(round.facing * round.circle.radiusPx, 0.0));
  const cv::Point2d far = placing(topOf(round) - cv::Point2d(round.facing * placing.farPx, 0.0));
  if (round.facing > 0.0) {
    addLinePiece(far, touch, lookOf(0.0, 0.0, round.isDark), p);
    addArcPiece(inImage, half, touch, side, lookOf(0.0, 1.0, round.isDark), p);
  } else {
    addArcPiece(inImage, half, side, touch, lookOf(1.0, 0.0, round.isDark), p);
    addLinePiece(touch, far, lookOf(0.0, 0.0, round.isDark), p);
  }
}

// Where the common tangent on the camera's side touches both.
void touchFromAbove(const TCircle& a, const TCircle& b, cv::Point2d& onA, cv::Point2d& onB) {
  const cv::Point2d way = b.centre - a.centre;
  const double length = lengthOf(way);
  const double share = (a.radiusPx - b.radiusPx) / length;
  const cv::Point2d upwards{way.y / length, -way.x / length};
  const cv::Point2d normal = way * (share / length) + upwards * std::sqrt(std::max(0.0, 1.0 - share * share));
  onA = a.centre + normal * a.radiusPx;
  onB = b.centre + normal * b.radiusPx;
}

// Tops of plates, or bottoms of tubes, lie on one level but for the mismatch.
void standSideBySide(const TGeometry& g, TRound& left, TRound& right) {
  const TGroove& groove = *g.groove;
  const double rise = groove.isTube ? -1.0 : 1.0;
  left.circle = {{0.0, rise * groove.leftRadiusPx - groove.mismatchPx / 2.0}, groove.leftRadiusPx};
  right.circle = {{0.0, rise * groove.rightRadiusPx + groove.mismatchPx / 2.0}, groove.rightRadiusPx};
  const double apart = groove.leftRadiusPx + groove.rightRadiusPx + g.gapPx;
  const double step = right.circle.centre.y - left.circle.centre.y;
  right.circle.centre.x = std::sqrt(std::max(0.0, apart * apart - step * step));
}

TGrooveParts layOutFlareV(const TGeometry& g, const TPlacing& placing, TProfile& p) {
  const bool isTube = g.groove->isTube;
  TRound left{{}, 1.0, isTube, g.groove->isLeftDark};
  TRound right{{}, -1.0, isTube, !g.groove->isLeftDark};
  standSideBySide(g, left, right);
  addRound(left, placing, p);
  addRound(right, placing, p);

  cv::Point2d leftShoulder = topOf(left);
  cv::Point2d rightShoulder = topOf(right);
  if (isTube) touchFromAbove(left.circle, right.circle, leftShoulder, rightShoulder);
  const cv::Point2d way = right.circle.centre - left.circle.centre;
  const cv::Point2d towards = way * (1.0 / lengthOf(way));
  TGrooveParts parts;
  parts.leftShoulder = placing(leftShoulder);
  parts.rightShoulder = placing(rightShoulder);
  parts.leftRoot = placing(left.circle.centre + towards * left.circle.radiusPx);
  parts.rightRoot = placing(right.circle.centre - towards * right.circle.radiusPx);
  parts.root = (*parts.leftRoot + *parts.rightRoot) * 0.5;
  parts.measures.leftRadiusPx = left.circle.radiusPx;
  parts.measures.rightRadiusPx = right.circle.radiusPx;
  if (isTube) return parts;
  const cv::Point2d level = placing({1.0, 0.0});
  parts.leftPlate = TRay{*parts.leftShoulder, level};
  parts.rightPlate = TRay{*parts.rightShoulder, level};
  return parts;
}

// The flat plate rises away from the root by its flank angle; the round side stands over it.
TGrooveParts layOutFlareBevel(const TGeometry& g, const TPlacing& placing, TProfile& p) {
  const TGroove& groove = *g.groove;
  const double facing = groove.isMirrored ? -1.0 : 1.0;
  const double radiusPx = groove.isMirrored ? groove.rightRadiusPx : groove.leftRadiusPx;
  const TSinCos rise = sinCosDeg(std::abs(groove.isMirrored ? g.leftFlankDeg : g.rightFlankDeg));
  const TRound round{{{0.0, 0.0}, radiusPx}, facing, groove.isTube, groove.isMirrored != groove.isLeftDark};
  const cv::Point2d towards{facing * rise.sin, rise.cos};
  const cv::Point2d outwards{facing * rise.cos, -rise.sin};
  const cv::Point2d foot = towards * (radiusPx + g.gapPx);
  const cv::Point2d footInImage = placing(foot);
  const cv::Point2d farInImage = placing(foot + outwards * placing.farPx);
  const TPiece flat = lookOf(0.0, 0.0, groove.isMirrored == groove.isLeftDark);

  if (groove.isMirrored) addLinePiece(farInImage, footInImage, flat, p);
  addRound(round, placing, p);
  if (!groove.isMirrored) addLinePiece(footInImage, farInImage, flat, p);

  TGrooveParts parts;
  const cv::Point2d onRound = placing(towards * radiusPx);
  parts.leftRoot = groove.isMirrored ? footInImage : onRound;
  parts.rightRoot = groove.isMirrored ? onRound : footInImage;
  parts.root = (onRound + footInImage) * 0.5;
  (groove.isMirrored ? parts.rightShoulder : parts.leftShoulder) =
      placing(groove.isTube ? towards * -radiusPx : topOf(round));
  (groove.isMirrored ? parts.measures.rightRadiusPx : parts.measures.leftRadiusPx) = radiusPx;
  parts.measures.baseAngleDeg = angleDeg({footInImage, farInImage - footInImage});
  return parts;
}

}  // namespace

TGrooveParts layOutFlares(TJoint joint, const TGeometry& g, const TPlacing& placing, TProfile& p) {
  return joint == TJoint::flareV ? layOutFlareV(g, placing, p) : layOutFlareBevel(g, placing, p);
}

}  // namespace scenes
