#include "seam_floor.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace accuracy {

namespace {

using TPoints = std::vector<cv::Point2f>;

constexpr int kPointsOfEnd = 100;  // of the piece at the seam
constexpr float kMergeHeightPx = 5.0F;
constexpr float kMergeGapXPx = 200.0F;
constexpr float kMergeGapYPx = 20.0F;
constexpr float kPolyEpsilonPx = 3.0F;

TPoints trueCentres(const scenes::TTruth& truth) {
  TPoints points;
  for (std::size_t x = 0; x < truth.centreY.size(); ++x) {
    const double y = truth.centreY[x];
    if (!std::isnan(y)) points.emplace_back(static_cast<float>(x), static_cast<float>(std::nearbyint(y)));
  }
  return points;
}

double distance(cv::Point2d a, cv::Point2d b) {
  return std::hypot(a.x - b.x, a.y - b.y);
}

// The piece that ends at the seam: true centres on its side of the step.
TPoints pieceAt(cv::Point2d seam, const TPoints& points, bool isLeftOfSeam) {
  TPoints piece;
  for (const cv::Point2f& p : points) {
    const double offset = static_cast<double>(p.x) - seam.x;
    if (isLeftOfSeam ? offset <= 0.0 && offset > -kPointsOfEnd : offset >= 0.0 && offset < kPointsOfEnd) {
      piece.push_back(p);
    }
  }
  return piece;
}

std::optional<double> endFloor(const TWeldParams& params, const scenes::TScene& scene, cv::Point2d seam,
                               bool isLeftOfSeam) {
  TBaseWeld toolkit;
  toolkit.setWeldParameters(params);
  const TPoints piece = pieceAt(seam, trueCentres(scene.truth), isLeftOfSeam);
  const TLinePara line = toolkit.findALine(piece, -1, -1);
  if (!line.isValid) return std::nullopt;
  const cv::Point2f refined = toolkit.modifySingleVGroovePos(piece, cv::Point2f(seam), static_cast<float>(line.k),
                                                             static_cast<float>(line.b), scene.image);
  return distance(refined, seam);
}

std::optional<double> cornerFloor(const TWeldParams& params, const scenes::TScene& scene, cv::Point2d seam) {
  TBaseWeld toolkit;
  toolkit.setWeldParameters(params);
  std::vector<TStripePiece> pieces;
  toolkit.segmentStripe(trueCentres(scene.truth), pieces, kMergeHeightPx, kMergeGapXPx, kMergeGapYPx,
                        kPolyEpsilonPx);
  if (pieces.size() < 2) return std::nullopt;
  const auto bySize = [](const TStripePiece& a, const TStripePiece& b) { return a.pts.size() > b.pts.size(); };
  std::stable_sort(pieces.begin(), pieces.end(), bySize);
  const TLinePara first = toolkit.findALine(pieces[0].pts, -1, -1);
  const TLinePara second = toolkit.findALine(pieces[1].pts, -1, -1);
  if (!first.isValid || !second.isValid || first.k == second.k) return std::nullopt;
  const double x = (first.b - second.b) / (second.k - first.k);
  return distance({x, first.k * x + first.b}, seam);
}

std::optional<cv::Point2d> featureNamed(const scenes::TTruth& truth, const char* name) {
  const auto feature = std::find_if(truth.features.begin(), truth.features.end(),
                                    [&](const scenes::TFeature& f) { return f.name == name; });
  return feature != truth.features.end() ? std::optional(feature->point) : std::nullopt;
}

// Floor at the piece end that the position asks for; a position between two ends has none of its own.
std::optional<double> pieceEndFloor(const TSeamCase& trial, const TWeldParams& params,
                                    const scenes::TScene& scene) {
  const bool isPlate = trial.joint == scenes::TJoint::plate;
  const auto left = featureNamed(scene.truth, isPlate ? "plateRight" : "leftCorner");
  const auto right = featureNamed(scene.truth, isPlate ? "plateLeft" : "rightCorner");
  if (!left || !right || trial.pos == TWeldPosType::centre) return std::nullopt;
  const cv::Point2d seam = scenes::seamPoint(trial.joint, scene.truth, trial.pos);
  const bool isLeftOfSeam = seam.x == left->x;
  return endFloor(params, scene, isLeftOfSeam ? *left : *right, isLeftOfSeam);
}

}  // namespace

std::optional<double> floorOf(const TSeamCase& trial, const scenes::TScene& scene) {
  const TWeldParams params = scenes::weldParamsFor(trial.joint, trial.pos);
  switch (trial.joint) {
    case scenes::TJoint::corner:
      return cornerFloor(params, scene, scenes::seamPoint(trial.joint, scene.truth, trial.pos));
    case scenes::TJoint::lap:
    case scenes::TJoint::plate:
      return pieceEndFloor(trial, params, scene);
    default:
      return std::nullopt;
  }
}

}  // namespace accuracy
