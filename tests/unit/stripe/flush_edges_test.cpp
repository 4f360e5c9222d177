#include "stripe/flush_edges.h"

#include <opencv2/imgproc.hpp>

#include <gtest/gtest.h>

namespace weld {
namespace {

// A level stripe 5 rows thick along row 60, columns 20 to 379; its light and that of the room step in the middle.
TEST(FlushEdges, takeASmallStepOfTheStripeOnlyWhereTheRoomLightStepsToo) {
  constexpr double kNone = 0.0;
  const struct {
    const char* name;
    int left, right;          // light of the stripe over the room
    int darkRoom, lightRoom;  // left and right of the edge
    int slant;                // columns from the edge above the stripe to that below
    double x;
  } rows[] = {
      {"large step", 60, 150, 40, 40, 0, 199.5},        {"small step", 100, 150, 40, 40, 0, kNone},
      {"and the room's", 100, 150, 40, 80, 0, 199.5},   {"aslant", 140, 200, 20, 40, 40, 199.5},
      {"too far aslant", 140, 200, 20, 40, 160, kNone}, {"the other way", 100, 150, 80, 40, 0, kNone},
      {"faint room", 100, 150, 3, 6, 0, kNone},         {"step of the room alone", 120, 120, 40, 80, 0, kNone}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    cv::Mat image(120, 400, CV_8UC1);
    TStripe stripe(heapMemory());
    for (int x = 0; x < image.cols; ++x) {
      for (int y = 0; y < image.rows; ++y) {
        const bool isRight = x >= 200 + row.slant * (y - 60) / 40;
        const bool isOn = std::abs(y - 60) <= 2 && x >= 20 && x < 380;
        const int room = isRight ? row.lightRoom : row.darkRoom;
        image.at<unsigned char>(y, x) =
            static_cast<unsigned char>(room + (isOn ? (x < 200 ? row.left : row.right) : 0));
      }
      if (x >= 20 && x < 380) stripe.points.emplace_back(static_cast<float>(x), 60.0F);
    }
    const TWeldParams params;
    const TList<TLightStep> steps = findLightSteps(heapFrame(image, params), stripe);
    ASSERT_EQ(steps.size(), row.x == kNone ? 0U : 1U);
    for (const TLightStep& step : steps) EXPECT_NEAR(step.x, row.x, 2.0);
  }
}

// Brightness of a grain of 3 columns, the same for every run.
double grainAt(int x) {
  unsigned v = static_cast<unsigned>(x / 3) * 2654435761U;
  v = (v ^ (v >> 15)) * 2246822519U;
  return static_cast<double>((v ^ (v >> 13)) & 0xFFFFU) / 65535.0;
}

TEST(LightSteps, areWhereBothSidesFitBestNotAtTheSteepestGrain) {
  constexpr int kLeft = 203;
  constexpr int kRight = 411;
  cv::Mat image(100, 640, CV_8UC1, cv::Scalar(10));
  TStripe stripe(heapMemory());
  for (int x = 0; x < image.cols; ++x) {
    const double light = (x >= kLeft && x < kRight ? 200.0 : 70.0) * (1.0 - 0.75 * grainAt(x));
    image(cv::Rect(x, 46, 1, 9)) = cv::Scalar(10.0 + light);
    stripe.points.emplace_back(static_cast<float>(x), 50.0F);
  }
  const TWeldParams params;
  const TList<TLightStep> steps = findLightSteps(heapFrame(image, params), stripe);
  ASSERT_EQ(steps.size(), 2U);
  EXPECT_NEAR(steps[0].x, kLeft - 0.5, 3.0);
  EXPECT_NEAR(steps[1].x, kRight - 0.5, 3.0);
}

}  // namespace
}  // namespace weld
