// Where edge pairs leave the stripe open.
#pragma once

#include "stripe/stripe.h"

#include <opencv2/core.hpp>

namespace weld {

// The holes of edge pairs that ridges are asked to fill.
struct TOpenRule {
  int leastColumns = 1;    // of a hole over which the stripe goes level; smaller ones are left alone,
  TColumnSpan near = {};   // and so are holes outside these columns
  TPointView before = {};  // and those of the last frame's stripe, which ridges did not fill
};

// The parts of the regions in which ridges can fill up edge pairs: the columns without a centre and some on either
// side of them, where a ridge shows that it is the stripe's. Left to right, apart from each other, inside the
// image; one part where they are most of the columns.
TList<cv::Rect> findOpenParts(const TStripe& edgePairs, TView<cv::Rect> regions, cv::Size imageSize,
                              const TOpenRule& rule);

}  // namespace weld
