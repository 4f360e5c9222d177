// The stripe of a frame: what passes from extraction to the joints.
#pragma once

#include "support/list.h"
#include "zelWeldToolkit.h"

#include <algorithm>
#include <cstdint>
#include <limits>

namespace weld {

// What a centre was measured with, and how sure it is.
enum class TCentreOrigin : std::int32_t { edgePair = 0, ridge = 1 };

struct TCentreSource {
  TCentreOrigin origin = TCentreOrigin::edgePair;
  float confidence = 1.0F;  // 0..1; edge pairs count as sure
};

struct TStripe {
  explicit TStripe(TMemory* memory) : points(memory), sources(memory), status(memory) {}

  TPoints points;                  // centres, one per column, left to right
  TList<TCentreSource> sources;    // one per centre
  TList<TWeldPointStatus> status;  // one per scanned column, in region order
  double widthPx = 0.0;            // most frequent stripe width; 0: not known
};

// Image columns from <= x <= to.
struct TColumnSpan {
  float from = -std::numeric_limits<float>::infinity();
  float to = std::numeric_limits<float>::infinity();

  bool holds(float x) const { return x >= from && x <= to; }
};

// The centres in these columns.
//   points  x ascending
inline TPointView centresIn(TPointView points, const TColumnSpan& span) {
  const auto isBefore = [](cv::Point2f p, float x) { return p.x < x; };
  const auto isBeyond = [](float x, cv::Point2f p) { return x < p.x; };
  const auto* const first = std::lower_bound(points.begin(), points.end(), span.from, isBefore);
  const auto* const last = std::upper_bound(first, points.end(), span.to, isBeyond);
  return {first, static_cast<std::size_t>(last - first)};
}

}  // namespace weld
