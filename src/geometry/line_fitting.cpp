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
void appendNear(double k, double b, double distTolPx, const std::vector<TPoint>& points,
                std::vector<TPoint>& inliers) {
  std::copy_if(points.begin(), points.end(), std::back_inserter(inliers),
               [&](const TPoint& p) { return distanceTo(k, b, p) < distTolPx; });
}

double ratioOf(const std::vector<cv::Point2f>& part, const std::vector<cv::Point2f>& whole) {
  return static_cast<double>(part.size()) / static_cast<double>(whole.size());
}

std::vector<cv::Point> roundPoints(const std::vector<cv::Point2f>& points, int startIdx, int endIdx) {
  std::vector<cv::Point> rounded;
  rounded.reserve(static_cast<std::size_t>(endIdx - startIdx));
  std::transform(points.begin() + startIdx, points.begin() + endIdx, std::back_inserter(rounded), roundPoint);
  return rounded;
}

}  // namespace

zelFit::TLineFitResult fitRobust(const std::vector<cv::Point>& points, double tolPx, TScratch* scratch) {
  zelFit::TLineFitFactory factory(scratch);
  factory.createFitType_robustLine(points, kRobustMethod, tolPx);
  return factory.result();
}

TLentList<cv::Point> toIntPoints(const std::vector<cv::Point2f>& points, TScratch* scratch) {
  TLentList<cv::Point> truncated(scratch, points.size());
  truncated.resize(points.size());
  std::transform(points.begin(), points.end(), truncated.begin(), truncPoint);
  return truncated;
}

TLentList<cv::Point2f> selectLineInliers(double k, double b, double distTolPx,
                                         const std::vector<cv::Point2f>& points, TScratch* scratch) {
  TLentList<cv::Point2f> inliers(scratch, points.size());
  appendNear(k, b, distTolPx, points, inliers);
  return inliers;
}

TLentList<cv::Point> selectLineInliers(double k, double b, double distTolPx, const std::vector<cv::Point>& points,
                                       TScratch* scratch) {
  TLentList<cv::Point> inliers(scratch, points.size());
  appendNear(k, b, distTolPx, points, inliers);
  return inliers;
}

TLentList<cv::Point2f> selectLineOutliers(double k, double b, double distTolPx,
                                          const std::vector<cv::Point2f>& points, TScratch* scratch) {
  TLentList<cv::Point2f> outliers(scratch, points.size());
  std::copy_if(points.begin(), points.end(), std::back_inserter(outliers),
               [&](cv::Point2f p) { return distanceTo(k, b, p) > distTolPx; });
  return outliers;
}

double lineShare(double k, double b, double distTolPx, const std::vector<cv::Point>& points) {
  if (points.empty()) return 0.0;
  const auto near =
      std::count_if(points.begin(), points.end(), [&](cv::Point p) { return distanceTo(k, b, p) < distTolPx; });
  return static_cast<double>(near) / static_cast<double>(points.size());
}

TLentList<cv::Point2f> thinPointsByX(const std::vector<cv::Point2f>& points, TScratch* scratch) {
  TLentList<cv::Point2f> thinned(scratch, kMaxThinnedPoints + 1);
  if (points.size() < kThinFrom) {
    thinned.assign(points.begin(), points.end());
    return thinned;
  }
  const auto step = static_cast<float>(truncToInt(std::abs(points.front().x - points.back().x) / kThinParts));
  thinned.push_back(points.front());
  for (std::size_t i = 1; i < points.size() && thinned.size() <= kMaxThinnedPoints; ++i) {
    const auto lastX = static_cast<float>(truncToInt(thinned.back().x));
    if (std::abs(points[i].x - lastX) >= step) thinned.push_back(points[i]);
  }
  return thinned;
}

zelFit::TLineFitResult fitStripePoints(const std::vector<cv::Point2f>& points, double tolPx, TScratch* scratch) {
  if (points.size() < kMinFitPoints) return {};
  return fitRobust(toIntPoints(points, scratch), tolPx, scratch);
}

bool isSureToFit(const std::vector<cv::Point2f>& points, double tolPx, TScratch* scratch) {
  using zelFit::TLineFitFactory;
  if (points.size() < kMinFitPoints) return false;
  const auto few = zelFit::pickEvenly(points, TLineFitFactory::kFewPoints, scratch);
  return TLineFitFactory(scratch).isSureOfRobustLine(toIntPoints(few, scratch), tolPx);
}

TLent<TLinePara> fitLine(const std::vector<cv::Point2f>& points, double tolPx, TScratch* scratch) {
  const zelFit::TLineFitResult fit = fitStripePoints(points, tolPx, scratch);
  TLent<TLinePara> line(scratch, points.size());
  if (!fit.success) {
    line.inlierPts.assign(points.begin(), points.end());
    return line;
  }
  line.k = fit.slope;
  line.b = fit.intercept;
  line.isValid = true;
  appendNear(line.k, line.b, tolPx, points, line.inlierPts);
  line.inlierRatio = ratioOf(line.inlierPts, points);
  return line;
}

// Deliberate: the range is rounded, while the refit and the whole-list form truncate.
TLinePara fitLineRange(const std::vector<cv::Point2f>& points, int startIdx, int endIdx, double tolPx) {
  const bool isInside = startIdx >= 0 && endIdx >= 0 && static_cast<std::size_t>(endIdx) <= points.size();
  if (!isInside || endIdx - startIdx < static_cast<int>(kMinFitPoints)) return {};
  const zelFit::TLineFitResult first = fitRobust(roundPoints(points, startIdx, endIdx), tolPx);
  if (!first.success) return {};
  TLinePara line;
  line.inlierPts = selectLineInliers(first.slope, first.intercept, tolPx, points);
  line.inlierRatio = ratioOf(line.inlierPts, points);
  const zelFit::TLineFitResult second = fitRobust(toIntPoints(line.inlierPts), tolPx);
  line.k = second.slope;
  line.b = second.intercept;
  line.isValid = second.success;
  return line;
}

TLent<TLinePara> fitLineRansac(double angleFromDeg, double angleToDeg, double distTolPx, double minFitRatio,
                               const std::vector<cv::Point2f>& points, TScratch* scratch) {
  if (points.size() < kMinFitPoints) return {};
  const double angleCentre = (angleFromDeg + angleToDeg) / 2.0;
  const double angleHalfRange = std::abs(angleCentre - angleFromDeg);
  zelFit::TLineFitFactory factory(scratch);
  factory.createFitType_ransacLine(toIntPoints(thinPointsByX(points, scratch), scratch), angleCentre, distTolPx,
                                   kRansacFactor, angleHalfRange, true);
  TLent<TLinePara> line(scratch, points.size());
  line.k = factory.result().slope;
  line.b = factory.result().intercept;
  if (!factory.result().success) return line;
  appendNear(line.k, line.b, distTolPx, points, line.inlierPts);
  line.inlierRatio = ratioOf(line.inlierPts, points);
  // Deliberate: a line with too small a share is still returned, only marked invalid.
  line.isValid = !(minFitRatio > line.inlierRatio);
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
