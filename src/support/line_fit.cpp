#include "support/line_fit.h"

#include "support/arc_tangent.h"
#include "support/consensus.h"
#include "support/fit_points.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace zelFit {

namespace {

constexpr int kRobustSample = 32;   // points, all pairs of which start the robust fit
constexpr int kRansacSample = 24;   // the same of the consensus fit
constexpr int kMaxScored = 101;     // points that score a pair
constexpr int kReweightSteps = 8;
constexpr double kFirstCutOff = 4.0;  // cut-off of the first weights, in scales
constexpr double kLastCutOff = 2.0;   // and of the last ones
constexpr double kMinNearShare = 0.1;  // of the points within one scale: below it there is no consensus
constexpr double kLargestTolPx = 1e9;

bool isUsableTolerance(double tolPx) { return tolPx > 0.0; }

TLineFitResult resultOf(const TFitPoints& points, const TScaledLine& line) {
  return {points.slopeOf(line), points.interceptOf(line), true};
}

// Degrees around the centre, taken modulo 180.
struct TAngleInterval {
  double centreDeg;
  double halfRangeDeg;

  bool contains(double slope) const {
    return std::abs(std::remainder(weld::slopeToDeg(slope) - centreDeg, 180.0)) <= halfRangeDeg;
  }
};

// Shrinks the cut-off from step to step, so that the start may be rough and the end still ignores the other flank.
TScaledLine reweight(const TFitPoints& points, TScaledLine line, double scalePx) {
  for (int step = 0; step < kReweightSteps; ++step) {
    const double progress = static_cast<double>(step) / (kReweightSteps - 1);
    const double cutOff = kFirstCutOff + progress * (kLastCutOff - kFirstCutOff);
    const std::optional<TScaledLine> next = reweightLine(points, line, cutOff * scalePx);
    if (!next) return line;
    line = *next;
  }
  return line;
}

// Keeps the last line inside the interval.
TScaledLine reweightInside(const TFitPoints& points, TScaledLine line, double tolPx,
                           const TAngleInterval& interval) {
  for (int step = 0; step < kReweightSteps; ++step) {
    const std::optional<TScaledLine> next = reweightLine(points, line, tolPx);
    if (!next || !interval.contains(points.slopeOf(*next))) return line;
    line = *next;
  }
  return line;
}

}  // namespace

bool TLineFitFactory::createFitType_robustLine(const std::vector<cv::Point>& points, int /*method*/, double param) {
  fit = {};
  if (!isUsableTolerance(param)) return false;
  const double scalePx = std::min(param, kLargestTolPx);
  const std::optional<TFitPoints> scaled = TFitPoints::from(points);
  if (!scaled) return false;
  const TFitPoints sample = scaled->subsample(kRobustSample);
  const std::optional<TScaledLine> start =
      findConsensusLine(sample, sample, kRobustSample, scalePx, [](double) { return true; });
  if (!start) return false;
  const TScaledLine line = reweight(*scaled, *start, scalePx);
  if (nearShare(*scaled, line, scalePx) < kMinNearShare) return false;
  fit = resultOf(*scaled, line);
  return true;
}

bool TLineFitFactory::createFitType_ransacLine(const std::vector<cv::Point>& points, double angleCentre,
                                               double distTolerance, double /*factor*/, double angleHalfRange,
                                               bool /*flag*/) {
  fit = {};
  if (!isUsableTolerance(distTolerance)) return false;
  const double tolPx = std::min(distTolerance, kLargestTolPx);
  const TAngleInterval interval{angleCentre, angleHalfRange};
  const std::optional<TFitPoints> scaled = TFitPoints::from(points);
  if (!scaled) return false;
  const std::optional<TScaledLine> start =
      findConsensusLine(*scaled, scaled->subsample(kMaxScored), kRansacSample, tolPx,
                        [&](double slope) { return interval.contains(slope); });
  if (!start) return false;
  fit = resultOf(*scaled, reweightInside(*scaled, *start, tolPx, interval));
  return true;
}

}  // namespace zelFit
