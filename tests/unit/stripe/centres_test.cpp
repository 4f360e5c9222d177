#include "stripe/centres.h"

#include "scenes/scene.h"
#include "stripe/regions.h"

#include <opencv2/imgproc.hpp>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <string>
#include <vector>

namespace weld {
namespace {

constexpr float kThreshold = 30.0F;
constexpr double kMaxErrorPx = 3.0;          // of a centre that lies on the stripe of a rendered scene
constexpr std::ptrdiff_t kMaxCaptured = 45;  // of 640 centres: where a ghost crosses, a blob outshines the stripe

TStripeScratch scratch;  // of all tests, so that each meets the leavings of the others

// A stripe with a soft profile along y = k * x + b over black.
cv::Mat drawStripe(cv::Size size, double k, double b, double peak = 220.0, double sigmaPx = 4.0) {
  cv::Mat image(size, CV_8UC1);
  for (int y = 0; y < size.height; ++y) {
    for (int x = 0; x < size.width; ++x) {
      const double distance = y - (k * x + b);
      image.at<uchar>(y, x) =
          cv::saturate_cast<uchar>(peak * std::exp(-0.5 * distance * distance / (sigmaPx * sigmaPx)));
    }
  }
  return image;
}

std::vector<cv::Rect> wholeOf(const cv::Mat& image) {
  return {cv::Rect({0, 0}, image.size())};
}

double largestError(const std::vector<cv::Point2f>& centres, double k, double b) {
  double largest = 0.0;
  for (const cv::Point2f c : centres) largest = std::max(largest, std::abs(c.y - (k * c.x + b)));
  return largest;
}

TEST(ExtractStripeCentres, FollowsASlantedStripe) {
  const cv::Mat image = drawStripe({640, 480}, 0.2, 150.0);
  const TStripeCentres stripe = extractStripeCentres(image, wholeOf(image), kThreshold, scratch);
  EXPECT_EQ(stripe.points.size(), 640U);
  EXPECT_EQ(stripe.status.size(), 640U);
  EXPECT_LE(largestError(stripe.points, 0.2, 150.0), 1.0);
  EXPECT_GT(stripe.modalWidthPx, 2.0);
}

TEST(ExtractStripeCentres, TrackingBandsGiveTheSameCentresAsTheWholeImage) {
  const cv::Mat image = drawStripe({640, 480}, 0.2, 150.0);
  const TStripeCentres whole = extractStripeCentres(image, wholeOf(image), kThreshold, scratch);
  const std::vector<cv::Point> guide(whole.points.begin(), whole.points.end());
  const TStripeCentres banded =
      extractStripeCentres(image, buildStripeRegions(image.size(), guide, 60), kThreshold, scratch);
  // The bands end before the last column.
  EXPECT_EQ(banded.points, std::vector<cv::Point2f>(whole.points.begin(), whole.points.end() - 1));
}

TEST(ExtractStripeCentres, DimmerSecondStripeNearbyDoesNotCaptureIt) {
  const cv::Size size{640, 480};
  const cv::Mat stripe = drawStripe(size, 0.1, 200.0);
  for (const double offset : {-60.0, -35.0, 35.0, 60.0}) {
    const cv::Mat image = cv::max(stripe, drawStripe(size, 0.1, 200.0 + offset, 120.0));
    const TStripeCentres found = extractStripeCentres(image, wholeOf(image), kThreshold, scratch);
    EXPECT_EQ(found.points.size(), 640U);
    EXPECT_LE(largestError(found.points, 0.1, 200.0), 1.5) << offset;
  }
}

struct TDisturbance {
  std::string name;
  std::function<void(scenes::TLook&)> disturb;
};

TEST(ExtractStripeCentres, DisturbancesInRenderedScenesDoNotCaptureIt) {
  const std::vector<TDisturbance> disturbances{
      {"none", [](scenes::TLook&) {}},
      {"ghost below",
       [](scenes::TLook& look) {
         look.ghostShare = 0.6;
         look.ghostOffsetPx = 45.0;
         look.ghostSpan = 0.7;
       }},
      {"ghost above",
       [](scenes::TLook& look) {
         look.ghostShare = 0.6;
         look.ghostOffsetPx = -60.0;
         look.ghostSpan = 0.7;
       }},
      {"crossing ghost",
       [](scenes::TLook& look) {
         look.ghostShare = 0.6;
         look.ghostOffsetPx = 10.0;
         look.ghostTiltDeg = 15.0;
       }},
      {"spatter and blobs",
       [](scenes::TLook& look) {
         look.spatter = 12;
         look.blobs = 4;
         look.arcGlow = 100.0;
       }},
  };
  for (const TDisturbance& disturbance : disturbances) {
    for (std::uint64_t seed = 1; seed <= 5; ++seed) {
      scenes::TSceneParams params;
      params.joint = scenes::TJoint::plain;
      params.size = {640, 512};
      params.seed = seed;
      params.geometry.tiltDeg = 3.0;
      params.look.fwhmPx = 10.0;
      params.look.peak = 220.0;
      params.look.noiseSigma = 3.0;
      disturbance.disturb(params.look);
      const scenes::TScene scene = scenes::renderScene(params);
      const std::vector<cv::Point2f> centres =
          extractStripeCentres(scene.image, wholeOf(scene.image), kThreshold, scratch).points;
      const auto captured = std::count_if(centres.begin(), centres.end(), [&](cv::Point2f c) {
        return std::abs(c.y - scene.truth.centreY[static_cast<std::size_t>(c.x)]) > kMaxErrorPx;
      });
      EXPECT_GE(centres.size(), 600U) << disturbance.name << ", seed " << seed;
      EXPECT_LE(captured, kMaxCaptured) << disturbance.name << ", seed " << seed;
    }
  }
}

TEST(ExtractStripeCentres, ColumnsWithoutStripeLeaveAStatus) {
  cv::Mat image = drawStripe({640, 480}, 0.0, 240.0);
  image.colRange(300, 340).setTo(0);
  const TStripeCentres found = extractStripeCentres(image, wholeOf(image), kThreshold, scratch);
  EXPECT_EQ(found.points.size(), 600U);
  for (const TWeldPointStatus& column : found.status) {
    EXPECT_EQ(column.status, column.pos >= 300 && column.pos < 340 ? 1 : 0) << column.pos;
  }
}

TEST(ExtractStripeCentres, ColourIsConvertedInsideTheRegions) {
  for (const cv::Size size : {cv::Size(320, 240), cv::Size(20, 240)}) {
    const cv::Mat grey = drawStripe(size, 0.1, 100.0);
    const std::vector<cv::Rect> cases[] = {wholeOf(grey), {{3, 70, 12, 60}}, {{1, 60, 98, 80}, {99, 65, 500, 90}}};
    for (const std::vector<cv::Rect>& regions : cases) {
      const TStripeCentres expected = extractStripeCentres(grey, regions, kThreshold, scratch);
      for (const int code : {cv::COLOR_GRAY2BGR, cv::COLOR_GRAY2BGRA}) {
        cv::Mat colour;
        cv::cvtColor(grey, colour, code);
        const TStripeCentres found = extractStripeCentres(colour, regions, kThreshold, scratch);
        EXPECT_EQ(found.points, expected.points) << size << regions.back();
        EXPECT_EQ(found.status.size(), expected.status.size()) << size << regions.back();
      }
    }
  }
}

TEST(ExtractStripeCentres, InputItCannotReadRaisesOpenCvsException) {
  for (const int type : {CV_8UC2, CV_8SC1, CV_16UC1, CV_16UC3, CV_32FC1, CV_32FC4, CV_64FC1}) {
    const cv::Mat image = cv::Mat::zeros(64, 64, type);
    EXPECT_THROW(extractStripeCentres(image, wholeOf(image), kThreshold, scratch), cv::Exception) << type;
  }
}

TEST(ExtractStripeCentres, NothingToScanGivesNothing) {
  const cv::Mat image = drawStripe({320, 240}, 0.1, 100.0);
  for (const TStripeCentres& found : {extractStripeCentres({}, {{0, 0, 10, 10}}, kThreshold, scratch),
                                      extractStripeCentres(image, {}, kThreshold, scratch)}) {
    EXPECT_TRUE(found.points.empty());
    EXPECT_TRUE(found.status.empty());
    EXPECT_EQ(found.modalWidthPx, 0.0);
  }
}

TEST(ExtractStripeCentres, ThresholdIsRoundedAndAnyValueIsSafe) {
  const cv::Mat image = drawStripe({320, 240}, 0.1, 100.0);
  const auto statusSum = [&](float threshold) {
    int sum = 0;
    for (const TWeldPointStatus& s : extractStripeCentres(image, wholeOf(image), threshold, scratch).status)
      sum += s.status;
    return sum;
  };
  EXPECT_EQ(statusSum(30.4F), statusSum(30.0F));
  EXPECT_EQ(statusSum(29.5F), statusSum(30.0F));
  using TLimits = std::numeric_limits<float>;
  for (const float threshold : {256.0F, 1e30F, TLimits::infinity(), TLimits::quiet_NaN()}) {
    EXPECT_EQ(statusSum(threshold), 320) << threshold;  // status 1 in every column
  }
  for (const float threshold : {-1e30F, -TLimits::infinity(), TLimits::lowest()}) {
    EXPECT_EQ(statusSum(threshold), statusSum(-1.0F)) << threshold;
  }
}

}  // namespace
}  // namespace weld
