// Stripe centres from pairs of rising and falling grey-level edges, one per image column.
#pragma once

#include "stripe/stripe_scratch.h"
#include "support/trace.h"
#include "zelWeldDetect.h"

#include <opencv2/core.hpp>

#include <vector>

namespace weld {

struct TStripeCentres {
  TLentList<cv::Point2f> points;       // one per column, left to right
  double modalWidthPx = 0.0;           // most frequent stripe width; 0 with fewer than 10 columns
  TLentList<TWeldPointStatus> status;  // one per scanned column, in region order
};

// Centres of the stripe inside the regions.
//   image      8-bit, one channel (of 3 and 4 channels the regions are converted); anything else raises
//   cv::Exception. threshold  grey level that an edge pixel must reach, and mean step per row that an edge must
//   exceed.
// An empty image or no regions gives an empty result.
TStripeCentres extractStripeCentres(const cv::Mat& image, const std::vector<cv::Rect>& regions, float threshold,
                                    TStripeScratch& scratch, const TTrace& trace = {});

}  // namespace weld
