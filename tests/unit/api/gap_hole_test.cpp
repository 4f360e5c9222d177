#include "api/gap_hole.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace weld {
namespace {

// A gap from column 200 to 240, of which the left part shines dimly and has some centres.
TEST(GapHole, isAsWideAsTheDarkOnItsLine) {
  for (const int light : {40, 170}) {
    cv::Mat image(120, 440, CV_8UC1, cv::Scalar(20));
    TStripe stripe(heapMemory());
    stripe.widthPx = 9.0;
    for (int x = 0; x < image.cols; ++x) {
      const bool isInGap = x > 200 && x < 240;
      if (isInGap && x > 220) continue;
      image(cv::Rect(x, 56, 1, 9)) = cv::Scalar(20 + (isInGap ? light : 180));
      if (!isInGap || x % 2 == 0) stripe.points.emplace_back(static_cast<float>(x), 60.0F);
    }
    const TWeldParams params;
    const std::optional<TLineHole> hole = openHole(heapFrame(image, params), stripe, {}, {0.0, 60.0, 220, 240});
    ASSERT_TRUE(hole.has_value());
    EXPECT_EQ(hole->leftX, light < 90 ? 200 : 220);
    EXPECT_EQ(hole->rightX, 240);
  }
}

// A flank that goes down from the edge of a wide gap is a groove's; a short one is the edge's own rounding.
TEST(GapHole, doesNotBeginWithAFlank) {
  for (const int flankColumns : {10, 40}) {
    cv::Mat image(200, 640, CV_8UC1, cv::Scalar(20));
    TStripe stripe(heapMemory());
    stripe.widthPx = 9.0;
    for (int x = 0; x < image.cols; ++x) {
      if (x > 100 + flankColumns && x < 500) continue;
      const int y = x < 500 ? 60 + std::max(0, x - 100) : 60;
      image(cv::Rect(x, y - 4, 1, 9)) = cv::Scalar(200);
      stripe.points.emplace_back(static_cast<float>(x), static_cast<float>(y));
    }
    const TWeldParams params;
    const TLineHole hole{0.0, 60.0, 100, 500};
    EXPECT_EQ(openHole(heapFrame(image, params), stripe, {}, hole).has_value(), flankColumns < 15) << flankColumns;
  }
}

}  // namespace
}  // namespace weld
