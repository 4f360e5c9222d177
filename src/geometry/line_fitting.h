// Lines through stripe points: fits, the points near and far from a line, and how much a line explains.
// The members of TBaseWeld forward here. Results and working lists lie in the memory handed in.
#pragma once

#include "geometry/piece.h"
#include "support/line_fit.h"
#include "support/list.h"

#include <opencv2/core.hpp>

namespace weld {

inline constexpr std::size_t kMinFitPoints = 10;  // a line through stripe points needs as many

// True when a fit gave a line, be it one with too small a share of the points.
inline bool hasLine(const TFittedLine& line) {
  return line.isValid || line.inlierRatio > 0.0;
}

// Robust line through integer points; tolPx is the scale of the residuals.
zelFit::TLineFitResult fitRobust(TIntPointView points, double tolPx, TMemory* memory);

// Points truncated toward zero, in order.
TList<cv::Point> toIntPoints(TPointView points, TMemory* memory);

// Points strictly nearer than distTolPx to y = k * x + b, in order.
TPoints selectLineInliers(double k, double b, double distTolPx, TPointView points, TMemory* memory);
TList<cv::Point> selectLineInliers(double k, double b, double distTolPx, TIntPointView points, TMemory* memory);

// Points strictly farther than distTolPx, in order. A point exactly at the tolerance is in neither selection.
TPoints selectLineOutliers(double k, double b, double distTolPx, TPointView points, TMemory* memory);

// Share of points strictly nearer than distTolPx; 0 for an empty list.
double lineShare(double k, double b, double distTolPx, TIntPointView points);

// At most 101 points about a hundredth of the x extent apart; lists under 100 points come back whole.
TPoints thinPointsByX(TPointView points, TMemory* memory);

// Robust line through stripe points, truncated to integers. No success with fewer than 10.
zelFit::TLineFitResult fitStripePoints(TPointView points, double tolPx, TMemory* memory);

// True only where fitStripePoints succeeds, at a fraction of its cost. False tells nothing.
bool isSureToFit(TPointView points, double tolPx, TMemory* memory);

// As fitStripePoints, with the points near the line. tolPx is the scale of the fit and the inlier distance.
// Without success the inliers are all points and the ratio is 0.
TFittedLine fitLine(TPointView points, double tolPx, TMemory* memory);

// Robust fit of the points of the range, then of all points near that line. Fewer than 10 points in
// the range, a range beyond the list, or no first line: the empty record.
TFittedLine fitLineRange(TPointView points, cv::Range range, double tolPx, TMemory* memory);

// How a consensus line may lie, and how many points it takes.
struct TConsensusRule {
  double angleFromDeg;
  double angleToDeg;
  double distTolPx;
  double minFitRatio;
};

// Consensus fit with an angle between the two bounds; see TBaseWeld::findALineRansac.
TFittedLine fitLineRansac(TPointView points, const TConsensusRule& rule, TMemory* memory);

// Foot of the perpendicular from the point to the line.
cv::Point2f dropFoot(double k, double b, cv::Point2f point);

}  // namespace weld
