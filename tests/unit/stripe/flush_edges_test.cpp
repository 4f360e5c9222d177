#include "stripe/flush_edges.h"

#include <gtest/gtest.h>

namespace weld {
namespace {

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
