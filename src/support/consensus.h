// The line through two points of a set that explains most of the set.
#pragma once

#include "support/fit_points.h"

#include <functional>
#include <optional>

namespace zelFit {

// Every pair of a subsample of at most sampleSize points whose slope (dy/dx in image coordinates) is admissible,
// scored on `scored` with a truncated quadratic of the perpendicular distance at tolPx (MSAC: Torr and Zisserman,
// Computer Vision and Image Understanding 78, 2000). Plain inlier counting would prefer a slanted compromise. The
// first of equally good lines. Nothing when no pair is admissible.
std::optional<TScaledLine> findConsensusLine(const TFitPoints& points, const TFitPoints& scored, int sampleSize,
                                             double tolPx, const std::function<bool(double)>& isAdmissible);

// Tukey's reweighted least squares (Beaton and Tukey, Technometrics 16, 1974) from a start line; points at
// cutOffPx and beyond have no weight. Nothing when the weighted points have fewer than two columns.
std::optional<TScaledLine> reweightLine(const TFitPoints& points, const TScaledLine& start, double cutOffPx);

// Share of points strictly nearer than tolPx.
double nearShare(const TFitPoints& points, const TScaledLine& line, double tolPx);

}  // namespace zelFit
