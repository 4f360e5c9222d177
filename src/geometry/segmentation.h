// The stripe as a short list of straight pieces.
#pragma once

#include "geometry/piece.h"
#include "trace/frame.h"

namespace weld {

// When two neighbouring pieces are one. All limits are exclusive, px.
struct TMergeLimits {
  float heightPx = 5.0F;  // height of the joint over the chord of the two pieces
  float gapXPx = 200.0F;  // column distance of the facing ends
  float gapYPx = 20.0F;   // row distance of the facing ends
};

inline constexpr float kPolygonEpsilonPx = 3.0F;

// See TBaseWeld::segmentStripe.
TPieces segmentStripe(const TFrame& frame, TPointView stripePts, const TMergeLimits& limits,
                      float polyEpsilonPx = kPolygonEpsilonPx);

// Whether two fitted neighbours are one piece.
bool areOnePiece(const TPiece& first, const TPiece& second, const TMergeLimits& limits);

}  // namespace weld
