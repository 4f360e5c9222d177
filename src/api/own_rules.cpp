#include "api/own_rules.h"

#include "detectors/gap.h"
#include "stripe/dark_break.h"
#include "support/line_math.h"
#include "zelWeldSettings.h"

#include <algorithm>
#include <cmath>

namespace weld {

namespace {

constexpr double kTightGapPx = 4.0;  // the widest gap that may show as a dark break alone
constexpr double kMostOffPx = 10.0;  // of a centre beside the line that still touches its end
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

constexpr double kMostRival = 0.8;  // width of the next hole over that of the widest: more may be a lost stretch
constexpr double kSamePlacePx = 20.0;

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

// Of several holes as wide no one can tell the gap from a lost stretch, unless it was there in the frame before.
bool isUnique(const TFrame& frame, const TStripe& stripe, const TSeam& seam, const TLineHole& hole,
              const TPrevious& previous) {
  const TGapSettings settings = TGapSettings::of(frame.params);
  const double moved = static_cast<double>(std::abs(seam.pos.x - previous.pos.x));
  if (previous.isFound && moved <= kSamePlacePx) return true;
  const int next = nextWidth(stripe.points, hole, settings.lineTolerancePx);
  if (next < settings.minGapPx) return true;
  return frame.trace.passes(kUnique, static_cast<double>(next) / (hole.rightX - hole.leftX), kMostRival);
}

bool isHole(const TFrame& frame, const TStripe& stripe, const TLineHole& hole) {
  const TPointView points = stripe.points;
  const auto isBefore = [](cv::Point2f p, int column) { return truncToInt(p.x) <= column; };
  const auto* const inside = std::lower_bound(points.begin(), points.end(), hole.leftX, isBefore);
  const auto* const right = std::lower_bound(points.begin(), points.end(), hole.rightX - 1, isBefore);
  const int longest =
      std::max(columnsGoingOn(points, hole, inside, 1), columnsGoingOn(points, hole, right - 1, -1));
  const int width = hole.rightX - hole.leftX;
  const int most = std::clamp(static_cast<int>(kGoingOnShare * width), kLeastGoingOn, kSureGoingOn);
  return frame.trace.passes(kGoesOn, longest, most);
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
  seam.isFound = true;
  seam.pos = cv::Point2f(static_cast<float>(x), 0.5F * ((next - 1)->y + next->y));
  return seam;
}

}  // namespace

TSeam findOwnGap(const TFrame& frame, const TStripe& stripe, const TPrevious& previous) {
  TLineHole hole;
  const TGapSettings settings = TGapSettings::of(frame.params);
  const bool isTight = settings.minGapPx <= kTightGapPx;
  if (isTight) {
    if (const auto found = findDarkBreak(frame, stripe)) return seamAt(frame, stripe, *found);
  }
  TSeam seam = findGapAt(frame, stripe, previous, hole);
  if (!seam.isFound) return seam;
  const bool isWide = !isTight || hole.rightX - hole.leftX > kTightGapPx;
  const bool isGap = isWide && isHole(frame, stripe, hole) && isUnique(frame, stripe, seam, hole, previous);
  if (isGap) return seam;
  return TSeam(std::move(seam.stripePts));
}

}  // namespace weld
