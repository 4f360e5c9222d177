#include "detectors/corner_check.h"

#include "support/arc_tangent.h"
#include "support/column_status.h"
#include "support/line_math.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <vector>

namespace weld {

namespace {

using TPoints = std::vector<cv::Point2f>;

constexpr std::size_t kMinFlankPoints = 10;
constexpr double kMinSideShare = 0.7;
constexpr float kCornerMarginPx = 10.0F;  // columns next to the corner in which no flank point is looked for
constexpr float kCornerReachPx = 50.0F;   // where the flank has no point beyond that
constexpr float kMaxColumnJumpPx = 50.0F;
constexpr float kEndReachPx = 100.0F;
constexpr double kMinEndDensity = 0.2;

constexpr TCheck kLeftSide{TWeldOutcome::leftFlankOnWrongSide, "share of the left flank left of the corner",
                           TRule::above};
constexpr TCheck kRightSide{TWeldOutcome::rightFlankOnWrongSide, "share of the right flank right of the corner",
                            TRule::above};
constexpr TCheck kDensity{TWeldOutcome::flanksTooSparse, "stripe points per column on the better flank",
                          TRule::above, "", "dPara3"};
constexpr TCheck kFlankPoints =
    countCheck(TWeldOutcome::flanksTooFewPoints, "stripe points on the better flank", TRule::above, "dPara6");
constexpr TCheck kRatioAtLeast{TWeldOutcome::bandRatioInvalid, "band ratio dPara10", TRule::atLeast};
constexpr TCheck kRatioAtMost{TWeldOutcome::bandRatioInvalid, "band ratio dPara10", TRule::atMost};
constexpr TCheck kUnbrokenBand =
    countCheck(TWeldOutcome::bandBroken, "missing columns in a row near the corner", TRule::atMost, "nPara5");
constexpr TCheck kMissingColumns =
    countCheck(TWeldOutcome::columnsMissing, "missing columns around the corner", TRule::below, "nPara1");
constexpr TCheck kLeftEnd{TWeldOutcome::leftFlankEndsEarly,
                          "left flank's stripe points per column near the corner"};
constexpr TCheck kRightEnd{TWeldOutcome::rightFlankEndsEarly,
                           "right flank's stripe points per column near the corner"};

// The two tests of an angle.
struct TAngleCheck {
  const char* name;
  TWeldOutcome tooSmall;
  TWeldOutcome tooLarge;
};

constexpr TAngleCheck kLeftAngle{"left flank angle", TWeldOutcome::leftAngleTooSmall,
                                 TWeldOutcome::leftAngleTooLarge};
constexpr TAngleCheck kRightAngle{"right flank angle", TWeldOutcome::rightAngleTooSmall,
                                  TWeldOutcome::rightAngleTooLarge};
constexpr TAngleCheck kIncludedAngle{"included angle", TWeldOutcome::includedAngleTooSmall,
                                     TWeldOutcome::includedAngleTooLarge};

// Neighbouring points of a flank.
struct TStretch {
  TPoints::const_iterator first;
  TPoints::const_iterator last;  // behind the last one

  TPoints::const_iterator begin() const { return first; }
  TPoints::const_iterator end() const { return last; }
};

// Points with lo < column < hi.
double countBetween(const TStretch& points, float lo, float hi) {
  return static_cast<double>(
      std::count_if(points.begin(), points.end(), [&](cv::Point2f p) { return lo < p.x && p.x < hi; }));
}

double countLeftOf(const TPoints& points, float x) {
  return static_cast<double>(std::count_if(points.begin(), points.end(), [&](cv::Point2f p) { return p.x < x; }));
}

double countRightOf(const TPoints& points, float x) {
  return static_cast<double>(std::count_if(points.begin(), points.end(), [&](cv::Point2f p) { return p.x > x; }));
}

bool areFlanksOnTheirSides(const TPoints& left, const TPoints& right, float cornerX, const TTrace& trace) {
  return trace.passes(kLeftSide, countLeftOf(left, cornerX) / static_cast<double>(left.size()), kMinSideShare) &&
         trace.passes(kRightSide, countRightOf(right, cornerX) / static_cast<double>(right.size()), kMinSideShare);
}

// Deliberate: one dense flank is enough.
bool isDenseEnough(const TPoints& left, const TPoints& right, float cornerX, int width,
                   const TCornerParams& params, const TTrace& trace) {
  const auto x = static_cast<double>(cornerX);
  const double leftCount = countLeftOf(left, cornerX);
  const double rightCount = countRightOf(right, cornerX);
  const double density = std::max(leftCount / guardDivisor(x), rightCount / guardDivisor(width - x));
  return trace.passes(kDensity, density, params.minFlankShare) &&
         trace.passes(kFlankPoints, std::max(leftCount, rightCount), params.minFlankPoints);
}

bool isAngleInside(const TAngleCheck& check, double deg, const TSetRange& range, const TTrace& trace) {
  const TCheck least{check.tooSmall, check.name, TRule::above, "deg", range.minParameter};
  const TCheck most{check.tooLarge, check.name, TRule::below, "deg", range.maxParameter};
  return trace.passes(least, deg, range.min) && trace.passes(most, deg, range.max);
}

bool areAnglesAdmissible(const TFlankPair& flanks, cv::Point2f corner, const TCornerParams& params,
                         const TTrace& trace) {
  return isAngleInside(kLeftAngle, slopeToDeg(flanks.left.k), params.leftDeg, trace) &&
         isAngleInside(kRightAngle, slopeToDeg(flanks.right.k), params.rightDeg, trace) &&
         isAngleInside(kIncludedAngle, calcIntersecAngle(flanks, corner), params.includedDeg, trace);
}

// Column of the point at that share of the list; a share of 1 means the last point.
int columnAtShare(const TPoints& points, double share) {
  const auto index = static_cast<std::size_t>(share * static_cast<double>(points.size()));
  return truncToInt(points[std::min(index, points.size() - 1)].x);
}

bool isGapBandUnbroken(const TDetectorObject& object, cv::Point2f corner, const TPoints& left,
                       const TPoints& right, const TCornerParams& params, const TTrace& trace) {
  const bool isRatioValid = trace.passes(kRatioAtLeast, params.gapBandRatio, 0.0) &&
                            trace.passes(kRatioAtMost, params.gapBandRatio, 1.0);
  if (!isRatioValid) return false;
  const int lo = columnAtShare(left, 1.0 - params.gapBandRatio);
  const int hi = columnAtShare(right, params.gapBandRatio);
  const bool isUnbroken = !object.isWeldPosContinueMissingPts(corner, lo, hi, params.maxMissingRun);
  if (!trace) return isUnbroken;
  const int longestRun = longestMissingRun(object.getSamplinePointsStatus(), lo, hi);
  return trace.note(kUnbrokenBand, longestRun, params.maxMissingRun, isUnbroken);
}

bool areFewColumnsMissing(const TDetectorObject& object, cv::Point2f corner, const TPoints& left,
                          const TPoints& right, int width, const TCornerParams& params, const TTrace& trace) {
  const auto lastLeft =
      std::find_if(left.rbegin(), left.rend(), [&](cv::Point2f p) { return p.x < corner.x - kCornerMarginPx; });
  const auto firstRight =
      std::find_if(right.begin(), right.end(), [&](cv::Point2f p) { return p.x > corner.x + kCornerMarginPx; });
  const int lo =
      lastLeft != left.rend() ? truncToInt(lastLeft->x) : truncToInt(std::max(corner.x - kCornerReachPx, 0.0F));
  const int hi = firstRight != right.end() ? truncToInt(firstRight->x)
                                           : std::min(truncToInt(corner.x + kCornerReachPx), width - 1);
  const bool areFew = !object.isWeldPosMissingPts(corner, lo, hi, params.missingColumnLimit);
  if (!trace) return areFew;
  const int missing = countMissing(object.getSamplinePointsStatus(), lo, hi);
  return trace.note(kMissingColumns, missing, params.missingColumnLimit, areFew);
}

// The longest stretch without a jump between columns, the first of equally long ones.
TStretch longestContinuousStretch(const TPoints& points) {
  if (points.size() < kMinFlankPoints) return {points.begin(), points.end()};
  std::size_t bestBegin = 0;
  std::size_t bestEnd = 0;
  std::size_t begin = 0;
  for (std::size_t i = 1; i <= points.size(); ++i) {
    const bool continues = i < points.size() && !(std::abs(points[i].x - points[i - 1].x) > kMaxColumnJumpPx);
    if (continues) continue;
    if (i - begin > bestEnd - bestBegin) {
      bestBegin = begin;
      bestEnd = i;
    }
    begin = i;
  }
  return {points.begin() + static_cast<std::ptrdiff_t>(bestBegin),
          points.begin() + static_cast<std::ptrdiff_t>(bestEnd)};
}

// A corner beyond the inner ends of both flanks needs stripe close by on both sides.
bool doFlanksReachCorner(float cornerX, const TPoints& leftPts, const TPoints& rightPts, int width,
                         const TTrace& trace) {
  const TStretch left = longestContinuousStretch(leftPts);
  const TStretch right = longestContinuousStretch(rightPts);
  const float leftEndX = std::prev(left.end())->x;
  const float rightStartX = right.begin()->x;
  const bool isBeyondRight = cornerX > leftEndX && cornerX > rightStartX;
  const bool isBeyondLeft = cornerX < leftEndX && cornerX < rightStartX;
  if (!isBeyondRight && !isBeyondLeft) return true;
  const auto lo = static_cast<float>(truncToInt(std::max(cornerX - kEndReachPx, 0.0F)));
  const auto hi = static_cast<float>(std::min(truncToInt(cornerX + kEndReachPx), width - 1));
  const double leftDensity = countBetween(left, lo, cornerX) / guardDivisor(std::abs(lo - cornerX));
  const double rightDensity = countBetween(right, cornerX, hi) / guardDivisor(std::abs(hi - cornerX));
  return trace.passes(kLeftEnd, leftDensity, kMinEndDensity) &&
         trace.passes(kRightEnd, rightDensity, kMinEndDensity);
}

double directionDeg(const TLinePara& flank, cv::Point2f corner) {
  const cv::Point2f first = flank.inlierPts.front();
  const auto flankY = static_cast<float>(flank.k * static_cast<double>(first.x) + flank.b);
  const double angle =
      arcTangent2(static_cast<double>(flankY - corner.y), static_cast<double>(first.x - corner.x));
  return static_cast<double>(static_cast<float>(angle)) * kDegPerRad;
}

}  // namespace

bool checkCornerPlausible(const TDetectorObject& object, cv::Point2f corner, const TFlankPair& flanks,
                          cv::Size imageSize, const TCornerParams& params, const TTrace& trace) {
  const TPoints& left = flanks.left.inlierPts;
  const TPoints& right = flanks.right.inlierPts;
  return haveFlanksPoints(flanks, kMinFlankPoints, trace) && areFlanksOnTheirSides(left, right, corner.x, trace) &&
         isDenseEnough(left, right, corner.x, imageSize.width, params, trace) &&
         areAnglesAdmissible(flanks, corner, params, trace) &&
         isGapBandUnbroken(object, corner, left, right, params, trace) &&
         areFewColumnsMissing(object, corner, left, right, imageSize.width, params, trace) &&
         (params.acceptsGap || doFlanksReachCorner(corner.x, left, right, imageSize.width, trace));
}

double calcIntersecAngle(const TFlankPair& flanks, cv::Point2f corner) {
  const double difference = std::abs(directionDeg(flanks.left, corner) - directionDeg(flanks.right, corner));
  // Deliberate: 200 degrees count as 20, not as 160.
  return difference > 180.0 ? difference - 180.0 : difference;
}

}  // namespace weld
