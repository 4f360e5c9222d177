#include "stripe/region_scan.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace weld {
namespace {

constexpr int kThreshold = 30;

struct TScan {
  std::vector<TStripeCandidate> candidates;
  std::vector<TWeldPointStatus> status;
};

TScan scan(const cv::Mat& image, const cv::Rect& region, int threshold = kThreshold) {
  TStripeScratch scratch;
  TRegionScanner scanner(image, threshold, scratch);
  scanner.scanStripeRegion(region);
  return {scanner.candidates, scanner.status};
}

TScan scan(const cv::Mat& image) {
  return scan(image, cv::Rect({0, 0}, image.size()));
}

// Two equal columns with a band of one grey value on black.
cv::Mat drawBand(int firstRow, int rows, int grey, int height = 300) {
  cv::Mat image = cv::Mat::zeros(height, 2, CV_8UC1);
  image.rowRange(firstRow, firstRow + rows).setTo(grey);
  return image;
}

struct TBandCase {
  std::string name;
  int firstRow, rows, grey;
  int status;
  int lowRow, highRow, centre;  // of the only pair
};

void PrintTo(const TBandCase& c, std::ostream* out) {
  *out << c.name;
}

class ScanBand : public testing::TestWithParam<TBandCase> {};

TEST_P(ScanBand, GivesStatusAndCandidate) {
  const TBandCase& band = GetParam();
  const TScan found = scan(drawBand(band.firstRow, band.rows, band.grey));
  ASSERT_EQ(found.status.size(), 2U);
  EXPECT_EQ(found.status[1].pos, 1);
  EXPECT_EQ(found.status[1].status, band.status);
  ASSERT_EQ(found.candidates.size(), band.status == 0 ? 2U : 0U);
  if (found.candidates.empty()) return;
  const TStripeCandidate& candidate = found.candidates[1];
  EXPECT_EQ(candidate.x, 1);
  EXPECT_EQ(candidate.y, band.centre);
  EXPECT_EQ(candidate.widthPx, band.highRow - band.lowRow);
}

INSTANTIATE_TEST_SUITE_P(
    Rules, ScanBand,
    testing::Values(  // The last bright row is the only falling edge that can still be bright enough: 4 steps.
        TBandCase{"falling_edge_148_against_150", 100, 20, 37, 1, 0, 0, 0},
        TBandCase{"falling_edge_152_against_150", 100, 20, 38, 0, 101, 119, 110},
        TBandCase{"below_the_threshold", 100, 20, 29, 1, 0, 0, 0},
        TBandCase{"saturated", 100, 20, 255, 0, 104, 116, 110},
        TBandCase{"too_thick", 100, 106, 255, 0, 104, 202, 152},
        TBandCase{"99_px", 100, 107, 255, 0, 104, 203, 153}, TBandCase{"100_px", 100, 108, 255, 2, 0, 0, 0},
        TBandCase{"rising_edge_in_row_5", 5, 20, 38, 0, 6, 24, 14},
        TBandCase{"rising_edge_before_row_5", 3, 20, 38, 1, 0, 0, 0},
        TBandCase{"falling_edge_in_the_last_row_looked_at", 275, 20, 38, 0, 276, 294, 284},
        TBandCase{"falling_edge_behind_it", 276, 20, 38, 1, 0, 0, 0}),
    [](const auto& testInfo) { return testInfo.param.name; });

TEST(ScanStripeRegion, SeesNoMoreThan99EdgesOfAKind) {
  // 35 teeth with three falling and four rising edges each, and behind them one that is much brighter.
  cv::Mat image = cv::Mat::zeros(640, 2, CV_8UC1);
  for (int row = 7; row < 525; row += 15) image.rowRange(row, row + 8).setTo(100);
  const TScan teeth = scan(image);
  image.rowRange(600, 620).setTo(250);
  const TScan all = scan(image);
  ASSERT_EQ(teeth.candidates.size(), 10U);
  ASSERT_EQ(all.candidates.size(), 10U);
  EXPECT_EQ(all.candidates.back().y, teeth.candidates.back().y);
  EXPECT_EQ(scan(image, {0, 300, 2, 340}).candidates.back().y, 609);
}

TEST(ScanStripeRegion, ThinBrightStripeHasOnlyPairsTooNarrow) {
  for (const auto& [sigmaPx, status] :
       {std::pair{1.5, 2}, std::pair{2.0, 2}, std::pair{2.5, 2}, std::pair{3.2, 0}, std::pair{5.0, 0}}) {
    for (const double centre : {50.0, 50.3, 50.5, 50.8}) {
      cv::Mat image(100, 2, CV_8UC1);
      for (int y = 0; y < image.rows; ++y) {
        image.row(y).setTo(std::round(200.0 * std::exp(-0.5 * std::pow((y - centre) / sigmaPx, 2.0))));
      }
      EXPECT_EQ(scan(image).status[0].status, status) << sigmaPx << " " << centre;
    }
  }
}

TEST(ScanStripeRegion, SharperSpatterTakesAllFivePlaces) {
  cv::Mat image = drawBand(200, 20, 50);
  EXPECT_EQ(scan(image).candidates.at(0).y, 210);
  image.rowRange(40, 60).setTo(255);
  const TScan found = scan(image);
  ASSERT_EQ(found.candidates.size(), 2U);
  EXPECT_EQ(found.candidates[0].y, 50);
}

TEST(ScanStripeRegion, RowsAndColumnsAreThoseOfTheImage) {
  cv::Mat image = cv::Mat::zeros(300, 40, CV_8UC1);
  image.rowRange(150, 170).setTo(200);
  const TScan found = scan(image, {7, 101, 20, 150});
  ASSERT_EQ(found.status.size(), 20U);
  EXPECT_EQ(found.status.front().pos, 7);
  EXPECT_EQ(found.status.back().pos, 26);
  EXPECT_EQ(found.candidates.front().x, 7);
  EXPECT_EQ(found.candidates.front().widthPx, 12);
  // Rows 154 to 165 are positions 53 to 64 of the region: their centre 58.5 goes to position 58.
  EXPECT_EQ(found.candidates.front().y, 159);
}

TEST(ScanStripeRegion, RegionIsCutAtTheImageAndNeverReadOutside) {
  constexpr int kMax = std::numeric_limits<int>::max();
  constexpr int kMin = std::numeric_limits<int>::min();
  cv::Mat image = cv::Mat::zeros(300, 40, CV_8UC1);
  image.rowRange(150, 170).setTo(200);
  struct TCase {
    cv::Rect region;
    std::size_t columns;
  };
  for (const TCase& c : std::vector<TCase>{{{0, 0, 40, 300}, 40},
                                           {{30, 100, 100, 1000}, 10},
                                           {{38, 0, kMax, kMax}, 2},
                                           {{39, 0, kMax, kMax}, 0},  // one column is none
                                           {{0, 0, 1, 300}, 0},
                                           {{0, 299, 40, 5}, 40},
                                           {{40, 0, 10, 300}, 0},
                                           {{0, 300, 40, 10}, 0},
                                           {{-1, 0, 40, 300}, 0},
                                           {{0, -1, 40, 300}, 0},
                                           {{0, 0, 0, 0}, 0},
                                           {{5, 5, -3, 20}, 0},
                                           {{5, 5, 20, -3}, 0},
                                           {{kMin, kMin, kMax, kMax}, 0},
                                           {{kMax, kMax, kMax, kMax}, 0}}) {
    EXPECT_EQ(scan(image, c.region).status.size(), c.columns) << c.region;
  }
  EXPECT_EQ(scan(image, {0, 145, 40, 10}).status.at(0).status, 1);  // too low for any edge
}

}  // namespace
}  // namespace weld
