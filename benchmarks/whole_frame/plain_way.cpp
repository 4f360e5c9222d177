#include "plain_way.h"

#include "detectors/stripe_front_end.h"
#include "geometry/line_fitting.h"
#include "plain_extraction.h"
#include "stripe/regions.h"

#include <opencv2/imgproc.hpp>

namespace bench {

TWeldLineRes detectGapPlainly(const cv::Mat& image, const TWeldParams& params, const TWeldLineRes& previous) {
  cv::Mat grey;
  image.copyTo(grey);
  cv::Mat display;
  cv::cvtColor(grey, display, cv::COLOR_GRAY2BGR);
  std::vector<cv::Point> guide;
  if (previous.isFound) guide = weld::toIntPoints(previous.stripePts);
  const std::vector<cv::Rect> regions = weld::buildStripeRegions(grey.size(), guide, weld::kBandPx);
  TWeldLineRes result;
  result.stripePts = weld::plain::extractStripe(grey, regions, static_cast<int>(weld::kEdgeThreshold)).centres;
  const TLinePara line = previous.isFound ? weld::fitLine(result.stripePts, params.dPara4)
                                          : weld::fitLineRansac(params.angleRange4.min, params.angleRange4.max,
                                                                params.dPara2, params.dPara3, result.stripePts);
  result.isFound = line.isValid;
  return result;
}

}  // namespace bench
