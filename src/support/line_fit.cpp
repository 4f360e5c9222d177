#include "support/line_fit.h"

#include "support/consensus.h"
#include "support/fit_points.h"
#include "support/slope_interval.h"

#include <algorithm>
#include <optional>

namespace zelFit {

namespace {

constexpr int kRobustSample = 44;     // points, all pairs of which start the robust fit
constexpr int kConsensusSample = 32;  // the same of the consensus fit
constexpr int kMaxScored = 101;       // points that rate a pair of the consensus fit
constexpr int kReweightSteps = 5;
constexpr double kFirstCutOff = 2.5;   // cut-off of the first weights of the robust fit, in scales
constexpr double kLastCutOff = 1.2;    // and of the last ones
constexpr double kMinNearShare = 0.1;  // of the points nearer than the scale: below it there is no consensus
constexpr int kMinNear = 3;            // the same as a count, where there are that many points
constexpr double kSmallestTolPx = 0.01;
constexpr double kLargestTolPx = 1e6;

// Nothing where the tolerance is not a positive number.
std::optional<double> usableTolerance(double tolPx) {
  if (!(tolPx > 0.0)) return std::nullopt;
  return std::clamp(tolPx, kSmallestTolPx, kLargestTolPx);
}

TLineFitResult resultOf(const TFitPoints& points, const TScaledLine& line, const TSlopeInterval& interval) {
  const double slope = interval.clamp(points.slopeOf(line));
  return {slope, points.interceptOf(line, slope), true};
}

// Enough points near the line, and not upright and so narrow that the scale hides the slope.
bool isAcceptable(const TFitPoints& points, const TScaledLine& line, double scalePx) {
  const TSupport support = measureSupport(points, line, scalePx);
  const bool isConsensus =
      support.count >= std::min(kMinNear, points.count()) && support.count >= kMinNearShare * points.count();
  const bool isVertical = support.rows > support.columns && support.columns <= 2.0 * scalePx;
  return isConsensus && !isVertical;
}

// Shrinks the cut-off from step to step, so that the start may be rough and the end still ignores the other flank.
TScaledLine reweight(const TFitPoints& points, TScaledLine line, double firstCutOffPx, double lastCutOffPx,
                     const TSlopeInterval& interval) {
  for (int step = 0; step < kReweightSteps; ++step) {
    const double progress = static_cast<double>(step) / (kReweightSteps - 1);
    const double cutOffPx = firstCutOffPx + progress * (lastCutOffPx - firstCutOffPx);
    const std::optional<TScaledLine> next = reweightLine(points, line, cutOffPx, interval);
    if (!next) return line;
    line = *next;
  }
  return line;
}

// Through the points or, of more, kFewPoints evenly chosen ones: the best line from one of the first to one of the
// last, where it is acceptable.
TLineFitResult fitLongLine(weld::TIntPointView points, double scalePx, weld::TMemory* memory) {
  const TFitPoints few(pickEvenly(points, TLineFitFactory::kFewPoints, memory), memory);
  if (few.isEmpty()) return {};
  const std::optional<TScaledLine> line = findLineAcross(few.subsample(kRobustSample), scalePx);
  if (!line || !isAcceptable(few, *line, scalePx)) return {};
  return resultOf(few, *line, TSlopeInterval::all());
}

// From the line that explains most of a subsample.
TLineFitResult refineConsensus(weld::TIntPointView points, double scalePx, weld::TMemory* memory) {
  const TSlopeInterval any = TSlopeInterval::all();
  const TFitPoints scaled(points, memory);
  if (scaled.isEmpty()) return {};
  const TFitPoints sample = scaled.subsample(kRobustSample);
  const std::optional<TScaledLine> start = findConsensusLine(sample, sample, scalePx, any);
  if (!start) return {};
  const TScaledLine line = reweight(scaled, *start, kFirstCutOff * scalePx, kLastCutOff * scalePx, any);
  return isAcceptable(scaled, line, scalePx) ? resultOf(scaled, line, any) : TLineFitResult();
}

}  // namespace

bool TLineFitFactory::createFitType_robustLine(weld::TIntPointView points, int /*method*/, double scalePx) {
  fit = {};
  const std::optional<double> scale = usableTolerance(scalePx);
  if (!scale) return false;
  fit = refineConsensus(points, *scale, memory);
  if (!fit.success) fit = fitLongLine(points, *scale, memory);
  return fit.success;
}

bool TLineFitFactory::isSureOfRobustLine(weld::TIntPointView points, double scalePx) const {
  const std::optional<double> scale = usableTolerance(scalePx);
  return scale && fitLongLine(points, *scale, memory).success;
}

bool TLineFitFactory::createFitType_ransacLine(weld::TIntPointView points, double angleCentreDeg,
                                               double distTolerancePx, double /*factor*/, double angleHalfRangeDeg,
                                               bool /*flag*/) {
  fit = {};
  const std::optional<double> tol = usableTolerance(distTolerancePx);
  const std::optional<TSlopeInterval> interval = TSlopeInterval::around(angleCentreDeg, angleHalfRangeDeg);
  const TFitPoints scaled(points, memory);
  if (!tol || !interval || scaled.isEmpty()) return false;
  const TFitPoints sample = scaled.subsample(kConsensusSample);
  const std::optional<TScaledLine> start =
      findConsensusLine(sample, scaled.subsample(kMaxScored), *tol, *interval);
  if (!start) return false;
  fit = resultOf(scaled, reweight(scaled, *start, *tol, *tol, *interval), *interval);
  return true;
}

}  // namespace zelFit
