#include "profile/light_ray.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>

namespace weld {
namespace {

constexpr double kFarPx = 250.0;
const cv::Point2d kFrom(60.0, 60.0);
const cv::Point2d kAlong(std::sqrt(0.5), std::sqrt(0.5));

// A stripe that falls by 45 degrees, one column after the other: its rows x - 4 to x + 4.
void draw(cv::Mat& image, int fromX, int toX, unsigned char grey) {
  for (int x = fromX; x < toX; ++x) {
    for (int y = x - 4; y <= x + 4; ++y) image.at<unsigned char>(y, x) = grey;
  }
}

void drawBlot(cv::Mat& image, int x, int y) {
  for (int row = y - 12; row <= y + 12; ++row) {
    for (int column = x - 12; column <= x + 12; ++column) image.at<unsigned char>(row, column) = 130;
  }
}

double columns(int count) {
  return count * std::sqrt(2.0);
}

TEST(LightRay, followsTheLightOfAFlankPastHolesAndBlotsToItsEnd) {
  struct TRow {
    const char* name;
    std::function<void(cv::Mat&)> change;  // of a stripe up to column 100
    double litPx;
    bool hasDarkColumn;  // in the first 60 px
    double freePx = kFarPx;
  };
  const TRow rows[] = {
      {"as it is", [](cv::Mat&) {}, columns(40), true},
      {"no end near", [](cv::Mat& image) { draw(image, 100, 180, 100); }, columns(120), false},
      {"a hole", [](cv::Mat& image) { draw(image, 70, 76, 0); }, columns(40), true},
      {"a hole, and a short rest", [](cv::Mat& image) { draw(image, 86, 92, 0); }, columns(26), true},
      {"a hole too long", [](cv::Mat& image) { draw(image, 70, 100, 0), draw(image, 110, 180, 100); }, columns(10),
       true},
      {"a blot", [](cv::Mat& image) { drawBlot(image, 66, 50); }, columns(40), true},
      {"another brightness", [](cv::Mat& image) { draw(image, 80, 180, 255), draw(image, 20, 80, 90); },
       columns(20), false},
      {"another surface from here on", [](cv::Mat& image) { draw(image, 80, 100, 0); }, 8.0, true, 8.0},
      {"the same light beyond it", [](cv::Mat&) {}, columns(40), true, 8.0},
      {"dark at once", [](cv::Mat& image) { draw(image, 61, 100, 0); }, 0.0, true},
      {"stray light at once", [](cv::Mat& image) { draw(image, 59, 100, 20); }, -2.5, true},
      {"stray light for long", [](cv::Mat& image) { draw(image, 55, 100, 20); }, 0.0, true},
      {"black", [](cv::Mat& image) { image.setTo(0); }, 0.0, false},
  };
  for (const TRow& row : rows) {
    SCOPED_TRACE(row.name);
    cv::Mat image(256, 256, CV_8UC1, cv::Scalar(0));
    draw(image, 20, 100, 100);
    row.change(image);
    const TLightRay ray(image, kFrom, kAlong);
    EXPECT_NEAR(ray.litPx(row.freePx), row.litPx, 2.0);
    EXPECT_EQ(ray.hasDarkColumn(60.0), row.hasDarkColumn);
  }
}

}  // namespace
}  // namespace weld
