#include "detectors/groove_report.h"

namespace weld {

namespace {

// What an element is called: by its role and by the side of the root that it lies on.
const char* nameOf(const TProfileFit& fit, const TProfileElement& element) {
  constexpr const char* kNames[][2] = {{"left plate", "right plate"},
                                       {"left flank", "right flank"},
                                       {"left flat", "right flat"},
                                       {"left arc", "right arc"}};
  const TMeasuredPoint& root = fit.feature(TFeature::root);
  const TProfileElement& last = fit.elements[fit.elementCount - 1];
  const double rootX = root.isFound ? root.pos.x : 0.5 * (fit.elements[0].left.x + last.right.x);
  const bool isSide = element.role == TElementRole::plate || element.role == TElementRole::flank;
  if (!isSide && element.left.x < rootX && rootX < element.right.x) return "bottom";
  const bool isLeft = 0.5 * (element.left.x + element.right.x) < rootX;
  return kNames[static_cast<std::size_t>(element.role)][isLeft ? 0 : 1];
}

TTracePiece pieceOf(const TProfileFit& fit, const TProfileElement& element) {
  const cv::Point2d d = element.right - element.left;
  TTracePiece piece;
  piece.name = nameOf(fit, element);
  piece.startPt = cv::Point(element.left);
  piece.endPt = cv::Point(element.right);
  piece.slope = d.x != 0.0 ? d.y / d.x : 0.0;
  piece.intercept = element.left.y - piece.slope * element.left.x;
  piece.meanDistPx = element.noisePx;
  piece.maxDistPx = element.noisePx;
  piece.points = static_cast<std::int32_t>(d.x);
  piece.inliers = static_cast<std::int32_t>(d.x * element.inlierShare);
  piece.isFitted = true;
  if (element.kind == TElementKind::arc) {
    piece.centre = element.centre;
    piece.radiusPx = element.radiusPx;
  }
  return piece;
}

}  // namespace

void reportGroove(const TProfileFit& fit, const TTrace& trace) {
  if (!trace) return;
  TTraceAttempt& attempt = trace.attempt();
  attempt.pieces.clear();
  for (std::size_t e = 0; e < fit.elementCount; ++e) attempt.pieces.push_back(pieceOf(fit, fit.elements[e]));
  for (std::size_t i = 0; i < fit.features.size(); ++i) {
    const TMeasuredPoint& p = fit.features[i];
    if (!p.isFound) continue;
    attempt.features.push_back({static_cast<TFeature>(i), cv::Point2f(p.pos), static_cast<float>(p.sigmaPx)});
  }
}

}  // namespace weld
