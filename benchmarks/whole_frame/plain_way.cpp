#include "plain_way.h"

#include "geometry/line_fitting.h"
#include "plain_extraction.h"
#include "stripe/edge_pairs/edge_pairs.h"
#include "stripe/regions.h"

#include <opencv2/imgproc.hpp>

namespace bench {

namespace {

constexpr int kBandPx = 60;

}  // namespace

TWeldLineRes detectGapPlainly(const cv::Mat& image, const TWeldParams& params, const TWeldLineRes& previous) {
  cv::Mat grey;
  image.copyTo(grey);
  cv::Mat display;
  cv::cvtColor(grey, display, cv::COLOR_GRAY2BGR);
  weld::TMemory* const memory = weld::heapMemory();
  weld::TList<cv::Point> guide(memory);
  if (previous.isFound) guide = weld::toIntPoints(previous.stripePts, memory);
  const auto bands = weld::buildStripeRegions(grey.size(), guide, kBandPx, memory);
  const std::vector<cv::Rect> regions(bands.begin(), bands.end());
  TWeldLineRes result;
  result.stripePts = weld::plain::extractStripe(grey, regions, static_cast<int>(weld::kEdgeThreshold)).centres;
  const weld::TConsensusRule rule{params.angleRange4.min, params.angleRange4.max, params.dPara2, params.dPara3};
  result.isFound = previous.isFound ? weld::fitLine(result.stripePts, params.dPara4, memory).isValid
                                    : weld::fitLineRansac(result.stripePts, rule, memory).isValid;
  return result;
}

}  // namespace bench
