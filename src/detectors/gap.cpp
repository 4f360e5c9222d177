#include "detectors/gap.h"

#include "detectors/stripe_front_end.h"
#include "geometry/line_fitting.h"
#include "support/line_math.h"

#include <cmath>
#include <cstdlib>
#include <optional>
#include <utility>

namespace weld {

namespace {

constexpr TCheck kStripePoints = countCheck(TWeldOutcome::tooFewCentres, "stripe points", TRule::atLeast);
constexpr TCheck kLine{TWeldOutcome::noLine, "line through the stripe points"};
constexpr TCheck kLineShare{TWeldOutcome::lineShareTooLow, "share of stripe points on the line", TRule::notBelow,
                            "", "dPara3"};
constexpr TCheck kGap{TWeldOutcome::noGap, "two stripe points on the line"};
constexpr TCheck kGapWidth{TWeldOutcome::gapTooNarrow, "gap", TRule::notBelow, "px", "dPara8"};
constexpr TCheck kSeamColumn{TWeldOutcome::seamOnBorder, "seam column", TRule::above, "px"};
constexpr TCheck kSeamRow{TWeldOutcome::seamOnBorder, "seam row", TRule::above, "px"};

struct TGap {
  int leftX = 0;
  int rightX = 0;
};

int widthOf(const TGap& gap) {
  return std::abs(gap.leftX - gap.rightX);
}

// The widest step between neighbouring points of the line, in whole pixels; the first of equally wide ones.
std::optional<TGap> findWidestGap(const zelFit::TLineFitResult& line, double inlierTolPx,
                                  const std::vector<cv::Point2f>& stripePts) {
  std::optional<TGap> widest;
  std::optional<int> previousX;
  for (const cv::Point2f stripePt : stripePts) {
    const cv::Point p = truncPoint(stripePt);
    if (!(pointLineDistance(line.slope, line.intercept, p.x, p.y) < inlierTolPx)) continue;
    const TGap gap{previousX.value_or(p.x), p.x};
    if (previousX && (!widest || widthOf(gap) > widthOf(*widest))) widest = gap;
    previousX = p.x;
  }
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

std::optional<cv::Point2f> locateLineGap(const zelFit::TLineFitResult& line,
                                         const std::vector<cv::Point2f>& stripePts, const TWeldParams& params,
                                         const TTrace& trace) {
  const double inlierTolPx = params.dPara2;
  const auto minGapPx = static_cast<float>(params.dPara8);
  const std::optional<TGap> gap = findWidestGap(line, inlierTolPx, stripePts);
  if (!trace.holds(kGap, gap.has_value())) return std::nullopt;
  if (!trace.passes(kGapWidth, static_cast<float>(widthOf(*gap)), minGapPx)) return std::nullopt;
  // Deliberate: the row is the line's at the left edge, whatever point of the gap is returned.
  const auto y = static_cast<float>(line.slope * gap->leftX + line.intercept);
  return cv::Point2f{seamX(*gap, params.weldPosType), y};
}

// The line of a tracked stripe, which is trusted.
std::optional<zelFit::TLineFitResult> fitTrackedLine(const std::vector<cv::Point2f>& stripePts,
                                                     const TWeldParams& params, const TTrace& trace,
                                                     TScratch& scratch) {
  const zelFit::TLineFitResult line = fitStripePoints(stripePts, params.dPara4, &scratch);
  if (trace && line.success) {
    const double share = lineShare(line.slope, line.intercept, params.dPara4, toIntPoints(stripePts));
    trace.addLine({"stripe", line.slope, line.intercept, share, {-90.0, 90.0}, true});
  }
  if (!trace.holds(kLine, line.success)) return std::nullopt;
  return line;
}

// The line of a first detection: its angle is bounded, and enough points must lie on it.
std::optional<zelFit::TLineFitResult> fitFirstLine(const std::vector<cv::Point2f>& stripePts,
                                                   const TWeldParams& params, const TTrace& trace,
                                                   TScratch& scratch) {
  const TAngleRange allowedDeg = params.angleRange4;
  const double minShare = params.dPara3;
  const TLent<TLinePara> line =
      fitLineRansac(allowedDeg.min, allowedDeg.max, params.dPara2, minShare, stripePts, &scratch);
  trace.addLine({"stripe", line.k, line.b, line.inlierRatio, allowedDeg, line.isValid});
  if (!trace.holds(kLine, hasLine(line))) return std::nullopt;
  if (!trace.note(kLineShare, line.inlierRatio, minShare, line.isValid)) return std::nullopt;
  return zelFit::TLineFitResult{line.k, line.b, true};
}

std::optional<cv::Point2f> findSeam(const std::vector<cv::Point2f>& stripePts, const TWeldParams& params,
                                    bool isTracking, const TTrace& trace, TScratch& scratch) {
  const TStageTimer timer(trace, "seam");
  if (!trace.passes(kStripePoints, stripePts.size(), kMinFitPoints)) return std::nullopt;
  const auto line = isTracking ? fitTrackedLine(stripePts, params, trace, scratch)
                               : fitFirstLine(stripePts, params, trace, scratch);
  if (!line) return std::nullopt;
  const std::optional<cv::Point2f> seam = locateLineGap(*line, stripePts, params, trace);
  if (!seam) return std::nullopt;
  trace.addTestedPoint(*seam);
  // Deliberate: a seam in the first row or column counts as not found.
  if (!trace.passes(kSeamColumn, seam->x, 0.0F) || !trace.passes(kSeamRow, seam->y, 0.0F)) return std::nullopt;
  return seam;
}

}  // namespace

TWeldLineRes detectGapSeam(TDetectorObject& object, const cv::Mat& image, const TWeldLineRes& prevRes,
                           const cv::Mat& searchMask) {
  const TWeldParams params = object.getWeldParameters();
  TLentList<cv::Point2f> centres = extractStripe(object, image, prevRes, searchMask);
  const auto seam = findSeam(centres, params, prevRes.isFound, object.trace, object.scratch);
  TWeldLineRes result;
  result.stripePts = std::move(centres);
  if (seam) {
    result.isFound = true;
    result.weldPos = *seam;
  }
  return result;
}

}  // namespace weld
