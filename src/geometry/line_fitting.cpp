#include "geometry/line_fitting.h"

#include "support/fit_points.h"
#include "support/line_fit.h"
#include "support/line_math.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace weld {

namespace {

constexpr std::size_t kThinFrom = 100;  // shorter lists are not thinned
constexpr std::size_t kMaxThinnedPoints = 100;
constexpr float kThinParts = 100.0F;
constexpr int kRobustMethod = 4;
constexpr double kRansacFactor = 3.0;

template <typename TPoint>
double distanceTo(double k, double b, const TPoint& p) {
  return pointLineDistance(k, b, static_cast<double>(p.x), static_cast<double>(p.y));
}

template <typename TPoint>
void appendNear(double k, double b, double distTolPx, TView<TPoint> points, TList<TPoint>& inliers) {
  const TNearLine isNear(k, b, distTolPx);
  inliers.resize(points.size());
  auto next = inliers.begin();
  for (const TPoint& p : points) {
    if (isNear(static_cast<double>(p.x), static_cast<double>(p.y))) *next++ = p;
  }
  inliers.erase(next, inliers.end());
}

double ratioOf(TPointView part, TPointView whole) {
  return static_cast<double>(part.size()) / static_cast<double>(whole.size());
}

TList<cv::Point> roundPoints(TPointView points, TMemory* memory) {
  TList<cv::Point> rounded(points.size(), memory);
  std::transform(points.begin(), points.end(), rounded.begin(), roundPoint);
  return rounded;
}

}  // namespace

zelFit::TLineFitResult fitRobust(TIntPointView points, double tolPx, TMemory* memory) {
  zelFit::TLineFitFactory factory(memory);
  factory.createFitType_robustLine(points, kRobustMethod, tolPx);
  return factory.result();
}

TList<cv::Point> toIntPoints(TPointView points, TMemory* memory) {
  TList<cv::Point> truncated(points.size(), memory);
  std::transform(points.begin(), points.end(), truncated.begin(), truncPoint);
  return truncated;
}

TPoints selectLineInliers(double k, double b, double distTolPx, TPointView points, TMemory* memory) {
  TPoints inliers(memory);
  appendNear(k, b, distTolPx, points, inliers);
  return inliers;
}

TList<cv::Point> selectLineInliers(double k, double b, double distTolPx, TIntPointView points, TMemory* memory) {
  TList<cv::Point> inliers(memory);
  appendNear(k, b, distTolPx, points, inliers);
  return inliers;
}

TPoints selectLineOutliers(double k, double b, double distTolPx, TPointView points, TMemory* memory) {
  TPoints outliers(memory);
  outliers.reserve(points.size());
  std::copy_if(points.begin(), points.end(), std::back_inserter(outliers),
               [&](cv::Point2f p) { return distanceTo(k, b, p) > distTolPx; });
  return outliers;
}

double lineShare(double k, double b, double distTolPx, TIntPointView points) {
  if (points.empty()) return 0.0;
  const auto near =
      std::count_if(points.begin(), points.end(), [&](cv::Point p) { return distanceTo(k, b, p) < distTolPx; });
  return static_cast<double>(near) / static_cast<double>(points.size());
}

TPoints thinPointsByX(TPointView points, TMemory* memory) {
  TPoints thinned(memory);
  thinned.reserve(kMaxThinnedPoints + 1);
  if (points.size() < kThinFrom) {
    thinned.assign(points.begin(), points.end());
    return thinned;
  }
  const auto step = static_cast<float>(truncToInt(std::abs(points.front().x - points.back().x) / kThinParts));
  thinned.push_back(points.front());
  auto lastX = static_cast<float>(truncToInt(points.front().x));
  for (std::size_t i = 1; i < points.size() && thinned.size() <= kMaxThinnedPoints; ++i) {
    if (!(std::abs(points[i].x - lastX) >= step)) continue;
    thinned.push_back(points[i]);
    lastX = static_cast<float>(truncToInt(points[i].x));
  }
  return thinned;
}

zelFit::TLineFitResult fitStripePoints(TPointView points, double tolPx, TMemory* memory) {
  if (points.size() < kMinFitPoints) return {};
  return fitRobust(toIntPoints(points, memory), tolPx, memory);
}

bool isSureToFit(TPointView points, double tolPx, TMemory* memory) {
  using zelFit::TLineFitFactory;
  if (points.size() < kMinFitPoints) return false;
  const TPoints few = zelFit::pickEvenly(points, TLineFitFactory::kFewPoints, memory);
  return TLineFitFactory(memory).isSureOfRobustLine(toIntPoints(few, memory), tolPx);
}

TFittedLine fitLine(TPointView points, double tolPx, TMemory* memory) {
  const zelFit::TLineFitResult fit = fitStripePoints(points, tolPx, memory);
  TFittedLine line(memory);
  if (!fit.success) {
    line.inliers.assign(points.begin(), points.end());
    return line;
  }
  line.k = fit.slope;
  line.b = fit.intercept;
  line.isValid = true;
  appendNear(line.k, line.b, tolPx, points, line.inliers);
  line.inlierRatio = ratioOf(line.inliers, points);
  return line;
}

// Deliberate: the range is rounded, while the refit and the whole-list form truncate.
TFittedLine fitLineRange(TPointView points, cv::Range range, double tolPx, TMemory* memory) {
  TFittedLine line(memory);
  const bool isInside = range.start >= 0 && range.end >= 0 && static_cast<std::size_t>(range.end) <= points.size();
  if (!isInside || range.end - range.start < static_cast<int>(kMinFitPoints)) return line;
  const TPointView part =
      points.part(static_cast<std::size_t>(range.start), static_cast<std::size_t>(range.size()));
  const zelFit::TLineFitResult first = fitRobust(roundPoints(part, memory), tolPx, memory);
  if (!first.success) return line;
  line.inliers = selectLineInliers(first.slope, first.intercept, tolPx, points, memory);
  line.inlierRatio = ratioOf(line.inliers, points);
  const zelFit::TLineFitResult second = fitRobust(toIntPoints(line.inliers, memory), tolPx, memory);
  line.k = second.slope;
  line.b = second.intercept;
  line.isValid = second.success;
  return line;
}

TFittedLine fitLineRansac(TPointView points, const TConsensusRule& rule, TMemory* memory) {
  TFittedLine line(memory);
  if (points.size() < kMinFitPoints) return line;
  const double angleCentre = (rule.angleFromDeg + rule.angleToDeg) / 2.0;
  const double angleHalfRange = std::abs(angleCentre - rule.angleFromDeg);
  zelFit::TLineFitFactory factory(memory);
  factory.createFitType_ransacLine(toIntPoints(thinPointsByX(points, memory), memory), angleCentre, rule.distTolPx,
                                   kRansacFactor, angleHalfRange, true);
  line.k = factory.result().slope;
  line.b = factory.result().intercept;
  if (!factory.result().success) return line;
  appendNear(line.k, line.b, rule.distTolPx, points, line.inliers);
  line.inlierRatio = ratioOf(line.inliers, points);
  // Deliberate: a line with too small a share is still returned, only marked invalid.
  line.isValid = !(rule.minFitRatio > line.inlierRatio);
  return line;
}

cv::Point2f dropFoot(double k, double b, cv::Point2f point) {
  const double perpendicularK = -1.0 / guardDivisor(k);
  const double perpendicularB = static_cast<double>(point.y) - static_cast<double>(point.x) * perpendicularK;
  const auto x = static_cast<float>((perpendicularB - b) / guardDivisor(k - perpendicularK));
  const auto y = static_cast<float>(static_cast<double>(x) * perpendicularK + perpendicularB);
  return {x, y};
}

}  // namespace weld
