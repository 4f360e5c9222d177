#include "detectors/corner.h"

#include "detectors/corner_check.h"
#include "detectors/corner_flanks.h"
#include "detectors/corner_params.h"
#include "detectors/stripe_front_end.h"
#include "geometry/line_fitting.h"
#include "geometry/piece_fit.h"

#include <cmath>
#include <optional>
#include <vector>

namespace weld {

namespace {

constexpr std::size_t kMinRidgePoints = 10;
constexpr double kMaxAngleChangeDeg = 10.0;  // included angle from frame to frame

constexpr TCheck kStripePoints = countCheck(TWeldOutcome::tooFewCentres, "stripe points", TRule::atLeast);
constexpr TCheck kRidgePoints = countCheck(TWeldOutcome::tooFewRidgePoints, "ridge points", TRule::atLeast);
constexpr TCheck kInside{TWeldOutcome::cornerOutside, "corner inside the image"};
constexpr TCheck kAngleChange{TWeldOutcome::includedAngleChanged, "change of the included angle", TRule::notAbove,
                              "deg"};

// What every stage of one way to find the corner needs.
struct TCornerFrame {
  const TDetectorObject& object;  // holds the column status of the frame
  cv::Size imageSize;
  TCornerParams params;
  TTrace trace;
  TScratch* scratch;

  TCornerFrame inWay(const char* name) const { return {object, imageSize, params, trace.inWay(name), scratch}; }
};

std::optional<cv::Point2f> intersectFlanks(const TCornerFrame& frame, const TFlankPair& flanks) {
  const TTrace& trace = frame.trace;
  if (!areFlanksValid(flanks, frame.params, trace)) return std::nullopt;
  const cv::Point2f corner = intersectionOf(flanks);
  trace.addTestedPoint(corner);
  if (!trace.holds(kInside, isStrictlyInside(frame.imageSize, corner))) return std::nullopt;
  const bool isPlausible =
      checkCornerPlausible(frame.object, corner, flanks, frame.imageSize, frame.params, trace);
  if (!isPlausible) return std::nullopt;
  return corner;
}

// Deliberate: intersectFlanks excludes the first row and column and lets the last pixel row and column reach up to
// the image size; this test lets the former pass and ends one pixel before.
bool isInsideFrame(cv::Size imageSize, cv::Point2f p) {
  return p.x >= 0.0F && p.x <= static_cast<float>(imageSize.width - 1) && p.y >= 0.0F &&
         p.y <= static_cast<float>(imageSize.height - 1);
}

TWeldLineRes buildCornerResult(const TCornerFrame& frame, const TFlankPair& flanks) {
  TWeldLineRes result;
  if (!haveFlanksPoints(flanks, 1, frame.trace)) return result;
  result.stripePts = joinPoints(flanks.left.inlierPts, flanks.right.inlierPts, frame.scratch);
  const std::optional<cv::Point2f> corner = intersectFlanks(frame, flanks);
  if (!corner || !frame.trace.holds(kInside, isInsideFrame(frame.imageSize, *corner))) return result;
  result.isFound = true;
  result.weldPos = *corner;
  result.auxVal1 = flanks.left.k;
  result.auxVal2 = flanks.left.b;
  result.auxVal3 = flanks.right.k;
  result.auxVal4 = flanks.right.b;
  result.trackVal = calcIntersecAngle(flanks, *corner);
  return result;
}

TWeldLineRes findByConsensus(const TCornerFrame& frame, const std::vector<cv::Point2f>& points) {
  const TStageTimer timer(frame.trace, "consensus lines");
  std::optional<TFlankPair> flanks = findFlankPairRansac(points, frame.params, frame.trace, frame.scratch);
  if (!flanks) return {};
  trimFlankOverlap(*flanks, frame.imageSize, frame.params, frame.trace, frame.scratch);
  return buildCornerResult(frame, *flanks);
}

TWeldLineRes findCornerSeamFromPts(const TCornerFrame& frame, const std::vector<cv::Point2f>& points) {
  if (!frame.trace.passes(kStripePoints, points.size(), kMinFitPoints)) return {};
  TWeldLineRes result = findByConsensus(frame.inWay("consensus lines"), points);
  if (result.isFound) return result;
  const TCornerFrame pieceFrame = frame.inWay("longest pieces");
  const TStageTimer timer(frame.trace, "longest pieces");
  if (const auto flanks = findFlankPairByPolyline(points, frame.params, pieceFrame.trace, frame.scratch)) {
    frame.scratch->give(result.stripePts);
    result = buildCornerResult(pieceFrame, *flanks);
  }
  return result;
}

TWeldLineRes trackCornerSeamFromPts(const TCornerFrame& frame, const std::vector<cv::Point2f>& points,
                                    const TWeldLineRes& prevRes) {
  const TStageTimer timer(frame.trace, "pieces like the last flanks");
  const std::optional<TFlankPair> flanks =
      findFlankPairNear(points, prevRes.auxVal1, prevRes.auxVal3, frame.params, frame.trace, frame.scratch);
  if (!flanks) return {};
  TWeldLineRes result = buildCornerResult(frame, *flanks);
  if (!result.isFound) return result;
  const double angleChangeDeg = std::abs(result.trackVal - prevRes.trackVal);
  result.isFound = frame.trace.passes(kAngleChange, angleChangeDeg, kMaxAngleChangeDeg);
  return result;
}

}  // namespace

TWeldLineRes detectCornerSeam(TDetectorObject& object, const cv::Mat& image, const TWeldLineRes& prevRes,
                              const cv::Mat& searchMask) {
  const TTrace& trace = object.trace;
  const TCornerFrame frame{object, image.size(), cornerParams(object.getWeldParameters()), trace, &object.scratch};
  const TLentList<cv::Point2f> centres = extractStripe(object, image, prevRes, searchMask);
  TWeldLineRes result =
      prevRes.isFound ? trackCornerSeamFromPts(frame, centres, prevRes) : findCornerSeamFromPts(frame, centres);
  if (result.isFound || !object.search.hasSecondChance) return result;
  object.scratch.give(result.stripePts);
  const TLentList<cv::Point2f> ridge = extractRidgeStripe(object, image, TSearchPath::fallback);
  if (!trace.passes(kRidgePoints, ridge.size(), kMinRidgePoints)) return {};
  return findCornerSeamFromPts(frame, ridge);
}

}  // namespace weld
