#include "scenes/groove.h"

#include "scenes/exact_math.h"

#include <algorithm>
#include <cmath>

namespace scenes {
namespace {

constexpr double kLeastRunPx = 1e-6;  // columns that a piece must cover

double rowOf(const TRay& ray, double x) {
  return ray.at.y + (x - ray.at.x) * ray.along.y / ray.along.x;
}

// Where pieces stand over the same columns, the deeper one lies in the other's shadow.
void hideBehind(TProfile& p) {
  for (std::size_t j = 1; j < p.pieces.size(); ++j) {
    for (std::size_t i = 0; i < j; ++i) {
      TPiece& left = p.pieces[i];
      TPiece& right = p.pieces[j];
      if (left.firstX > left.lastX || right.firstX > right.lastX || right.firstX > left.lastX) continue;
      const double x = (std::max(left.firstX, right.firstX) + std::min(left.lastX, right.lastX)) / 2.0;
      const bool isLeftDeeper = p.deeper * rowAt(p, left, x) > p.deeper * rowAt(p, right, x);
      if (isLeftDeeper) {
        left.lastX = std::ceil(right.firstX) - 1.0;
      } else {
        right.firstX = std::floor(left.lastX) + 1.0;
      }
    }
  }
}

void measureShoulders(const TGrooveParts& parts, TMeasures& m) {
  if (!parts.leftShoulder || !parts.rightShoulder) return;
  const cv::Point2d across = *parts.rightShoulder - *parts.leftShoulder;
  m.widthPx = lengthOf(across);
  m.depthPx = std::abs(cross(across, parts.root - *parts.leftShoulder)) / m.widthPx;
}

TMeasures measure(const TGrooveParts& parts) {
  TMeasures m = parts.measures;
  measureShoulders(parts, m);
  if (parts.leftRoot && parts.rightRoot) m.gapPx = lengthOf(*parts.rightRoot - *parts.leftRoot);
  if (parts.leftFlank) m.leftAngleDeg = angleDeg(*parts.leftFlank);
  if (parts.rightFlank) m.rightAngleDeg = angleDeg(*parts.rightFlank);
  if (parts.leftPlate && parts.rightPlate) {
    m.baseAngleDeg = (angleDeg(*parts.leftPlate) + angleDeg(*parts.rightPlate)) / 2.0;
    m.mismatchPx = rowOf(*parts.rightPlate, parts.root.x) - rowOf(*parts.leftPlate, parts.root.x);
  }
  return m;
}

std::vector<TFeature> nameFeatures(const TGrooveParts& parts) {
  std::vector<TFeature> features;
  const auto add = [&features](const char* name, const std::optional<cv::Point2d>& point) {
    if (point) features.push_back({name, *point});
  };
  add("leftShoulder", parts.leftShoulder);
  add("rightShoulder", parts.rightShoulder);
  add("leftRoot", parts.leftRoot);
  add("rightRoot", parts.rightRoot);
  add("root", parts.root);
  return features;
}

void shift(cv::Point2d by, TProfile& p) {
  for (auto* pieces : {&p.pieces, &p.reflections}) {
    for (TPiece& piece : *pieces) {
      piece.anchor += by;
      piece.firstX += by.x;
      piece.lastX += by.x;
    }
  }
  for (TFeature& feature : p.features) feature.point += by;
}

}  // namespace

double lengthOf(cv::Point2d v) {
  return std::sqrt(dot(v, v));
}

cv::Point2d crossing(const TRay& a, const TRay& b) {
  return a.at + a.along * (cross(b.at - a.at, b.along) / cross(a.along, b.along));
}

double angleDeg(const TRay& ray) {
  return ray.along.x < 0.0 ? directionDeg(-ray.along.x, -ray.along.y) : directionDeg(ray.along.x, ray.along.y);
}

void addLinePiece(cv::Point2d a, cv::Point2d b, const TPiece& look, TProfile& profile) {
  if (b.x - a.x < kLeastRunPx) return;
  TPiece piece = look;
  piece.firstX = a.x;
  piece.lastX = b.x;
  piece.anchor = a;
  piece.slope = (b.y - a.y) / (b.x - a.x);
  if (look.bowRows != 0.0) {  // across the line so far; its rows grow with the slope
    piece.anchor = (a + b) * 0.5;
    piece.bowHalfPx = (b.x - a.x) / 2.0;
    piece.bowRows *= std::sqrt(1.0 + piece.slope * piece.slope);
  }
  profile.pieces.push_back(piece);
}

void addArcPiece(const TCircle& circle, double half, cv::Point2d a, cv::Point2d b, const TPiece& look,
                 TProfile& profile) {
  const auto isOnHalf = [&](cv::Point2d p) { return half * (p.y - circle.centre.y) >= 0.0; };
  TPiece piece = look;
  piece.firstX = isOnHalf(a) ? a.x : circle.centre.x - circle.radiusPx;
  piece.lastX = isOnHalf(b) ? b.x : circle.centre.x + circle.radiusPx;
  if (piece.lastX - piece.firstX < kLeastRunPx) return;
  piece.anchor = circle.centre;
  piece.radiusXPx = circle.radiusPx;
  piece.radiusYPx = half * circle.radiusPx;
  piece.bowRows = 0.0;
  profile.pieces.push_back(piece);
}

TProfile buildGroove(TJoint joint, const TGeometry& geometry, cv::Size size) {
  const TSinCos tilt = sinCosDeg(geometry.tiltDeg);
  TPlacing placing;
  placing.sin = tilt.sin;
  placing.cos = tilt.cos;
  placing.deeper = geometry.groove->isRootUpper ? -1.0 : 1.0;
  placing.farPx = 3.0 * (size.width + size.height);
  const bool isFlare = joint == TJoint::flareV || joint == TJoint::flareBevel;

  TProfile p;
  p.hasSeam = true;
  p.deeper = placing.deeper;
  const TGrooveParts parts = (isFlare ? layOutFlares : layOutFlanks)(joint, geometry, placing, p);
  p.features = nameFeatures(parts);
  p.measures = measure(parts);
  p.seam = {geometry.seam.x * size.width, geometry.seam.y * size.height};
  p.pivotX = p.seam.x;
  shift(p.seam - parts.root, p);
  hideBehind(p);
  return p;
}

}  // namespace scenes
