#include "api/attempt.h"

#include "api/advice.h"
#include "api/seam_gate.h"
#include "stripe/edge_pairs/edge_pairs.h"
#include "stripe/open_parts.h"
#include "stripe/whole_stripe.h"
#include "support/column_status.h"
#include "trace/trace_conclusion.h"

#include <utility>

namespace weld {

namespace {

constexpr int kLeastHole = 12;               // columns, of a joint that is fitted over all of the stripe,
constexpr int kLeastSearchedHole = 2;        // and that has no stripe to follow
constexpr std::size_t kMinRidgePoints = 10;  // of a second chance

constexpr TCheck kSearchRegion{
    {1, TWeldOutcome::noStripe, "stripe", "no search region: the previous stripe spans too few columns"},
    "search region"};
constexpr TCheck kRidgePoints =
    countCheck({5, TWeldOutcome::noStripe, "stripe", "too few ridge points"}, "ridge points", TRule::atLeast);

// A stripe, and how many of its columns edge pairs alone would give.
struct TExtracted {
  TStripe stripe;
  int edgePairColumns = 0;
};

void reportStripe(const TTrace& trace, const TLook& look, const TStripe& stripe) {
  if (!trace) return;
  TTraceAttempt& attempt = trace.attempt();
  attempt.regions.assign(look.regions.begin(), look.regions.end());
  attempt.centres.assign(stripe.points.begin(), stripe.points.end());
  attempt.columnsScanned = static_cast<std::int32_t>(stripe.status.size());
  for (const TWeldPointStatus& column : stripe.status) {
    attempt.columnsWithCentre += column.status == kCentreFound ? 1 : 0;
    attempt.columnsWithoutEdge += column.status == kEdgeMissing ? 1 : 0;
    attempt.columnsWithoutPair += column.status == kNoPair ? 1 : 0;
  }
}

// Lines and arcs lie over small holes of a level stripe; next to a gap another hole is its rival, and the gap
// itself is asked about in every frame.
TStripe fillOpenParts(const TQuest& quest, const TLook& look, const TExtraction& extraction, TStripe edgePairs) {
  const TFrame& frame = quest.frame;
  const int leastHole = extraction.before.empty() ? kLeastSearchedHole : kLeastHole;
  const TOpenRule rule = quest.joint.rules.isLocal ? TOpenRule{1, extraction.near, {}}
                                                   : TOpenRule{leastHole, extraction.near, extraction.before};
  const TList<cv::Rect> parts = findOpenParts(edgePairs, look.regions, frame.image.size(), rule);
  const TStripe ridges = extractRidgesBeside(frame, look.regions, parts, edgePairs.points);
  return fillUp(frame, std::move(edgePairs), ridges);
}

TExtracted extractAs(const TQuest& quest, const TLook& look, const TExtraction& extraction) {
  const TFrame& frame = quest.frame;
  if (extraction.kind == TStripeExtraction::ridge) return {extractRidges(frame, look.regions, quest.ridges)};
  TStripe edgePairs = extractEdgePairs(frame, look.regions);
  const int columns = static_cast<int>(edgePairs.points.size());
  const bool asksRidges = extraction.kind == TStripeExtraction::automatic && columns >= extraction.leastColumns &&
                          leavesStripeUnexplained(edgePairs, extraction.minColumns, extraction.near);
  if (!asksRidges) return {std::move(edgePairs), columns};
  if (columns >= extraction.fillsFrom)
    return {fillOpenParts(quest, look, extraction, std::move(edgePairs)), columns};
  return {fuse(frame, std::move(edgePairs), extractRidges(frame, look.regions, quest.ridges)), columns};
}

TExtracted extract(const TQuest& quest, const TLook& look, const TExtraction& extraction) {
  const TTrace& trace = quest.frame.trace;
  const TStageTimer timer(trace, "stripe");
  const bool usesRidges = extraction.kind == TStripeExtraction::ridge;
  trace.beginAttempt(look.path, usesRidges ? TStripeExtraction::ridge : TStripeExtraction::edgePairs);
  trace.holds(kSearchRegion, !look.regions.empty());
  TExtracted extracted = extractAs(quest, look, extraction);
  reportStripe(trace, look, extracted.stripe);
  return extracted;
}

// A seam at an impossible point is no success.
void concludeSeam(const TQuest& quest, TSeam& seam) {
  const TFrame& frame = quest.frame;
  const bool isRefused =
      quest.refusesImpossible && seam.isFound && !isSeamPointPossible(frame, seam, quest.joint.rules);
  if (isRefused) {
    const TBreakPlaces places = seam.places;
    const TKnownShapes shapes = seam.shapes;
    seam = TSeam(std::move(seam.stripePts));
    seam.places = places;
    seam.shapes = shapes;
  }
  if (!frame.trace) return;
  const int points = static_cast<int>(seam.stripePts.size());
  if (!seam.isFound) {
    concludeFailedAttempt(frame.trace.record(), quest.joint.info);
  } else if (quest.joint.rules.hasSeamPoint) {
    concludeFoundAttempt(frame.trace.record(), "seam at " + positionText(seam.pos));
  } else {
    concludeFoundAttempt(frame.trace.record(), cv::format("stripe with %d points", points));
  }
}

// What the rules find on a stripe; the default tracker asks them about whole ones only.
TFound findOn(const TQuest& quest, TExtracted extracted, const TPrevious& previous) {
  const TJointRules& rules = quest.joint.rules;
  const TFrame& frame = quest.frame;
  const TStripe& stripe = extracted.stripe;
  const bool isOwn = quest.usesOwnRules && rules.hasSeamPoint;
  const TFindSeam& find = isOwn && rules.findOwn != nullptr ? rules.findOwn : rules.find;
  const bool isStripe = !isOwn || isWholeStripe(frame, stripe.points);
  TSeam seam = isStripe ? find(frame, stripe, previous) : TSeam(TPoints(stripe.points, frame.memory));
  concludeSeam(quest, seam);
  if (quest.givesAdvice && isStripe && !seam.isFound) adviseAttempt(quest, stripe, find, previous);
  return {std::move(seam), std::move(extracted.stripe), extracted.edgePairColumns};
}

// A first detection on the ridges of the whole image. The columns keep the status that edge pairs gave them.
TFound tryRidges(const TQuest& quest, TList<TWeldPointStatus> status) {
  const TFrame& frame = quest.frame;
  TLook look = lookEverywhere(frame);
  look.path = TSearchPath::fallback;
  TExtracted extracted = extract(quest, look, {TStripeExtraction::ridge});
  extracted.stripe.status = std::move(status);
  const bool hasStripe = frame.trace.passes(kRidgePoints, extracted.stripe.points.size(), kMinRidgePoints);
  if (hasStripe) return findOn(quest, std::move(extracted), {});
  TFound found(frame.memory);
  concludeSeam(quest, found.seam);
  return found;
}

}  // namespace

TFound attempt(const TQuest& quest, const TLook& look, const TExtraction& extraction, const TPrevious& previous) {
  TFound found = findOn(quest, extract(quest, look, extraction), previous);
  const bool triesRidges = !found.seam.isFound && quest.joint.rules.hasSecondChance && quest.grantsSecondChance;
  return triesRidges ? tryRidges(quest, std::move(found.stripe.status)) : std::move(found);
}

TFound attemptByRule(const TQuest& quest, const TExtraction& extraction, const TPrevious& previous) {
  const TFrame& frame = quest.frame;
  const TJointRules& rules = quest.joint.rules;
  const TExtractionRule own = rules.extraction != nullptr ? rules.extraction(frame.params) : TExtractionRule();
  if (own.usesRidges) return attempt(quest, lookEverywhere(frame), {TStripeExtraction::ridge}, previous);
  const bool isTracking = own.isTracked && previous.isFound;
  const TLook look = isTracking ? lookNear(frame, previous.stripePts, rules.band) : lookEverywhere(frame);
  return attempt(quest, look, extraction, previous);
}

}  // namespace weld
