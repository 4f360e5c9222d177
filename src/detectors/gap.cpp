#include "detectors/gap.h"

#include "detectors/stripe_front_end.h"
#include "geometry/line_fitting.h"

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

// The widest step between neighbouring points; the first of equally wide ones.
std::optional<TGap> findWidestGap(const std::vector<cv::Point>& points) {
  if (points.size() < 2) return std::nullopt;
  TGap widest{points[0].x, points[0].x};
  for (std::size_t i = 0; i + 1 < points.size(); ++i) {
    const TGap gap{points[i].x, points[i + 1].x};
    if (std::abs(gap.rightX - gap.leftX) > std::abs(widest.rightX - widest.leftX)) widest = gap;
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

std::optional<cv::Point2f> locateLineGap(const TLinePara& line, const std::vector<cv::Point2f>& stripePts,
                                         const TWeldParams& params) {
  const double inlierTolPx = params.dPara2;
  const auto minGapPx = static_cast<float>(params.dPara8);
  if (!line.isValid) return std::nullopt;
  const std::optional<TGap> gap =
      findWidestGap(selectLineInliers(line.k, line.b, inlierTolPx, toIntPoints(stripePts)));
  if (!gap || minGapPx > static_cast<float>(std::abs(gap->leftX - gap->rightX))) return std::nullopt;
  // Deliberate: the row is the line's at the left edge, whatever point of the gap is returned.
  const auto y = static_cast<float>(line.k * gap->leftX + line.b);
  return cv::Point2f{seamX(*gap, params.weldPosType), y};
}

// Tracking trusts the line that the points give; a first detection bounds its angle.
TLinePara fitStripeLine(const std::vector<cv::Point2f>& stripePts, const TWeldParams& params, bool isTracking) {
  if (isTracking) return fitLine(stripePts, params.dPara4);
  return fitLineRansac(params.angleRange4.min, params.angleRange4.max, params.dPara2, params.dPara3, stripePts);
}

}  // namespace

TWeldLineRes detectGapSeam(TDetectorObject& object, const cv::Mat& grey, const TWeldLineRes& prevRes,
                           const cv::Mat& searchMask) {
  const TWeldParams params = object.getWeldParameters();
  TWeldLineRes result;
  result.stripePts = extractStripe(object, grey, prevRes, searchMask).centres;
  const TLinePara line = fitStripeLine(result.stripePts, params, prevRes.isFound);
  const std::optional<cv::Point2f> seam = locateLineGap(line, result.stripePts, params);
  // Deliberate: a seam in the first row or column counts as not found.
  if (seam && seam->x > 0.0F && seam->y > 0.0F) {
    result.isFound = true;
    result.weldPos = *seam;
  }
  return result;
}

}  // namespace weld
