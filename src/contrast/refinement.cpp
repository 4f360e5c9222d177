#include "contrast/refinement.h"

#include "contrast/parabola.h"
#include "contrast/stretch.h"
#include "support/exact_log.h"

#include <algorithm>
#include <cmath>

namespace weld {

namespace {

constexpr float kLikeness = 0.45F;    // with the mean profile, or a station is bridged
constexpr float kOffCourse = 2.0F;    // px from the curve through its neighbours, or a station is bridged
constexpr int kLongFit = 12;          // stations on either side of the curve that tells strays
constexpr int kShortFit = 4;          // of the one that smooths
constexpr int kSearchPx = 6;          // of the line's darkest or brightest place
constexpr int kFarthestPx = 16;       // of its edges from there
constexpr int kSidePx = 6;            // of each side that is compared with the line
constexpr float kLowOnFlank = 0.33F;  // share of a flank's height
constexpr double kLeastToFit = 3.0;   // stations
constexpr double kLeastForCurve = 5.0;
constexpr int kLeastStations = 6;
constexpr float kLeastDepth = 0.25F;  // of the mean profile's
constexpr int kWidthReach = 2;        // stations on either side whose widths are taken together

const float* middleOf(const TList<float>& shape) {
  return shape.data() + kProfileReach;
}

// Where the slope at u, the difference of the pixels u and u + 1, is greatest by sign; between pixels.
float steepest(const float* p, int from, int to, float sign) {
  int best = from;
  const auto slope = [&](int u) { return sign * (p[u + 1] - p[u]); };
  for (int u = from; u <= to; ++u) {
    if (slope(u) > slope(best)) best = u;
  }
  const float before = slope(best - 1);
  const float here = slope(best);
  const float after = slope(best + 1);
  const float bend = before - 2.0F * here + after;
  const float rest = bend < 0.0F ? std::clamp(0.5F * (before - after) / bend, -0.5F, 0.5F) : 0.0F;
  return static_cast<float>(best) + 0.5F + rest;
}

float meanOver(const float* p, float from, float to) {
  const int begin = std::clamp(static_cast<int>(std::ceil(from)), -kProfileReach, kProfileReach);
  const int end = std::clamp(static_cast<int>(std::floor(to)), begin, kProfileReach);
  float sum = 0.0F;
  for (int u = begin; u <= end; ++u) sum += p[u];
  return sum / static_cast<float>(end - begin + 1);
}

float logRatio(float a, float b) {
  constexpr float kLeast = 0.02F;
  return static_cast<float>(exactLog(static_cast<double>(std::max(a, kLeast) / std::max(b, kLeast))));
}

// Outwards from the middle, where the profile has gone that share of the way to the level of its side.
float crossing(const float* p, int middle, int step, float side, float share) {
  const float level = p[middle] + share * (side - p[middle]);
  const float sign = side > p[middle] ? 1.0F : -1.0F;
  int u = middle;
  while (std::abs(u - middle) < kFarthestPx && sign * (p[u + step] - level) < 0.0F) u += step;
  const float rise = p[u + step] - p[u];
  const float rest = rise * sign > 0.0F ? std::min((level - p[u]) / rise, 1.0F) : 0.0F;
  return static_cast<float>(u) + static_cast<float>(step) * rest;
}

// The centre lies between places low on both flanks: where one plate is brighter or rounder, its flank reaches far
// out.
TShapeEdges lineEdges(const float* p, float sign) {
  int middle = 0;
  for (int u = -kSearchPx; u <= kSearchPx; ++u) {
    if (sign * p[u] > sign * p[middle]) middle = u;
  }
  const float steepLeft = steepest(p, middle - kFarthestPx, middle - 1, sign);
  const float steepRight = steepest(p, middle, middle + kFarthestPx - 1, -sign);
  const float left = meanOver(p, steepLeft - 1.0F - kSidePx, steepLeft - 1.5F);
  const float right = meanOver(p, steepRight + 1.5F, steepRight + 1.0F + kSidePx);
  TShapeEdges edges;
  edges.centre = 0.5F * (crossing(p, middle, -1, left, kLowOnFlank) + crossing(p, middle, 1, right, kLowOnFlank));
  edges.left = crossing(p, middle, -1, left, 0.5F);
  edges.right = crossing(p, middle, 1, right, 0.5F);
  edges.contrast = logRatio(1.0F + meanOver(p, edges.left, edges.right), 1.0F + 0.5F * (left + right));
  return edges;
}

TShapeEdges stepEdges(const float* p, float sign) {
  TShapeEdges edges;
  edges.left = edges.right = edges.centre = steepest(p, -kSearchPx - 2, kSearchPx + 1, sign);
  const float left = meanOver(p, edges.left - 2.0F - 2 * kSidePx, edges.left - 3.0F);
  const float right = meanOver(p, edges.left + 3.0F, edges.left + 2.0F + 2 * kSidePx);
  const int u = static_cast<int>(std::floor(edges.left));
  const float slope = std::max(sign * (p[u + 1] - p[u]), 1e-6F);
  edges.risePx = std::min(std::abs(right - left) / slope, 2.0F * kProfileReach);
  edges.contrast = logRatio(1.0F + right, 1.0F + left);
  return edges;
}

TShapeEdges edgesOf(const float* p, TTrait trait) {
  if (isEdge(trait)) return stepEdges(p, trait == TTrait::risingEdge ? 1.0F : -1.0F);
  return lineEdges(p, trait == TTrait::dark ? -1.0F : 1.0F);
}

// Through the stations around station i, at i; the value itself where they are too few.
struct TLocalFit {
  const TList<float>& places;
  const TList<std::uint8_t>& counts;

  float at(int i, int reach) const {
    TParabola fit;
    const int begin = std::max(0, i - reach);
    const int end = std::min(static_cast<int>(places.size()) - 1, i + reach);
    for (int k = begin; k <= end; ++k) {
      if (counts[k] != 0) fit.add(static_cast<double>(k - i) / reach, static_cast<double>(places[k]));
    }
    return fit.count() < kLeastToFit ? places[i] : static_cast<float>(fit.at(0.0, kLeastForCurve));
  }
};

// Stations that do not look like the others, or stray from the curve through their neighbours.
TList<std::uint8_t> findMeasured(const TList<float>& places, const TAlignment& alignment, TMemory* memory) {
  TList<std::uint8_t> measured(memory);
  for (std::size_t i = 0; i < places.size(); ++i)
    measured.push_back(alignment.likeness[i] >= kLikeness && alignment.depth[i] >= kLeastDepth ? 1 : 0);
  TList<std::uint8_t> kept(measured.begin(), measured.end(), memory);
  for (int i = 0; i < static_cast<int>(places.size()); ++i) {
    if (std::abs(places[i] - TLocalFit{places, measured}.at(i, kLongFit)) > kOffCourse) kept[i] = 0;
  }
  return kept;
}

// Of a few profiles together, where the line is measured.
float widthAt(const TProfiles& profiles, const TAlignment& alignment, int i, TTrait trait) {
  if (isEdge(trait)) return 0.0F;
  float sum[kProfileSize] = {};
  const int begin = std::max(0, i - kWidthReach);
  const int end = std::min(profiles.count() - 1, i + kWidthReach);
  for (int k = begin; k <= end; ++k) profiles.addShifted(k, alignment.shift[k], sum);
  return edgesOf(sum + kProfileReach, trait).width();
}

}  // namespace

bool isEdge(TTrait trait) {
  return trait == TTrait::risingEdge || trait == TTrait::fallingEdge;
}

TRefinedLine refineLine(const TCourse& course, const TProfiles& profiles, const TAlignment& alignment,
                        TTrait trait, TMemory* memory) {
  TRefinedLine line(memory);
  line.edges = edgesOf(middleOf(alignment.shape), trait);
  TList<float> places(memory);
  places.reserve(course.across.size());
  for (int i = 0; i < course.size(); ++i)
    places.push_back(course.across[i] + alignment.shift[i] + line.edges.centre);
  TList<std::uint8_t> measured = findMeasured(places, alignment, memory);
  const TStretch stretch = findStretch(places, measured, memory);
  if (stretch.end - stretch.begin < kLeastStations) return line;
  line.first = stretch.begin;
  line.firstAlong = course.alongOf(stretch.begin);
  const TLocalFit fit{places, measured};
  for (int i = stretch.begin; i < stretch.end; ++i) {
    line.across.push_back(fit.at(i, measured[i] != 0 ? kShortFit : kLongFit));
    line.measured.push_back(measured[i]);
    line.widthsPx.push_back(measured[i] != 0 ? widthAt(profiles, alignment, i, trait) : 0.0F);
  }
  return line;
}

}  // namespace weld
