// V, single bevel and U: two halves of straight pieces with rounded corners.
#include "scenes/exact_math.h"
#include "scenes/groove.h"

#include <algorithm>
#include <cmath>

namespace scenes {
namespace {

constexpr double kClosedPx = 3.0;          // a smaller root gap counts as closed: the root is the flanks' crossing
constexpr double kLeastFlankDeg = 1.0;     // flatter flanks would never reach the shoulder
constexpr double kLeastBackingGapPx = 12;  // narrower gaps stay dark
constexpr double kGhostFirst = 0.2;        // share of the flank, from the root, where a reflection begins
constexpr double kGhostLast = 0.75;        // the same where it ends
constexpr double kGhostSlope = 0.2;        // it moves away from the flank by this share of its way

struct TCorner {
  cv::Point2d at;
  double radiusPx = 0.0;
  double bowPx = 0.0;      // of the piece from here to the next corner
  double rootShare = 0.0;  // here: 0 looks like the plate, 1 like the root
};

// Corners from the root edge, which is the origin, outwards to the plate's far end; the second last is the
// shoulder. x outwards, y deeper.
using THalf = std::vector<TCorner>;

struct TSide {
  double flankDeg = 0.0;  // against its plate
  double bowPx = 0.0;
  double radiusPx = 0.0;
  double direction = 1.0;  // -1: the left half
};

double tanFlank(const TSide& side) {
  return tanDeg(std::max(std::abs(side.flankDeg), kLeastFlankDeg));
}

THalf closeHalf(THalf half, cv::Point2d shoulder, double radiusPx, double farPx) {
  half.push_back({shoulder, radiusPx});
  half.push_back({{shoulder.x + farPx, shoulder.y}});
  return half;
}

THalf flankHalf(const TSide& side, double depthPx, double shoulderRadiusPx, double farPx) {
  const TCorner edge{{0.0, 0.0}, 0.0, side.bowPx, 1.0};
  return closeHalf({edge}, {depthPx / tanFlank(side), -depthPx}, shoulderRadiusPx, farPx);
}

THalf wallHalf(double depthPx, double farPx) {
  return closeHalf({{{0.0, 0.0}, 0.0, 0.0, 1.0}}, {0.0, -depthPx}, 0.0, farPx);
}

// The flat's share of this half, the corner between flat and wall, the wall.
THalf uHalf(const TSide& side, const TGeometry& g, double farPx) {
  const TSinCos wall = sinCosDeg(std::abs(side.flankDeg));
  const double tangentPx = side.radiusPx * wall.sin / (1.0 + wall.cos);
  const cv::Point2d corner{g.groove->flatPx / 2.0 + tangentPx, 0.0};
  const cv::Point2d shoulder{corner.x + g.depthPx / tanFlank(side), -g.depthPx};
  return closeHalf({{{0.0, 0.0}, 0.0, 0.0, 1.0}, {corner, side.radiusPx, 0.0, 1.0}}, shoulder,
                   g.groove->shoulderRadiusPx, farPx);
}

// Turns a half around its root edge, brings it there and into the image; the result runs left to right.
THalf place(THalf half, const TSide& side, cv::Point2d edge, double bendDeg, const TPlacing& placing) {
  const TSinCos bend = sinCosDeg(bendDeg / 2.0);
  for (TCorner& corner : half) {
    const cv::Point2d turned{corner.at.x * bend.cos - corner.at.y * bend.sin,
                             corner.at.x * bend.sin + corner.at.y * bend.cos};
    corner.at = placing(edge + cv::Point2d(side.direction * turned.x, turned.y));
  }
  if (side.direction > 0.0) return half;
  std::reverse(half.begin(), half.end());
  for (std::size_t i = 0; i + 1 < half.size(); ++i) half[i].bowPx = half[i + 1].bowPx;
  return half;
}

// The rounding of a corner between its neighbours: where it begins and ends, and its circle.
struct TRounding {
  cv::Point2d from;
  cv::Point2d to;
  TCircle circle;
};

TRounding roundCorner(cv::Point2d before, const TCorner& corner, cv::Point2d after) {
  if (corner.radiusPx <= 0.0) return {corner.at, corner.at, {}};
  const cv::Point2d in = (corner.at - before) * (1.0 / lengthOf(corner.at - before));
  const cv::Point2d out = (after - corner.at) * (1.0 / lengthOf(after - corner.at));
  const double turnSin = std::abs(cross(in, out));
  const double tangentPx = corner.radiusPx * turnSin / (1.0 + dot(in, out));
  const cv::Point2d inwards = (out - in * dot(in, out)) * (1.0 / turnSin);
  const cv::Point2d from = corner.at - in * tangentPx;
  return {from, corner.at + out * tangentPx, {from + inwards * corner.radiusPx, corner.radiusPx}};
}

void addPath(const THalf& path, bool isDark, TProfile& p) {
  TRounding last{path.front().at, path.front().at, {}};
  for (std::size_t i = 1; i < path.size(); ++i) {
    const bool isEnd = i + 1 == path.size();
    const TRounding next =
        isEnd ? TRounding{path[i].at, path[i].at, {}} : roundCorner(path[i - 1].at, path[i], path[i + 1].at);
    TPiece look;
    look.rootShareFirst = path[i - 1].rootShare;
    look.rootShareLast = path[i].rootShare;
    look.isDark = isDark;
    look.bowRows = p.deeper * path[i - 1].bowPx;
    addLinePiece(last.to, next.from, look, p);
    if (next.circle.radiusPx > 0.0) {
      look.rootShareFirst = path[i].rootShare;
      const double half = path[i].at.y > next.circle.centre.y ? 1.0 : -1.0;
      addArcPiece(next.circle, half, next.from, next.to, look, p);
    }
    last = next;
  }
}

// What the opposite flank throws on this one: further and further from it towards the shoulder.
void addReflection(cv::Point2d root, cv::Point2d shoulder, bool isDark, TProfile& p) {
  const cv::Point2d up = shoulder - root;
  const auto away = [&](double share) {
    return root + up * share + cv::Point2d(0.0, p.deeper * kGhostSlope * (share - kGhostFirst) * lengthOf(up));
  };
  const cv::Point2d a = away(up.x > 0.0 ? kGhostFirst : kGhostLast);
  const cv::Point2d b = away(up.x > 0.0 ? kGhostLast : kGhostFirst);
  if (b.x <= a.x) return;
  TPiece piece;
  piece.firstX = a.x;
  piece.lastX = b.x;
  piece.anchor = a;
  piece.slope = (b.y - a.y) / (b.x - a.x);
  piece.isDark = isDark;
  p.reflections.push_back(piece);
}

// The lit backing between the root edges.
void addBacking(const TGeometry& g, const TPlacing& placing, TProfile& p) {
  if (g.gapPx < kLeastBackingGapPx || g.groove->backingShare <= 0.0) return;
  const double half = g.gapPx * g.groove->backingShare / 2.0;
  TPiece look;
  look.rootShareFirst = look.rootShareLast = 1.0;
  addLinePiece(placing({-half, g.groove->rootFacePx}), placing({half, g.groove->rootFacePx}), look, p);
}

// The parts of two halves that run left to right in the image.
TGrooveParts partsOf(const THalf& left, const THalf& right) {
  const std::size_t n = left.size();
  TGrooveParts parts;
  parts.leftShoulder = left[1].at;
  parts.rightShoulder = right[right.size() - 2].at;
  parts.leftRoot = left[n - 1].at;
  parts.rightRoot = right[0].at;
  parts.leftPlate = TRay{left[1].at, left[1].at - left[0].at};
  parts.rightPlate = TRay{right[right.size() - 2].at, right[right.size() - 1].at - right[right.size() - 2].at};
  parts.leftFlank = TRay{left[1].at, left[2].at - left[1].at};
  parts.rightFlank = TRay{right[right.size() - 3].at, right[right.size() - 2].at - right[right.size() - 3].at};
  return parts;
}

// The wall shows no stripe: its foot lies as deep under its own plate as the flank's lower end.
void settleWall(bool isWallLeft, TGrooveParts& parts) {
  const TRay plate = isWallLeft ? *parts.leftPlate : *parts.rightPlate;
  const cv::Point2d shoulder = isWallLeft ? *parts.leftShoulder : *parts.rightShoulder;
  const cv::Point2d flankEnd = isWallLeft ? *parts.rightRoot : *parts.leftRoot;
  const cv::Point2d along = plate.along * (1.0 / lengthOf(plate.along));
  const cv::Point2d foot = flankEnd - along * dot(flankEnd - shoulder, along);
  (isWallLeft ? parts.leftRoot : parts.rightRoot) = foot;
  // Under the shoulder even where the joint is shallow, so that the crossing keeps its direction.
  (isWallLeft ? parts.leftFlank : parts.rightFlank) = TRay{shoulder, {-along.y, along.x}};
}

void settleRoot(TGrooveParts& parts) {
  const bool isClosed = lengthOf(*parts.rightRoot - *parts.leftRoot) < kClosedPx;
  parts.root =
      isClosed ? crossing(*parts.leftFlank, *parts.rightFlank) : (*parts.leftRoot + *parts.rightRoot) * 0.5;
}

void settleAngles(TJoint joint, bool isWallLeft, TGrooveParts& parts) {
  const double between = std::abs(angleDeg(*parts.leftFlank) - angleDeg(*parts.rightFlank));
  parts.measures.includedAngleDeg = 180.0 - between;
  if (joint != TJoint::singleBevel) return;
  const TRay& flank = isWallLeft ? *parts.rightFlank : *parts.leftFlank;
  const TRay& plate = isWallLeft ? *parts.leftPlate : *parts.rightPlate;
  parts.measures.includedAngleDeg = 90.0 - std::abs(angleDeg(flank) - angleDeg(plate));
  (isWallLeft ? parts.leftFlank : parts.rightFlank).reset();
}

TGrooveParts layOutU(const TGeometry& g, const TPlacing& placing, TProfile& p) {
  const TGroove& groove = *g.groove;
  const bool isOpen = g.gapPx >= kClosedPx;
  const TSide sides[] = {{g.leftFlankDeg, 0.0, groove.leftRadiusPx, -1.0},
                         {g.rightFlankDeg, 0.0, groove.rightRadiusPx, 1.0}};
  const cv::Point2d edge{isOpen ? g.gapPx / 2.0 : 0.0, isOpen ? groove.mismatchPx / 2.0 : 0.0};
  const THalf left = place(uHalf(sides[0], g, placing.farPx), sides[0], -edge, 0.0, placing);
  const THalf right = place(uHalf(sides[1], g, placing.farPx), sides[1], edge, 0.0, placing);
  addPath(left, groove.isLeftDark, p);
  addPath(right, !groove.isLeftDark, p);
  TGrooveParts parts = partsOf(left, right);
  parts.root = (*parts.leftRoot + *parts.rightRoot) * 0.5;
  parts.measures.gapPx = 0.0;
  parts.measures.leftRadiusPx = groove.leftRadiusPx;
  parts.measures.rightRadiusPx = groove.rightRadiusPx;
  settleAngles(TJoint::uGroove, false, parts);
  if (!isOpen) {
    parts.leftRoot.reset();
    parts.rightRoot.reset();
  }
  return parts;
}

}  // namespace

TGrooveParts layOutFlanks(TJoint joint, const TGeometry& g, const TPlacing& placing, TProfile& p) {
  if (joint == TJoint::uGroove) return layOutU(g, placing, p);
  const TGroove& groove = *g.groove;
  const bool isBevel = joint == TJoint::singleBevel;
  const auto half = [&](const TSide& side) {
    const bool isWall = isBevel && (side.direction < 0.0) != groove.isMirrored;
    // A wall reaches down to the flank's lower end, so the mismatch moves its plate.
    if (isWall) return wallHalf(g.depthPx - side.direction * groove.mismatchPx, placing.farPx);
    return flankHalf(side, g.depthPx, groove.shoulderRadiusPx, placing.farPx);
  };
  const TSide sides[] = {{g.leftFlankDeg, groove.leftBowPx, 0.0, -1.0},
                         {g.rightFlankDeg, groove.rightBowPx, 0.0, 1.0}};
  const cv::Point2d edge{g.gapPx / 2.0, isBevel ? 0.0 : groove.mismatchPx / 2.0};
  const THalf left = place(half(sides[0]), sides[0], -edge, groove.bendDeg, placing);
  const THalf right = place(half(sides[1]), sides[1], edge, groove.bendDeg, placing);
  addPath(left, groove.isLeftDark, p);
  addBacking(g, placing, p);
  addPath(right, !groove.isLeftDark, p);
  TGrooveParts parts = partsOf(left, right);
  if (!isBevel || groove.isMirrored) addReflection(*parts.leftRoot, *parts.leftShoulder, groove.isLeftDark, p);
  if (!isBevel || !groove.isMirrored) addReflection(*parts.rightRoot, *parts.rightShoulder, !groove.isLeftDark, p);
  if (isBevel) settleWall(!groove.isMirrored, parts);
  settleRoot(parts);
  settleAngles(joint, !groove.isMirrored, parts);
  return parts;
}

}  // namespace scenes
