#include "api/own_rules.h"

#include "detectors/corner.h"
#include "profile/flares.h"
#include "stripe/light_middle.h"
#include "stripe/longest_piece.h"
#include "stripe/stripe_curve.h"
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
constexpr double kLeastPieceShare = 0.2;  // of the image's columns, of a piece that is not the longest

constexpr double kFlankReachPx = 8.0;  // of a bowed flank's centres from its line
constexpr float kBowReachPx = 640.0F;  // columns beside a corner that tell its flanks,
constexpr float kRoundPx = 4.0F;       // but for these, where flare rounds it
constexpr int kSteps = 4;
constexpr double kFineSigmaPx = 0.15;  // of a crossing that needs no more centres
constexpr double kMostMovePx = 12.0;

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
// neither. The table's may be the longer one.
//   on  becomes the piece that shows the corner
TSeam findOnPiece(const TFrame& frame, const TStripe& stripe, const TPrevious& previous, TPointView& on) {
  const TPointView points = stripe.points;
  const TPointView longest = longestPiece(points);
  TSeam seam = findCorner(frame.inWay("longest piece"), partOf(frame, stripe, longest), previous);
  if (seam.isFound) {
    on = longest;
    return seam;
  }
  const auto isBefore = [&](cv::Point2f p) { return p.x < longest.front().x; };
  const auto first = static_cast<std::size_t>(std::count_if(points.begin(), points.end(), isBefore));
  const std::size_t end = first + longest.size();
  const TPointView left = longestPiece(points.part(0, first));
  const TPointView right = longestPiece(points.part(end, points.size() - end));
  const TPointView second = left.size() < right.size() ? right : left;
  if (static_cast<double>(second.size()) < kLeastPieceShare * frame.image.cols) return seam;
  seam = findCorner(frame.inWay("second piece"), partOf(frame, stripe, second), previous);
  if (seam.isFound) on = second;
  return seam;
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

// The centres of a flank between two columns.
TPoints flankBetween(const TFrame& frame, TPointView points, const TSlopeLine& flank, float fromX, float toX) {
  const TPointView between = centresIn(points, {fromX, toX});
  TPoints on(frame.memory);
  on.reserve(between.size());
  std::copy_if(between.begin(), between.end(), std::back_inserter(on), [&](cv::Point2f p) {
    return std::abs(flank.k * static_cast<double>(p.x) + flank.b - static_cast<double>(p.y)) <= kFlankReachPx;
  });
  return on;
}

// Where the flanks cross, with the bow of the flanks, and how far that may lie off along y.
struct TCrossing {
  cv::Point2d pos;
  double sigmaPx = 0.0;
};

//   step  of the centres every so many are looked at
std::optional<TCrossing> crossingOf(const TFrame& frame, TPointView leftFlank, TPointView rightFlank,
                                    double originX, std::size_t step) {
  const auto left = fitStripeCurve(onLight(frame, leftFlank, step), originX, frame.memory);
  const auto right = fitStripeCurve(onLight(frame, rightFlank, step), originX, frame.memory);
  if (!left || !right) return std::nullopt;
  double x = originX;
  for (int i = 0; i < kSteps; ++i)
    x -= (right->rowAt(x) - left->rowAt(x)) / guardDivisor(right->slopeAt(x) - left->slopeAt(x));
  if (!(std::abs(x - originX) <= kMostMovePx)) return std::nullopt;
  const double leftSigma = left->sigmaAtOrigin();
  const double rightSigma = right->sigmaAtOrigin();
  return TCrossing{{x, 0.5 * (left->rowAt(x) + right->rowAt(x))},
                   std::sqrt(leftSigma * leftSigma + rightSigma * rightSigma)};
}

// The crossing of the flanks once more, by centres to a fraction of a row. Neighbours scatter nearly as one; where
// they scatter much, all of them count.
void refineCrossing(const TFrame& frame, TPointView points, TSeam& seam) {
  const float x0 = seam.pos.x;
  const auto originX = static_cast<double>(x0);
  const TPoints left = flankBetween(frame, points, {seam.auxVal1, seam.auxVal2}, x0 - kBowReachPx, x0 - kRoundPx);
  const TPoints right = flankBetween(frame, points, {seam.auxVal3, seam.auxVal4}, x0 + kRoundPx, x0 + kBowReachPx);
  std::optional<TCrossing> crossing = crossingOf(frame, left, right, originX, 2);
  if (!crossing || crossing->sigmaPx > kFineSigmaPx) crossing = crossingOf(frame, left, right, originX, 1);
  if (!crossing) return;
  seam.pos = cv::Point2f(crossing->pos);
  seam.flankSigmaPx = crossing->sigmaPx;
}

}  // namespace

TSeam findOwnCorner(const TFrame& frame, const TStripe& stripe, const TPrevious& previous) {
  TSeam seam = findCorner(frame, stripe, previous);
  TPointView on = stripe.points;
  if (!seam.isFound) seam = findOnPiece(frame, stripe, previous, on);
  if (!seam.isFound) {
    const std::optional<TStripe> whole = bridged(frame, stripe);
    if (whole) seam = findCorner(frame.inWay("over short holes"), *whole, previous);
  }
  if (!seam.isFound) return seam;
  const std::optional<TStripe> rest = withoutFlares(frame, stripe, findFlares(frame, stripe.points));
  const TPointView clear = rest ? rest->points : stripe.points;
  if (!bends(frame, centresIn(clear, {on.front().x, on.back().x}), seam.pos.x))
    return TSeam(std::move(seam.stripePts));
  refineCrossing(frame, clear, seam);
  return seam;
}

}  // namespace weld
