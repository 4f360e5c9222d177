#include "stripe/dim_runs.h"

#include <gtest/gtest.h>

namespace weld {
namespace {

struct TRun {
  const char* name;
  int first;
  int last;
  int light;  // of 200 on the left and 120 on the right
  int offPx;  // from the course
  std::size_t dropped;
};

TEST(DimRuns, areDroppedWhereTheyAreLongDarkAndOnCourse) {
  const TRun rows[] = {{"as bright as the darker plate", 200, 239, 110, 0, 0},
                       {"out of a gap", 200, 239, 30, 0, 40},
                       {"beside the course", 200, 239, 30, 12, 40},
                       {"a flank", 200, 239, 30, 20, 0},
                       {"a break", 200, 202, 0, 0, 0}};
  for (const TRun& row : rows) {
    cv::Mat image(200, 440, CV_8UC1, cv::Scalar(20));
    TStripe stripe(heapMemory());
    stripe.widthPx = 9.0;
    for (int x = 0; x < image.cols; ++x) {
      const bool isIn = x >= row.first && x <= row.last;
      const int y = 60 + x / 10 + (isIn ? row.offPx : 0);
      const int light = isIn ? row.light : x < row.first ? 200 : 120;
      image(cv::Rect(x, y - 4, 1, 9)) = cv::Scalar(20 + light);
      stripe.points.emplace_back(static_cast<float>(x), static_cast<float>(y));
      stripe.sources.push_back({});
    }
    const TWeldParams params;
    const auto rest = withoutDimRuns(heapFrame(image, params), stripe);
    EXPECT_EQ(rest.has_value(), row.dropped > 0) << row.name;
    if (!rest) continue;
    EXPECT_EQ(stripe.points.size() - rest->points.size(), row.dropped) << row.name;
    EXPECT_EQ(rest->points.size(), rest->sources.size());
  }
}

}  // namespace
}  // namespace weld
