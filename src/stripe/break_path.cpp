#include "stripe/break_path.h"

#include <algorithm>
#include <cmath>

namespace weld {

namespace {

constexpr float kReachPx = 8.0F;  // from frame to frame
constexpr float kWidthReachPx = 4.0F;
constexpr float kFading = 0.8F;
constexpr float kForgotten = 2.0F;
constexpr float kHighest = 24.0F;  // of a score, so that what lies far back leaves no trace

bool isSame(const TBreakPlace& a, const TBreakPlace& b) {
  return std::abs(a.x - b.x) <= kReachPx && std::abs(a.widthPx - b.widthPx) <= kWidthReachPx;
}

void insert(const TBreakPlace& place, TBreakPlaces& places) {
  const auto begin = places.all.begin();
  const auto end = begin + places.count;
  const auto at = std::find_if(begin, end, [&](const TBreakPlace& p) { return p.score < place.score; });
  if (at == places.all.end()) return;
  places.count = std::min(places.count + 1, static_cast<int>(TBreakPlaces::kMost));
  std::copy_backward(at, begin + places.count - 1, begin + places.count);
  *at = place;
}

}  // namespace

TBreakPlaces follow(const TBreakPlaces& before, TView<TBreakPlace> seen) {
  TBreakPlaces now;
  for (TBreakPlace place : seen) {
    float score = 0.0F;
    for (const TBreakPlace& old : before.view()) {
      if (isSame(old, place)) score = std::max(score, old.score);
    }
    place.score = std::min(place.score + kFading * score, kHighest);
    insert(place, now);
  }
  for (TBreakPlace old : before.view()) {
    old.score *= kFading;
    const bool isSeen =
        std::any_of(seen.begin(), seen.end(), [&](const TBreakPlace& place) { return isSame(old, place); });
    if (!isSeen && old.score >= kForgotten) insert(old, now);
  }
  return now;
}

TBreakScore scoreAt(const TBreakPlaces& places, float x) {
  TBreakScore score;
  for (const TBreakPlace& place : places.view()) {
    double& highest = std::abs(place.x - x) <= kReachPx ? score.here : score.elsewhere;
    highest = std::max(highest, static_cast<double>(place.score));
  }
  return score;
}

}  // namespace weld
