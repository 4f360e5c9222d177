// Where edge pairs leave the stripe open.
#pragma once

#include "stripe/stripe.h"

#include <opencv2/core.hpp>

namespace weld {

// The parts of the regions in which ridges can fill up edge pairs: the columns without a centre and some on either
// side of them, where a ridge shows that it is the stripe's. Left to right, apart from each other, inside the
// image; one part where they are most of the columns.
//   leastColumns  of a hole over which the stripe goes level; smaller ones are left alone,
//   near          and so are holes outside these columns
TList<cv::Rect> findOpenParts(const TStripe& edgePairs, TView<cv::Rect> regions, cv::Size imageSize,
                              int leastColumns, const TColumnSpan& near);

}  // namespace weld
