// Candidates for the stripe's centre in every column of a search region.
#pragma once

#include "zelWeldDetect.h"

#include <opencv2/core.hpp>

#include <vector>

namespace weld {

struct TStripeCandidate {
  float x = 0.0F;  // column
  float y = 0.0F;  // row of the centre, a whole number
  int lowRow = 0;  // row of the rising edge
  int highRow = 0;
  float widthPx = 0.0F;
};

// Appends the candidates of the region, column by column from left to right, and one status for every
// column. A region with negative x or y or less than two columns inside the image adds nothing; what lies
// beyond the right and lower border is left out.
//   image      8-bit grey.
//   threshold  grey level that an edge pixel must reach, and mean step per row that an edge must exceed.
void scanStripeRegion(const cv::Mat& image, const cv::Rect& region, int threshold,
                      std::vector<TStripeCandidate>& candidates, std::vector<TWeldPointStatus>& status);

}  // namespace weld
