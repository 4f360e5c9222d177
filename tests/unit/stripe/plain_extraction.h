// The extraction of stripe centres in its plain form: transposed region images, integral images, edge lists
// and maps, one rule after the other. The oracle of the fast form.
#pragma once

#include "stripe/edge_pairs/region_scan.h"
#include "zelWeldDetect.h"

#include <opencv2/core.hpp>

#include <vector>

namespace weld::plain {

enum TEdgeKind : int { kRising = 0, kFalling = 1 };

struct TStripeEdge {
  int position = -1;  // -1 is an empty slot
  int strength = 0;
  int kind = kRising;
};

struct TStripePair {
  int low = 0;
  int high = 0;
  int centre = 0;
};

struct TExtraction {
  std::vector<TStripeCandidate> candidates;
  std::vector<TWeldPointStatus> status;
  std::vector<cv::Point2f> centres;
  double modalWidthPx = 0.0;
};

double stripeCentroid(const cv::Mat& row, int lo, int hi);

int pairStripeEdges(const cv::Mat& row, std::vector<TStripeEdge> rising, std::vector<TStripeEdge> falling,
                    std::vector<TStripePair>& pairs);

// The centres and the width from the candidates.
void reduceStripeCandidates(TExtraction& result);

TExtraction extractStripe(const cv::Mat& grey, const std::vector<cv::Rect>& regions, int threshold);

}  // namespace weld::plain
