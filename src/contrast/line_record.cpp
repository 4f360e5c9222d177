#include "contrast/line_record.h"

#include "support/arc_tangent.h"

#include <algorithm>
#include <cmath>

namespace weld {

namespace {

TSeamPolarity polarityOf(TTrait trait) {
  if (isEdge(trait)) return TSeamPolarity::edge;
  return trait == TTrait::dark ? TSeamPolarity::dark : TSeamPolarity::bright;
}

double chordDeg(cv::Point2f from, cv::Point2f to) {
  const cv::Point2d d = cv::Point2d(to) - cv::Point2d(from);
  const double deg = arcTangent2(d.y, d.x) * kDegPerRad;
  return deg > 90.0 ? deg - 180.0 : deg <= -90.0 ? deg + 180.0 : deg;
}

// Left to right, or top to bottom where it is steeper than half a right angle.
void putInOrder(TContourCenterLine& line) {
  const bool isSteep = std::abs(line.directionDeg) > 45.0F;
  const cv::Point2f step = line.pts.back() - line.pts.front();
  if ((isSteep ? step.y : step.x) >= 0.0F) return;
  std::reverse(line.pts.begin(), line.pts.end());
  std::reverse(line.widthsPx.begin(), line.widthsPx.end());
  std::reverse(line.measured.begin(), line.measured.end());
}

}  // namespace

cv::Point2f toImage(double along, double across, bool isFlat) {
  return isFlat ? cv::Point2f(static_cast<float>(along), static_cast<float>(across))
                : cv::Point2f(static_cast<float>(across), static_cast<float>(along));
}

TContourCenterLine toRecord(const TRefinedLine& refined, bool isFlat, TTrait trait) {
  TContourCenterLine line;
  const int last = refined.size() - 1;
  line.pts.reserve(refined.across.size());
  line.widthsPx.reserve(refined.across.size());
  for (int i = 0; i <= last; ++i) {
    line.pts.push_back(
        toImage(refined.firstAlong + i * kStationPx, static_cast<double>(refined.across[i]), isFlat));
  }
  line.measured.assign(refined.measured.begin(), refined.measured.end());
  const float slope = (refined.across[last] - refined.across[0]) / static_cast<float>(last * kStationPx);
  const float cosine = 1.0F / std::sqrt(1.0F + slope * slope);
  for (const float width : refined.widthsPx) line.widthsPx.push_back(width * cosine);
  line.widthPx = isEdge(trait) ? 0.0F : refined.edges.width() * cosine;
  // The right or lower side of a view across is the right or lower one of the image.
  line.contrast = refined.edges.contrast;
  line.directionDeg = static_cast<float>(chordDeg(line.pts.front(), line.pts.back()));
  line.polarity = polarityOf(trait);
  putInOrder(line);
  return line;
}

}  // namespace weld
