#include "api/seam_search.h"

#include "api/seam_gate.h"
#include "api/search_guide.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace weld {

namespace {

constexpr double kMinKeptShare = 0.8;      // of the previous stripe's columns that edge pairs should follow again
constexpr double kMinImageShare = 0.8;     // of the image's columns that they should follow on a first detection
constexpr double kMinFollowedShare = 0.8;  // of the columns in which ridges see the stripe
constexpr double kPresentShare = 0.5;      // of the image's columns that show a stripe to be there

constexpr TFailure kFragment{4, TWeldOutcome::noStripe, "stripe", "too few stripe points"};
constexpr TCheck kColumns = countCheck(kFragment, "columns in which edge pairs follow the stripe", TRule::atLeast);
constexpr TCheck kFollowed{kFragment, "share of the stripe that edge pairs follow"};

constexpr TExtraction kEdgePairs{TStripeExtraction::edgePairs};
constexpr TExtraction kRidges{TStripeExtraction::ridge};

// What the attempts of a frame share. Automatic extraction asks the ridges of one part of a frame only, for the
// sake of the time that a frame takes.
struct TSearch {
  const TQuest& quest;
  const TTrackerOptions& options;

  bool isAutomatic() const { return options.extraction == TStripeExtraction::automatic; }
  int columns() const { return quest.frame.image.cols; }
};

int shareOf(int columns, double share) {
  return static_cast<int>(columns * share);
}

// What casts doubt on what edge pairs find around a stripe.
struct TDoubt {
  int minColumns = 0;
  double maxJumpPx = std::numeric_limits<double>::infinity();
};

bool isDoubtful(const TSeam& seam, const TPrevious& before, const TDoubt& doubt) {
  return !seam.isFound || seamDistance(seam.pos, before.pos) > doubt.maxJumpPx;
}

TLook lookAround(const TSearch& search, const TPrevious& stripe) {
  const TFrame& frame = search.quest.frame;
  const TBand& band = search.quest.joint.rules.band;
  if (search.options.guideMarginPx == 0) return lookNear(frame, stripe.stripePts, band);
  const TStageTimer timer(frame.trace, "guide");
  return lookAlong(frame, extendGuide(frame, stripe.stripePts, search.options.guideMarginPx), band);
}

// Around a found stripe.
TFound searchNear(const TSearch& search, const TPrevious& stripe, const TDoubt& doubt, bool asksRidges) {
  const bool isAutomatic = search.isAutomatic();
  const TLook look = lookAround(search, stripe);
  const bool findsAnew =
      isAutomatic && search.options.guideMarginPx > 0 && search.quest.joint.rules.findsAnewOnGuide;
  const TPrevious previous = findsAnew ? TPrevious() : stripe;
  const TExtraction first{isAutomatic && !asksRidges ? TStripeExtraction::edgePairs : search.options.extraction,
                          doubt.minColumns};
  TFound found = attempt(search.quest, look, first, previous);
  if (!isAutomatic || !asksRidges || !isDoubtful(found.seam, stripe, doubt)) return found;
  TFound ridges = attempt(search.quest, look, kRidges, previous);
  const bool isBetter = !found.seam.isFound || ridges.seam.isFound;
  return isBetter ? std::move(ridges) : std::move(found);
}

// The whole image on edge pairs alone, with what speaks against a seam in fragments of the stripe.
TFound searchWholeOnEdgePairs(const TSearch& search, int minColumns) {
  const TFrame& frame = search.quest.frame;
  TFound found = attempt(search.quest, lookEverywhere(frame), kEdgePairs, {});
  if (!found.seam.isFound || found.columns >= minColumns) return found;
  found.seam = TSeam(std::move(found.seam.stripePts));
  frame.trace.atGate().passes(kColumns, found.columns, minColumns);
  return found;
}

// The whole image on edge pairs; on ridges where edge pairs find no seam, or where ridges see clearly more of the
// stripe: a seam in the fragments of one is seldom true. In a hurry where they may see more of the stripe only.
TFound searchWholeOnBoth(const TSearch& search, bool isHurried) {
  const TFrame& frame = search.quest.frame;
  TFound edgePairs = attempt(search.quest, lookEverywhere(frame), kEdgePairs, {});
  const bool isFound = edgePairs.seam.isFound;
  const bool isWholeStripe = edgePairs.columns >= shareOf(search.columns(), kMinImageShare);
  if (isWholeStripe && (isFound || isHurried)) return edgePairs;
  TFound ridges = attempt(search.quest, lookEverywhere(frame), kRidges, {});
  const double followedShare = static_cast<double>(edgePairs.columns) / std::max(ridges.columns, 1);
  if (isFound && followedShare >= kMinFollowedShare) return edgePairs;
  // Edge pairs that found a seam where the ridges find none: the frame ends with what speaks against it.
  if (isFound && !ridges.seam.isFound) frame.trace.atGate().passes(kFollowed, followedShare, kMinFollowedShare);
  return ridges;
}

// Of two profiles, the one that stands out more from a plate.
bool isClearer(const TSeam& seam, const TSeam& other) {
  return seam.profile && other.profile && seam.profile->score > other.profile->score;
}

// A first detection. What stands beside the stripe can mislead edge pairs; a second look follows the stripe alone.
//   lostColumns  of the stripe that was searched for in vain before; 0 without one.
TFound searchWhole(const TSearch& search, const TPrevious& previous, int lostColumns) {
  if (!search.isAutomatic()) return attemptByRule(search.quest, {search.options.extraction}, previous);
  const int minColumns = shareOf(std::min(lostColumns, search.columns()), kMinKeptShare);
  TFound first = search.quest.ridges.isSpent() ? searchWholeOnEdgePairs(search, minColumns)
                                               : searchWholeOnBoth(search, lostColumns > 0);
  if (first.hasAskedRidges || !first.seam.isFound) return first;
  TPrevious stripe(first.seam);
  stripe.profile = nullptr;  // laid on less of the stripe
  TFound second = searchNear(search, stripe, {}, !search.quest.ridges.isSpent());
  return second.seam.isFound && !isClearer(first.seam, second.seam) ? std::move(second) : std::move(first);
}

// Compares two numbers of stripe points, so that a guide or a second attempt would change what it says.
TFound checkPresence(const TSearch& search, const TPrevious& previous) {
  return attemptByRule(search.quest, {search.options.extraction, shareOf(search.columns(), kPresentShare)},
                       previous);
}

}  // namespace

TFound searchSeam(const TQuest& quest, const TTrackerOptions& options, const TSearchMemory& memory) {
  const TSearch search{quest, options};
  if (!quest.joint.rules.hasSeamPoint) return checkPresence(search, memory.last);
  if (!memory.last.isFound) return searchWhole(search, memory.last, 0);
  const TDoubt doubt{shareOf(memory.columns, kMinKeptShare), options.maxJumpPx};
  // The ridges near the last stripe have been asked when it was lost; a held one leaves them to the whole image.
  TFound found = searchNear(search, memory.last, doubt, !memory.isHeld);
  if (found.seam.isFound || !options.searchWholeOnLoss) return found;
  return searchWhole(search, {}, memory.columns);
}

}  // namespace weld
