#include "stripe/edge_pairs/edge_pairs.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

namespace weld {
namespace {

constexpr int kColumns = 40;

TStripe extract(const cv::Mat& image, const std::vector<cv::Rect>& regions, float threshold = 30.0F) {
  const TWeldParams params;
  return extractEdgePairs(heapFrame(image, params), regions, threshold);
}

// Equal columns with a band of one grey value on black.
cv::Mat drawBand(int firstRow, int rows, int grey) {
  cv::Mat image = cv::Mat::zeros(300, kColumns, CV_8UC1);
  image.rowRange(firstRow, firstRow + rows).setTo(grey);
  return image;
}

std::vector<cv::Rect> wholeOf(const cv::Mat& image) {
  return {cv::Rect({0, 0}, image.size())};
}

TEST(ExtractEdgePairs, RegionIsCutAtTheImageAndNeverReadOutside) {
  constexpr int kMax = std::numeric_limits<int>::max();
  constexpr int kMin = std::numeric_limits<int>::min();
  const cv::Mat image = drawBand(150, 20, 200);
  const struct {
    cv::Rect region;
    std::size_t columns, centres;
  } rows[] = {{{0, 0, 40, 300}, 40, 40},        {{7, 101, 33, 150}, 33, 33},     {{30, 100, 100, 1000}, 10, 0},
              {{38, 0, kMax, kMax}, 2, 0},      {{39, 0, kMax, kMax}, 0, 0},  // one column is none
              {{0, 0, 1, 300}, 0, 0},           {{0, 145, 40, 10}, 40, 0},    // too low for any edge
              {{40, 0, 10, 300}, 0, 0},         {{0, 300, 40, 10}, 0, 0},        {{-1, 0, 40, 300}, 0, 0},
              {{0, -1, 40, 300}, 0, 0},         {{5, 5, -3, 20}, 0, 0},          {{5, 5, 20, -3}, 0, 0},
              {{kMin, kMin, kMax, kMax}, 0, 0}, {{kMax, kMax, kMax, kMax}, 0, 0}};
  for (const auto& row : rows) {
    const TStripe stripe = extract(image, {row.region});
    EXPECT_EQ(stripe.status.size(), row.columns) << row.region;
    EXPECT_EQ(stripe.points.size(), row.centres) << row.region;
    if (row.centres == 0) continue;
    EXPECT_EQ(stripe.status[0].pos, row.region.x);
    EXPECT_EQ(stripe.widthPx, 12.0);
    // Between rows 154 and 166 of the image; 58.5 of the cut region goes to 58.
    EXPECT_EQ(stripe.points[0].y, row.region.y == 0 ? 160.0F : 159.0F) << row.region;
  }
  EXPECT_TRUE(extract(image, {}).status.empty());
  EXPECT_TRUE(extract({}, {{0, 0, 10, 10}}).status.empty());
}

TEST(ExtractEdgePairs, ThresholdIsRoundedAndAnyValueIsSafe) {
  using TLimits = std::numeric_limits<float>;
  const cv::Mat image = drawBand(100, 20, 38);  // found with a threshold of 30, not of 31
  const struct {
    float threshold;
    int status;
  } rows[] = {{29.5F, 0},
              {30.4F, 0},
              {30.5F, 0},
              {30.6F, 1},
              {-1.0F, 2},  // every row is an edge
              {-1e30F, 2},
              {-TLimits::infinity(), 2},
              {256.0F, 1},
              {1e30F, 1},
              {TLimits::infinity(), 1},
              {TLimits::quiet_NaN(), 1}};
  for (const auto& row : rows) {
    EXPECT_EQ(extract(image, wholeOf(image), row.threshold).status[7].status, row.status) << row.threshold;
  }
}

}  // namespace
}  // namespace weld
