#include "detectors/corner.h"

#include "detectors/corner_check.h"
#include "detectors/corner_flanks.h"
#include "detectors/corner_params.h"
#include "detectors/stripe_front_end.h"
#include "geometry/piece_fit.h"

#include <cmath>
#include <optional>
#include <vector>

namespace weld {

namespace {

constexpr std::size_t kMinRidgePoints = 10;
constexpr double kMaxAngleChangeDeg = 10.0;  // included angle from frame to frame

// What every stage of one frame needs.
struct TCornerFrame {
  const TDetectorObject& object;  // holds the column status of the frame
  cv::Size imageSize;
  TCornerParams params;
};

std::optional<cv::Point2f> intersectFlanks(const TCornerFrame& frame, const TFlankPair& flanks) {
  if (!flanks.left.isValid || !flanks.right.isValid) return std::nullopt;
  const cv::Point2f corner = intersectionOf(flanks);
  if (!isStrictlyInside(frame.imageSize, corner)) return std::nullopt;
  if (!checkCornerPlausible(frame.object, corner, flanks, frame.imageSize, frame.params)) return std::nullopt;
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
  if (flanks.left.inlierPts.empty() || flanks.right.inlierPts.empty()) return result;
  result.stripePts = joinPoints(flanks.left.inlierPts, flanks.right.inlierPts);
  const std::optional<cv::Point2f> corner = intersectFlanks(frame, flanks);
  if (!corner || !isInsideFrame(frame.imageSize, *corner)) return result;
  result.isFound = true;
  result.weldPos = *corner;
  result.auxVal1 = flanks.left.k;
  result.auxVal2 = flanks.left.b;
  result.auxVal3 = flanks.right.k;
  result.auxVal4 = flanks.right.b;
  result.trackVal = calcIntersecAngle(flanks, *corner);
  return result;
}

TWeldLineRes findCornerSeamFromPts(const TCornerFrame& frame, const std::vector<cv::Point2f>& points) {
  TWeldLineRes result;
  if (std::optional<TFlankPair> flanks = findFlankPairRansac(points, frame.params)) {
    trimFlankOverlap(*flanks, frame.imageSize, frame.params);
    result = buildCornerResult(frame, *flanks);
  }
  if (result.isFound) return result;
  if (const std::optional<TFlankPair> flanks = findFlankPairByPolyline(points, frame.params)) {
    result = buildCornerResult(frame, *flanks);
  }
  return result;
}

TWeldLineRes trackCornerSeamFromPts(const TCornerFrame& frame, const std::vector<cv::Point2f>& points,
                                    const TWeldLineRes& prevRes) {
  const std::optional<TFlankPair> flanks =
      findFlankPairNear(points, prevRes.auxVal1, prevRes.auxVal3, frame.params);
  if (!flanks) return {};
  TWeldLineRes result = buildCornerResult(frame, *flanks);
  if (std::abs(result.trackVal - prevRes.trackVal) > kMaxAngleChangeDeg) result.isFound = false;
  return result;
}

}  // namespace

TWeldLineRes detectCornerSeam(TDetectorObject& object, const cv::Mat& image, const TWeldLineRes& prevRes,
                              const cv::Mat& searchMask) {
  const TCornerFrame frame{object, image.size(), cornerParams(object.getWeldParameters())};
  const std::vector<cv::Point2f> centres = extractStripe(object, image, prevRes, searchMask).centres;
  TWeldLineRes result =
      prevRes.isFound ? trackCornerSeamFromPts(frame, centres, prevRes) : findCornerSeamFromPts(frame, centres);
  if (result.isFound || !object.search.hasSecondChance) return result;
  const std::vector<cv::Point2f> ridge = extractRidgeStripe(object.trace, image, TSearchPath::fallback);
  if (ridge.size() < kMinRidgePoints) return {};
  return findCornerSeamFromPts(frame, ridge);
}

}  // namespace weld
