#include "api/gap_hole.h"

#include "stripe/stripe_end.h"
#include "support/grey_image.h"
#include "support/line_math.h"
#include "zelWeldSettings.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace weld {

namespace {

constexpr float kLeastHolePx = 4.0F;  // columns step by one, and by two or three in speckle
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

constexpr int kLeastWidenedPx = 12;
constexpr int kBackPx = 60;              // from an edge to the centres that are surely the stripe's
constexpr std::size_t kLeastPiece = 60;  // of such centres
constexpr int kNearPx = 15;  // columns beside an edge that have centres as bright as others where nothing is wrong
constexpr double kFullShare = 0.8;
constexpr int kLeastDarkPx = 8;  // by which an edge moves back

constexpr int kBesideColumns = 12;
constexpr int kClearPx = 12;       // beyond the width of the stripe, where its surroundings begin
constexpr int kLineRows = 3;       // about the line in which its light may lie
constexpr double kLitShare = 0.5;  // of the light beside the gap: as bright a column holds the stripe
constexpr double kMostLit = 0.5;   // of the gap's columns

constexpr TCheck kDark{{16, TWeldOutcome::elementMissing, "gap", "the light goes on through the gap"},
                       "share of the gap's columns that are lit",
                       TRule::atMost};

constexpr TCheck kInSight{{16, TWeldOutcome::elementMissing, "gap", "a flare hides an edge of the gap"},
                          "edges of the gap in sight"};

constexpr double kLeastOnLine = 0.45;  // of the stripe's centres
constexpr TCheck kOnLine{{12, TWeldOutcome::fitTooWeak, "line", "too few stripe points on the line"},
                         "share of stripe points on one line",
                         TRule::atLeast};

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

// The centres from one column to before another.
TPointView pointsFrom(TPointView points, int firstX, int endX) {
  const auto isBefore = [](cv::Point2f p, int column) { return truncToInt(p.x) < column; };
  const auto* const first = std::lower_bound(points.begin(), points.end(), firstX, isBefore);
  const auto* const last = std::lower_bound(first, points.end(), endX, isBefore);
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
  for (const cv::Point2f p : pointsFrom(points, firstX, firstX + kBesideColumns))
    light[count++] = columns.over(truncToInt(p.x), static_cast<double>(p.y));
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
  const TNearLine isNear(hole.slope, hole.intercept, tolerancePx);
  const auto near = std::count_if(stripe.points.begin(), stripe.points.end(), [&](cv::Point2f p) {
    return isNear(static_cast<double>(p.x), static_cast<double>(p.y));
  });
  return frame.trace.passes(kOnLine, static_cast<double>(near) / static_cast<double>(stripe.points.size()),
                            kLeastOnLine);
}

// Whether centres are missing beside an edge, or have less light there than farther away.
bool mayShine(const TFrame& frame, TPointView points, int edge, int away) {
  int count = 0;
  double near = 0.0;
  double far = 0.0;
  const int farPx = kBackPx + kNearPx;
  for (const cv::Point2f p :
       pointsFrom(points, away > 0 ? edge : edge - farPx + 1, away > 0 ? edge + farPx : edge + 1)) {
    const int columns = away * (truncToInt(p.x) - edge);
    if (columns >= kNearPx && columns < kBackPx) continue;
    const int channels = frame.image.channels();
    const int light = greyOf(
        frame.image.ptr(truncToInt(p.y)) + static_cast<std::ptrdiff_t>(channels) * truncToInt(p.x), channels);
    (columns < kNearPx ? near : far) += light;
    count += columns < kNearPx ? 1 : 0;
  }
  return count < kFullShare * kNearPx || near < kFullShare * far;
}

// The steps between neighbouring centres of a line that are wider than from column to column.
//   line  a hole of it
TList<TLineHole> holesOf(TPointView points, const TLineHole& line, double tolerancePx, TMemory* memory) {
  const TNearLine isNear(line.slope, line.intercept, tolerancePx);
  TList<TLineHole> holes(memory);
  const cv::Point2f* last = nullptr;
  for (const cv::Point2f& p : points) {
    if (!isNear(static_cast<double>(p.x), static_cast<double>(p.y))) continue;
    if (last != nullptr && p.x - last->x > kLeastHolePx)
      holes.push_back({line.slope, line.intercept, truncToInt(last->x), truncToInt(p.x)});
    last = &p;
  }
  return holes;
}

TLineHole widened(const TFrame& frame, const TStripe& stripe, const TLineHole& hole) {
  if (hole.rightX - hole.leftX < kLeastWidenedPx) return hole;
  const auto isBefore = [](cv::Point2f p, int column) { return truncToInt(p.x) < column; };
  const TPointView points = stripe.points;
  const auto* const left = std::lower_bound(points.begin(), points.end(), hole.leftX - kBackPx, isBefore);
  const auto* const right = std::lower_bound(left, points.end(), hole.rightX + kBackPx, isBefore);
  // Where the light of the piece on one side ends, if that is farther away.
  const auto edgeOf = [&](TPointView piece, bool isLeft, int edge) {
    const int away = isLeft ? -1 : 1;
    if (!mayShine(frame, points, edge, away) || piece.size() <= kLeastPiece) return edge;
    const int reachPx = away * (truncToInt(isLeft ? piece.back().x : piece.front().x) - edge);
    const double x = endOfLight(frame, {piece, isLeft, stripe.widthPx, reachPx, reachPx}).pos.x;
    return away * (x - edge) > kLeastDarkPx ? roundToInt(x) : edge;
  };
  TLineHole wide = hole;
  const auto before = static_cast<std::size_t>(left - points.begin());
  const auto behind = static_cast<std::size_t>(points.end() - right);
  wide.leftX = edgeOf({points.begin(), before}, true, hole.leftX);
  wide.rightX = edgeOf({right, behind}, false, hole.rightX);
  return wide;
}

bool isInSight(const TFrame& frame, TView<TFlare> flares, const TLineHole& hole) {
  const auto hides = [&](const TFlare& flare) {
    return flare.lastX > static_cast<float>(hole.leftX) && flare.firstX < static_cast<float>(hole.rightX);
  };
  return frame.trace.holds(kInSight, std::none_of(flares.begin(), flares.end(), hides));
}

bool isHole(const TFrame& frame, const TStripe& stripe, const TLineHole& hole) {
  return isOnLine(frame, stripe, hole) && isBreak(frame, stripe.points, hole) &&
         isOpen(frame, stripe.points, hole) && isDark(frame, stripe, hole);
}

}  // namespace

TPointView pointsIn(TPointView points, const TLineHole& hole) {
  return pointsFrom(points, hole.leftX + 1, hole.rightX);
}

int nextWidth(TPointView points, const TLineHole& hole, double tolerancePx) {
  const TNearLine isNear(hole.slope, hole.intercept, tolerancePx);
  int widest = 0;
  int last = hole.leftX;
  for (const cv::Point2f p : points) {
    if (!isNear(static_cast<double>(p.x), static_cast<double>(p.y))) continue;
    const int column = truncToInt(p.x);
    if (last != hole.leftX) widest = std::max(widest, column - last);
    last = column;
  }
  return widest;
}

std::optional<TLineHole> openHole(const TFrame& frame, const TStripe& stripe, TView<TFlare> flares,
                                  const TLineHole& hole) {
  if (!isInSight(frame, flares, hole) || !isHole(frame, stripe, hole)) return std::nullopt;
  return widened(frame, stripe, hole);
}

TList<TLineHole> openHoles(const TFrame& frame, const TStripe& stripe, TView<TFlare> flares, const TLineHole& line,
                           const TAskedHole& asked) {
  const TGapSettings settings = TGapSettings::of(frame.params);
  TList<TLineHole> open(frame.memory);
  for (const TLineHole& hole : holesOf(stripe.points, line, settings.lineTolerancePx, frame.memory)) {
    if (hole.rightX - hole.leftX < settings.minGapPx) continue;
    const bool wasAsked = hole.leftX == asked.hole.leftX && hole.rightX == asked.hole.rightX;
    const std::optional<TLineHole> wide = wasAsked ? asked.open : openHole(frame, stripe, flares, hole);
    if (wide) open.push_back(*wide);
  }
  return open;
}

}  // namespace weld
