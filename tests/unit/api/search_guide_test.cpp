#include "api/search_guide.h"

#include "stripe/regions.h"
#include "support/line_math.h"
#include "support/painted_frame.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace weld {
namespace {

const cv::Size kImage{1280, 1024};
constexpr int kMarginPx = 40;
constexpr int kBandPx = 60;

using TPoints = std::vector<cv::Point2f>;

TPoints guideOf(const TPoints& stripe, int marginPx = kMarginPx) {
  TPoints guide;
  extendGuide(stripe, marginPx, kImage, guide);
  return guide;
}

std::vector<cv::Rect> regionsOf(const TPoints& guide) {
  std::vector<cv::Point> points;
  for (const cv::Point2f p : guide) points.push_back(truncPoint(p));
  return buildStripeRegions(kImage, points, kBandPx);
}

TEST(SearchGuide, continuesTheEndPiecesStraightOn) {
  const TPoints bent = painted::bentPoints(300, 600, 900, 500.0, -0.2, 0.4);
  const TPoints guide = guideOf(bent);
  ASSERT_EQ(guide.size(), bent.size() + 2U * kMarginPx);
  EXPECT_EQ(guide.front().x, 260.0F);
  EXPECT_NEAR(guide.front().y, 508.0F, 0.1F);
  EXPECT_EQ(guide.back().x, 939.0F);
  EXPECT_NEAR(guide.back().y, bent.back().y + 16.0F, 0.1F);
  EXPECT_TRUE(std::is_sorted(guide.begin(), guide.end(), [](auto a, auto b) { return a.x < b.x; }));
}

TEST(SearchGuide, doesNotDependOnTheOrderOfItsPoints) {
  TPoints twoRows = painted::linePoints(300, 900, 500.0);
  for (const cv::Point2f p : painted::linePoints(300, 900, 520.0)) twoRows.push_back(p);
  EXPECT_EQ(guideOf({twoRows.rbegin(), twoRows.rend()}), guideOf(twoRows));
}

TEST(SearchGuide, staysInsideTheImage) {
  struct TRow {
    const char* name;
    TPoints stripe;
    float firstX, lastX;
  };
  const TRow rows[] = {
      {"from border to border", painted::linePoints(0, 1280, 500.0), 0.0F, 1279.0F},
      {"near both borders", painted::linePoints(20, 1270, 500.0), 0.0F, 1279.0F},
      {"rising out of the image", painted::linePoints(300, 800, 510.0, -1.0), 260.0F, 810.0F},
      {"sinking out of the image", painted::linePoints(300, 800, 514.0, 1.0), 260.0F, 809.0F},
  };
  for (const TRow& row : rows) {
    const TPoints guide = guideOf(row.stripe);
    ASSERT_FALSE(guide.empty()) << row.name;
    EXPECT_EQ(guide.front().x, row.firstX) << row.name;
    EXPECT_EQ(guide.back().x, row.lastX) << row.name;
    EXPECT_GT(regionsOf(guide).size(), 1U) << row.name;
  }
}

TEST(SearchGuide, shortStripesGetTwoRegionsOrTheWholeImage) {
  for (const int columns : {10, 60, 151, 200, 301}) {
    const std::vector<cv::Rect> regions = regionsOf(guideOf(painted::linePoints(600, 600 + columns, 500.0)));
    EXPECT_GE(regions.size(), 2U) << columns;
    EXPECT_LT(regions.front().x, 600) << columns;
    EXPECT_LE(regions.front().height, 2 * kBandPx) << columns;
  }
  EXPECT_TRUE(guideOf(painted::linePoints(600, 609, 500.0)).empty()) << "too few points";
  EXPECT_TRUE(guideOf(painted::linePoints(600, 660, 20.0, -0.3)).size() > 0) << "room on the left alone";
  EXPECT_TRUE(guideOf({20, cv::Point2f(5.0F, 5.0F)}).size() > 0) << "one column";
  TPoints guide;
  extendGuide(painted::linePoints(100, 160, 100.0), kMarginPx, {250, 200}, guide);
  EXPECT_TRUE(guide.empty()) << "no room";
}

}  // namespace
}  // namespace weld
