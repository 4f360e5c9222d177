// The stripe as a short list of straight pieces.
#pragma once

#include "zelWeldDetect.h"

#include "support/scratch.h"
#include "support/trace.h"

#include <opencv2/core.hpp>

#include <vector>

namespace weld {

// When two neighbouring pieces are one. All limits are exclusive, px.
struct TMergeLimits {
  float heightPx = 5.0F;  // height of the joint over the chord of the two pieces
  float gapXPx = 200.0F;  // column distance of the facing ends
  float gapYPx = 20.0F;   // row distance of the facing ends
};

inline constexpr float kPolygonEpsilonPx = 3.0F;

// See TBaseWeld::segmentStripe.
TLentList<TStripePiece> segmentStripe(const std::vector<cv::Point2f>& stripePts, const TMergeLimits& limits,
                                      float polyEpsilonPx = kPolygonEpsilonPx, const TTrace& trace = {},
                                      TScratch* scratch = nullptr);

// The two pieces as one, fitted anew; false leaves `merged` alone. A joint fit that fails still merges.
bool tryMergePieces(const TStripePiece& first, const TStripePiece& second, TStripePiece& merged,
                    const TMergeLimits& limits, TScratch* scratch = nullptr);

}  // namespace weld
