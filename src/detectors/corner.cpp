#include "detectors/corner.h"

#include "detectors/common_checks.h"
#include "detectors/corner_check.h"
#include "detectors/corner_flanks.h"
#include "geometry/line_fitting.h"
#include "geometry/piece_fit.h"
#include "support/image_test.h"

#include <cmath>
#include <optional>

namespace weld {

namespace {

constexpr double kMaxAngleChangeDeg = 10.0;  // included angle from frame to frame

constexpr TCheck kInside{{23, TWeldOutcome::seamOutside, "corner", "flanks meet outside the image"},
                         "corner inside the image"};
constexpr TCheck kAngleChange{
    {39, TWeldOutcome::changedTooMuch, "corner", "included angle changed too much since the last frame"},
    "change of the included angle",
    TRule::notAbove,
    "deg"};

std::optional<cv::Point2f> intersectFlanks(const TCornerCase& corner, const TFlankPair& flanks) {
  const TTrace& trace = corner.frame.trace;
  const cv::Size imageSize = corner.frame.image.size();
  if (!areFlanksValid(corner, flanks)) return std::nullopt;
  const cv::Point2f pos = crossingOf(flanks);
  trace.addTestedPoint(pos);
  if (!trace.holds(kInside, isStrictlyInside(imageSize, pos))) return std::nullopt;
  if (!checkCornerPlausible(corner, pos, flanks)) return std::nullopt;
  // Deliberate: the test above excludes the first row and column and lets the last pixel row and column reach up
  // to the image size; this one lets the former pass and ends one pixel before.
  if (!trace.holds(kInside, isOnPixels(imageSize, pos))) return std::nullopt;
  return pos;
}

TSeam buildSeam(const TCornerCase& corner, const TFlankPair& flanks) {
  if (!haveFlanksPoints(flanks, 1, corner.frame.trace)) return TSeam(corner.frame.memory);
  TSeam seam(joinPoints(flanks.left.inliers, flanks.right.inliers, corner.frame.memory));
  const std::optional<cv::Point2f> pos = intersectFlanks(corner, flanks);
  if (!pos) return seam;
  seam.isFound = true;
  seam.pos = *pos;
  seam.auxVal1 = flanks.left.k;
  seam.auxVal2 = flanks.left.b;
  seam.auxVal3 = flanks.right.k;
  seam.auxVal4 = flanks.right.b;
  seam.trackVal = calcIntersecAngle(flanks, *pos);
  return seam;
}

TSeam findByConsensus(const TCornerCase& corner, TPointView points) {
  const TStageTimer timer(corner.frame.trace, "consensus lines");
  std::optional<TFlankPair> flanks = findFlankPairRansac(corner, points);
  if (!flanks) return TSeam(corner.frame.memory);
  trimFlankOverlap(corner, *flanks);
  return buildSeam(corner, *flanks);
}

TSeam findFirst(const TCornerCase& corner, TPointView points) {
  const TFrame& frame = corner.frame;
  if (!frame.trace.passes(kStripePoints, points.size(), kMinFitPoints)) return TSeam(frame.memory);
  const TFrame consensusFrame = frame.inWay("consensus lines");
  TSeam seam = findByConsensus({consensusFrame, corner.status, corner.params}, points);
  if (seam.isFound) return seam;
  const TFrame pieceFrame = frame.inWay("longest pieces");
  const TCornerCase pieceCase{pieceFrame, corner.status, corner.params};
  const TStageTimer timer(frame.trace, "longest pieces");
  if (const auto flanks = findFlankPairByPolyline(pieceCase, points)) return buildSeam(pieceCase, *flanks);
  return seam;
}

TSeam track(const TCornerCase& corner, TPointView points, const TPrevious& previous) {
  const TStageTimer timer(corner.frame.trace, "pieces like the last flanks");
  const std::optional<TFlankPair> flanks = findFlankPairNear(corner, points, {previous.auxVal1, previous.auxVal3});
  if (!flanks) return TSeam(corner.frame.memory);
  TSeam seam = buildSeam(corner, *flanks);
  if (!seam.isFound) return seam;
  const double angleChangeDeg = std::abs(seam.trackVal - previous.trackVal);
  seam.isFound = corner.frame.trace.passes(kAngleChange, angleChangeDeg, kMaxAngleChangeDeg);
  return seam;
}

}  // namespace

TSeam findCorner(const TFrame& frame, const TStripe& stripe, const TPrevious& previous) {
  const TCornerParams params(frame.params);
  const TCornerCase corner{frame, stripe.status, params};
  return previous.isFound ? track(corner, stripe.points, previous) : findFirst(corner, stripe.points);
}

}  // namespace weld
