// Candidates for the stripe's centre in every column of a search region.
#pragma once

#include "support/column_status.h"
#include "support/kernels/kernels.h"
#include "support/list.h"

#include <opencv2/core.hpp>

namespace weld {

// A pair of edges. Whole image pixels.
struct TStripeCandidate {
  int x = 0;
  int y = 0;  // grey-weighted centre between the edges
  int widthPx = 0;
};

// Scans regions of one image and gathers what it finds: the candidates column by column from left to right,
// and one status for every column.
class TRegionScanner {
public:
  //   frame      8-bit grey, BGR or BGRA; in colour the regions are converted.
  //   threshold  grey level that an edge pixel must reach, and mean step per row that an edge must exceed;
  //              -1 .. 255.
  TRegionScanner(const cv::Mat& frame, int threshold, TMemory* memory,
                 const TEdgeKernels& edgeKernels = kernels().edges);

  // A region with negative x or y or less than two columns inside the image adds nothing; what lies beyond
  // the right and lower border is left out.
  void scanStripeRegion(const cv::Rect& region);

  TList<TWeldPointStatus> status;
  TList<TStripeCandidate> candidates;

private:
  void appendColumns(const cv::Rect& region, int first, int lane, const TStripPairs& pairs);

  cv::Mat image;  // at least as wide as a strip
  cv::Size imageSize;
  int threshold;
  TMemory* memory;
  const TEdgeKernels& edges;
};

}  // namespace weld
