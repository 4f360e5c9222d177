#include "api/own_rules.h"

#include "detectors/gap.h"
#include "stripe/break_path.h"
#include "stripe/dark_break.h"
#include "stripe/turn.h"
#include "support/grey_image.h"
#include "support/line_math.h"
#include "zelWeldSettings.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

namespace weld {

namespace {

constexpr double kTightGapPx = 4.0;   // the widest gap that may show as a dark break alone
constexpr float kTightHolePx = 4.0F;  // the most columns that a tight gap may lack
constexpr double kMostOffPx = 10.0;   // of a centre beside the line that still touches its end
constexpr int kTouchColumns = 3;
constexpr float kMostRowStep = 6.0F;    // from column to column of what goes on
constexpr int kLeastGoingOn = 8;        // columns; an edge may be rounded,
constexpr int kSureGoingOn = 15;        // that of a wide gap farther
constexpr double kGoingOnShare = 0.25;  // of the gap

constexpr TCheck kGoesOn{
    {16, TWeldOutcome::elementMissing, "gap", "the stripe goes on beside the line: a groove or a bend, no gap"},
    "columns of stripe beside the line that touch the gap's edge",
    TRule::below,
    "px",
    "",
    true};

constexpr double kMostFilled = 0.5;      // of the hole's columns with centres elsewhere,
constexpr double kFillingShare = 0.125;  // where it spans that much of the image or
constexpr double kFillingPx = 15.0;      // they lie so near the line

constexpr TCheck kFilled{{16, TWeldOutcome::elementMissing, "gap", "the stripe goes on through the gap"},
                         "share of the gap's columns through which the stripe goes on",
                         TRule::atMost};

constexpr int kBesideColumns = 12;
constexpr int kClearPx = 12;       // beyond the width of the stripe, where its surroundings begin
constexpr int kLineRows = 3;       // about the line in which its light may lie
constexpr double kLitShare = 0.5;  // of the light beside the gap: as bright a column holds the stripe
constexpr double kMostLit = 0.5;   // of the gap's columns

constexpr TCheck kDark{{16, TWeldOutcome::elementMissing, "gap", "the light goes on through the gap"},
                       "share of the gap's columns that are lit",
                       TRule::atMost};

constexpr float kTurnReachPx = 60.0F;
constexpr double kMostTurnDeg = 6.0;
constexpr TCheck kStraight{{18, TWeldOutcome::elementMissing, "gap", "the stripe bends at its dark break"},
                           "turn of the stripe at its dark break",
                           TRule::atMost,
                           "deg"};

constexpr double kLeastOnLine = 0.45;  // of the stripe's centres
constexpr TCheck kOnLine{{12, TWeldOutcome::fitTooWeak, "line", "too few stripe points on the line"},
                         "share of stripe points on one line",
                         TRule::atLeast};

constexpr double kLeastPathLine = 1.0;  // of a break's line, in scatters, to be followed over frames
constexpr double kLeastLine = 2.0;      // to be reported
constexpr double kMostOfBreak = 6.0;
constexpr float kScoreOfHole = 6.0F;
constexpr double kSureBreak = 14.0;  // score of a place that many frames showed,
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

constexpr TCheck kUnique{{17, TWeldOutcome::elementMissing, "gap", "several gaps in the stripe"},
                         "width of the next gap over that of the widest",
                         TRule::notAbove};

double offLine(const TLineHole& hole, cv::Point2f p) {
  return pointLineDistance(hole.slope, hole.intercept, static_cast<double>(p.x), static_cast<double>(p.y));
}

// Columns inside the hole through which the stripe goes on from one of its edges.
//   from, step  the first centre beyond the edge, and the way into the hole
int columnsGoingOn(TPointView points, const TLineHole& hole, const cv::Point2f* from, int step) {
  const bool isLeft = step > 0;
  const auto edge = static_cast<float>(isLeft ? hole.leftX : hole.rightX);
  const auto end = static_cast<float>(isLeft ? hole.rightX : hole.leftX);
  const cv::Point2f* last = nullptr;
  for (const cv::Point2f* p = from; p >= points.begin() && p < points.end(); p += step) {
    if (isLeft ? p->x >= end : p->x <= end) break;
    const float columns = std::abs(p->x - (last != nullptr ? last->x : edge));
    const bool touches =
        last != nullptr ? std::abs(p->y - last->y) <= kMostRowStep * columns : offLine(hole, *p) <= kMostOffPx;
    if (columns > kTouchColumns || !touches) break;
    last = p;
  }
  return last != nullptr ? static_cast<int>(std::abs(last->x - edge)) : 0;
}

// The steps between neighbouring centres of the line that are wider than from column to column.
TList<TLineHole> holesOf(const TFrame& frame, TPointView points, const TLineHole& line) {
  const double tolerancePx = TGapSettings::of(frame.params).lineTolerancePx;
  TList<TLineHole> holes(frame.memory);
  const cv::Point2f* last = nullptr;
  for (const cv::Point2f& p : points) {
    if (!(offLine(line, p) < tolerancePx)) continue;
    if (last != nullptr && p.x - last->x > kTightHolePx)
      holes.push_back({line.slope, line.intercept, truncToInt(last->x), truncToInt(p.x)});
    last = &p;
  }
  return holes;
}

// Columns of the widest step between neighbouring centres of the line, but that of the hole.
int nextWidth(TPointView points, const TLineHole& hole, double tolerancePx) {
  int widest = 0;
  const cv::Point2f* last = nullptr;
  for (const cv::Point2f& p : points) {
    if (!(offLine(hole, p) < tolerancePx)) continue;
    const bool isOther = last != nullptr && truncToInt(last->x) != hole.leftX;
    if (isOther) widest = std::max(widest, truncToInt(p.x) - truncToInt(last->x));
    last = &p;
  }
  return widest;
}

bool isNearLast(const TSeam& seam, const TPrevious& previous) {
  return previous.isFound && std::abs(static_cast<double>(seam.pos.x - previous.pos.x)) <= kSamePlacePx;
}

// Of several holes as wide no one can tell the gap from a lost stretch, unless it was there in the frame before.
bool isUnique(const TFrame& frame, const TLineHole& hole, int next) {
  if (next < TGapSettings::of(frame.params).minGapPx) return true;
  return frame.trace.passes(kUnique, static_cast<double>(next) / (hole.rightX - hole.leftX), kMostRival);
}

// The centres between the edges of a hole.
TPointView pointsIn(TPointView points, const TLineHole& hole) {
  const auto isBefore = [](cv::Point2f p, int column) { return truncToInt(p.x) <= column; };
  const auto* const first = std::lower_bound(points.begin(), points.end(), hole.leftX, isBefore);
  const auto* const last = std::lower_bound(first, points.end(), hole.rightX - 1, isBefore);
  return {first, static_cast<std::size_t>(last - first)};
}

bool isBreak(const TFrame& frame, TPointView points, const TLineHole& hole) {
  const TPointView inside = pointsIn(points, hole);
  const int longest = std::max(columnsGoingOn(points, hole, inside.begin(), 1),
                               columnsGoingOn(points, hole, inside.end() - 1, -1));
  const int width = hole.rightX - hole.leftX;
  const int most = std::clamp(static_cast<int>(kGoingOnShare * width), kLeastGoingOn, kSureGoingOn);
  return frame.trace.passes(kGoesOn, longest, most);
}

// A backing may show in a gap, but not a plate, nor a stripe that bends away from the line.
bool isOpen(const TFrame& frame, TPointView points, const TLineHole& hole) {
  const TPointView inside = pointsIn(points, hole);
  const int width = hole.rightX - hole.leftX;
  const bool isWide = width > kFillingShare * frame.image.cols;
  const auto goesOn = [&](cv::Point2f p) { return isWide || offLine(hole, p) < kFillingPx; };
  const auto filled = static_cast<double>(std::count_if(inside.begin(), inside.end(), goesOn));
  return frame.trace.passes(kFilled, filled / std::max(width - 1, 1), kMostFilled);
}

// The columns about a gap.
struct TGreyColumns {
  cv::Mat grey;
  int firstX;
  int clearPx;  // from the stripe to its surroundings

  // The light on a row and beside it, over that of the surroundings in the same column.
  int over(int x, double y) const {
    const int row = roundToInt(y);
    const auto level = [&](int r) {
      return static_cast<int>(grey.at<unsigned char>(std::clamp(r, 0, grey.rows - 1), x - firstX));
    };
    int brightest = 0;
    for (int r = row - kLineRows; r <= row + kLineRows; ++r) brightest = std::max(brightest, level(r));
    return brightest - std::max(level(row - clearPx), level(row + clearPx));
  }
};

// Median over the centres of the line beside an edge; 0 without any.
double lightBeside(const TGreyColumns& columns, TPointView points, const TLineHole& hole, bool isLeft) {
  std::array<double, kBesideColumns> light{};
  std::size_t count = 0;
  const int firstX = isLeft ? hole.leftX - kBesideColumns + 1 : hole.rightX;
  for (const cv::Point2f p : points) {
    const int x = truncToInt(p.x);
    if (x < firstX || x >= firstX + kBesideColumns) continue;
    light[count++] = columns.over(x, static_cast<double>(p.y));
  }
  const auto middle = light.begin() + static_cast<std::ptrdiff_t>(count / 2);
  std::nth_element(light.begin(), middle, light.begin() + static_cast<std::ptrdiff_t>(count));
  return *middle;
}

// A blob beside the stripe or spatter over it takes the centres, but the stripe shines on.
bool isDark(const TFrame& frame, const TStripe& stripe, const TLineHole& hole) {
  const cv::Rect columns(hole.leftX - kBesideColumns, 0, hole.rightX - hole.leftX + 2 * kBesideColumns,
                         frame.image.rows);
  const cv::Rect part = columns & cv::Rect({0, 0}, frame.image.size());
  const cv::Mat seen = frame.image(part);
  const TBuffer<unsigned char> pixels(frame.memory, greyBytes(seen));
  const TGreyColumns light{toGrey(seen, pixels), part.x, roundToInt(stripe.widthPx) + kClearPx};
  const double beside =
      std::min(lightBeside(light, stripe.points, hole, true), lightBeside(light, stripe.points, hole, false));
  int lit = 0;
  for (int x = hole.leftX + 1; x < hole.rightX; ++x) {
    const double y = hole.slope * x + hole.intercept;
    lit += light.over(x, y) >= std::max(kLitShare * beside, 1.0) ? 1 : 0;
  }
  return frame.trace.passes(kDark, static_cast<double>(lit) / std::max(hole.rightX - hole.leftX - 1, 1), kMostLit);
}

// The plates of a gap lie on one line, or on two that are parallel.
bool isOnLine(const TFrame& frame, const TStripe& stripe, const TLineHole& hole) {
  const double tolerancePx = TGapSettings::of(frame.params).lineTolerancePx;
  const auto isNear = [&](cv::Point2f p) { return offLine(hole, p) < tolerancePx; };
  const auto near = std::count_if(stripe.points.begin(), stripe.points.end(), isNear);
  return frame.trace.passes(kOnLine, static_cast<double>(near) / static_cast<double>(stripe.points.size()),
                            kLeastOnLine);
}

bool isHole(const TFrame& frame, const TStripe& stripe, const TLineHole& hole) {
  return isOnLine(frame, stripe, hole) && isBreak(frame, stripe.points, hole) &&
         isOpen(frame, stripe.points, hole) && isDark(frame, stripe, hole);
}

// The plates beside a tight gap are one straight line.
bool isStraightAcross(const TFrame& frame, TPointView points, double x) {
  const std::optional<double> turnDeg = turnAt(points, static_cast<float>(x), kTurnReachPx);
  return frame.trace.passes(kStraight, turnDeg.value_or(90.0), kMostTurnDeg);
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
  TSeam seam(TPoints(stripe.points, frame.memory));
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
  TList<TDarkBreak> breaks;
  TLineHole line;  // with the widest hole
  TList<TLineHole> holes;
};

// By its breaks, else by its widest hole.
TSeam findAlone(const TFrame& frame, const TStripe& stripe, const TPrevious& previous, TGapSight& sight) {
  const TGapSettings settings = TGapSettings::of(frame.params);
  const bool isTight = settings.minGapPx <= kTightGapPx;
  if (isTight) {
    sight.breaks = findDarkBreaks(frame, stripe);
    const bool isGap = isDarkBreak(frame.trace, sight.breaks) && isTightAt(frame, stripe, sight.breaks[0]);
    if (isGap) return seamAt(frame, stripe, sight.breaks[0]);
  }
  TLineHole& hole = sight.line;
  TSeam seam = findGapAt(frame, stripe, previous, hole);
  if (!seam.isFound) return seam;
  const int next = nextWidth(stripe.points, hole, settings.lineTolerancePx);
  const bool isWide = !isTight || hole.rightX - hole.leftX > kTightGapPx;
  const bool isGap =
      isWide && isHole(frame, stripe, hole) && (isNearLast(seam, previous) || isUnique(frame, hole, next));
  if (!isGap) return TSeam(std::move(seam.stripePts));
  seam.isUnsure = next >= std::max(settings.minGapPx, kLeastRivalPx);
  return seam;
}

// A place of this frame, and the seam that it would be.
struct TPlace {
  TBreakPlace place;
  const TDarkBreak* dark = nullptr;
  const TLineHole* hole = nullptr;
};

TList<TPlace> placesOf(const TFrame& frame, const TStripe& stripe, const TGapSight& sight) {
  const TFrame quiet{frame.image, frame.params, frame.memory, {}};
  TList<TPlace> places(frame.memory);
  places.reserve(sight.breaks.size() + sight.holes.size());
  for (const TDarkBreak& dark : sight.breaks) {
    const bool isGap = dark.line >= kLeastPathLine && isTightAt(quiet, stripe, dark);
    if (!isGap) continue;
    const double score = std::min(dark.score, kMostOfBreak);
    places.push_back(
        {{static_cast<float>(dark.x), static_cast<float>(dark.columns), static_cast<float>(score)}, &dark});
  }
  for (const TLineHole& hole : sight.holes) {
    const auto width = static_cast<float>(hole.rightX - hole.leftX);
    const bool isGap = width >= TGapSettings::of(frame.params).minGapPx && isHole(quiet, stripe, hole);
    if (!isGap) continue;
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

}  // namespace

TSeam findOwnGap(const TFrame& frame, const TStripe& stripe, const TPrevious& previous) {
  TGapSight sight{TList<TDarkBreak>(frame.memory), {}, TList<TLineHole>(frame.memory)};
  TSeam seam = findAlone(frame, stripe, previous, sight);
  if (sight.line.rightX == 0)
    findGapAt({frame.image, frame.params, frame.memory, {}}, stripe, previous, sight.line);
  if (sight.line.rightX > 0) sight.holes = holesOf(frame, stripe.points, sight.line);
  const TList<TPlace> places = placesOf(frame, stripe, sight);
  TList<TBreakPlace> seen(frame.memory);
  std::transform(places.begin(), places.end(), std::back_inserter(seen), [](const TPlace& p) { return p.place; });
  const TBreakPlaces path = follow(previous.places != nullptr ? *previous.places : TBreakPlaces(), seen);
  if (const TPlace* const at = knownPlace(places, path, previous)) {
    seam = at->dark != nullptr ? seamAt(frame, stripe, *at->dark) : seamAt(frame, stripe, *at->hole);
  } else if (seam.isFound && isKnown(previous) && seam.isFlush != previous.isFlush) {
    frame.trace.holds(kOtherKind, false);
    seam = TSeam(std::move(seam.stripePts));
  }
  seam.places = path;
  return seam;
}

}  // namespace weld
