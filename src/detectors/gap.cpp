#include "detectors/gap.h"

#include "detectors/common_checks.h"
#include "geometry/line_fitting.h"
#include "support/line_math.h"
#include "zelWeldSettings.h"

#include <cmath>
#include <cstdlib>
#include <optional>
#include <utility>

namespace weld {

namespace {

constexpr TCheck kLine{{10, TWeldOutcome::elementMissing, "line", "no line through the stripe points"},
                       "line through the stripe points"};
constexpr TCheck kLineShare{{11, TWeldOutcome::fitTooWeak, "line", "too few stripe points on the line"},
                            "share of stripe points on the line",
                            TRule::notBelow,
                            "",
                            "minLineShare"};
constexpr TCheck kGap{{13, TWeldOutcome::elementMissing, "gap", "fewer than two stripe points on the line"},
                      "two stripe points on the line"};
constexpr TCheck kGapWidth{
    {14, TWeldOutcome::gapOutOfRange, "gap", "gap too narrow"}, "gap", TRule::notBelow, "px", "minGapPx"};
constexpr TCheck kSeamColumn{
    {15, TWeldOutcome::seamOutside, "seam", "seam in the first row or column of the image or outside"},
    "seam column",
    TRule::above,
    "px"};
constexpr TCheck kSeamRow{
    {15, TWeldOutcome::seamOutside, "seam", "seam in the first row or column of the image or outside"},
    "seam row",
    TRule::above,
    "px"};

using TGap = TLineHole;

int widthOf(const TGap& gap) {
  return std::abs(gap.leftX - gap.rightX);
}

// The widest step between neighbouring points of the line, in whole pixels; the first of equally wide ones.
std::optional<TGap> findWidestGap(const zelFit::TLineFitResult& line, double inlierTolPx, TPointView stripePts) {
  const TNearLine isNear(line.slope, line.intercept, inlierTolPx);
  TGap widest{line.slope, line.intercept, 0, 0};
  int widestPx = -1;
  bool hasPrevious = false;
  int previousX = 0;
  for (const cv::Point2f stripePt : stripePts) {
    const cv::Point p = truncPoint(stripePt);
    if (!isNear(p.x, p.y)) continue;
    const int stepPx = std::abs(previousX - p.x);
    if (hasPrevious && stepPx > widestPx) {
      widestPx = stepPx;
      widest.leftX = previousX;
      widest.rightX = p.x;
    }
    hasPrevious = true;
    previousX = p.x;
  }
  if (widestPx < 0) return std::nullopt;
  return widest;
}

float seamX(const TGap& gap, TWeldPosType pos) {
  switch (pos) {
    case TWeldPosType::left:
      return static_cast<float>(gap.leftX);
    case TWeldPosType::right:
      return static_cast<float>(gap.rightX);
    default:
      return static_cast<float>(gap.leftX + gap.rightX) / 2.0F;
  }
}

// What every stage needs.
struct TGapCase {
  const TFrame& frame;
  TPointView stripePts;
  TGapSettings settings;
};

std::optional<cv::Point2f> locateLineGap(const TGapCase& c, const zelFit::TLineFitResult& line, TGap& hole) {
  const TTrace& trace = c.frame.trace;
  const std::optional<TGap> gap = findWidestGap(line, c.settings.lineTolerancePx, c.stripePts);
  if (!trace.holds(kGap, gap.has_value())) return std::nullopt;
  if (!trace.passes(kGapWidth, static_cast<float>(widthOf(*gap)), static_cast<float>(c.settings.minGapPx)))
    return std::nullopt;
  hole = *gap;
  // Deliberate: the row is the line's at the left edge, whatever point of the gap is returned.
  const auto y = static_cast<float>(line.slope * gap->leftX + line.intercept);
  return cv::Point2f{seamX(*gap, c.frame.params.weldPosType), y};
}

// The line of a tracked stripe, which is trusted.
std::optional<zelFit::TLineFitResult> fitTrackedLine(const TGapCase& c) {
  const TTrace& trace = c.frame.trace;
  const double scalePx = c.settings.fitScalePx;
  const zelFit::TLineFitResult line = fitStripePoints(c.stripePts, scalePx, c.frame.memory);
  if (trace && line.success) {
    const double share = lineShare(line.slope, line.intercept, scalePx, toIntPoints(c.stripePts, c.frame.memory));
    trace.addLine({"stripe", line.slope, line.intercept, share, {-90.0, 90.0}, true});
  }
  if (!trace.holds(kLine, line.success)) return std::nullopt;
  return line;
}

// The line of a first detection: its angle is bounded, and enough points must lie on it.
std::optional<zelFit::TLineFitResult> fitFirstLine(const TGapCase& c) {
  const TTrace& trace = c.frame.trace;
  const TAngleRange allowedDeg = c.settings.stripeAngleDeg;
  const double minShare = c.settings.minLineShare;
  const TFittedLine line = fitLineRansac(
      c.stripePts, {allowedDeg.min, allowedDeg.max, c.settings.lineTolerancePx, minShare}, c.frame.memory);
  trace.addLine({"stripe", line.k, line.b, line.inlierRatio, allowedDeg, line.isValid});
  if (!trace.holds(kLine, hasLine(line))) return std::nullopt;
  if (!trace.note(kLineShare, line.inlierRatio, minShare, line.isValid)) return std::nullopt;
  return zelFit::TLineFitResult{line.k, line.b, true};
}

std::optional<cv::Point2f> findSeam(const TGapCase& c, bool isTracking, TGap& hole) {
  const TTrace& trace = c.frame.trace;
  const TStageTimer timer(trace, "seam");
  if (!trace.passes(kStripePoints, c.stripePts.size(), kMinFitPoints)) return std::nullopt;
  const auto line = isTracking ? fitTrackedLine(c) : fitFirstLine(c);
  if (!line) return std::nullopt;
  const std::optional<cv::Point2f> seam = locateLineGap(c, *line, hole);
  if (!seam) return std::nullopt;
  trace.addTestedPoint(*seam);
  // Deliberate: a seam in the first row or column counts as not found.
  if (!trace.passes(kSeamColumn, seam->x, 0.0F) || !trace.passes(kSeamRow, seam->y, 0.0F)) return std::nullopt;
  return seam;
}

}  // namespace

TSeam findGapAt(const TFrame& frame, const TStripe& stripe, const TPrevious& previous, TLineHole& hole) {
  const TGapCase gapCase{frame, stripe.points, TGapSettings::of(frame.params)};
  const auto found = findSeam(gapCase, previous.isFound, hole);
  TSeam seam(TPoints(stripe.points, frame.memory));
  seam.isFound = found.has_value();
  if (found) seam.pos = *found;
  return seam;
}

TSeam findGap(const TFrame& frame, const TStripe& stripe, const TPrevious& previous) {
  TLineHole hole;
  return findGapAt(frame, stripe, previous, hole);
}

}  // namespace weld
