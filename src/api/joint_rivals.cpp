#include "api/joint_rivals.h"

#include "api/joints.h"
#include "stripe/longest_piece.h"

#include <algorithm>
#include <cmath>

namespace weld {

namespace {

constexpr double kSamePlacePx = 8.0;
constexpr double kClearlyBetter = 40.0;  // gain over a plate; a stripe's own joint has 50 to 300

const char* looksLike(TWeldType type) {
  return findJoint(type)->rules.looksLike;
}

bool isGroove(TWeldType type) {
  return type >= TWeldType::uGroove && type <= TWeldType::flareBevel;
}

// Between the points of a profile, which may lie on either side of a flare.
bool isAt(const TProfileFit& fit, const TSeam& seam) {
  double left = HUGE_VAL;
  double right = -HUGE_VAL;
  for (const TMeasuredPoint& p : fit.features) {
    if (!p.isFound) continue;
    left = std::min(left, p.pos.x);
    right = std::max(right, p.pos.x);
  }
  const auto x = static_cast<double>(seam.pos.x);
  const double nearPx = kSamePlacePx + seam.hiddenPx;
  return x >= left - nearPx && x <= right + nearPx;
}

const char* bestUnless(TView<TRankedJoint> ranked, bool (*belongs)(TWeldType)) {
  if (ranked.empty() || belongs(ranked.front().weldType)) return nullptr;
  return looksLike(ranked.front().weldType);
}

}  // namespace

const char* rivalOfGap(TView<TRankedJoint> ranked, const TSeam& /*seam*/) {
  return bestUnless(ranked, [](TWeldType t) { return t == TWeldType::buttGap; });
}

const char* rivalOfLap(TView<TRankedJoint> ranked, const TSeam& seam) {
  if (ranked.empty()) return "a plate or a curve explains the stripe as well";
  const char* const rival = bestUnless(ranked, [](TWeldType t) { return t == TWeldType::lap; });
  return rival != nullptr || isAt(ranked.front().fit, seam) ? rival : "the step of the stripe lies elsewhere";
}

const char* rivalOfCorner(TView<TRankedJoint> ranked, const TSeam& seam) {
  const bool isCorner = !ranked.empty() && ranked.front().weldType == TWeldType::corner;
  if (isCorner) return isAt(ranked.front().fit, seam) ? nullptr : "the bend of the stripe lies elsewhere";
  return bestUnless(ranked, isGroove);
}

const char* rivalOfGroove(TView<TRankedJoint> ranked, const TSeam& /*seam*/) {
  const auto* const groove =
      std::find_if(ranked.begin(), ranked.end(), [](const TRankedJoint& r) { return isGroove(r.weldType); });
  const double score = groove != ranked.end() ? groove->fit.score : 0.0;
  const bool hasRival = !ranked.empty() && ranked.front().fit.score > score + kClearlyBetter;
  return hasRival ? looksLike(ranked.front().weldType) : nullptr;
}

bool isShownBy(const TFrame& frame, const TSeam& seam, const TStripe& stripe, TRivalTest rivalOf) {
  const TStageTimer timer(frame.trace, "other joints");
  const TPointView points = seam.isFlush ? longestPiece(stripe.points) : TPointView(stripe.points);
  const TView<TCentreSource> sources =
      TView<TCentreSource>(stripe.sources)
          .part(static_cast<std::size_t>(points.begin() - stripe.points.data()), points.size());
  const TStripeProfile profile(points, sources, stripe.widthPx, frame.memory);
  const TList<TRankedJoint> ranked = rankProfiles(profile, {}, frame.memory);
  const char* const rival = rivalOf(ranked, seam);
  const TCheck check{{54, TWeldOutcome::elementMissing, "joint", rival != nullptr ? rival : ""},
                     "joint that explains the stripe best"};
  return frame.trace.atGate().holds(check, rival == nullptr);
}

}  // namespace weld
