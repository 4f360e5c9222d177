// Stripe centres from pairs of rising and falling grey-level edges, one per image column.
#pragma once

#include "stripe/stripe.h"
#include "trace/frame.h"

#include <opencv2/core.hpp>

namespace weld {

inline constexpr float kEdgeThreshold = 30.0F;  // grey levels

// Centres of the stripe inside the regions.
//   threshold  grey level that an edge pixel must reach, and mean step per row that an edge must exceed.
// An empty image or no regions gives an empty stripe.
TStripe extractEdgePairs(const TFrame& frame, TView<cv::Rect> regions, float threshold = kEdgeThreshold);

}  // namespace weld
