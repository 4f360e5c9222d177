// Stripe centres from the ridge of the grey-level surface: for stripes too thin, too thick, too soft or
// too dim for edge pairs. docs/ridge.md explains how.
#pragma once

#include "support/list.h"

#include <opencv2/core.hpp>

namespace weld {

struct TRidgePoint {
  cv::Point2f point;        // sub-pixel centre; x is a whole column
  float widthPx = 0.0F;     // full width at half maximum, along the column
  float contrast = 0.0F;    // grey levels over the brighter side of the surroundings
  float confidence = 0.0F;  // 0..1: rises with the contrast, falls with the scatter of the centres around
};

using TRidgePoints = TList<TRidgePoint>;

struct TRidgeSettings {
  double maxSigmaPx;
  double minContrast;  // grey levels
};

// At most one ridge centre per column, along the most consistent path through the image, left to right. The path
// may end, break and resume; columns without a stripe have no record.
//   grey         8-bit, one channel; anything else raises cv::Exception. An empty image gives an empty list.
//   maxSigmaPx   largest expected sigma of the stripe's profile, px, > 0. Flat tops and blurred stripes are found
//                beyond it, up to about four times the full width at half maximum that it stands for.
//   minContrast  contrast over the surroundings that a stripe needs, grey levels, > 0. Follows the local noise and
//                texture: from a quarter of it on quiet surfaces to four times as much on restless ones.
// A sigma that is not positive searches the narrowest width only, a contrast that is not positive counts as the
// least that is used, 4 grey levels. Same input, same bits.
TRidgePoints extractRidgeCentres(const cv::Mat& grey, const TRidgeSettings& settings, TMemory* memory);

// Rows of centres that are known already, px, one for every column; not a number where none is. Or empty.
using TKnownRows = TView<float>;

// The same into a list, in whose memory it works. Where the ridge runs along known centres it is not measured.
void extractRidgeCentres(const cv::Mat& grey, const TRidgeSettings& settings, TKnownRows known,
                         TRidgePoints& points);

// Working memory that a search of a frame of this size takes, bytes.
std::size_t ridgeBytes(cv::Size frame);

}  // namespace weld
