#include "api/search_guide.h"

#include "stripe/regions.h"
#include "support/line_math.h"
#include "support/painted_frame.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace weld {
namespace {

constexpr int kMarginPx = 40;
constexpr int kBandPx = 60;

using painted::linePoints;
using TStripePts = std::vector<cv::Point2f>;

TStripePts guideOf(const TStripePts& stripe, cv::Size size = {1280, 1024}) {
  const cv::Mat image(size, CV_8UC1);
  const TWeldParams params;
  const TPoints guide = extendGuide(heapFrame(image, params), stripe, kMarginPx);
  return {guide.begin(), guide.end()};
}

auto regionsOf(const TStripePts& guide) {
  std::vector<cv::Point> points;
  for (const cv::Point2f p : guide) points.push_back(truncPoint(p));
  return buildStripeRegions({1280, 1024}, points, kBandPx, heapMemory());
}

TEST(SearchGuide, continuesTheEndPiecesStraightOn) {
  TStripePts bent = painted::bentPoints(300, 600, 900, 500.0, -0.2, 0.4);
  for (std::size_t i = 50; i < 60; ++i) bent[i].y += 30.0F;  // beyond the 50 points of an end piece
  const TStripePts guide = guideOf(bent);
  ASSERT_EQ(guide.size(), bent.size() + 2U * kMarginPx);
  EXPECT_EQ(guide.front().x, 260.0F);
  EXPECT_NEAR(guide.front().y, 508.0F, 0.1F);
  EXPECT_EQ(guide.back().x, 939.0F);
  EXPECT_NEAR(guide.back().y, bent.back().y + 16.0F, 0.1F);
  EXPECT_TRUE(std::is_sorted(guide.begin(), guide.end(), [](auto a, auto b) { return a.x < b.x; }));
  EXPECT_GT(guideOf(painted::bentPoints(300, 345, 900, 500.0, 0.0, -0.5)).front().y, 500.3F) << "50 points count";
  EXPECT_NEAR(guideOf(linePoints(400, 710, 150.0, 2.4)).front().y, 150.0F - 2.0F * kMarginPx, 0.1F) << "steepest";
}

TEST(SearchGuide, doesNotDependOnTheOrderOfItsPoints) {
  const TStripePts twoRows = painted::joined(linePoints(300, 900, 500.0), linePoints(300, 900, 520.0));
  EXPECT_EQ(guideOf({twoRows.rbegin(), twoRows.rend()}), guideOf(twoRows));
}

TEST(SearchGuide, staysInsideTheImage) {
  const struct {
    const char* name;
    TStripePts stripe;
    float firstX, lastX;
  } rows[] = {
      {"from border to border", linePoints(0, 1280, 500.0), 0.0F, 1279.0F},
      {"near both borders", linePoints(20, 1270, 500.0), 0.0F, 1279.0F},
      {"rising out of the image", linePoints(300, 800, 510.0, -1.0), 260.0F, 810.0F},
      {"sinking out of the image", linePoints(300, 800, 514.0, 1.0), 260.0F, 809.0F},
  };
  for (const auto& row : rows) {
    const TStripePts guide = guideOf(row.stripe);
    ASSERT_FALSE(guide.empty()) << row.name;
    EXPECT_EQ(guide.front().x, row.firstX) << row.name;
    EXPECT_EQ(guide.back().x, row.lastX) << row.name;
    EXPECT_GT(regionsOf(guide).size(), 1U) << row.name;
  }
}

TEST(SearchGuide, shortStripesGetTwoRegionsOrTheWholeImage) {
  for (const int columns : {10, 60, 151, 200, 301}) {
    const auto regions = regionsOf(guideOf(linePoints(600, 600 + columns, 500.0)));
    EXPECT_GE(regions.size(), 2U) << columns;
    EXPECT_LT(regions.front().x, 600) << columns;
    EXPECT_LE(regions.front().height, 2 * kBandPx) << columns;
  }
  EXPECT_EQ(guideOf(linePoints(600, 823, 500.0)).size(), 303U) << "two stretches: no more than the margins";
  EXPECT_TRUE(guideOf(linePoints(600, 609, 500.0)).empty()) << "too few points";
  EXPECT_FALSE(guideOf(linePoints(600, 660, 20.0, -0.3)).empty()) << "room on the left alone";
  EXPECT_FALSE(guideOf(TStripePts(20, {5.0F, 5.0F})).empty()) << "one column";
  EXPECT_TRUE(guideOf(linePoints(100, 160, 100.0), {250, 200}).empty()) << "no room";
}

}  // namespace
}  // namespace weld
