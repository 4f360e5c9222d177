#include "profile/flare_end.h"

#include "support/image_test.h"
#include "support/line_math.h"

#include <algorithm>
#include <cmath>

namespace weld {

namespace {

constexpr float kBeyondPx = 100.0F;  // columns behind a flare that tell the stripe beside it
constexpr double kBesidePx = 6.0;    // rows from the line of the piece
constexpr std::size_t kLeastBeside = 25;
constexpr int kFarthestPx = 100;      // that a line is carried on
constexpr int kMostDarkPx = 26;       // over what is not white
constexpr float kTellingPx = 240.0F;  // a flare, the stripe beside it and its slope: nothing farther tells
constexpr double kReachPx = 12.0;     // that an end may lie beyond its flare

// The stripe behind the flare, beside the line of the piece.
TPoints neighbourOf(const TFrame& frame, const TFlare& flare, TPointView points, const TEndOfPiece& end) {
  const TSlopeLine line = lineAtEnd(frame, end);
  TPoints beside(frame.memory);
  std::copy_if(points.begin(), points.end(), std::back_inserter(beside), [&](cv::Point2f p) {
    const float columns = end.isRight ? p.x - flare.lastX : flare.firstX - p.x;
    const double off = line.k * static_cast<double>(p.x) + line.b - static_cast<double>(p.y);
    return columns > 0.0F && columns <= kBeyondPx && std::abs(off) > kBesidePx;
  });
  return beside;
}

// The centres that tell of a flare at an end. The same ones are looked at as on the whole piece.
TPointView tellingOf(const TEndOfPiece& end) {
  const TPointView piece = end.piece;
  if (!end.isRight) return centresIn(piece, {piece.front().x, piece.front().x + kTellingPx});
  const TPointView near = centresIn(piece, {piece.back().x - kTellingPx, piece.back().x});
  std::size_t first = piece.size() - near.size();
  first -= first % kFlareStride;
  return piece.part(first, piece.size() - first);
}

// These centres, and those that the line would have where it goes on through something white.
TPoints carriedOn(const TFrame& frame, const TEndOfPiece& end, const TSlopeLine& line) {
  const TPointView telling = tellingOf(end);
  TPoints points(telling.begin(), telling.end(), frame.memory);
  const int lastX = roundToInt(static_cast<double>(end.isRight ? points.back().x : points.front().x));
  int dark = 0;
  for (int i = 1; i <= kFarthestPx && dark <= kMostDarkPx; ++i) {
    const int x = lastX + (end.isRight ? i : -i);
    const double row = line.k * x + line.b;
    if (!isOnPixels(frame.image.size(), cv::Point2f(cv::Point2d(x, row)))) break;
    const bool isLit = isWhite(frame.image, {x, roundToInt(row)});
    dark = isLit ? 0 : dark + 1;
    if (isLit) points.emplace_back(static_cast<float>(x), static_cast<float>(row));
  }
  if (!end.isRight) {
    const auto carried = points.begin() + static_cast<std::ptrdiff_t>(telling.size());
    std::reverse(carried, points.end());
    std::rotate(points.begin(), carried, points.end());
  }
  return points;
}

}  // namespace

std::optional<TFlare> flareBeyond(const TFrame& frame, const TEndOfPiece& end, const TSlopeLine& line) {
  const auto endX = static_cast<double>(end.isRight ? end.piece.back().x : end.piece.front().x);
  std::optional<TFlare> nearest;
  for (const TFlare& flare : findFlares(frame, carriedOn(frame, end, line))) {
    const bool isBeyond = end.isRight ? static_cast<double>(flare.lastX) + kReachPx > endX
                                      : static_cast<double>(flare.firstX) - kReachPx < endX;
    const bool isNearer = !nearest || (end.isRight && flare.middleX < nearest->middleX) ||
                          (!end.isRight && flare.middleX > nearest->middleX);
    if (isBeyond && isNearer) nearest = flare;
  }
  return nearest;
}

std::optional<double> endUnderFlare(const TFrame& frame, const TFlare& flare, TPointView points,
                                    const TEndOfPiece& end) {
  const int columns = roundToInt(static_cast<double>(flare.lastX - flare.firstX));
  const TLitEnd own =
      endOfLight(frame, {end.piece, end.isRight, end.widthPx, end.reachPx + columns, end.freePx + columns});
  if (own.isSharp) return own.pos.x;
  const TPoints beside = neighbourOf(frame, flare, points, end);
  if (beside.size() < kLeastBeside) return std::nullopt;
  const TEndOfPiece other{beside, !end.isRight, end.widthPx, columns, columns};
  if (drowns(flare, lineAtEnd(frame, other))) return std::nullopt;
  const double x = endOfLight(frame, other).pos.x + (end.isRight ? -end.apartPx : end.apartPx);
  const bool isUnder = x >= static_cast<double>(flare.firstX) && x <= static_cast<double>(flare.lastX);
  return isUnder ? std::make_optional(x) : std::nullopt;
}

}  // namespace weld
