// Working memory of the stripe extraction.
#pragma once

#include "stripe/edge_kernels.h"
#include "stripe/guide_breaks.h"
#include "stripe/ridge.h"
#include "support/scratch.h"

#include <opencv2/core.hpp>

#include <cstdint>
#include <vector>

namespace weld {

// A pair of edges. Whole image pixels.
struct TStripeCandidate {
  int x = 0;
  int y = 0;  // grey-weighted centre between the edges
  int widthPx = 0;
};

// The best run of candidates that ends at a candidate.
struct TStripeRun {
  std::int64_t score = 0;
  int previous = -1;  // candidate in the column before, -1 where the run begins
  bool isChosen = false;
};

// One scan of a frame at a time works in here.
struct TStripeScratch : TScratch {
  std::vector<TGuideBreak> breaks;
  std::vector<TStripeCandidate> candidates;
  std::vector<TStripeRun> runs;
  std::vector<unsigned char> grey;  // of a region of a colour image
  TRidgeScratch ridge;
  // Of fixed size, and so without heap memory, for the bands of a tracked stripe. They never shrink.
  cv::AutoBuffer<std::uint64_t, 512> marks;
  cv::AutoBuffer<TEdgeRow, 256> edgeRows;

  // Takes the large pieces of memory at once, as whole frames of this size and colour need them, and touches them:
  // no later frame waits for them, and what a run needs shows with its first frame.
  void reserveFor(const cv::Mat& frame, bool withRidges);
};

}  // namespace weld
