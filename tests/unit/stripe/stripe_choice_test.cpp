#include "stripe/stripe_choice.h"

#include "stripe/region_scan.h"
#include "stripe/ridge_stripe.h"
#include "support/painted_frame.h"

#include <gtest/gtest.h>

namespace weld {
namespace {

constexpr TRidgeSettings kRidges{6.0, 30.0};

// Columns 0 .. 99: pairs in the first `pairs`, centres at row 50 in the first `centres`.
TStripeCentres edgePairs(int centres, int pairs) {
  TStripeCentres stripe;
  stripe.points = painted::linePoints(0, centres, 50.0);
  for (int x = 0; x < 100; ++x) stripe.status.push_back({x, x < pairs ? kCentreFound : kEdgeMissing});
  return stripe;
}

TStripeCentres ridges(int columns) {
  TStripeCentres stripe;
  stripe.points = painted::linePoints(0, columns, 51.0);
  return stripe;
}

TEST(StripeChoice, asksTheRidgesWhenPairsAreDroppedOrColumnsMissing) {
  EXPECT_FALSE(leavesStripeUnexplained(edgePairs(92, 100), 0));
  EXPECT_TRUE(leavesStripeUnexplained(edgePairs(91, 100), 0));
  EXPECT_FALSE(leavesStripeUnexplained(edgePairs(80, 80), 80));
  EXPECT_TRUE(leavesStripeUnexplained(edgePairs(79, 79), 80));
}

TEST(StripeChoice, fillsDroppedColumnsUnlessRidgesSeeClearlyMore) {
  struct TRow {
    const char* name;
    int centres, pairs, ridgeColumns;
    std::size_t columns;
    float firstRow, lastRow;
  };
  const TRow rows[] = {
      {"nothing dropped", 80, 80, 85, 80, 50.0F, 50.0F},  {"flare", 80, 90, 95, 90, 50.0F, 51.0F},
      {"ridge ends early", 80, 90, 85, 85, 50.0F, 51.0F}, {"hardly more", 50, 50, 60, 50, 50.0F, 50.0F},
      {"clearly more", 50, 50, 61, 61, 51.0F, 51.0F},     {"no edge pairs", 0, 0, 100, 100, 51.0F, 51.0F},
      {"no ridges", 50, 80, 0, 50, 50.0F, 50.0F},
  };
  for (const TRow& row : rows) {
    const TStripeCentres stripe = chooseStripe(edgePairs(row.centres, row.pairs), ridges(row.ridgeColumns));
    ASSERT_EQ(stripe.points.size(), row.columns) << row.name;
    EXPECT_EQ(stripe.points.front().y, row.firstRow) << row.name;
    EXPECT_EQ(stripe.points.back().y, row.lastRow) << row.name;
  }
}

TEST(RidgeStripe, staysInItsRegionsAndSetsTheStatusOfEveryColumn) {
  cv::Mat image = painted::dark();
  painted::paintPiece(image, 0, 200, 240.0);
  painted::paintPiece(image, 260, 640, 240.0);
  TStripeScratch scratch;
  const std::vector<cv::Rect> regions{{100, 200, 150, 80}, {250, 200, 150, 80}, {400, 20, 100, 240}};
  const TStripeCentres stripe = extractRidgeStripeCentres(image, regions, kRidges, scratch);
  ASSERT_EQ(stripe.status.size(), 400U);
  int found = 0;
  for (std::size_t i = 0; i < stripe.status.size(); ++i) {
    const TWeldPointStatus& column = stripe.status[i];
    EXPECT_EQ(column.pos, 100 + static_cast<int>(i));
    const bool isLit = column.pos < 200 || column.pos >= 260;
    EXPECT_EQ(column.status, isLit ? kCentreFound : kEdgeMissing) << column.pos;
    found += column.status == kCentreFound ? 1 : 0;
  }
  EXPECT_EQ(stripe.points.size(), static_cast<std::size_t>(found));
  for (const cv::Point2f p : stripe.points) EXPECT_NEAR(p.y, 240.0F, 0.2F) << p.x;
  EXPECT_NEAR(stripe.modalWidthPx, 9.0, 1.0);

  EXPECT_TRUE(extractRidgeStripeCentres(image, {{0, 0, 640, 100}}, kRidges, scratch).points.empty());
  EXPECT_TRUE(extractRidgeStripeCentres(image, {}, kRidges, scratch).status.empty());
}

}  // namespace
}  // namespace weld
