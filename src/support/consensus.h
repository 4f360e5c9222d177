// The line through two points of a set that explains most of the set, and its refinement.
#pragma once

#include "support/fit_points.h"
#include "support/slope_interval.h"

#include <optional>

namespace zelFit {

// Every pair of the sample whose slope lies in the interval, rated on `scored` (same scale) by the sum of squared
// perpendicular distances truncated at tolPx (MSAC: Torr and Zisserman, Computer Vision and Image Understanding
// 78, 2000). Plain inlier counting would prefer a slanted compromise. The first of equally good lines. Nothing
// when no pair lies in the interval.
std::optional<TScaledLine> findConsensusLine(const TFitPoints& sample, const TFitPoints& scored, double tolPx,
                                             const TSlopeInterval& interval);

// The best line from one of the first eight points to one of the last eight, rated on all of them. Nothing with
// fewer than 16 points, or when none of the lines explains anything.
std::optional<TScaledLine> findLineAcross(const TFitPoints& points, double tolPx);

// One step of Tukey's reweighted least squares (Beaton and Tukey, Technometrics 16, 1974) from a start line;
// points at cutOffPx and beyond have no weight. A slope that leaves the interval stays at its border. Nothing when
// the weighted points have fewer than two columns.
std::optional<TScaledLine> reweightLine(const TFitPoints& points, const TScaledLine& start, double cutOffPx,
                                        const TSlopeInterval& interval);

// The points strictly nearer than tolPx to a line.
struct TSupport {
  int count = 0;
  float columns = 0.0F;  // last column less the first one, px; below 0 without points
  float rows = 0.0F;
};

TSupport measureSupport(const TFitPoints& points, const TScaledLine& line, double tolPx);

}  // namespace zelFit
