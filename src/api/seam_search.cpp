#include "api/seam_search.h"

#include "api/dispatch.h"
#include "api/seam_gate.h"
#include "api/search_guide.h"
#include "support/trace_conclusion.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace weld {

namespace {

constexpr double kMinKeptShare = 0.8;      // of the previous stripe's columns that edge pairs should follow again
constexpr double kMinImageShare = 0.8;     // of the image's columns that they should follow on a first detection
constexpr double kMinFollowedShare = 0.8;  // of the columns in which ridges see the stripe
constexpr TCheck kColumns =
    countCheck(TWeldOutcome::tooFewCentres, "columns in which edge pairs follow the stripe", TRule::atLeast);
constexpr TCheck kFollowed{TWeldOutcome::tooFewCentres, "share of the stripe that edge pairs follow"};

constexpr double kPresentShare = 0.5;  // of the image's columns that show a stripe to be there

// What all attempts of a frame share.
struct TFrame {
  TPlateDetector& detector;
  const cv::Mat& image;
  const TTrackerOptions& options;
  std::vector<cv::Point2f>& guide;

  TWeldType joint() const { return detector.getWeldParameters().weldType; }
  bool isAutomatic() const { return options.extraction == TStripeExtraction::automatic; }
  // Automatic extraction asks the ridges of one part of a frame only, for the sake of the time that a frame takes.
  bool hasAskedRidges() const { return detector.scratch.ridge.searched.has_value(); }
};

int shareOf(int columns, double share) {
  return static_cast<int>(columns * share);
}

// A seam at an impossible point is no success.
void refuseImpossible(const TFrame& frame, TWeldLineRes& line) {
  if (!line.isFound || !frame.options.rejectsImpossiblePoints || frame.joint() == TWeldType::stripePresence)
    return;
  const TTrace& trace = frame.detector.trace;
  if (isSeamPointPossible(line, frame.joint(), frame.image.size(), trace)) return;
  line = withoutSeam(std::move(line));
  if (trace) concludeRefusedAttempt(trace.record());
}

// The detector's own second chance on ridges is left to the attempts where those are on ridges anyway.
TFoundSeam attempt(const TFrame& frame, const TStripeSearch& search, const TWeldLineRes& previous) {
  frame.detector.search = search;
  frame.detector.search.hasSecondChance = frame.options.extraction == TStripeExtraction::edgePairs;
  TWeldLineRes line = detectSeam(frame.detector, frame.image, previous);
  refuseImpossible(frame, line);
  return {std::move(line), frame.detector.stripe};
}

// What casts doubt on what edge pairs find around a stripe.
struct TDoubt {
  int minColumns = 0;  // see TStripeSearch
  double maxJumpPx = std::numeric_limits<double>::infinity();
};

bool isDoubtful(const TWeldLineRes& line, const TWeldLineRes& before, const TDoubt& doubt) {
  return !line.isFound || seamDistance(line.weldPos, before.weldPos) > doubt.maxJumpPx;
}

// The working memory keeps the list of the other one.
TFoundSeam choose(const TFrame& frame, TFoundSeam& chosen, TFoundSeam& other) {
  frame.detector.scratch.give(other.line.stripePts);
  return std::move(chosen);
}

// Around a found stripe.
TFoundSeam searchNear(const TFrame& frame, const TWeldLineRes& stripe, const TDoubt& doubt, bool asksRidges) {
  const bool isExtended = frame.options.guideMarginPx > 0;
  if (isExtended) {
    const TStageTimer timer(frame.detector.trace, "guide");
    extendGuide(stripe.stripePts, frame.options.guideMarginPx, frame.image.size(), frame.guide);
  }
  TStripeSearch search{frame.options.extraction, isExtended ? &frame.guide : nullptr, doubt.minColumns};
  if (frame.isAutomatic() && !asksRidges) search.extraction = TStripeExtraction::edgePairs;
  // A corner's tracking rules fit its flanks to whole rows, those of a first detection to the centres themselves.
  const bool fitsAnew = frame.isAutomatic() && isExtended && frame.joint() == TWeldType::corner;
  const TWeldLineRes none;
  const TWeldLineRes& previous = fitsAnew ? none : stripe;
  TFoundSeam seam = attempt(frame, search, previous);
  if (!frame.isAutomatic() || !asksRidges || !isDoubtful(seam.line, stripe, doubt)) return seam;
  search.extraction = TStripeExtraction::ridge;
  TFoundSeam ridges = attempt(frame, search, previous);
  const bool isBetter = !seam.line.isFound || ridges.line.isFound;
  return isBetter ? choose(frame, ridges, seam) : choose(frame, seam, ridges);
}

// The whole image on edge pairs alone, with what speaks against a seam in fragments of the stripe.
TFoundSeam searchWholeOnEdgePairs(const TFrame& frame, int minColumns) {
  TFoundSeam seam = attempt(frame, {}, {});
  if (!seam.line.isFound || seam.stripe.columns >= minColumns) return seam;
  seam.line = withoutSeam(std::move(seam.line));
  frame.detector.trace.atGate().passes(kColumns, seam.stripe.columns, minColumns);
  return seam;
}

// The whole image on edge pairs; on ridges where edge pairs find no seam, or where ridges see clearly more of the
// stripe: a seam in the fragments of one is seldom true. In a hurry where they may see more of the stripe only.
TFoundSeam searchWholeOnBoth(const TFrame& frame, bool isHurried) {
  TStripeSearch search;
  TFoundSeam edgePairs = attempt(frame, search, {});
  const bool isFound = edgePairs.line.isFound;
  const bool isWholeStripe = edgePairs.stripe.columns >= shareOf(frame.image.cols, kMinImageShare);
  if (isWholeStripe && (isFound || isHurried)) return edgePairs;
  search.extraction = TStripeExtraction::ridge;
  TFoundSeam ridges = attempt(frame, search, {});
  const double followedShare = static_cast<double>(edgePairs.stripe.columns) / std::max(ridges.stripe.columns, 1);
  if (isFound && followedShare >= kMinFollowedShare) return choose(frame, edgePairs, ridges);
  // Edge pairs that found a seam where the ridges find none: the frame ends with what speaks against it.
  if (isFound && !ridges.line.isFound)
    frame.detector.trace.atGate().passes(kFollowed, followedShare, kMinFollowedShare);
  return choose(frame, ridges, edgePairs);
}

// A first detection. What stands beside the stripe can mislead edge pairs; a second look follows the stripe alone.
//   lostColumns  of the stripe that was searched for in vain before; 0 without one.
TFoundSeam searchWhole(const TFrame& frame, const TWeldLineRes& previous, int lostColumns) {
  if (!frame.isAutomatic()) return attempt(frame, {frame.options.extraction}, previous);
  const int minColumns = shareOf(std::min(lostColumns, frame.image.cols), kMinKeptShare);
  TFoundSeam first = frame.hasAskedRidges() ? searchWholeOnEdgePairs(frame, minColumns)
                                            : searchWholeOnBoth(frame, lostColumns > 0);
  if (first.stripe.hasAskedRidges || !first.line.isFound) return first;
  TFoundSeam second = searchNear(frame, first.line, {}, !frame.hasAskedRidges());
  return second.line.isFound ? choose(frame, second, first) : choose(frame, first, second);
}

// Compares two numbers of stripe points, so that a guide or a second attempt would change what it says.
TFoundSeam checkPresence(const TFrame& frame, const TWeldLineRes& previous) {
  return attempt(frame, {frame.options.extraction, nullptr, shareOf(frame.image.cols, kPresentShare)}, previous);
}

}  // namespace

TFoundSeam searchSeam(TPlateDetector& detector, const cv::Mat& image, const TFoundSeam& previous, bool isHeld,
                      const TTrackerOptions& options, std::vector<cv::Point2f>& guide) {
  const TFrame frame{detector, image, options, guide};
  detector.scratch.ridge.searched.reset();
  if (frame.joint() == TWeldType::stripePresence) return checkPresence(frame, previous.line);
  if (!previous.line.isFound) return searchWhole(frame, previous.line, 0);
  const TDoubt doubt{shareOf(previous.stripe.columns, kMinKeptShare), options.maxJumpPx};
  // The ridges near the last stripe have been asked when it was lost; a held one leaves them to the whole image.
  TFoundSeam seam = searchNear(frame, previous.line, doubt, !isHeld);
  if (seam.line.isFound || !options.searchesWholeOnLoss) return seam;
  detector.scratch.give(seam.line.stripePts);
  return searchWhole(frame, {}, previous.stripe.columns);
}

}  // namespace weld
