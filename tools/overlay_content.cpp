// What a frame showed, as points and lines to be drawn.
#include "tools/overlay.h"

#include "tools/trace_json.h"

#include <algorithm>
#include <cmath>

namespace tool {
namespace {

constexpr double kArcStepPx = 4.0;  // between the corners of an arc as drawn
constexpr double kMostSteps = 1000.0;

// An arc goes the shorter way around its centre.
TPolyline polylineOf(const TTracePiece& piece) {
  if (!(piece.radiusPx > 0.0)) {
    return {piece.startPt, piece.endPt};
  }
  const cv::Point2d start = cv::Point2d(piece.startPt) - piece.centre;
  const cv::Point2d end = cv::Point2d(piece.endPt) - piece.centre;
  const double from = std::atan2(start.y, start.x);
  const double turn = std::remainder(std::atan2(end.y, end.x) - from, 2.0 * CV_PI);
  const double steps = std::min(kMostSteps, std::ceil(std::abs(turn) * piece.radiusPx / kArcStepPx) + 1.0);
  TPolyline points;
  for (int i = 0; i <= static_cast<int>(steps); ++i) {
    const double angle = from + turn * i / steps;
    points.emplace_back(piece.centre + piece.radiusPx * cv::Point2d(std::cos(angle), std::sin(angle)));
  }
  return points;
}

std::vector<TMark> marksOf(const std::vector<TFeaturePoint>& points) {
  std::vector<TMark> marks;
  for (const TFeaturePoint& point : points) {
    marks.push_back({featureText(point.feature), point.pos});
  }
  return marks;
}

std::vector<TSegment> linesAcross(const std::vector<TTraceLine>& lines, int imageWidth) {
  std::vector<TSegment> segments;
  for (const TTraceLine& line : lines) {
    const auto at = [&](double x) { return cv::Point2f(cv::Point2d(x, line.slope * x + line.intercept)); };
    if (line.isValid) {
      segments.emplace_back(at(0.0), at(imageWidth - 1.0));
    }
  }
  return segments;
}

}  // namespace

std::optional<cv::Point2d> seamOf(const TWeldParams& params, const TTrackedSeam& seam) {
  const TWeldJoint* const joint = findWeldJoint(params.weldType);  // null: of one's own
  const bool hasSeamPoint = seam.state != TSeamState::lost && (joint == nullptr || !joint->features.empty());
  return hasSeamPoint ? std::make_optional(cv::Point2d(seam.weldPos)) : std::nullopt;
}

TOverlay overlayOf(const TWeldParams& params, const TTrackedSeam& seam, const TFrameTrace& trace, int imageWidth) {
  TOverlay overlay;
  overlay.state = seam.state;
  overlay.seam = seamOf(params, seam);
  overlay.centres = seam.line.stripePts;
  overlay.marks = marksOf(seam.measurement.points);
  const TTraceAttempt* const attempt = decisiveAttempt(trace);
  if (attempt == nullptr) {
    return overlay;
  }
  overlay.regions.assign(attempt->regions.begin(), attempt->regions.end());
  overlay.rejected.assign(attempt->rejected.begin(), attempt->rejected.end());
  overlay.centres = attempt->centres;
  overlay.lines = linesAcross(attempt->lines, imageWidth);
  for (const TTracePiece& piece : attempt->pieces) {
    overlay.pieces.push_back(polylineOf(piece));
  }
  if (overlay.marks.empty()) {
    overlay.marks = marksOf(attempt->features);
  }
  overlay.testedPts = attempt->testedPoints;
  return overlay;
}

TOverlay scaled(TOverlay overlay, float factor) {
  // Pixel centres are at whole numbers, so the image's corner is at (-0.5, -0.5).
  const cv::Point2f half(0.5F, 0.5F);
  const auto scalePoint = [&](cv::Point2f point) { return (point + half) * factor - half; };
  for (auto* const points : {&overlay.rejected, &overlay.centres, &overlay.testedPts}) {
    std::transform(points->begin(), points->end(), points->begin(), scalePoint);
  }
  for (TSegment& line : overlay.lines) {
    line = {scalePoint(line.first), scalePoint(line.second)};
  }
  for (TPolyline& piece : overlay.pieces) {
    std::transform(piece.begin(), piece.end(), piece.begin(), scalePoint);
  }
  for (TMark& mark : overlay.marks) {
    mark.pos = scalePoint(mark.pos);
  }
  for (cv::Rect2f& region : overlay.regions) {
    region = {scalePoint(region.tl()), region.size() * factor};
  }
  for (auto* const point : {&overlay.seam, &overlay.trueSeam}) {
    if (*point) {
      *point = scalePoint(**point);
    }
  }
  return overlay;
}

}  // namespace tool
