// Calls that no caller should make give the failed result.
#include "support/painted_frame.h"
#include "zelWeldDetect.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

TEST(ToolkitContract, numbersWithoutMeaningGiveTheFailedResult) {
  const TBaseWeld weld;
  const std::vector<cv::Point2f> points = painted::bentPoints(20, 320, 620, 100.0, 0.5, -0.5);
  for (const double bad : {kNaN, kInf, -kInf, -1.0}) {
    TBaseWeld odd;
    TWeldParams params;
    params.dPara4 = bad;
    odd.setWeldParameters(params);
    std::vector<TStripePiece> pieces(1);
    weld.segmentStripe(points, pieces, 5.0F, 200.0F, 20.0F, static_cast<float>(bad));
    EXPECT_TRUE(pieces.empty()) << bad;
    EXPECT_EQ(odd.findALine(points, 0, 100).isValid, bad > 0.0) << bad;
    EXPECT_EQ(weld.findALineRansac(-45.0, 45.0, bad, 0.0, points).isValid, bad > 0.0) << bad;
    EXPECT_EQ(weld.calcFitLinePercent(bad, 100.0, 5.0, {{1, 1}}), 0.0) << bad;
  }
}

TEST(ToolkitContract, emptyImageGivesTheMarkerAndAnUnreadableOneRaises) {
  const std::vector<cv::Point2f> points = painted::linePoints(0, 40, 30.0);
  const auto refine = [&](const cv::Mat& image) {
    return TBaseWeld().modifySingleVGroovePos(points, {20.0F, 30.0F}, 0.0F, 30.0F, image);
  };
  EXPECT_EQ(refine(cv::Mat()), cv::Point2f(-1.0F, -1.0F));
  EXPECT_EQ(refine(cv::Mat(0, 40, CV_8UC1)), cv::Point2f(-1.0F, -1.0F));
  EXPECT_THROW(refine(cv::Mat::zeros(60, 60, CV_16UC1)), cv::Exception);
}

}  // namespace
