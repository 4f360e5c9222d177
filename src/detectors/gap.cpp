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
                                         const std::vector<cv::Point2f>& stripePts, const TWeldParams& params) {
  const double inlierTolPx = params.dPara2;
  const auto minGapPx = static_cast<float>(params.dPara8);
  if (!line.success) return std::nullopt;
  const std::optional<TGap> gap = findWidestGap(line, inlierTolPx, stripePts);
  if (!gap || minGapPx > static_cast<float>(widthOf(*gap))) return std::nullopt;
  // Deliberate: the row is the line's at the left edge, whatever point of the gap is returned.
  const auto y = static_cast<float>(line.slope * gap->leftX + line.intercept);
  return cv::Point2f{seamX(*gap, params.weldPosType), y};
}

// Tracking trusts the line that the points give; a first detection bounds its angle.
zelFit::TLineFitResult fitStripeLine(const std::vector<cv::Point2f>& stripePts, const TWeldParams& params,
                                     bool isTracking) {
  if (isTracking) return fitStripePoints(stripePts, params.dPara4);
  const TLinePara line =
      fitLineRansac(params.angleRange4.min, params.angleRange4.max, params.dPara2, params.dPara3, stripePts);
  return {line.k, line.b, line.isValid};
}

}  // namespace

TWeldLineRes detectGapSeam(TDetectorObject& object, const cv::Mat& image, const TWeldLineRes& prevRes,
                           const cv::Mat& searchMask) {
  const TWeldParams params = object.getWeldParameters();
  TWeldLineRes result;
  result.stripePts = extractStripe(object, image, prevRes, searchMask).centres;
  const zelFit::TLineFitResult line = fitStripeLine(result.stripePts, params, prevRes.isFound);
  const std::optional<cv::Point2f> seam = locateLineGap(line, result.stripePts, params);
  // Deliberate: a seam in the first row or column counts as not found.
  if (seam && seam->x > 0.0F && seam->y > 0.0F) {
    result.isFound = true;
    result.weldPos = *seam;
  }
  return result;
}

}  // namespace weld
