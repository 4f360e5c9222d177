// The guide of the next search: the previous stripe, with room to grow.
#pragma once

#include <opencv2/core.hpp>

#include <vector>

namespace weld {

// Fills the guide with the points of the stripe, in column order, and a straight continuation of its end pieces
// with one point per column, so that the search regions begin and end marginPx beyond the stripe. A stripe too
// short to make two regions is continued at both ends until it does: one region alone would cut it off. Where the
// image has no room for that, or the stripe fewer than 10 points, the guide is left empty: search the whole image.
//   stripe  points inside the image, any order.
//   guide   every point inside the image; its memory is used again.
void extendGuide(const std::vector<cv::Point2f>& stripe, int marginPx, cv::Size imageSize,
                 std::vector<cv::Point2f>& guide);

}  // namespace weld
