#include "detectors/corner_check.h"

#include "detectors/corner_flanks.h"
#include "stripe/longest_piece.h"
#include "support/arc_tangent.h"
#include "support/column_status.h"
#include "support/line_math.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <vector>

namespace weld {

namespace {

constexpr std::size_t kMinFlankPoints = 10;
constexpr double kMinSideShare = 0.7;
constexpr float kCornerMarginPx = 10.0F;  // columns next to the corner in which no flank point is looked for
constexpr float kCornerReachPx = 50.0F;   // where the flank has no point beyond that
constexpr float kMaxColumnJumpPx = 50.0F;
constexpr float kEndReachPx = 100.0F;
constexpr double kMinEndDensity = 0.2;

constexpr TCheck kLeftSide{{24, TWeldOutcome::fitTooWeak, "left flank", "left flank reaches beyond the corner"},
                           "share of the left flank left of the corner",
                           TRule::above};
constexpr TCheck kRightSide{{25, TWeldOutcome::fitTooWeak, "right flank", "right flank reaches beyond the corner"},
                            "share of the right flank right of the corner",
                            TRule::above};
constexpr TCheck kDensity{
    {26, TWeldOutcome::fitTooWeak, "flanks", "too few stripe points per column on both flanks"},
    "stripe points per column on the better flank",
    TRule::above,
    "",
    "minFlankShare"};
constexpr TCheck kFlankPoints =
    countCheck({27, TWeldOutcome::elementTooShort, "flanks", "too few stripe points on both flanks"},
               "stripe points on the better flank", TRule::above, "minFlankPoints");
constexpr TCheck kShareAtLeast{
    {34, TWeldOutcome::settingInvalid, "band", "ratio of the unbroken band out of range"},
    "band ratio",
    TRule::atLeast};
constexpr TCheck kShareAtMost{
    {34, TWeldOutcome::settingInvalid, "band", "ratio of the unbroken band out of range"},
    "band ratio",
    TRule::atMost};
constexpr TCheck kUnbrokenBand =
    countCheck({35, TWeldOutcome::stripeBroken, "band", "stripe broken near the corner"},
               "missing columns in a row near the corner", TRule::atMost, "maxBreakColumns");
constexpr TCheck kMissingColumns =
    countCheck({36, TWeldOutcome::stripeBroken, "corner", "too many stripe columns missing around the corner"},
               "missing columns around the corner", TRule::below, "maxMissingColumns");
constexpr TCheck kLeftEnd{
    {37, TWeldOutcome::elementTooShort, "left flank", "left flank ends too far from the corner"},
    "left flank's stripe points per column near the corner"};
constexpr TCheck kRightEnd{
    {38, TWeldOutcome::elementTooShort, "right flank", "right flank ends too far from the corner"},
    "right flank's stripe points per column near the corner"};

// The two tests of an angle.
struct TAngleCheck {
  const char* name;
  TFailure tooSmall;
  TFailure tooLarge;
};

constexpr TAngleCheck kLeftAngle{"left flank angle",
                                 {28, TWeldOutcome::angleOutOfRange, "left flank", "left flank angle too small"},
                                 {29, TWeldOutcome::angleOutOfRange, "left flank", "left flank angle too large"}};
constexpr TAngleCheck kRightAngle{
    "right flank angle",
    {30, TWeldOutcome::angleOutOfRange, "right flank", "right flank angle too small"},
    {31, TWeldOutcome::angleOutOfRange, "right flank", "right flank angle too large"}};
constexpr TAngleCheck kIncludedAngle{"included angle",
                                     {32, TWeldOutcome::angleOutOfRange, "flanks", "included angle too small"},
                                     {33, TWeldOutcome::angleOutOfRange, "flanks", "included angle too large"}};

// Points with lo < column < hi.
double countBetween(TPointView points, float lo, float hi) {
  return static_cast<double>(
      std::count_if(points.begin(), points.end(), [&](cv::Point2f p) { return lo < p.x && p.x < hi; }));
}

double countLeftOf(TPointView points, float x) {
  return static_cast<double>(std::count_if(points.begin(), points.end(), [&](cv::Point2f p) { return p.x < x; }));
}

double countRightOf(TPointView points, float x) {
  return static_cast<double>(std::count_if(points.begin(), points.end(), [&](cv::Point2f p) { return p.x > x; }));
}

// A candidate corner, and the stripe points of its flanks.
struct TCandidate {
  const TCornerCase& c;
  cv::Point2f pos;
  TPointView left;
  TPointView right;

  const TTrace& trace() const { return c.frame.trace; }
  int width() const { return c.frame.image.cols; }
};

bool areFlanksOnTheirSides(const TCandidate& corner) {
  const auto& [c, pos, left, right] = corner;
  const TTrace& trace = corner.trace();
  const float cornerX = pos.x;
  return trace.passes(kLeftSide, countLeftOf(left, cornerX) / static_cast<double>(left.size()), kMinSideShare) &&
         trace.passes(kRightSide, countRightOf(right, cornerX) / static_cast<double>(right.size()), kMinSideShare);
}

// Deliberate: one dense flank is enough.
bool isDenseEnough(const TCandidate& corner) {
  const auto x = static_cast<double>(corner.pos.x);
  const double leftCount = countLeftOf(corner.left, corner.pos.x);
  const double rightCount = countRightOf(corner.right, corner.pos.x);
  const double density = std::max(leftCount / guardDivisor(x), rightCount / guardDivisor(corner.width() - x));
  return corner.trace().passes(kDensity, density, corner.c.params.minFlankShare) &&
         corner.trace().passes(kFlankPoints, std::max(leftCount, rightCount), corner.c.params.minFlankPoints);
}

bool isAngleInside(const TAngleCheck& check, double deg, const TSetRange& range, const TTrace& trace) {
  const TCheck least{check.tooSmall, check.name, TRule::above, "deg", range.minParameter};
  const TCheck most{check.tooLarge, check.name, TRule::below, "deg", range.maxParameter};
  return trace.passes(least, deg, range.min) && trace.passes(most, deg, range.max);
}

bool areAnglesAdmissible(const TCornerCase& c, const TFlankPair& flanks, cv::Point2f corner) {
  const TTrace& trace = c.frame.trace;
  return isAngleInside(kLeftAngle, slopeToDeg(flanks.left.k), c.params.leftDeg, trace) &&
         isAngleInside(kRightAngle, slopeToDeg(flanks.right.k), c.params.rightDeg, trace) &&
         isAngleInside(kIncludedAngle, calcIntersecAngle(flanks, corner), c.params.includedDeg, trace);
}

// Column of the point at that share of the list; a share of 1 means the last point.
int columnAtShare(TPointView points, double share) {
  const auto index = static_cast<std::size_t>(share * static_cast<double>(points.size()));
  return truncToInt(points[std::min(index, points.size() - 1)].x);
}

bool isGapBandUnbroken(const TCandidate& corner) {
  const TTrace& trace = corner.trace();
  const TCornerParams& params = corner.c.params;
  const bool isShareValid =
      trace.passes(kShareAtLeast, params.solidShare, 0.0) && trace.passes(kShareAtMost, params.solidShare, 1.0);
  if (!isShareValid) return false;
  const int lo = columnAtShare(corner.left, 1.0 - params.solidShare);
  const int hi = columnAtShare(corner.right, params.solidShare);
  const int longestRun = longestMissingRun(corner.c.status, lo, hi);
  // Deliberate: no limit is below 0.
  const bool isUnbroken = longestRun <= std::max(params.maxBreakColumns, 0);
  return trace.note(kUnbrokenBand, longestRun, params.maxBreakColumns, isUnbroken);
}

bool areFewColumnsMissing(const TCandidate& corner) {
  const float cornerX = corner.pos.x;
  const auto isLeft = [&](cv::Point2f p) { return p.x < cornerX - kCornerMarginPx; };
  const auto isRight = [&](cv::Point2f p) { return p.x > cornerX + kCornerMarginPx; };
  const auto lastLeft = std::find_if(std::make_reverse_iterator(corner.left.end()),
                                     std::make_reverse_iterator(corner.left.begin()), isLeft);
  const auto* const firstRight = std::find_if(corner.right.begin(), corner.right.end(), isRight);
  const bool hasLeft = lastLeft.base() != corner.left.begin();
  const bool hasRight = firstRight != corner.right.end();
  const int lo = truncToInt(hasLeft ? lastLeft->x : std::max(cornerX - kCornerReachPx, 0.0F));
  const int hi =
      hasRight ? truncToInt(firstRight->x) : std::min(truncToInt(cornerX + kCornerReachPx), corner.width() - 1);
  const int missing = countMissing(corner.c.status, lo, hi);
  return corner.trace().passes(kMissingColumns, missing, corner.c.params.maxMissingColumns);
}

// The longest stretch without a jump between columns, the first of equally long ones.
TPointView longestContinuousStretch(TPointView points) {
  if (points.size() < kMinFlankPoints) return points;
  return longestRun(points,
                    [](cv::Point2f a, cv::Point2f b) { return !(std::abs(b.x - a.x) > kMaxColumnJumpPx); });
}

// A corner beyond the inner ends of both flanks needs stripe close by on both sides.
bool doFlanksReachCorner(const TCandidate& corner) {
  const TTrace& trace = corner.trace();
  const float cornerX = corner.pos.x;
  const TPointView left = longestContinuousStretch(corner.left);
  const TPointView right = longestContinuousStretch(corner.right);
  const float leftEndX = left.back().x;
  const float rightStartX = right.front().x;
  const bool isBeyondRight = cornerX > leftEndX && cornerX > rightStartX;
  const bool isBeyondLeft = cornerX < leftEndX && cornerX < rightStartX;
  if (!isBeyondRight && !isBeyondLeft) return true;
  const auto lo = static_cast<float>(truncToInt(std::max(cornerX - kEndReachPx, 0.0F)));
  const auto hi = static_cast<float>(std::min(truncToInt(cornerX + kEndReachPx), corner.width() - 1));
  const double leftDensity = countBetween(left, lo, cornerX) / guardDivisor(std::abs(lo - cornerX));
  const double rightDensity = countBetween(right, cornerX, hi) / guardDivisor(std::abs(hi - cornerX));
  return trace.passes(kLeftEnd, leftDensity, kMinEndDensity) &&
         trace.passes(kRightEnd, rightDensity, kMinEndDensity);
}

double directionDeg(const TFittedLine& flank, cv::Point2f corner) {
  const cv::Point2f first = flank.inliers.front();
  const auto flankY = static_cast<float>(flank.k * static_cast<double>(first.x) + flank.b);
  const double angle =
      arcTangent2(static_cast<double>(flankY - corner.y), static_cast<double>(first.x - corner.x));
  return static_cast<double>(static_cast<float>(angle)) * kDegPerRad;
}

}  // namespace

bool checkCornerPlausible(const TCornerCase& c, cv::Point2f pos, const TFlankPair& flanks) {
  const TCandidate corner{c, pos, flanks.left.inliers, flanks.right.inliers};
  return haveFlanksPoints(flanks, kMinFlankPoints, c.frame.trace) && areFlanksOnTheirSides(corner) &&
         isDenseEnough(corner) && areAnglesAdmissible(c, flanks, pos) && isGapBandUnbroken(corner) &&
         areFewColumnsMissing(corner) && (c.params.allowsGap || doFlanksReachCorner(corner));
}

double calcIntersecAngle(const TFlankPair& flanks, cv::Point2f corner) {
  const double difference = std::abs(directionDeg(flanks.left, corner) - directionDeg(flanks.right, corner));
  // Deliberate: 200 degrees count as 20, not as 160.
  return difference > 180.0 ? difference - 180.0 : difference;
}

}  // namespace weld
