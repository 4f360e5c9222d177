#include "scenes/profile.h"

#include "scenes/exact_math.h"
#include "scenes/groove.h"

#include <algorithm>
#include <cmath>

namespace scenes {
namespace {

constexpr double kSteepSlope = 1e6;          // stands for a vertical tangent
constexpr double kLeastFlankDeg = 1.0;       // flatter flanks would never reach the shoulder
constexpr double kRootPieceDepth = 0.12;     // the backing lies this share of the depth below the flanks
constexpr double kRootPieceShare = 0.7;      // share of the root gap that it covers
constexpr double kLeastRootPieceGapPx = 12;  // narrower gaps stay dark
constexpr double kUWidthToDepth = 0.8;       // half width of a U groove beyond its root gap

TPiece linePiece(double firstX, double lastX, cv::Point2d anchor, double slope = 0.0) {
  TPiece piece;
  piece.firstX = firstX;
  piece.lastX = lastX;
  piece.anchor = anchor;
  piece.slope = slope;
  return piece;
}

TPiece arcPiece(double firstX, double lastX, cv::Point2d centre, double radiusX, double radiusY) {
  TPiece piece = linePiece(firstX, lastX, centre);
  piece.radiusXPx = radiusX;
  piece.radiusYPx = radiusY;
  return piece;
}

// Bows a line between two of its points.
void bow(double fromX, double toX, double rows, TPiece& piece) {
  const double middleX = (fromX + toX) / 2.0;
  piece.anchor.y += piece.slope * (middleX - piece.anchor.x);
  piece.anchor.x = middleX;
  piece.bowRows = rows;
  piece.bowHalfPx = (toX - fromX) / 2.0;
}

TPiece dark(TPiece piece) {
  piece.isDark = true;
  return piece;
}

TPiece rooted(TPiece piece, double shareFirst, double shareLast) {
  piece.rootShareFirst = shareFirst;
  piece.rootShareLast = shareLast;
  return piece;
}

void buildButtGap(const TGeometry& g, double endX, TProfile& p) {
  const double leftX = std::floor(p.seam.x - g.gapPx / 2.0);
  const double rightX = std::ceil(p.seam.x + g.gapPx / 2.0);
  const cv::Point2d right{p.seam.x, p.seam.y + g.sideStepPx};
  p.pieces = {linePiece(0.0, leftX, p.seam), dark(linePiece(rightX, endX, right))};
  p.features = {{"gapLeft", {leftX, p.seam.y}}, {"gapRight", {rightX, right.y}}};
}

void buildLap(const TGeometry& g, double endX, TProfile& p) {
  const cv::Point2d left{std::floor(p.seam.x + g.overlapPx / 2.0), p.seam.y - g.stepPx / 2.0};
  const cv::Point2d right{std::floor(p.seam.x - g.overlapPx / 2.0) + 1.0, p.seam.y + g.stepPx / 2.0};
  p.pieces = {linePiece(0.0, left.x, left), dark(linePiece(right.x, endX, right))};
  p.features = {{"leftCorner", left}, {"rightCorner", right}};
}

void buildCorner(const TGeometry& g, double endX, TProfile& p) {
  const double split = std::floor(p.seam.x);
  p.pieces = {linePiece(0.0, split, p.seam, tanDeg(g.leftFlankDeg)),
              dark(linePiece(split + 1.0, endX, p.seam, tanDeg(g.rightFlankDeg)))};
  if (g.bowPx != 0.0) {
    bow(0.0, p.seam.x, g.bowPx, p.pieces[0]);
    bow(p.seam.x, endX, g.bowPx, p.pieces[1]);
  }
  p.features = {{"root", p.seam}};
}

void buildPlate(const TGeometry& g, double endX, TProfile& p) {
  const cv::Point2d table{p.seam.x, p.seam.y + g.stepPx};
  const double leftX = std::ceil(p.seam.x - g.plateWidthPx / 2.0);
  const double rightX = std::floor(p.seam.x + g.plateWidthPx / 2.0);
  p.pieces = {dark(linePiece(0.0, leftX - 1.0, table)), linePiece(leftX, rightX, p.seam),
              dark(linePiece(rightX + 1.0, endX, table))};
  p.features = {{"plateLeft", {leftX, p.seam.y}}, {"plateRight", {rightX, p.seam.y}}};
}

// The lit backing that shows through a wide root gap.
void addRootPiece(const TGeometry& g, TProfile& p) {
  if (g.gapPx < kLeastRootPieceGapPx) return;
  const double half = g.gapPx * kRootPieceShare / 2.0;
  const cv::Point2d centre{p.seam.x, p.seam.y + g.depthPx * kRootPieceDepth};
  p.pieces.push_back(rooted(linePiece(p.seam.x - half, p.seam.x + half, centre), 1.0, 1.0));
}

// Columns from the root to the shoulder of a straight flank.
double flankRunPx(const TGeometry& g, double flankDeg) {
  return g.depthPx / tanDeg(std::max(std::abs(flankDeg), kLeastFlankDeg));
}

void addLeftFlank(const TGeometry& g, TProfile& p) {
  const cv::Point2d root{p.seam.x - g.gapPx / 2.0, p.seam.y};
  const cv::Point2d shoulder{root.x - flankRunPx(g, g.leftFlankDeg), p.seam.y - g.depthPx};
  const double slope = g.depthPx / (root.x - shoulder.x);
  p.pieces.push_back(linePiece(0.0, shoulder.x, shoulder));
  p.pieces.push_back(rooted(linePiece(shoulder.x, root.x, root, slope), 0.0, 1.0));
  p.features.push_back({"leftShoulder", shoulder});
}

void addRightFlank(const TGeometry& g, double endX, TProfile& p) {
  const cv::Point2d root{p.seam.x + g.gapPx / 2.0, p.seam.y};
  const cv::Point2d shoulder{root.x + flankRunPx(g, g.rightFlankDeg), p.seam.y - g.depthPx};
  const double slope = -g.depthPx / (shoulder.x - root.x);
  p.pieces.push_back(dark(rooted(linePiece(root.x, shoulder.x, root, slope), 1.0, 0.0)));
  p.pieces.push_back(dark(linePiece(shoulder.x, endX, shoulder)));
  p.features.push_back({"rightShoulder", shoulder});
  p.features.push_back({"root", p.seam});
}

void buildVGroove(const TGeometry& g, double endX, TProfile& p) {
  addLeftFlank(g, p);
  addRootPiece(g, p);
  addRightFlank(g, endX, p);
}

void buildSingleBevel(const TGeometry& g, double endX, TProfile& p) {
  const cv::Point2d shoulder{p.seam.x - g.gapPx / 2.0, p.seam.y - g.depthPx};
  p.pieces.push_back(linePiece(0.0, shoulder.x, shoulder));
  p.features.push_back({"leftShoulder", shoulder});
  addRootPiece(g, p);
  addRightFlank(g, endX, p);
}

void buildUGroove(const TGeometry& g, double endX, TProfile& p) {
  const double halfWidth = g.gapPx / 2.0 + kUWidthToDepth * g.depthPx;
  const double plateY = p.seam.y - g.depthPx;
  const cv::Point2d left{p.seam.x - halfWidth, plateY};
  const cv::Point2d right{p.seam.x + halfWidth, plateY};
  p.pieces = {linePiece(0.0, left.x, left),
              rooted(arcPiece(left.x, right.x, {p.seam.x, plateY}, halfWidth, g.depthPx), 1.0, 1.0),
              dark(linePiece(right.x, endX, right))};
  p.features = {{"leftShoulder", left}, {"rightShoulder", right}, {"root", p.seam}};
}

// The rounded edge on the left of both flare joints: flat, then a quarter circle down to the root.
void addLeftRound(const TGeometry& g, TProfile& p) {
  const cv::Point2d centre{p.seam.x - g.gapPx / 2.0 - g.depthPx, p.seam.y};
  const cv::Point2d shoulder{centre.x, p.seam.y - g.depthPx};
  p.pieces.push_back(linePiece(0.0, shoulder.x, shoulder));
  p.pieces.push_back(rooted(arcPiece(centre.x, centre.x + g.depthPx, centre, g.depthPx, -g.depthPx), 0.0, 1.0));
  p.features.push_back({"leftShoulder", shoulder});
}

void buildFlareV(const TGeometry& g, double endX, TProfile& p) {
  const cv::Point2d centre{p.seam.x + g.gapPx / 2.0 + g.depthPx, p.seam.y};
  const cv::Point2d shoulder{centre.x, p.seam.y - g.depthPx};
  addLeftRound(g, p);
  p.pieces.push_back(
      dark(rooted(arcPiece(centre.x - g.depthPx, centre.x, centre, g.depthPx, -g.depthPx), 1.0, 0.0)));
  p.pieces.push_back(dark(linePiece(shoulder.x, endX, shoulder)));
  p.features.push_back({"rightShoulder", shoulder});
  p.features.push_back({"root", p.seam});
}

void buildFlareBevel(const TGeometry& g, double endX, TProfile& p) {
  addLeftRound(g, p);
  p.pieces.push_back(dark(linePiece(p.seam.x + g.gapPx / 2.0, endX, p.seam)));
  p.features.push_back({"root", p.seam});
}

void buildPieces(TJoint joint, const TGeometry& geometry, double endX, TProfile& p) {
  switch (joint) {
    case TJoint::buttGap:
      buildButtGap(geometry, endX, p);
      break;
    case TJoint::lap:
      buildLap(geometry, endX, p);
      break;
    case TJoint::corner:
      buildCorner(geometry, endX, p);
      break;
    case TJoint::plate:
      buildPlate(geometry, endX, p);
      break;
    case TJoint::vGroove:
      buildVGroove(geometry, endX, p);
      break;
    case TJoint::singleBevel:
      buildSingleBevel(geometry, endX, p);
      break;
    case TJoint::uGroove:
      buildUGroove(geometry, endX, p);
      break;
    case TJoint::flareV:
      buildFlareV(geometry, endX, p);
      break;
    case TJoint::flareBevel:
      buildFlareBevel(geometry, endX, p);
      break;
    case TJoint::plain:
      p.pieces = {linePiece(0.0, endX, p.seam)};
      if (geometry.bowPx != 0.0) bow(0.0, endX, geometry.bowPx, p.pieces[0]);
      break;
    case TJoint::blank:
      break;
  }
}

// Adjacent pieces may share a border column; it belongs to the left one.
void separatePieces(TProfile& p) {
  for (std::size_t i = 1; i < p.pieces.size(); ++i) {
    if (p.pieces[i].firstX == p.pieces[i - 1].lastX) {
      p.pieces[i].firstX = std::floor(p.pieces[i].firstX) + 1.0;
    }
  }
}

const cv::Point2d* findFeature(const TProfile& p, const char* name) {
  for (const TFeature& feature : p.features) {
    if (feature.name == name) return &feature.point;
  }
  return nullptr;
}

// The seam where the joint's ends really came to lie, on whole columns.
void settleSeam(TJoint joint, TProfile& p) {
  const auto midpoint = [&p](const char* a, const char* b) {
    return (*findFeature(p, a) + *findFeature(p, b)) * 0.5;
  };
  if (joint == TJoint::lap) p.seam = midpoint("leftCorner", "rightCorner");
  if (joint == TJoint::plate) p.seam = midpoint("plateLeft", "plateRight");
  // Deliberate: the row of a gap seam is the row of the gap's left edge, also at the midpoint.
  if (joint == TJoint::buttGap) p.seam = {midpoint("gapLeft", "gapRight").x, findFeature(p, "gapLeft")->y};
  if (joint != TJoint::lap) return;
  const cv::Point2d left = *findFeature(p, "leftCorner");
  const cv::Point2d right = *findFeature(p, "rightCorner");
  p.features.push_back({"upperCorner", left.y < right.y ? left : right});
  p.features.push_back({"lowerCorner", left.y < right.y ? right : left});
}

}  // namespace

std::vector<cv::Point2d> toesOf(const TProfile& profile) {
  std::vector<cv::Point2d> all;
  std::vector<cv::Point2d> shoulders;
  for (const TFeature& feature : profile.features) {
    all.push_back(feature.point);
    if (feature.name == "leftShoulder" || feature.name == "rightShoulder") shoulders.push_back(feature.point);
  }
  return shoulders.empty() ? all : shoulders;
}

double rowAt(const TProfile& profile, const TPiece& piece, double x) {
  const double tilt = profile.tiltSlope * (x - profile.pivotX);
  const double dx = x - piece.anchor.x;
  if (piece.bowHalfPx > 0.0) {
    const double share = dx / piece.bowHalfPx;
    return piece.anchor.y + piece.slope * dx + piece.bowRows * (1.0 - share * share) + tilt;
  }
  if (piece.radiusXPx <= 0.0) return piece.anchor.y + piece.slope * dx + tilt;
  const double share = dx / piece.radiusXPx;
  return piece.anchor.y + piece.radiusYPx * std::sqrt(std::max(0.0, 1.0 - share * share)) + tilt;
}

double slopeAt(const TProfile& profile, const TPiece& piece, double x) {
  if (piece.bowHalfPx > 0.0) {
    const double bowSlope = -2.0 * piece.bowRows * (x - piece.anchor.x) / (piece.bowHalfPx * piece.bowHalfPx);
    return piece.slope + bowSlope + profile.tiltSlope;
  }
  if (piece.radiusXPx <= 0.0) return piece.slope + profile.tiltSlope;
  const double share = (x - piece.anchor.x) / piece.radiusXPx;
  const double rest = 1.0 - share * share;
  if (rest <= 0.0) return kSteepSlope;
  return -piece.radiusYPx * share / (piece.radiusXPx * std::sqrt(rest)) + profile.tiltSlope;
}

TProfile buildProfile(TJoint joint, const TGeometry& geometry, cv::Size size) {
  if (geometry.groove && isGroove(joint)) return buildGroove(joint, geometry, size);
  TProfile p;
  p.seam = {geometry.seam.x * size.width, geometry.seam.y * size.height};
  p.pivotX = p.seam.x;
  p.tiltSlope = tanDeg(geometry.tiltDeg);
  p.hasSeam = joint != TJoint::plain && joint != TJoint::blank;
  buildPieces(joint, geometry, size.width - 1.0, p);
  separatePieces(p);
  for (TFeature& feature : p.features) feature.point.y += p.tiltSlope * (feature.point.x - p.pivotX);
  settleSeam(joint, p);
  return p;
}

}  // namespace scenes
