// Where to look for the stripe: the whole image on a first detection, bands around the previous stripe
// when tracking.
#pragma once

#include "support/list.h"

#include <opencv2/core.hpp>

namespace weld {

// Search regions for an image, left to right, in image coordinates.
//   guide   the previous stripe, any order.
//   bandPx  half height of the band around the guide; 1.5 times as much where the guide is sparse.
// Fewer than 10 guide points, or any outside the image: one region, the whole image. A guide that spans
// 150 px or less in x: no regions. A region may be the empty rectangle. An empty image: no regions.
TList<cv::Rect> buildStripeRegions(cv::Size imageSize, TIntPointView guide, int bandPx, TMemory* memory);

}  // namespace weld
