// How every detector begins: search regions, stripe centres, column status.
#pragma once

#include "detectors/detector_object.h"

#include <opencv2/core.hpp>

#include <vector>

namespace weld {

inline constexpr int kBandPx = 60;              // half height of the search band around the previous stripe
inline constexpr float kEdgeThreshold = 30.0F;  // grey levels

// Each of these extracts as the object's search says, begins an attempt of its trace, and stores column status and
// measure in it. An image that is not 8-bit with one, 3 or 4 channels raises cv::Exception.

// Stripe centres of the whole image, where the mask is empty or not zero.
TLentList<cv::Point2f> extractWholeStripe(TDetectorObject& object, const cv::Mat& image,
                                          const cv::Mat& searchMask);

// Stripe centres in a band around the previous stripe.
TLentList<cv::Point2f> extractStripeNear(TDetectorObject& object, const cv::Mat& image,
                                         const std::vector<cv::Point2f>& previousStripe, int bandPx);

// Along the guide of the object's search; without one near the previous stripe when the previous frame found its
// seam, in the whole image otherwise.
TLentList<cv::Point2f> extractStripe(TDetectorObject& object, const cv::Mat& image, const TWeldLineRes& prevRes,
                                     const cv::Mat& searchMask, int trackingBandPx = kBandPx);

// Ridges instead of edge pairs, always in the whole image; the column status is left alone. Begins an attempt.
TLentList<cv::Point2f> extractRidgeStripe(TDetectorObject& object, const cv::Mat& image, TSearchPath path);

}  // namespace weld
