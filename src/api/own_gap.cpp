#include "api/own_rules.h"

#include "api/gap_hole.h"
#include "api/known_width.h"
#include "profile/flares.h"
#include "stripe/break_path.h"
#include "stripe/dark_break.h"
#include "stripe/dim_runs.h"
#include "stripe/flush_edges.h"
#include "stripe/turn.h"
#include "support/line_math.h"
#include "zelWeldSettings.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace weld {

namespace {

constexpr double kTightGapPx = 4.0;   // the widest gap that may show as a dark break alone
constexpr float kTightHolePx = 4.0F;  // the most columns that a tight gap may lack

constexpr float kTurnReachPx = 60.0F;
constexpr double kMostTurnDeg = 6.0;
constexpr TCheck kStraight{{18, TWeldOutcome::elementMissing, "gap", "the stripe bends at its dark break"},
                           "turn of the stripe at its dark break",
                           TRule::atMost,
                           "deg"};

constexpr double kLeastPlates = 0.6;
constexpr TCheck kPlates{{18, TWeldOutcome::elementMissing, "gap", "the stripe bends beside its dark break"},
                         "share of the stripe on the line of its dark break",
                         TRule::notBelow};

constexpr double kLeastPathLine = 1.0;  // of a break's line, in scatters, to be followed over frames
constexpr double kLeastLine = 2.0;      // to be reported
constexpr double kMostOfBreak = 6.0;    // of the score of one frame,
constexpr double kMostOfLine = 1.5;     // in lines: speckle draws none
constexpr float kScoreOfHole = 6.0F;
constexpr double kSureBreak = 14.0;  // score of a place that many frames showed, or one beyond doubt;
constexpr double kSureHole = 18.0;   // as lost stretches may do for a few
constexpr double kSureMargin = 1.3;  // over that of any other
constexpr float kFollowPx = 12.0F;   // from the last seam
constexpr double kLeastPath = 8.0;   // there,
constexpr double kLeastShare = 0.5;  // over any other place
constexpr double kNearFirst = 1e3;

constexpr double kMostRival = 0.8;  // width of the next hole over that of the widest: more may be a lost stretch
constexpr double kLeastRivalPx = 4.0;  // columns step by one, and by two or three in speckle
constexpr double kSamePlacePx = 20.0;

constexpr TCheck kOtherKind{{17, TWeldOutcome::elementMissing, "gap", "a hole and a dark break take turns"},
                            "gap of the same kind as in the last frame"};

constexpr double kPlateEndPx = 14.0;  // from an edge of the gap
constexpr TCheck kPlateEnd{
    {17, TWeldOutcome::elementMissing, "gap", "a plate ends at the gap, flush with its table"},
    "one plate on either side of the gap"};

constexpr TCheck kUnique{{17, TWeldOutcome::elementMissing, "gap", "several gaps in the stripe"},
                         "width of the next gap over that of the widest",
                         TRule::notAbove};

bool isNearLast(const TSeam& seam, const TPrevious& previous) {
  return previous.isFound && std::abs(static_cast<double>(seam.pos.x - previous.pos.x)) <= kSamePlacePx;
}

// Of several holes as wide no one can tell the gap from a lost stretch, unless it was there in the frame before.
bool isUnique(const TFrame& frame, const TLineHole& hole, int next) {
  if (next < TGapSettings::of(frame.params).minGapPx) return true;
  return frame.trace.passes(kUnique, static_cast<double>(next) / (hole.rightX - hole.leftX), kMostRival);
}

// The plates beside a tight gap are one straight line, and most of what the stripe shows.
bool isStraightAcross(const TFrame& frame, TPointView points, double x) {
  const std::optional<double> turnDeg = turnAt(points, static_cast<float>(x), kTurnReachPx);
  return frame.trace.passes(kStraight, turnDeg.value_or(90.0), kMostTurnDeg) &&
         frame.trace.passes(kPlates, straightShare(points, static_cast<float>(x), kTurnReachPx), kLeastPlates);
}

// What is dark for lack of a stripe is no tight gap.
bool isInHole(TPointView points, const TDarkBreak& found) {
  const auto isBefore = [](cv::Point2f p, double x) { return static_cast<double>(p.x) < x; };
  const auto* const next = std::lower_bound(points.begin(), points.end(), found.x, isBefore);
  return next != points.begin() && next != points.end() && next->x - (next - 1)->x > kTightHolePx;
}

TSeam seamAt(const TFrame& frame, const TStripe& stripe, const TDarkBreak& found) {
  TSeam seam(frame.memory);
  const auto isLit = [&](cv::Point2f p) {
    const int column = truncToInt(p.x);
    return column < found.firstColumn || column >= found.firstColumn + found.columns;
  };
  seam.stripePts.reserve(stripe.points.size());
  std::copy_if(stripe.points.begin(), stripe.points.end(), std::back_inserter(seam.stripePts), isLit);
  const auto isBefore = [](cv::Point2f p, double x) { return static_cast<double>(p.x) < x; };
  const auto next = std::lower_bound(seam.stripePts.begin(), seam.stripePts.end(), found.x, isBefore);
  const double half = 0.5 * (found.columns + 1);
  const TWeldPosType pos = frame.params.weldPosType;
  const double x = pos == TWeldPosType::left    ? found.x - half
                   : pos == TWeldPosType::right ? found.x + half
                                                : found.x;
  seam.isFound = seam.isFlush = true;
  seam.pos = cv::Point2f(static_cast<float>(x), 0.5F * ((next - 1)->y + next->y));
  return seam;
}

TSeam seamAt(const TFrame& frame, const TStripe& stripe, const TLineHole& hole) {
  // On the line it shines out of the gap, beside it it is a ghost; neither is an edge.
  const TPointView points = stripe.points;
  const TPointView inside = pointsIn(points, hole);
  TSeam seam(frame.memory);
  seam.stripePts.reserve(points.size());
  seam.stripePts.insert(seam.stripePts.end(), points.begin(), inside.begin());
  seam.stripePts.insert(seam.stripePts.end(), inside.end(), points.end());
  const TWeldPosType pos = frame.params.weldPosType;
  const double x = pos == TWeldPosType::left    ? hole.leftX
                   : pos == TWeldPosType::right ? hole.rightX
                                                : 0.5 * (hole.leftX + hole.rightX);
  seam.isFound = true;
  seam.pos = cv::Point2f(cv::Point2d(x, hole.slope * hole.leftX + hole.intercept));
  return seam;
}

bool isTightAt(const TFrame& frame, const TStripe& stripe, const TDarkBreak& place) {
  return !isInHole(stripe.points, place) && isStraightAcross(frame, stripe.points, place.x);
}

// What a frame shows of a gap.
struct TGapSight {
  const TStripe& seen;  // with what shines out of gaps: that is dark, too
  TView<TFlare> flares;
  TList<TDarkBreak> breaks;
  TLineHole line;  // with the widest hole
  TList<TLineHole> holes;
  TAskedHole widest{};
};

// What loses columns elsewhere may have darkened some here, and a hole may be the gap.
bool hasHole(const TFrame& frame, const TStripe& stripe, const TPrevious& previous, TLineHole& widest) {
  findGapAt(frame.inSilence(), stripe, previous, widest);
  return widest.rightX - widest.leftX > kTightGapPx;
}

// By its breaks, else by its widest hole, whose seam is not yet read.
TSeam findAlone(const TFrame& frame, const TStripe& stripe, const TPrevious& previous, TGapSight& sight) {
  const TGapSettings settings = TGapSettings::of(frame.params);
  const bool isTight = settings.minGapPx <= kTightGapPx;
  if (isTight) {
    sight.breaks = findDarkBreaks(frame, sight.seen);
    const bool isGap = isDarkBreak(frame.trace, sight.breaks) && isTightAt(frame, sight.seen, sight.breaks[0]);
    if (isGap) {
      TSeam seam = seamAt(frame, sight.seen, sight.breaks[0]);
      seam.isUnsure = sight.breaks[0].score < kSureBreak && hasHole(frame, stripe, previous, sight.line);
      return seam;
    }
  }
  TLineHole& hole = sight.line;
  TSeam seam = findGapAt(frame, stripe, previous, hole);
  if (!seam.isFound) return seam;
  const bool isWide = !isTight || hole.rightX - hole.leftX > kTightGapPx;
  if (isWide) sight.widest = {hole, openHole(frame, stripe, sight.flares, hole)};
  if (!sight.widest.open) return TSeam(std::move(seam.stripePts));
  hole = *sight.widest.open;
  // The frame before speaks for it: neither unique nor sure need it be.
  if (isNearLast(seam, previous) && !previous.isOfThisFrame) return seam;
  const int next = nextWidth(stripe.points, hole, settings.lineTolerancePx);
  const bool isGap = isNearLast(seam, previous) || isUnique(frame, hole, next);
  if (!isGap) return TSeam(std::move(seam.stripePts));
  seam.isUnsure = isTight || next >= std::max(settings.minGapPx, kLeastRivalPx);
  return seam;
}

// A place of this frame, and the seam that it would be.
struct TPlace {
  TBreakPlace place;
  const TDarkBreak* dark = nullptr;
  const TLineHole* hole = nullptr;
};

TList<TPlace> placesOf(const TFrame& frame, const TGapSight& sight) {
  const TFrame quiet = frame.inSilence();
  TList<TPlace> places(frame.memory);
  places.reserve(sight.breaks.size() + sight.holes.size());
  for (const TDarkBreak& dark : sight.breaks) {
    const bool isGap = dark.line >= kLeastPathLine && isTightAt(quiet, sight.seen, dark);
    if (!isGap) continue;
    const double score = std::min({dark.score, kMostOfLine * dark.line, kMostOfBreak});
    places.push_back(
        {{static_cast<float>(dark.x), static_cast<float>(dark.columns), static_cast<float>(score)}, &dark});
  }
  for (const TLineHole& hole : sight.holes) {
    const auto width = static_cast<float>(hole.rightX - hole.leftX);
    places.push_back({{0.5F * static_cast<float>(hole.leftX + hole.rightX), width, kScoreOfHole}, nullptr, &hole});
  }
  return places;
}

bool isKnown(const TPrevious& previous) {
  return (previous.isFound && !previous.isOfThisFrame) || previous.isSearchedAnew;
}

// The place where the frames before had the seam, else that which many of them showed.
const TPlace* knownPlace(TView<TPlace> places, const TBreakPlaces& path, const TPrevious& previous) {
  const TPlace* best = nullptr;
  double highest = 0.0;
  for (const TPlace& place : places) {
    const TBreakScore score = scoreAt(path, place.place.x);
    const bool isNear = isKnown(previous) && std::abs(place.place.x - previous.pos.x) <= kFollowPx &&
                        (place.dark != nullptr) == previous.isFlush && score.here >= kLeastPath &&
                        score.here >= kLeastShare * score.elsewhere;
    const bool isRepeated = score.here >= (place.dark != nullptr ? kSureBreak : kSureHole) &&
                            score.here >= kSureMargin * score.elsewhere;
    const bool hasLine = place.dark == nullptr || place.dark->line >= kLeastLine;
    if (!hasLine) continue;
    const double rank = score.here + (isNear ? kNearFirst : 0.0);
    if (!(isNear || isRepeated) || rank <= highest) continue;
    highest = rank;
    best = &place;
  }
  return best;
}

// As wide as before: a lost stretch may adjoin it.
TLineHole asKnown(TLineHole hole, const TPrevious& previous) {
  TBreakPlaces places = previous.places != nullptr ? *previous.places : TBreakPlaces();
  const TEndColumns known = keepWidth({static_cast<double>(hole.leftX), static_cast<double>(hole.rightX)}, places);
  if (known.areKnown) hole.leftX = roundToInt(known.left);
  if (known.areKnown) hole.rightX = roundToInt(known.right);
  return hole;
}

// A plate flush with its table is brighter or darker than that from one end to the other.
bool isPlateEnd(const TFrame& frame, const TStripe& stripe, const TSeam& seam) {
  const TList<TLightStep> steps = findLightSteps(frame.inSilence(), stripe);
  const auto isBefore = [](cv::Point2f p, float x) { return p.x < x; };
  const TPoints& points = seam.stripePts;
  const auto right = std::lower_bound(points.begin(), points.end(), seam.pos.x, isBefore);
  if (right == points.begin() || right == points.end()) return false;
  const auto isHere = [&](const TLightStep& step) {
    return step.x >= (right - 1)->x - kPlateEndPx && step.x <= right->x + kPlateEndPx;
  };
  const auto here = std::find_if(steps.begin(), steps.end(), isHere);
  const bool hasOtherEnd =
      here != steps.end() &&
      std::any_of(steps.begin(), steps.end(), [&](const TLightStep& s) { return s.change * here->change < 0.0; });
  return !frame.trace.holds(kPlateEnd, !hasOtherEnd);
}

}  // namespace

TSeam findOwnGap(const TFrame& frame, const TStripe& whole, const TPrevious& previous) {
  const TList<TFlare> flares = findFlaresWithHalo(frame, whole.points);
  const std::optional<TStripe> rest = withoutFlares(frame, whole, flares);
  const TStripe& seen = rest ? *rest : whole;
  const std::optional<TStripe> lit = withoutDimRuns(frame, seen);
  const TStripe& stripe = lit ? *lit : seen;
  TGapSight sight{seen, flares, TList<TDarkBreak>(frame.memory), {}, TList<TLineHole>(frame.memory)};
  TSeam seam = findAlone(frame, stripe, previous, sight);
  if (sight.line.rightX == 0) findGapAt(frame.inSilence(), stripe, previous, sight.line);
  if (sight.line.rightX > 0) sight.holes = openHoles(frame.inSilence(), stripe, flares, sight.line, sight.widest);
  const TList<TPlace> places = placesOf(frame, sight);
  TList<TBreakPlace> shown(frame.memory);
  std::transform(places.begin(), places.end(), std::back_inserter(shown), [](const TPlace& p) { return p.place; });
  const TBreakPlaces path = follow(previous.places != nullptr ? *previous.places : TBreakPlaces(), shown);
  if (const TPlace* const at = knownPlace(places, path, previous)) {
    seam =
        at->dark != nullptr ? seamAt(frame, seen, *at->dark) : seamAt(frame, stripe, asKnown(*at->hole, previous));
  } else if (seam.isFound && isKnown(previous) && seam.isFlush != previous.isFlush) {
    frame.trace.holds(kOtherKind, false);
    seam = TSeam(std::move(seam.stripePts));
  } else if (seam.isFound && !seam.isFlush) {
    const bool isUnsure = seam.isUnsure;
    seam = seamAt(frame, stripe, asKnown(sight.line, previous));
    seam.isUnsure = isUnsure;
  }
  if (seam.isFound && !isKnown(previous) && isPlateEnd(frame, seen, seam)) seam = TSeam(std::move(seam.stripePts));
  seam.places = path;
  if (!seam.isFound) seam.stripePts.assign(seen.points.begin(), seen.points.end());
  return seam;
}

}  // namespace weld
