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
  TSeam seam = findGap(frame, stripe, previous, hole);
  if (!seam.isFound) return seam;
  const bool isWide = !isTight || hole.rightX - hole.leftX > kTightGapPx;
  if (isWide && isHole(frame, stripe, hole)) return seam;
  return TSeam(std::move(seam.stripePts));
}

}  // namespace weld
