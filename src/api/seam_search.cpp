#include "api/seam_search.h"

#include "api/seam_gate.h"
#include "api/search_guide.h"
#include "stripe/fused.h"
#include "stripe/whole_stripe.h"

#include <algorithm>
#include <utility>

namespace weld {

namespace {

constexpr double kWholeShare = 0.8;    // of the columns that a stripe should have: on less the ridges are asked
constexpr double kFilledShare = 0.84;  // of them: on as many the ridges of a whole image cannot be clearly more
static_assert(kFilledShare * kClearlyMore >= 1.0);
constexpr float kNearPx = 120.0F;       // beside a seam that is local
constexpr double kPresentShare = 0.25;  // of those that edge pairs saw: on less the stripe has gone elsewhere

constexpr TCheck kExtent = countCheck({4, TWeldOutcome::noStripe, "stripe", "too few stripe points"},
                                      "columns with a stripe centre", TRule::atLeast);

struct TSearch {
  const TQuest& quest;
  const TTrackerOptions& options;
  const TSearchMemory& memory;

  bool isAutomatic() const { return options.extraction == TStripeExtraction::automatic; }
  int columns() const { return quest.frame.image.cols; }
};

int shareOf(int columns, double share) {
  return static_cast<int>(columns * share);
}

TLook lookAround(const TSearch& search, const TPrevious& stripe) {
  const TFrame& frame = search.quest.frame;
  const TBand& band = search.quest.joint.rules.band;
  if (search.options.guideMarginPx == 0) return lookNear(frame, stripe.stripePts, band);
  const TStageTimer timer(frame.trace, "guide");
  return lookAlong(frame, extendGuide(frame, stripe.stripePts, search.options.guideMarginPx), band);
}

// In which missing stripe harms what is measured.
TColumnSpan columnsNear(const TSearch& search) {
  const float x = search.memory.last.pos.x;
  return search.quest.joint.rules.isLocal ? TColumnSpan{x - kNearPx, x + kNearPx} : TColumnSpan();
}

// Along the stripe of a seam. Missing stripe counts in the columns of the span.
TFound searchNear(const TSearch& search, const TSearchMemory& known, const TColumnSpan& span) {
  const bool findsAnew =
      search.isAutomatic() && search.options.guideMarginPx > 0 && search.quest.joint.rules.findsAnewOnGuide;
  TExtraction extraction{search.options.extraction, shareOf(known.columns, kWholeShare),
                         shareOf(known.edgePairColumns, kPresentShare), span,
                         shareOf(known.columns, kFilledShare)};
  if (search.memory.last.isFound) {
    extraction.fillsFrom = extraction.minColumns;
    extraction.before = search.memory.last.stripePts;
  }
  return attempt(search.quest, lookAround(search, known.last), extraction, findsAnew ? TPrevious() : known.last);
}

// What is found along the last stripe stands where it is near the last seam, on as much stripe as before, and
// needs nothing that lies farther from it.
bool isTrusted(const TSearch& search, const TFound& found) {
  if (!found.seam.isFound || !search.isAutomatic()) return found.seam.isFound;
  return !found.seam.isVague &&
         static_cast<int>(found.seam.stripePts.size()) >= shareOf(search.memory.columns, kWholeShare) &&
         !(seamDistance(found.seam.pos, search.memory.last.pos) > search.options.maxJumpPx);
}

TFound searchWhole(const TSearch& search, const TPrevious& previous) {
  if (!search.isAutomatic()) return attemptByRule(search.quest, {search.options.extraction}, previous);
  TPrevious unfound;
  unfound.places = search.memory.last.places;
  unfound.shapes = search.memory.last.shapes;
  unfound.pos = search.memory.last.pos;
  unfound.isFlush = search.memory.last.isFlush;
  unfound.isSearchedAnew = search.memory.last.isFound;
  TExtraction everything{TStripeExtraction::automatic, search.columns() + 1};
  // Beside a seam that is local, ridges speak against what bridges a hole.
  if (!search.quest.joint.rules.isLocal) everything.fillsFrom = shareOf(search.columns(), kFilledShare);
  return attempt(search.quest, lookEverywhere(search.quest.frame), everything, unfound);
}

// Of two seams the one whose ends are seen; of two profiles, the one that stands out more from a plate.
bool isClearer(const TSeam& seam, const TSeam& other) {
  if (seam.isVague != other.isVague) return other.isVague;
  return seam.profile && other.profile && seam.profile->score > other.profile->score;
}

// A first detection. Blobs and ghosts beside the stripe can mislead the whole image; a second look follows the
// stripe alone.
TFound searchFirst(const TSearch& search) {
  TFound found = searchWhole(search, search.memory.last);
  if (!search.isAutomatic() || !found.seam.isFound) return found;
  TPrevious stripe(found.seam);
  stripe.profile = nullptr;  // laid on less of the stripe
  stripe.places = search.memory.last.places;
  stripe.shapes = search.memory.last.shapes;
  stripe.isOfThisFrame = true;
  TFound second = searchNear(search, {stripe, static_cast<int>(found.seam.stripePts.size())}, {});
  return second.seam.isFound && !isClearer(found.seam, second.seam) ? std::move(second) : std::move(found);
}

// A seam on a scrap of stripe is none.
void refuseScraps(const TSearch& search, TFound& found) {
  const int minColumns = shareOf(search.columns(), kLeastExtent);
  const int columns = static_cast<int>(found.stripe.points.size());
  if (!search.isAutomatic() || !found.seam.isFound || columns >= minColumns) return;
  found.seam = TSeam(std::move(found.seam.stripePts));
  search.quest.frame.trace.atGate().passes(kExtent, columns, minColumns);
}

// Compares two numbers of stripe points, so that a guide or a second attempt would change what it says.
TFound checkPresence(const TSearch& search) {
  const int known = search.memory.columns;
  const int expected = known > 0 ? std::min(known, search.columns()) : search.columns();
  return attemptByRule(search.quest, {search.options.extraction, shareOf(expected, kWholeShare)},
                       search.memory.last);
}

}  // namespace

TFound searchSeam(const TQuest& quest, const TTrackerOptions& options, const TSearchMemory& memory) {
  const TSearch search{quest, options, memory};
  if (!quest.joint.rules.hasSeamPoint) return checkPresence(search);
  if (memory.last.isFound) {
    TFound near = searchNear(search, memory, columnsNear(search));
    if (isTrusted(search, near) || !options.searchWholeOnLoss) return near;
  }
  TFound found = memory.last.isFound ? searchWhole(search, {}) : searchFirst(search);
  refuseScraps(search, found);
  return found;
}

}  // namespace weld
