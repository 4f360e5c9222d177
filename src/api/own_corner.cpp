#include "api/own_rules.h"

#include "detectors/corner.h"
#include "stripe/longest_piece.h"
#include "stripe/turn.h"
#include "support/arc_tangent.h"
#include "support/column_status.h"
#include "support/line_math.h"
#include "zelWeldSettings.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace weld {

namespace {

constexpr float kNearPx = 40.0F;
constexpr float kFarPx = 260.0F;
constexpr double kLeastTurnShare = 0.55;  // a curve bends between its flanks, a corner at their crossing
constexpr double kLeastTurnDeg = 5.0;     // less is noise over so few columns
constexpr int kMostBridged = 27;          // columns from a centre to the next

constexpr TCheck kBend{{37, TWeldOutcome::fitTooWeak, "corner", "the flanks cross where the stripe does not bend"},
                       "bend of the stripe at the corner over that of its flanks",
                       TRule::atLeast};

TStripe partOf(const TFrame& frame, const TStripe& stripe, TPointView piece) {
  TStripe part(frame.memory);
  part.points.assign(piece.begin(), piece.end());
  part.sources.assign(piece.size(), {});
  part.status.assign(stripe.status.begin(), stripe.status.end());
  part.widthPx = stripe.widthPx;
  return part;
}

// The flanks touch: what lies apart from the longest piece of the stripe, on a table or another laser's, is
// neither.
TStripe longestOf(const TFrame& frame, const TStripe& stripe) {
  return partOf(frame, stripe, longestPiece(stripe.points));
}

// Flanks tell where they cross though the stripe is lost for a while: the columns of short holes count as seen,
// unless the settings are stricter than usual.
std::optional<TStripe> bridged(const TFrame& frame, const TStripe& stripe) {
  const TCornerSettings usual;
  const TCornerSettings asked = TCornerSettings::of(frame.params);
  const bool isStrict =
      asked.maxBreakColumns < usual.maxBreakColumns || asked.maxMissingColumns < usual.maxMissingColumns;
  if (isStrict) return std::nullopt;
  TStripe whole = partOf(frame, stripe, stripe.points);
  auto hole = whole.status.begin();
  for (auto column = hole; column != whole.status.end(); ++column) {
    if (column->status == kEdgeMissing) continue;
    const bool isShort = column - hole < kMostBridged;
    if (isShort) std::for_each(hole, column, [](TWeldPointStatus& lost) { lost.status = kNoPair; });
    hole = column + 1;
  }
  return whole;
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
          frame.trace.passes(kTurn, std::min(*near, *far), kLeastTurnDeg));
}

}  // namespace

TSeam findOwnCorner(const TFrame& frame, const TStripe& stripe, const TPrevious& previous) {
  TSeam seam = findCorner(frame, stripe, previous);
  if (!seam.isFound) seam = findCorner(frame.inWay("longest piece"), longestOf(frame, stripe), previous);
  if (!seam.isFound) {
    const std::optional<TStripe> whole = bridged(frame, stripe);
    if (whole) seam = findCorner(frame.inWay("over short holes"), *whole, previous);
  }
  if (!seam.isFound) return seam;
  if (bends(frame, stripe.points, seam.pos.x)) return seam;
  return TSeam(std::move(seam.stripePts));
}

}  // namespace weld
