#include "detectors/corner_flanks.h"

#include "detectors/corner_check.h"
#include "support/painted_frame.h"

#include <gtest/gtest.h>

namespace {

TEST(TrimFlankOverlap, cutsWhatReachesBeyondTheFarEndOfTheOther) {
  const auto flank = [](int from, int to, double k, double b) {
    weld::TFittedLine line(weld::heapMemory());
    line.k = k;
    line.b = b;
    line.isValid = true;
    const auto points = painted::linePoints(from, to, k * from + b, k);
    line.inliers.assign(points.begin(), points.end());
    return line;
  };
  const struct {
    cv::Size size;
    int leftFrom;
    float leftEnd, rightStart;
  } rows[] = {{{640, 480}, 100, 500, 100},  // points in the columns of the ends stay
              {{320, 480}, 100, 559, 80},   // they cross in column 320
              {{640, 280}, 100, 559, 80},   // and in row 280
              {{640, 480}, 551, 559, 80}};  // 9 points on the left
  for (const auto& row : rows) {
    weld::TFlankPair flanks{flank(row.leftFrom, 560, 0.5, 120.0), flank(80, 501, -0.5, 440.0)};
    const TWeldParams weldParams = TCornerSettings().params();
    const weld::TCornerParams params(weldParams);
    const cv::Mat image = painted::dark(row.size.width, row.size.height);
    weld::trimFlankOverlap({weld::heapFrame(image, weldParams), {}, params}, flanks);
    EXPECT_EQ(flanks.left.inliers.back().x, row.leftEnd) << row.size << row.leftFrom;
    EXPECT_EQ(flanks.right.inliers.front().x, row.rightStart) << row.size << row.leftFrom;
  }
}

TEST(CalcIntersecAngle, differenceBeyondHalfATurnLosesHalfATurn) {
  const struct {
    cv::Point2d left, right;  // from the corner to the first column of the flank, y down
    double expectedDeg;
  } rows[] = {{{-100, 0}, {0, 100}, 90.0},
              {{-100, -50}, {100, -50}, 126.8699},
              {{-100, 10}, {100, -50}, 20.8545},
              {{100, -50}, {-100, 10}, 20.8545}};
  const auto aimed = [](cv::Point2d offset) {
    weld::TFittedLine flank(weld::heapMemory());  // its height at its first point counts, not the point's row
    flank.inliers = {{static_cast<float>(320.0 + offset.x), -7.0F}};
    flank.b = 240.0 + offset.y;
    return flank;
  };
  for (const auto& row : rows) {
    const weld::TFlankPair flanks{aimed(row.left), aimed(row.right)};
    EXPECT_NEAR(weld::calcIntersecAngle(flanks, {320, 240.0}), row.expectedDeg, 1e-3) << row.left;
  }
}

}  // namespace
