#include "api/own_rules.h"

#include "detectors/corner.h"
#include "stripe/longest_piece.h"
#include "support/arc_tangent.h"
#include "support/line_math.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace weld {

namespace {

constexpr float kSkippedPx = 4.0F;  // beside the corner, where flare rounds it
constexpr float kNearPx = 40.0F;
constexpr float kFarPx = 260.0F;
constexpr int kLeastPoints = 10;          // on either side; with fewer the corner lies in a gap
constexpr double kLeastTurnShare = 0.55;  // a curve bends between its flanks, a corner at their crossing
constexpr double kLeastTurnDeg = 5.0;     // less is noise over so few columns

constexpr TCheck kBend{{37, TWeldOutcome::fitTooWeak, "corner", "the flanks cross where the stripe does not bend"},
                       "bend of the stripe at the corner over that of its flanks",
                       TRule::atLeast};

// Angle of the centres in some columns, least squares, degrees; none of a few.
std::optional<double> angleBetween(TPointView points, float fromX, float toX) {
  double n = 0.0;
  cv::Point2d sum;
  for (const cv::Point2f p : points) {
    if (p.x < fromX || p.x > toX) continue;
    sum += cv::Point2d(p);
    n += 1.0;
  }
  if (n < kLeastPoints) return std::nullopt;
  double xx = 0.0;
  double xy = 0.0;
  for (const cv::Point2f p : points) {
    if (p.x < fromX || p.x > toX) continue;
    const cv::Point2d d = cv::Point2d(p) - sum / n;
    xx += d.x * d.x;
    xy += d.x * d.y;
  }
  return slopeToDeg(xy / guardDivisor(xx));
}

// By how much the stripe turns at a column, from columns so far away, degrees.
std::optional<double> turnAt(TPointView points, float x, float reachPx) {
  const auto left = angleBetween(points, x - reachPx, x - kSkippedPx);
  const auto right = angleBetween(points, x + kSkippedPx, x + reachPx);
  if (!left || !right) return std::nullopt;
  return std::abs(*right - *left);
}

// The flanks touch: what lies apart from the longest piece of the stripe, on a table or another laser's, is
// neither.
TStripe longestOf(const TFrame& frame, const TStripe& stripe) {
  const TPointView piece = longestPiece(stripe.points);
  TStripe part(frame.memory);
  part.points.assign(piece.begin(), piece.end());
  part.sources.assign(piece.size(), {});
  part.status.assign(stripe.status.begin(), stripe.status.end());
  part.widthPx = stripe.widthPx;
  return part;
}

constexpr TCheck kTurn{{37, TWeldOutcome::fitTooWeak, "corner", "the flanks cross where the stripe does not bend"},
                       "bend of the stripe at the corner",
                       TRule::atLeast,
                       "deg"};

bool bends(const TFrame& frame, TPointView points, float x) {
  const auto near = turnAt(points, x, kNearPx);
  const auto far = turnAt(points, x, kFarPx);
  return !near || !far ||
         (frame.trace.passes(kBend, *near / std::max(*far, 1.0), kLeastTurnShare) &&
          frame.trace.passes(kTurn, *near, kLeastTurnDeg));
}

}  // namespace

TSeam findOwnCorner(const TFrame& frame, const TStripe& stripe, const TPrevious& previous) {
  TSeam seam = findCorner(frame, stripe, previous);
  if (!seam.isFound) seam = findCorner(frame.inWay("longest piece"), longestOf(frame, stripe), previous);
  if (!seam.isFound) return seam;
  if (bends(frame, stripe.points, seam.pos.x)) return seam;
  return TSeam(std::move(seam.stripePts));
}

}  // namespace weld
