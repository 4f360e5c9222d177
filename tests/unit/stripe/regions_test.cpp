#include "stripe/regions.h"

#include <gtest/gtest.h>

#include <limits>
#include <ostream>
#include <string>
#include <utility>

namespace weld {
namespace {

const cv::Size kImage{1280, 1024};
constexpr int kBandPx = 60;

// A horizontal guide with a point every `step` columns.
std::vector<cv::Point> makeGuide(int firstX, int lastX, int y, int step = 1) {
  std::vector<cv::Point> guide;
  for (int x = firstX; x <= lastX; x += step) guide.emplace_back(x, y);
  return guide;
}

std::vector<cv::Point> with(std::vector<cv::Point> guide, cv::Point extra) {
  guide.push_back(extra);
  return guide;
}

struct TRegionCase {
  std::string name;
  std::vector<cv::Point> guide;
  std::vector<cv::Rect> expected;
};

void PrintTo(const TRegionCase& c, std::ostream* out) {
  *out << c.name;
}

class BuildStripeRegions : public testing::TestWithParam<TRegionCase> {};

TEST_P(BuildStripeRegions, GivesTheExpectedRectangles) {
  EXPECT_EQ(buildStripeRegions(kImage, GetParam().guide, kBandPx), GetParam().expected);
}

const std::vector<cv::Rect> kWholeImage{{0, 0, 1280, 1024}};
constexpr int kIntMin = std::numeric_limits<int>::min();
constexpr int kIntMax = std::numeric_limits<int>::max();

INSTANTIATE_TEST_SUITE_P(
    Rules, BuildStripeRegions,
    testing::Values(
        TRegionCase{"no_guide", {}, kWholeImage},
        TRegionCase{"nine_points", makeGuide(100, 900, 500, 100), kWholeImage},
        TRegionCase{"ten_points",
                    makeGuide(100, 1000, 500, 100),
                    {{100, 410, 200, 180}, {300, 410, 200, 180}, {500, 410, 200, 180}, {700, 410, 579, 180}}},
        TRegionCase{"point_right_of_image", with(makeGuide(100, 500, 500), {1280, 500}), kWholeImage},
        TRegionCase{"point_in_last_column_and_row",
                    with(makeGuide(1000, 1010, 1023), {1279, 1023}),
                    {{1000, 933, 279, 90}}},
        TRegionCase{"point_below_image", with(makeGuide(100, 500, 500), {500, 1024}), kWholeImage},
        TRegionCase{"point_left_of_image", with(makeGuide(100, 500, 500), {-1, 500}), kWholeImage},
        TRegionCase{"point_above_image", with(makeGuide(100, 500, 500), {500, -1}), kWholeImage},
        TRegionCase{"wildest_points", with(with(makeGuide(100, 500, 500), {kIntMin, kIntMin}), {kIntMax, kIntMax}),
                    kWholeImage},
        TRegionCase{"spans_150_px", makeGuide(100, 250, 500), {}},
        // Two breaks end at the second one's column, and the rest of the guide is covered by nothing.
        TRegionCase{"spans_151_px", makeGuide(100, 251, 500), {{100, 440, 151, 120}}},
        TRegionCase{"two_breaks_with_a_rest", makeGuide(100, 400, 500), {{100, 440, 151, 120}}},
        // The last of three breaks moves to the last column; its stretch gets sparse by that.
        TRegionCase{"three_breaks", makeGuide(100, 402, 500), {{100, 440, 151, 120}, {251, 410, 1028, 180}}},
        TRegionCase{"density_below_limit", makeGuide(0, 160, 500, 4), {{0, 410, 152, 180}}},
        TRegionCase{
            "density_at_limit", with(with(makeGuide(0, 44, 500), {200, 500}), {150, 500}), {{0, 410, 200, 180}}},
        TRegionCase{"band_cut_at_the_upper_border", makeGuide(0, 151, 20), {{0, 0, 151, 80}}},
        TRegionCase{"band_cut_before_the_last_row", makeGuide(0, 151, 1000), {{0, 940, 151, 83}}},
        TRegionCase{"band_covers_both_ends", with(makeGuide(0, 150, 500), {151, 700}), {{0, 440, 151, 320}}}),
    [](const auto& testInfo) { return testInfo.param.name; });

TEST(BuildStripeRegions, SparseLimitIsExclusive) {
  // 60 steps over 200 px: exactly 0.3 points per px. One point less is sparse.
  std::vector<cv::Point> guide = with(makeGuide(0, 59, 500), {200, 500});
  EXPECT_EQ(buildStripeRegions(kImage, guide, kBandPx), (std::vector<cv::Rect>{{0, 440, 200, 120}}));
  guide.erase(guide.begin() + 30);
  EXPECT_EQ(buildStripeRegions(kImage, guide, kBandPx), (std::vector<cv::Rect>{{0, 410, 200, 180}}));
}

TEST(BuildStripeRegions, EmptyImageGivesNoRegions) {
  EXPECT_TRUE(buildStripeRegions({}, makeGuide(0, 500, 0), kBandPx).empty());
  EXPECT_TRUE(buildStripeRegions({0, 100}, {}, kBandPx).empty());
}

TEST(BuildStripeRegions, StretchWithoutRowsGivesTheEmptyRectangle) {
  EXPECT_EQ(buildStripeRegions(kImage, makeGuide(0, 151, 0), 0), (std::vector<cv::Rect>{cv::Rect()}));
}

TEST(BuildStripeRegions, AbsurdBandsStayInsideTheImage) {
  EXPECT_EQ(buildStripeRegions(kImage, makeGuide(0, 151, 500), kIntMax),
            (std::vector<cv::Rect>{{0, 0, 151, 1023}}));
  for (const int band : {kIntMin, -100}) {
    const cv::Rect region = buildStripeRegions(kImage, makeGuide(0, 151, 500), band).at(0);
    EXPECT_EQ(region, region & cv::Rect({0, 0}, kImage)) << band;
  }
}

TEST(PrepareSearchImage, MaskBlanksTheRestAndNoMaskCopiesNothing) {
  const cv::Mat grey(4, 6, CV_8UC1, cv::Scalar(7));
  EXPECT_EQ(prepareSearchImage(grey, {}).data, grey.data);

  cv::Mat mask = cv::Mat::zeros(grey.size(), CV_8UC1);
  mask.at<uchar>(1, 2) = 1;
  const cv::Mat masked = prepareSearchImage(grey, mask);
  EXPECT_EQ(cv::countNonZero(masked), 1);
  EXPECT_EQ(masked.at<uchar>(1, 2), 7);
  EXPECT_EQ(cv::countNonZero(grey), 24);
  EXPECT_TRUE(prepareSearchImage({}, mask).empty());
}

}  // namespace
}  // namespace weld
