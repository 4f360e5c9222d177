#include "stripe/whole_stripe.h"

#include "stripe/turn.h"
#include "support/painted_frame.h"

#include <gtest/gtest.h>

#include <vector>

namespace weld {
namespace {

std::vector<cv::Point2f> scraps(int count, int length) {
  std::vector<cv::Point2f> points;
  for (int i = 0; i < count; ++i)
    points = painted::joined(points, painted::linePoints(100 * i, 100 * i + length, 200.0 + 90.0 * (i % 3)));
  return points;
}

TEST(WholeStripe, isOneOfLongPieces) {
  const struct {
    const char* name;
    std::vector<cv::Point2f> points;
    double columns;
    bool isWhole;  // in an image of 1000 columns
  } rows[] = {
      {"straight", painted::linePoints(0, 400, 100.0, 0.3), 400.0, true},
      {"over a hole",
       painted::joined(painted::linePoints(0, 200, 100.0, 0.3), painted::linePoints(226, 426, 167.8, 0.3)), 400.0,
       true},
      {"hole too large",
       painted::joined(painted::linePoints(0, 200, 100.0, 0.3), painted::linePoints(228, 428, 168.4, 0.3)), 200.0,
       true},
      {"comes out elsewhere",
       painted::joined(painted::linePoints(0, 200, 100.0, 0.3), painted::linePoints(226, 426, 174.5, 0.3)), 200.0,
       true},
      {"step", painted::joined(painted::linePoints(0, 300, 100.0), painted::linePoints(300, 400, 108.0)), 250.0,
       true},
      {"short, in two", painted::joined(painted::linePoints(0, 70, 100.0), painted::linePoints(120, 190, 100.0)),
       70.0, true},
      {"scraps", scraps(8, 60), 60.0, false},
      {"nothing", {}, 0.0, true},
  };
  const cv::Mat image(100, 1000, CV_8UC1);
  const TWeldParams params;
  for (const auto& row : rows) {
    EXPECT_NEAR(meanPieceColumns(row.points), row.columns, 1e-9) << row.name;
    EXPECT_EQ(isWholeStripe(heapFrame(image, params), row.points), row.isWhole) << row.name;
  }
}

TEST(Turn, isTheAngleBetweenTheLinesOnEitherSide) {
  const std::vector<cv::Point2f> bent = painted::bentPoints(0, 100, 200, 50.0, 0.0, 1.0);
  EXPECT_NEAR(turnAt(bent, 100.0F, 60.0F).value_or(0.0), 45.0, 1e-6);
  EXPECT_NEAR(turnAt(bent, 40.0F, 30.0F).value_or(90.0), 0.0, 1e-6);
  EXPECT_FALSE(turnAt(bent, 12.0F, 60.0F).has_value()) << "nine centres on the left";
}

}  // namespace
}  // namespace weld
