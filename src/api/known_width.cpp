#include "api/known_width.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace weld {

namespace {

constexpr float kScore = 6.0F;        // of a frame's ends,
constexpr float kScoreOfKept = 2.0F;  // of those that the frames before tell
constexpr float kLeastKnown = 10.0F;  // two frames of the last three
constexpr float kLeastLead = 1.5F;    // over what this frame and those before it say
constexpr double kMostOffPx = 4.0;    // of a distance, by scatter
constexpr double kFollowPx = 8.0;     // of an end, from frame to frame

TBreakPlace placeOf(const TEndColumns& ends, float score) {
  return {static_cast<float>(0.5 * (ends.left + ends.right)), static_cast<float>(ends.right - ends.left), score};
}

}  // namespace

std::optional<TEndColumns> knownEnds(const TBreakPlaces& places) {
  if (places.count == 0 || places.all[0].score < kLeastKnown) return std::nullopt;
  const auto x = static_cast<double>(places.all[0].x);
  const auto width = static_cast<double>(places.all[0].widthPx);
  return TEndColumns{x - 0.5 * width, x + 0.5 * width};
}

TEndColumns keepWidth(const TEndColumns& seen, TBreakPlaces& places) {
  std::array<TBreakPlace, 2> shown{placeOf(seen, kScore), {}};
  const TBreakPlaces before = places;
  places = follow(before, TView<TBreakPlace>(shown.data(), 1));
  const auto isAsSeen = [&](const TBreakPlace& place) {
    return std::abs(static_cast<double>(place.widthPx) - (seen.right - seen.left)) <= kMostOffPx;
  };
  float own = 0.0F;
  for (const TBreakPlace& place : places.view()) own = std::max(own, isAsSeen(place) ? place.score : 0.0F);
  if (before.count == 0 || before.all[0].score < std::max(kLeastKnown, kLeastLead * own)) return seen;
  const TBreakPlace& known = before.all[0];
  const auto x = static_cast<double>(known.x);
  const auto width = static_cast<double>(known.widthPx);
  const double leftOff = std::abs(seen.left - (x - 0.5 * width));
  const double rightOff = std::abs(seen.right - (x + 0.5 * width));
  if (std::min(leftOff, rightOff) > kFollowPx) return {seen.left, seen.right, false};
  const TEndColumns kept =
      leftOff < rightOff ? TEndColumns{seen.left, seen.left + width} : TEndColumns{seen.right - width, seen.right};
  shown[1] = placeOf(kept, kScoreOfKept);
  places = follow(before, TView<TBreakPlace>(shown.data(), 2));
  return kept;
}

}  // namespace weld
