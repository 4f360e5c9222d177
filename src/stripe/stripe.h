// The stripe of a frame: what passes from extraction to the joints.
#pragma once

#include "support/list.h"
#include "zelWeldToolkit.h"

#include <algorithm>
#include <cstdint>

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

// The centres in the columns from one to another, both of them included.
//   points  x ascending
inline TPointView centresBetween(TPointView points, float fromX, float toX) {
  const auto isBefore = [](cv::Point2f p, float x) { return p.x < x; };
  const auto isBeyond = [](float x, cv::Point2f p) { return x < p.x; };
  const auto* const first = std::lower_bound(points.begin(), points.end(), fromX, isBefore);
  const auto* const last = std::upper_bound(first, points.end(), toX, isBeyond);
  return {first, static_cast<std::size_t>(last - first)};
}

}  // namespace weld
