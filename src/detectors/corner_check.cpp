#include "detectors/corner_check.h"

#include "support/arc_tangent.h"
#include "support/line_math.h"

#include <algorithm>
#include <cmath>
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

// Points with lo < column < hi.
double countBetween(const TPoints& points, float lo, float hi) {
  return static_cast<double>(
      std::count_if(points.begin(), points.end(), [&](cv::Point2f p) { return lo < p.x && p.x < hi; }));
}

double countLeftOf(const TPoints& points, float x) {
  return static_cast<double>(std::count_if(points.begin(), points.end(), [&](cv::Point2f p) { return p.x < x; }));
}

double countRightOf(const TPoints& points, float x) {
  return static_cast<double>(std::count_if(points.begin(), points.end(), [&](cv::Point2f p) { return p.x > x; }));
}

bool areFlanksOnTheirSides(const TPoints& left, const TPoints& right, float cornerX) {
  return countLeftOf(left, cornerX) / static_cast<double>(left.size()) > kMinSideShare &&
         countRightOf(right, cornerX) / static_cast<double>(right.size()) > kMinSideShare;
}

// Deliberate: one dense flank is enough.
bool isDenseEnough(const TPoints& left, const TPoints& right, float cornerX, int width,
                   const TCornerParams& params) {
  const auto x = static_cast<double>(cornerX);
  const double leftCount = countLeftOf(left, cornerX);
  const double rightCount = countRightOf(right, cornerX);
  const double density = std::max(leftCount / guardDivisor(x), rightCount / guardDivisor(width - x));
  return density > params.minFlankShare && std::max(leftCount, rightCount) > params.minFlankPoints;
}

bool areAnglesAdmissible(const TFlankPair& flanks, cv::Point2f corner, const TCornerParams& params) {
  return isStrictlyInside(params.leftDeg, slopeToDeg(flanks.left.k)) &&
         isStrictlyInside(params.rightDeg, slopeToDeg(flanks.right.k)) &&
         isStrictlyInside(params.includedDeg, calcIntersecAngle(flanks, corner));
}

// Column of the point at that share of the list; a share of 1 means the last point.
int columnAtShare(const TPoints& points, double share) {
  const auto index = static_cast<std::size_t>(share * static_cast<double>(points.size()));
  return truncToInt(points[std::min(index, points.size() - 1)].x);
}

bool isGapBandUnbroken(const TDetectorObject& object, cv::Point2f corner, const TPoints& left,
                       const TPoints& right, const TCornerParams& params) {
  if (!(params.gapBandRatio >= 0.0 && params.gapBandRatio <= 1.0)) return false;
  const int lo = columnAtShare(left, 1.0 - params.gapBandRatio);
  const int hi = columnAtShare(right, params.gapBandRatio);
  return !object.isWeldPosContinueMissingPts(corner, lo, hi, params.maxMissingRun);
}

bool areFewColumnsMissing(const TDetectorObject& object, cv::Point2f corner, const TPoints& left,
                          const TPoints& right, int width, const TCornerParams& params) {
  const auto lastLeft =
      std::find_if(left.rbegin(), left.rend(), [&](cv::Point2f p) { return p.x < corner.x - kCornerMarginPx; });
  const auto firstRight =
      std::find_if(right.begin(), right.end(), [&](cv::Point2f p) { return p.x > corner.x + kCornerMarginPx; });
  const int lo =
      lastLeft != left.rend() ? truncToInt(lastLeft->x) : truncToInt(std::max(corner.x - kCornerReachPx, 0.0F));
  const int hi = firstRight != right.end() ? truncToInt(firstRight->x)
                                           : std::min(truncToInt(corner.x + kCornerReachPx), width - 1);
  return !object.isWeldPosMissingPts(corner, lo, hi, params.missingColumnLimit);
}

// The longest stretch without a jump between columns, the first of equally long ones.
TPoints longestContinuousStretch(const TPoints& points) {
  if (points.size() < kMinFlankPoints) return points;
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
bool doFlanksReachCorner(float cornerX, const TPoints& leftPts, const TPoints& rightPts, int width) {
  const TPoints left = longestContinuousStretch(leftPts);
  const TPoints right = longestContinuousStretch(rightPts);
  const bool isBeyondRight = cornerX > left.back().x && cornerX > right.front().x;
  const bool isBeyondLeft = cornerX < left.back().x && cornerX < right.front().x;
  if (!isBeyondRight && !isBeyondLeft) return true;
  const auto lo = static_cast<float>(truncToInt(std::max(cornerX - kEndReachPx, 0.0F)));
  const auto hi = static_cast<float>(std::min(truncToInt(cornerX + kEndReachPx), width - 1));
  const double leftDensity = countBetween(left, lo, cornerX) / guardDivisor(std::abs(lo - cornerX));
  const double rightDensity = countBetween(right, cornerX, hi) / guardDivisor(std::abs(hi - cornerX));
  return leftDensity >= kMinEndDensity && rightDensity >= kMinEndDensity;
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
                          cv::Size imageSize, const TCornerParams& params) {
  const TPoints& left = flanks.left.inlierPts;
  const TPoints& right = flanks.right.inlierPts;
  return left.size() >= kMinFlankPoints && right.size() >= kMinFlankPoints &&
         areFlanksOnTheirSides(left, right, corner.x) &&
         isDenseEnough(left, right, corner.x, imageSize.width, params) &&
         areAnglesAdmissible(flanks, corner, params) && isGapBandUnbroken(object, corner, left, right, params) &&
         areFewColumnsMissing(object, corner, left, right, imageSize.width, params) &&
         (params.acceptsGap || doFlanksReachCorner(corner.x, left, right, imageSize.width));
}

double calcIntersecAngle(const TFlankPair& flanks, cv::Point2f corner) {
  const double difference = std::abs(directionDeg(flanks.left, corner) - directionDeg(flanks.right, corner));
  // Deliberate: 200 degrees count as 20, not as 160.
  return difference > 180.0 ? difference - 180.0 : difference;
}

}  // namespace weld
