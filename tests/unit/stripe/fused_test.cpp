#include "stripe/fused.h"

#include "stripe/open_parts.h"
#include "support/column_status.h"
#include "support/painted_frame.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

namespace weld {
namespace {

TStripe stripeOf(const std::vector<cv::Point2f>& points, TCentreOrigin origin) {
  TStripe stripe(heapMemory());
  stripe.points.assign(points.begin(), points.end());
  stripe.sources.assign(points.size(), {origin, origin == TCentreOrigin::ridge ? 0.5F : 1.0F});
  return stripe;
}

// Columns 0 .. 99: pairs in the first `pairs`, centres at row 50 in the first `centres`.
TStripe edgePairs(int centres, int pairs) {
  TStripe stripe = stripeOf(painted::linePoints(0, centres, 50.0), TCentreOrigin::edgePair);
  for (int x = 0; x < 100; ++x) stripe.status.push_back({x, x < pairs ? kCentreFound : kEdgeMissing});
  return stripe;
}

TStripe ridges(int columns) {
  return stripeOf(painted::linePoints(0, columns, 51.0), TCentreOrigin::ridge);
}

TEST(FusedStripe, asksTheRidgesWhenPairsAreDroppedOrColumnsMissing) {
  EXPECT_FALSE(leavesStripeUnexplained(edgePairs(92, 100), 0));
  EXPECT_TRUE(leavesStripeUnexplained(edgePairs(91, 100), 0));
  EXPECT_FALSE(leavesStripeUnexplained(edgePairs(80, 80), 80));
  EXPECT_TRUE(leavesStripeUnexplained(edgePairs(79, 79), 80));
  EXPECT_TRUE(leavesStripeUnexplained(edgePairs(80, 100), 0, {0.0F, 88.0F}));
  EXPECT_FALSE(leavesStripeUnexplained(edgePairs(80, 100), 0, {0.0F, 87.0F}));
}

TEST(FusedStripe, fillsDroppedColumnsUnlessRidgesSeeClearlyMore) {
  const struct {
    const char* name;
    int centres, pairs, ridgeColumns;
    std::size_t columns;
    float firstRow, lastRow;
  } rows[] = {
      {"nothing dropped", 80, 80, 85, 80, 50.0F, 50.0F},  {"flare", 80, 90, 95, 90, 50.0F, 51.0F},
      {"ridge ends early", 80, 90, 85, 85, 50.0F, 51.0F}, {"hardly more", 50, 50, 60, 50, 50.0F, 50.0F},
      {"clearly more", 50, 50, 61, 61, 51.0F, 51.0F},     {"no edge pairs", 0, 0, 100, 100, 51.0F, 51.0F},
      {"no ridges", 50, 80, 0, 50, 50.0F, 50.0F},
  };
  for (const auto& row : rows) {
    const cv::Mat image;
    const TWeldParams params;
    const TStripe stripe =
        fuse(heapFrame(image, params), edgePairs(row.centres, row.pairs), ridges(row.ridgeColumns));
    ASSERT_EQ(stripe.points.size(), row.columns) << row.name;
    ASSERT_EQ(stripe.sources.size(), row.columns) << row.name;
    for (std::size_t i = 0; i < row.columns; ++i) {
      const bool isRidge = stripe.sources[i].origin == TCentreOrigin::ridge;
      EXPECT_EQ(isRidge, stripe.points[i].y == 51.0F) << row.name << ": every centre says where it is from";
      EXPECT_EQ(isRidge, stripe.sources[i].confidence == 0.5F) << row.name;
    }
    EXPECT_EQ(stripe.points.front().y, row.firstRow) << row.name;
    EXPECT_EQ(stripe.points.back().y, row.lastRow) << row.name;
  }
}

// What a gap reflects may look like a stripe that goes on, but is much darker than it.
TEST(FusedStripe, fillsAHoleUnlessItsLightIsAReflection) {
  for (const int light : {30, 60}) {
    cv::Mat image(100, 100, CV_8UC1, cv::Scalar(0));
    image.rowRange(48, 54) = cv::Scalar(200);
    image(cv::Rect(40, 48, 15, 6)) = cv::Scalar(light);
    TStripe pairs = edgePairs(100, 100);
    pairs.points.erase(pairs.points.begin() + 40, pairs.points.begin() + 55);
    pairs.sources.resize(pairs.points.size());
    for (int x = 40; x < 55; ++x) pairs.status[static_cast<std::size_t>(x)].status = kEdgeMissing;
    const TWeldParams params;
    EXPECT_EQ(fuse(heapFrame(image, params), pairs, ridges(100)).points.size(), light < 40 ? 85U : 100U) << light;
  }
}

// A scrap counts where a stripe may go on in it, or when it is long enough to be one.
TEST(RidgeStripe, keepsAScrapNearAPieceAndALongOneAnywhere) {
  const struct {
    int gap, columns;
    bool isKept;
  } rows[] = {{100, 6, true}, {200, 8, false}, {200, 10, true}};
  for (const auto& row : rows) {
    cv::Mat image = painted::dark();
    painted::paintPiece(image, 0, 300, 240.0);
    painted::paintPiece(image, 300 + row.gap, 300 + row.gap + row.columns, 240.0);
    const TWeldParams params;
    TRidgeSearch ridges(heapMemory());
    const std::vector<cv::Rect> everywhere = {{0, 0, 640, 480}};
    const TStripe stripe = extractRidges(heapFrame(image, params), everywhere, ridges);
    EXPECT_EQ(stripe.points.size(), 300U + (row.isKept ? row.columns : 0)) << row.gap << ' ' << row.columns;
  }
}

TEST(RidgeStripe, staysInItsRegionsAndSetsTheStatusOfEveryColumn) {
  cv::Mat image = painted::dark();
  painted::paintPiece(image, 0, 200, 240.0);
  painted::paintPiece(image, 260, 640, 240.0);
  const TWeldParams params;
  const auto extract = [&](const std::vector<cv::Rect>& regions) {
    TRidgeSearch ridges(heapMemory());
    return extractRidges(heapFrame(image, params), regions, ridges);
  };
  const TStripe stripe =
      extract({{100, 200, 150, 80}, {250, 200, 150, 80}, {400, 20, 100, 200}});  // the last above the stripe
  ASSERT_EQ(stripe.status.size(), 400U);
  ASSERT_EQ(stripe.points.size(), 240U);
  auto point = stripe.points.begin();
  for (int x = 100; x < 500; ++x) {
    const TWeldPointStatus& column = stripe.status[static_cast<std::size_t>(x - 100)];
    const bool isLit = x < 200 || (x >= 260 && x < 400);
    EXPECT_EQ(column.pos, x);
    EXPECT_EQ(column.status, isLit ? kCentreFound : kEdgeMissing) << x;
    if (!isLit) continue;
    EXPECT_EQ(point->x, static_cast<float>(x));
    EXPECT_NEAR((point++)->y, 240.0F, 0.2F) << x;
  }
  EXPECT_NEAR(stripe.widthPx, 9.0, 1.0);
  EXPECT_TRUE(extract({{0, 0, 640, 100}}).points.empty());
  EXPECT_TRUE(extract({}).status.empty());
}

// A level stripe at row 240, from column 320 on `rise` rows lower, without centres from there on.
TEST(RidgeStripe, isSoughtOnlyAboutHolesThatMatter) {
  const std::vector<cv::Rect> regions = {{0, 200, 320, 80}, {320, 200, 320, 160}};
  const struct {
    const char* name;
    int holeColumns;
    float rise;
    std::vector<cv::Rect> parts;
  } rows[] = {
      {"short hole", 11, 0.0F, {}},
      {"short hole at a step", 11, 7.0F, {{240, 200, 171, 160}}},
      {"long hole", 12, 0.0F, {{240, 200, 172, 160}}},
      {"end of the stripe", 320, 0.0F, {{240, 200, 400, 160}}},
      {"nearly all of it", 320 + 100, 0.0F, {{0, 200, 640, 160}}},
  };
  for (const auto& row : rows) {
    cv::Mat image = painted::dark();
    painted::paintPiece(image, 0, 320, 240.0);
    painted::paintPiece(image, 320, 640, 240.0 + static_cast<double>(row.rise));
    const TWeldParams params;
    const TFrame frame = heapFrame(image, params);
    std::vector<cv::Point2f> known = painted::linePoints(0, 640, 240.0);
    for (cv::Point2f& p : known) p.y += p.x >= 320.0F ? row.rise : 0.0F;
    const int first = std::min(320, 640 - row.holeColumns);
    known.erase(known.begin() + first, known.begin() + first + row.holeColumns);
    TStripe edgePairs = stripeOf(known, TCentreOrigin::edgePair);
    for (int x = 0; x < 640; ++x) edgePairs.status.push_back({x, kEdgeMissing});
    const TList<cv::Rect> parts = findOpenParts(edgePairs, regions, image.size(), {12});
    ASSERT_EQ(toVector(parts), row.parts) << row.name;
    const TStripe ridges = extractRidgesBeside(frame, regions, parts, edgePairs.points);
    if (parts.empty()) continue;
    const auto inHole = [&](cv::Point2f p) {
      return p.x >= static_cast<float>(first) && p.x < static_cast<float>(first + row.holeColumns);
    };
    EXPECT_GE(std::count_if(ridges.points.begin(), ridges.points.end(), inHole), row.holeColumns - 1) << row.name;
    EXPECT_LT(ridges.points.size(), static_cast<std::size_t>(row.holeColumns) + 20U) << row.name << ": no more";
    for (const cv::Point2f p : ridges.points)
      EXPECT_NEAR(p.y, p.x < 320.0F ? 240.0F : 240.0F + row.rise, 4.0) << row.name << " at " << p.x;
  }
}

TEST(RidgeStripe, isNotSoughtAgainInAHoleOfTheLastFrame) {
  const auto stripeWithHole = [](int first) {
    std::vector<cv::Point2f> centres = painted::linePoints(0, 640, 240.0);
    centres.erase(centres.begin() + first, centres.begin() + first + 40);
    return stripeOf(centres, TCentreOrigin::edgePair);
  };
  TStripe edgePairs = stripeWithHole(300);
  for (int x = 0; x < 640; ++x) edgePairs.status.push_back({x, kEdgeMissing});
  const std::vector<cv::Rect> regions = {{0, 200, 640, 80}};
  for (const int movedPx : {0, 8, -8, 9, -9}) {
    const TStripe before = stripeWithHole(300 + movedPx);
    const TList<cv::Rect> parts = findOpenParts(edgePairs, regions, {640, 480}, {12, {}, before.points});
    EXPECT_EQ(parts.empty(), std::abs(movedPx) <= 8) << movedPx;
  }
}

}  // namespace
}  // namespace weld
