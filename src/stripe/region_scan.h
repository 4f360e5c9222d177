// Candidates for the stripe's centre in every column of a search region.
#pragma once

#include "stripe/edge_kernels.h"
#include "stripe/stripe_scratch.h"
#include "support/column_status.h"
#include "zelWeldDetect.h"

#include <opencv2/core.hpp>

#include <vector>

namespace weld {

// Scans regions of one image and gathers what it finds: the candidates column by column from left to right,
// and one status for every column.
class TRegionScanner {
public:
  //   frame      8-bit grey, BGR or BGRA; in colour the regions are converted.
  //   threshold  grey level that an edge pixel must reach, and mean step per row that an edge must exceed;
  //              -1 .. 255.
  //   scratch    working memory; belongs to the scanner as long as it lives.
  TRegionScanner(const cv::Mat& frame, int threshold, TStripeScratch& scratch,
                 const TEdgeKernels& kernels = chooseEdgeKernels());

  // A region with negative x or y or less than two columns inside the image adds nothing; what lies beyond
  // the right and lower border is left out.
  void scanStripeRegion(const cv::Rect& region);

  std::vector<TStripeCandidate>& candidates;  // those of the scratch memory
  TLentList<TWeldPointStatus> status;

private:
  void appendColumns(const cv::Rect& region, int first, int lane, const TStripPairs& pairs);

  cv::Mat image;  // at least as wide as a strip
  cv::Size imageSize;
  int threshold;
  TStripeScratch& memory;
  const TEdgeKernels& kernels;
};

}  // namespace weld
