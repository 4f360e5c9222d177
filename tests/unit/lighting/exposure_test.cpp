// The exposure figures; their oracle adds them up the obvious way, pixel after pixel.
#include "lighting/weighted_sums.h"
#include "support/seed.h"
#include "zelWeldDetect.h"

#include <gtest/gtest.h>
#include <opencv2/imgproc.hpp>

#include <climits>
#include <utility>
#include <vector>

namespace {

using namespace LightingAdaptation;

namespace plain {

cv::Mat notReflective(const cv::Mat& grey, int size) {
  cv::Mat mask;
  cv::threshold(grey, mask, 240.0, 255.0, cv::THRESH_BINARY);
  const cv::Mat kernel = cv::getStructuringElement(cv::MORPH_RECT, {size, size}, {-1, -1});
  cv::morphologyEx(mask, mask, cv::MORPH_OPEN, kernel, {-1, -1}, 1, cv::BORDER_CONSTANT,
                   cv::morphologyDefaultBorderValue());
  return 255 - mask;
}

double sampledSum(const cv::Mat& grey, const cv::Mat& mask) {
  double sum = 0.0;
  for (int y = 0; y < grey.rows; y += 2) {
    for (int x = 0; x < grey.cols; x += 2) {
      const std::uint8_t level = grey.at<std::uint8_t>(y, x);
      if (mask.at<std::uint8_t>(y, x) != 0) {
        sum += level;
      } else {
        const float reduced = static_cast<float>(level) * 0.3F;
        sum += reduced;
      }
    }
  }
  return sum;
}

float rangeWeights(const cv::Mat& grey, const cv::Mat& mask, int low, int high) {
  float sum = 0.0F;
  for (int y = 0; y < grey.rows; ++y) {
    for (int x = 0; x < grey.cols; ++x) {
      const int level = grey.at<std::uint8_t>(y, x);
      if (level <= low || level >= high) continue;
      sum += mask.at<std::uint8_t>(y, x) == 255 ? 1.0F : 0.2F;
    }
  }
  return sum;
}

}  // namespace plain

cv::Mat randomPixels(cv::RNG& rng, cv::Size size, int from, int to) {
  cv::Mat image(size, CV_8UC1);
  rng.fill(image, cv::RNG::UNIFORM, from, to + 1);
  return image;
}

// Dim noise with bright rectangles, the border and the corners included.
cv::Mat imageWithRectangles(cv::RNG& rng, cv::Size size, int count) {
  cv::Mat image = randomPixels(rng, size, 0, 240);
  for (int i = 0; i < count; ++i) {
    const cv::Rect rect(rng.uniform(-size.width / 4, size.width), rng.uniform(-size.height / 4, size.height),
                        rng.uniform(1, size.width + 1), rng.uniform(1, size.height + 1));
    image(rect & cv::Rect({0, 0}, size)).setTo(rng.uniform(239, 256));
  }
  return image;
}

// A part of a larger image, so that its rows do not follow each other in memory.
cv::Mat withGapsBetweenRows(const cv::Mat& image) {
  cv::Mat larger(image.rows + 2, image.cols + 3, image.type(), cv::Scalar::all(255));
  cv::Mat part = larger({2, 1, image.cols, image.rows});
  image.copyTo(part);
  return part;
}

bool isSame(const cv::Mat& a, const cv::Mat& b) {
  return a.size() == b.size() && a.type() == b.type() && cv::countNonZero(a != b) == 0;
}

const std::vector<cv::Size> kSizes{{1, 1},   {3, 1},    {1, 3},    {2, 2},     {5, 1},    {31, 47}, {49, 90},
                                   {64, 64}, {65, 120}, {127, 50}, {333, 217}, {2200, 9}, {9, 1100}};

TEST(RemoveReflectiveAreas, equalsTheOpeningForEverySizeOfImageAndKernel) {
  cv::RNG rng(testing_support::seedOfCurrentTest());
  for (const cv::Size size : kSizes) {
    for (const int kernelSize : {1, 2, 3, 7, 50, 64, 65, 130}) {
      for (int rectangles = 0; rectangles < 9; rectangles += 2) {
        cv::Mat image = imageWithRectangles(rng, size, rectangles);
        cv::Mat mask = withGapsBetweenRows(cv::Mat::zeros(size, CV_8UC1));
        const std::uint8_t* const data = mask.data;
        removeReflectiveAreas(withGapsBetweenRows(image), mask, kernelSize);
        ASSERT_TRUE(isSame(mask, plain::notReflective(image, kernelSize)))
            << size << " kernel " << kernelSize << " rectangles " << rectangles;
        ASSERT_EQ(mask.data, data) << "a mask that fits is written into";
        removeReflectiveAreas(image, image, kernelSize);
        ASSERT_TRUE(isSame(image, mask)) << size << " in place";
      }
    }
  }
}

// Masks hold 0, 255 and values between, which the mean takes for set and the count for reflective.
TEST(WeightedFigures, equalAddingPixelAfterPixel) {
  const std::pair<int, int> bounds[] = {{240, 256},     {254, 256},    {255, 256},         {-1, 256},
                                        {100, 102},     {-9, 900},     {INT_MIN, INT_MAX}, {INT_MAX, INT_MIN},
                                        {254, INT_MIN}, {INT_MAX, 256}};
  cv::RNG rng(testing_support::seedOfCurrentTest());
  for (const int share : {0, 1, 50, 101}) {
    for (const cv::Size size : kSizes) {
      SCOPED_TRACE(testing::Message() << size << ", " << share << " % reflective");
      const cv::Mat image = withGapsBetweenRows(randomPixels(rng, size, size.width % 2 * 254, 255));
      cv::Mat mask(size, CV_8UC1, cv::Scalar(255));
      const cv::Mat chosen = randomPixels(rng, size, 0, 99);
      mask.setTo(0, chosen < share);
      mask.setTo(1, chosen < share / 2);
      if (size.area() > 1000) mask.rowRange(0, size.height / 2).setTo(255);
      const double sum = plain::sampledSum(image, mask);
      EXPECT_EQ(weld::sumSampledGrey(image, mask), sum);
      const int divisor = size.area() / 4;
      EXPECT_EQ(calcMeanGrayVal(image, mask), divisor == 0 ? INT_MIN : static_cast<int>(sum / divisor));
      for (const auto& [low, high] : bounds) {
        const float weights = plain::rangeWeights(image, mask, low, high);
        EXPECT_EQ(calcRangePixelNum(image, mask, low, high), static_cast<int>(weights)) << low << " " << high;
      }
    }
  }
}

// So many bright pixels that double and single precision round.
TEST(WeightedSums, roundLikeAddingPixelAfterPixelOnHugeFrames) {
  cv::RNG rng(testing_support::seedOfCurrentTest());
  const cv::Size size(4200, 4100);
  for (const int share : {0, 3, 60, 100}) {
    const cv::Mat image = randomPixels(rng, size, 254, 255);
    cv::Mat mask(size, CV_8UC1, cv::Scalar(255));
    mask.setTo(0, randomPixels(rng, size, 0, 99) < share);
    EXPECT_EQ(weld::sumRangeWeights(image, mask, 241, 255), plain::rangeWeights(image, mask, 240, 256)) << share;
    randomPixels(rng, size, 1, 3).copyTo(image, mask == 0);  // their products have the finest fractions
    EXPECT_EQ(weld::sumSampledGrey(image, mask), plain::sampledSum(image, mask)) << share;
  }
}

TEST(CalcMeanGrayVal, masksThatDoNotFitGiveMinusOneAndFewPixelsTheSmallestInteger) {
  const auto white = [](int rows, int cols) { return cv::Mat(rows, cols, CV_8UC1, cv::Scalar(255)); };
  const struct {
    const char* name;
    cv::Mat image, mask;
    int mean, count;
  } rows[] = {{"fits", white(40, 60), white(40, 60), 255, 2400},
              {"rows differ", white(40, 60), white(41, 60), -1, -1},
              {"columns differ", white(40, 60), white(40, 59), -1, -1},
              {"rows and columns exchanged", white(40, 60), white(60, 40), -1, -1},
              {"not continuous", white(40, 60), withGapsBetweenRows(white(40, 60)), -1, -1},
              {"no mask", white(40, 60), cv::Mat(), -1, -1},
              {"three pixels", white(3, 1), white(3, 1), INT_MIN, 3},
              {"four pixels in a row", white(1, 4), white(1, 4), 510, 4},
              {"five pixels in a row", white(1, 5), white(1, 5), 765, 5}};
  for (const auto& row : rows) {
    EXPECT_EQ(calcMeanGrayVal(row.image, row.mask), row.mean) << row.name;
    EXPECT_EQ(calcRangePixelNum(row.image, row.mask, 240, 256), row.count) << row.name;
  }
}

// Mean grey and number of bright pixels.
std::pair<int, int> exposureOf(const cv::Mat& image) {
  std::pair<int, int> exposure;
  calcExposureParam(image, exposure.first, exposure.second);
  return exposure;
}

TEST(CalcExposureParam, countsReflectionsPartlyAndTheStripeFully) {
  cv::Mat stripe(200, 400, CV_8UC1, cv::Scalar(20));
  stripe.rowRange(100, 103).setTo(250);
  const struct {
    const char* name;
    cv::Mat image;
    std::pair<int, int> expected;
  } rows[] = {{"empty", cv::Mat(), {-1, -1}},
              {"no rows", cv::Mat(0, 5, CV_8UC1), {-1, -1}},
              {"stripe of 3 px", stripe, {(98 * 20 + 2 * 250) / 100, 1200}},
              // 0.2 per pixel, added up in single precision: not 0.2 * 1310720 = 262144.
              {"white", cv::Mat(1024, 1280, CV_8UC1, cv::Scalar(255)), {76, 264809}},
              {"grey 240", cv::Mat(200, 400, CV_8UC1, cv::Scalar(240)), {240, 0}},
              {"three dark pixels", stripe({0, 0, 3, 1}), {INT_MIN, 0}}};
  for (const auto& row : rows) EXPECT_EQ(exposureOf(row.image), row.expected) << row.name;
  // Of a colour image what its grey conversion gives; its pixels stay.
  cv::RNG rng(testing_support::seedOfCurrentTest());
  for (const cv::Size size : kSizes) {
    cv::Mat colour(size, CV_8UC3);
    rng.fill(colour, cv::RNG::UNIFORM, 0, 256);
    colour.rowRange(size.height / 2, size.height).setTo(cv::Scalar::all(250));
    const cv::Mat before = colour.clone();
    cv::Mat grey;
    cv::cvtColor(colour, grey, cv::COLOR_BGR2GRAY);
    const cv::Mat mask = plain::notReflective(grey, 50);
    const std::pair expected{calcMeanGrayVal(grey, mask), calcRangePixelNum(grey, mask, 240, 256)};
    EXPECT_EQ(exposureOf(colour), expected) << size;
    EXPECT_EQ(cv::norm(colour, before, cv::NORM_INF), 0.0) << size;
  }
}

TEST(LightingAdaptation, imagesThatAreNotGreyAndKernelsWithoutSizeRaise) {
  const cv::Mat grey(8, 8, CV_8UC1, cv::Scalar(255));
  cv::Mat mask;
  for (const int type : {CV_8UC2, CV_8UC4, CV_8SC1, CV_16UC1, CV_32FC1}) {
    const cv::Mat other = cv::Mat::zeros(8, 8, type);
    EXPECT_THROW(exposureOf(other), cv::Exception) << type;
    EXPECT_THROW(removeReflectiveAreas(other, mask, 50), cv::Exception) << type;
    for (const auto& [image, ownMask] : {std::pair{other, grey}, {grey, other}}) {
      EXPECT_THROW(calcMeanGrayVal(image, ownMask), cv::Exception) << type;
      EXPECT_THROW(calcRangePixelNum(image, ownMask, 240, 256), cv::Exception) << type;
    }
  }
  const int sides[] = {2, 8, 8};
  for (const int type : {CV_8UC1, CV_8UC3}) EXPECT_THROW(exposureOf(cv::Mat(3, sides, type)), cv::Exception);
  EXPECT_THROW(removeReflectiveAreas(cv::Mat(), mask, 50), cv::Exception);
  for (const int size : {0, -1, INT_MIN}) EXPECT_THROW(removeReflectiveAreas(grey, mask, size), cv::Exception);
  EXPECT_NO_THROW(removeReflectiveAreas(grey, mask, INT_MAX));
}

TEST(AdviseExposureFactor, leavesWithinToleranceStepsByFourAtMostAndNeverRaisesASaturatedFrame) {
  struct {
    int meanGray;
    double brightShare;
    double factor;
  } const rows[] = {{30, 0.0, 1.0},   {50, 0.1, 1.0},   {29, 0.0, 40.0 / 29.0}, {51, 0.1, 40.0 / 51.0},
                    {10, 0.0, 4.0},   {9, 0.0, 4.0},    {0, 0.0, 4.0},          {160, 0.0, 0.25},
                    {255, 0.0, 0.25}, {-1, 0.0, 1.0},   {INT_MIN, 0.9, 1.0},    {40, 0.11, 0.5},
                    {20, 0.11, 0.5},  {100, 0.11, 0.4}, {255, 1.0, 0.25}};
  for (const auto& row : rows) {
    EXPECT_EQ(adviseExposureFactor(row.meanGray, row.brightShare, TExposureTarget{}), row.factor)
        << row.meanGray << " " << row.brightShare;
  }
  EXPECT_EQ(adviseExposureFactor(INT_MAX, 0.0, {INT_MIN, 10, 0.1}), 0.25);
  const TStripeLight dim{100, 0.0, 20.0};
  EXPECT_EQ(adviseExposureFactor(dim, TStripeTarget{}), 4.0);
  EXPECT_EQ(adviseExposureFactor(dim, {0.25, 40.0, std::nan("")}), 1.0);
  EXPECT_EQ(adviseExposureFactor({100, 0.0, std::nan("")}, TStripeTarget{}), 1.0);
  EXPECT_EQ(adviseExposureFactor({100, 0.9, 20.0}, TStripeTarget{}), 0.5);
}

}  // namespace
