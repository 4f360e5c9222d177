#include "api/own_rules.h"

#include "detectors/corner.h"
#include "stripe/longest_piece.h"
#include "stripe/turn.h"
#include "support/arc_tangent.h"
#include "support/line_math.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace weld {

namespace {

constexpr float kNearPx = 40.0F;
constexpr float kFarPx = 260.0F;
constexpr double kLeastTurnShare = 0.55;  // a curve bends between its flanks, a corner at their crossing
constexpr double kLeastTurnDeg = 5.0;     // less is noise over so few columns

constexpr TCheck kBend{{37, TWeldOutcome::fitTooWeak, "corner", "the flanks cross where the stripe does not bend"},
                       "bend of the stripe at the corner over that of its flanks",
                       TRule::atLeast};

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
