// Lines through stripe points: fits, the points near and far from a line, and how much a line explains.
// The members of TBaseWeld forward here. Results and working memory come from the scratch memory where one is
// given.
#pragma once

#include "zelWeldDetect.h"

#include "support/line_fit.h"
#include "support/scratch.h"

#include <opencv2/core.hpp>

#include <vector>

namespace weld {

inline constexpr std::size_t kMinFitPoints = 10;  // a line through stripe points needs as many

// True when a fit gave a line, be it one with too small a share of the points.
inline bool hasLine(const TLinePara& line) {
  return line.isValid || line.inlierRatio > 0.0;
}

// Robust line through integer points; tolPx is the scale of the residuals.
zelFit::TLineFitResult fitRobust(const std::vector<cv::Point>& points, double tolPx, TScratch* scratch = nullptr);

// Points truncated toward zero, in order.
TLentList<cv::Point> toIntPoints(const std::vector<cv::Point2f>& points, TScratch* scratch = nullptr);

// Points strictly nearer than distTolPx to y = k * x + b, in order.
TLentList<cv::Point2f> selectLineInliers(double k, double b, double distTolPx,
                                         const std::vector<cv::Point2f>& points, TScratch* scratch = nullptr);
TLentList<cv::Point> selectLineInliers(double k, double b, double distTolPx, const std::vector<cv::Point>& points,
                                       TScratch* scratch = nullptr);

// Points strictly farther than distTolPx, in order. A point exactly at the tolerance is in neither selection.
TLentList<cv::Point2f> selectLineOutliers(double k, double b, double distTolPx,
                                          const std::vector<cv::Point2f>& points, TScratch* scratch = nullptr);

// Share of points strictly nearer than distTolPx; 0 for an empty list.
double lineShare(double k, double b, double distTolPx, const std::vector<cv::Point>& points);

// At most 101 points about a hundredth of the x extent apart; lists under 100 points come back whole.
TLentList<cv::Point2f> thinPointsByX(const std::vector<cv::Point2f>& points, TScratch* scratch = nullptr);

// Robust line through stripe points, truncated to integers. No success with fewer than 10.
zelFit::TLineFitResult fitStripePoints(const std::vector<cv::Point2f>& points, double tolPx,
                                       TScratch* scratch = nullptr);

// True only where fitStripePoints succeeds, at a fraction of its cost. False tells nothing.
bool isSureToFit(const std::vector<cv::Point2f>& points, double tolPx, TScratch* scratch = nullptr);

// As fitStripePoints, with the points near the line. tolPx is the scale of the fit and the inlier distance.
// Without success the inliers are all points and the ratio is 0.
TLent<TLinePara> fitLine(const std::vector<cv::Point2f>& points, double tolPx, TScratch* scratch = nullptr);

// Robust fit of the points startIdx .. endIdx - 1, then of all points near that line. Fewer than 10 points in
// the range, a range beyond the list, or no first line: the empty record.
TLinePara fitLineRange(const std::vector<cv::Point2f>& points, int startIdx, int endIdx, double tolPx);

// Consensus fit with an angle between the two bounds (degrees); see TBaseWeld::findALineRansac.
TLent<TLinePara> fitLineRansac(double angleFromDeg, double angleToDeg, double distTolPx, double minFitRatio,
                               const std::vector<cv::Point2f>& points, TScratch* scratch = nullptr);

// Foot of the perpendicular from the point to the line.
cv::Point2f dropFoot(double k, double b, cv::Point2f point);

}  // namespace weld
