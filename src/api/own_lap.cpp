#include "api/own_rules.h"

#include "api/known_width.h"
#include "detectors/lap.h"
#include "profile/flare_end.h"
#include "support/line_math.h"

#include <algorithm>
#include <cmath>

namespace weld {

namespace {

constexpr double kShadowPx = 4.0;  // columns between the two ends, about: the upper piece hides the lower one's
constexpr double kMostShadowPx = 20.0;
constexpr double kMostBackPx = 6.0;
constexpr double kMostMovePx = 8.0;  // of an end, from frame to frame
constexpr TCheck kSideBySide{
    {26, TWeldOutcome::fitTooWeak, "end of a piece", "a flare hides an end, and the other one lies elsewhere"},
    "ends side by side at a flare"};
constexpr TCheck kKnown{
    {28, TWeldOutcome::changedTooMuch, "end of a piece", "both ends lie elsewhere than before"},
    "ends as far apart as before"};
constexpr int kOverlapPx = 20;  // by which a piece may reach back beside the other one

// On a tie the right end is the upper and the lower one.
cv::Point2d seamPoint(const TSeamEnds& ends, TWeldPosType pos) {
  switch (pos) {
    case TWeldPosType::upper:
      return ends.right.y > ends.left.y ? ends.left : ends.right;
    case TWeldPosType::lower:
      return ends.left.y > ends.right.y ? ends.left : ends.right;
    default:
      return 0.5 * (ends.left + ends.right);
  }
}

// Where a piece ends on its line.
struct TLapEnd {
  TSlopeLine line;
  double x = 0.0;
  bool isSharp = false;

  cv::Point2d pos() const { return {x, line.k * x + line.b}; }
};

// By the light; under a flare next to the end of the other piece, or, where that is hidden too, in its middle.
TLapEnd endOf(const TFrame& frame, const TStripe& stripe, const TEndOfPiece& end, TSeam& seam) {
  const TSlopeLine line = lineAtEnd(frame, end);
  const std::optional<TFlare> flare = flareBeyond(frame, end, line);
  if (!flare) {
    const TLitEnd lit = endOfLight(frame, end, line);
    return {line, lit.pos.x, lit.isSharp};
  }
  seam.hiddenPx = std::max(seam.hiddenPx, static_cast<double>(flare->lastX - flare->firstX));
  const auto told = endUnderFlare(frame, *flare, stripe.points, end);
  seam.isVague = seam.isVague || !told;
  return {line, told.value_or(flare->middleX)};
}

// Of ends that reach past one another the one that fades out is other light: it lies next to the sharp one, unless
// the frames before had that elsewhere.
void parkBesideSharp(TLapEnd& left, TLapEnd& right, const std::optional<TEndColumns>& before) {
  if (right.x - left.x >= -kMostBackPx || left.isSharp == right.isSharp) return;
  if (before && std::abs(right.isSharp ? right.x - before->right : left.x - before->left) > kMostMovePx) return;
  const double apartPx = before ? before->right - before->left : kShadowPx;
  if (right.isSharp) {
    left.x = right.x - apartPx;
  } else {
    right.x = left.x + apartPx;
  }
}

TSeam findWithFineEnds(const TFrame& frame, const TStripe& stripe, const std::optional<TEndColumns>& before) {
  const TList<TFlare> flares = findFlares(frame, stripe.points);
  const std::optional<TStripe> rest = withoutFlares(frame, stripe, flares);
  std::optional<TLapPieces> pieces;
  TSeam seam = findLapBetween(frame, rest ? *rest : stripe, pieces);
  if (!seam.isFound) return seam;
  const TPointView left = pieces->left.fitPts;
  const TPointView right = pieces->right.fitPts;
  if (left.empty() || right.empty()) return seam;
  // Something brighter beside the stripe may have taken the centres of a piece as far as the other one.
  const int betweenPx = roundToInt(static_cast<double>(right.front().x - left.back().x));
  const int freePx = std::max(betweenPx, 0);
  const int reachPx = freePx + kOverlapPx;
  TLapEnd leftEnd = endOf(frame, stripe, {left, true, stripe.widthPx, reachPx, freePx, kShadowPx}, seam);
  TLapEnd rightEnd = endOf(frame, stripe, {right, false, stripe.widthPx, reachPx, freePx, kShadowPx}, seam);
  parkBesideSharp(leftEnd, rightEnd, before);
  seam.ends = TSeamEnds{leftEnd.pos(), rightEnd.pos()};
  const double shadowPx = seam.ends->right.x - seam.ends->left.x;
  const bool areApart = shadowPx < -kMostBackPx || shadowPx > kMostShadowPx;
  if (!frame.trace.holds(kSideBySide, seam.hiddenPx == 0.0 || !areApart)) return TSeam(std::move(seam.stripePts));
  return seam;
}

}  // namespace

TSeam findOwnLap(const TFrame& frame, const TStripe& stripe, const TPrevious& previous) {
  const auto before = previous.places != nullptr ? knownEnds(*previous.places) : std::nullopt;
  TSeam seam = findWithFineEnds(frame, stripe, before);
  if (previous.places != nullptr) seam.places = *previous.places;
  if (!seam.ends) {
    seam.places = follow(seam.places, {});
    return seam;
  }
  const TEndColumns known = keepWidth({seam.ends->left.x, seam.ends->right.x}, seam.places);
  seam.isFound = frame.trace.holds(kKnown, known.areKnown);
  seam.ends->left.x = known.left;
  seam.ends->right.x = known.right;
  seam.pos = cv::Point2f(seamPoint(*seam.ends, frame.params.weldPosType));
  return seam;
}

}  // namespace weld
