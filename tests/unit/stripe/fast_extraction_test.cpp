// The fast scan against the plain one, for every kernel that this machine runs.
#include "plain_extraction.h"
#include "stripe/edge_pairs/candidates.h"
#include "stripe/edge_pairs/region_scan.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <ostream>
#include <random>
#include <string>
#include <vector>

namespace weld {
namespace {

struct TKernelCase {
  std::string name;
  const TEdgeKernels* kernels;
};

void PrintTo(const TKernelCase& c, std::ostream* out) {
  *out << c.name;
}

std::vector<TKernelCase> kernelsOfThisMachine() {
  std::vector<TKernelCase> cases{{"baseline", &kBaselineKernels.edges}};
#ifdef __x86_64__
  if (hasAvx2()) cases.push_back({"avx2", &kAvx2Kernels.edges});
#endif
  return cases;
}

class FastExtraction : public testing::TestWithParam<TKernelCase> {
protected:
  void expectSame(const cv::Mat& image, const std::vector<cv::Rect>& regions, int threshold = 30) {
    TRegionScanner scanner(image, threshold, heapMemory(), *GetParam().kernels);
    for (const cv::Rect& region : regions) scanner.scanStripeRegion(region);
    const plain::TExtraction expected = plain::extractStripe(image, regions, threshold);

    ASSERT_EQ(scanner.status.size(), expected.status.size());
    for (std::size_t i = 0; i < expected.status.size(); ++i) {
      ASSERT_EQ(scanner.status[i].pos, expected.status[i].pos);
      ASSERT_EQ(scanner.status[i].status, expected.status[i].status) << "column " << expected.status[i].pos;
    }
    ASSERT_EQ(scanner.candidates.size(), expected.candidates.size());
    for (std::size_t i = 0; i < expected.candidates.size(); ++i) {
      const TStripeCandidate& a = scanner.candidates[i];
      const TStripeCandidate& b = expected.candidates[i];
      ASSERT_TRUE(a.x == b.x && a.y == b.y && a.widthPx == b.widthPx)
          << "candidate " << i << " in column " << b.x << ": " << a.y << " against " << b.y;
    }
    const TWeldParams params;
    const TReducedStripe fast = reduceStripeCandidates(heapFrame(image, params), scanner.candidates);
    ASSERT_EQ(fast.modalWidthPx, expected.modalWidthPx);
    ASSERT_EQ(toVector(fast.centres), expected.centres);
    for (const TWeldPointStatus& column : expected.status) ++columnsOfStatus.at(column.status);
    framesWithCentres += expected.centres.empty() ? 0 : 1;
    crowdedFrames += expected.candidates.size() > 2 * expected.status.size() ? 1 : 0;
  }

  int uniform(int low, int high) { return std::uniform_int_distribution<int>(low, high)(random); }

  // Background, noise, stripes and bars, in any mixture.
  cv::Mat makeFrame(cv::Size size) {
    cv::Mat image(size, CV_8UC1, cv::Scalar(uniform(0, 2) == 0 ? uniform(0, 255) : 0));
    for (int stripes = uniform(0, 3); stripes > 0; --stripes) {
      const double row = uniform(0, size.height);
      const double slope = uniform(-100, 100) / 200.0;
      const double sigmaPx = uniform(10, 300) / 10.0;
      const double peak = uniform(30, 600);
      image.forEach<uchar>([&](uchar& pixel, const int* position) {
        const double distance = (position[0] - row - slope * position[1]) / sigmaPx;
        pixel = cv::saturate_cast<uchar>(pixel + peak * std::exp(-0.5 * distance * distance));
      });
    }
    for (int bars = uniform(0, 2) * uniform(0, 20); bars > 0; --bars) {
      const int y = uniform(0, size.height - 1);
      const int x = uniform(0, size.width - 1);
      image(cv::Rect(x, y, uniform(1, 90), uniform(1, 120)) & cv::Rect({0, 0}, size)).setTo(uniform(0, 255));
    }
    const int noise = uniform(0, 3) == 0 ? uniform(1, 255) : uniform(0, 12);
    for (int y = 0; y < size.height; ++y) {
      for (int x = 0; x < size.width; ++x) {
        uchar& pixel = image.at<uchar>(y, x);
        pixel = cv::saturate_cast<uchar>(pixel + uniform(-noise, noise));
      }
    }
    return image;
  }

  std::vector<cv::Rect> makeRegions(cv::Size size) {
    std::vector<cv::Rect> regions{cv::Rect({0, 0}, size)};
    if (uniform(0, 1) == 0) return regions;
    regions.clear();
    for (int count = uniform(1, 4); count > 0; --count) {
      const int x = uniform(-1, size.width);
      const int y = uniform(-1, size.height);
      regions.emplace_back(x, y, uniform(0, size.width + 10), uniform(0, size.height + 10));
    }
    return regions;
  }

  std::mt19937 random{1};
  std::array<int, 3> columnsOfStatus{};
  int framesWithCentres = 0;
  int crowdedFrames = 0;  // more than two candidates per column
};

TEST_P(FastExtraction, AgreesWithThePlainFormOnRandomFrames) {
  for (int round = 0; round < 3000 && !HasFatalFailure(); ++round) {
    SCOPED_TRACE(round);
    random.seed(static_cast<unsigned>(round));
    const cv::Size size(uniform(1, uniform(0, 2) == 0 ? 200 : 70), uniform(1, uniform(0, 2) == 0 ? 400 : 140));
    // A view into a larger frame, whose surroundings must not matter.
    const cv::Point offset(uniform(0, 70), uniform(0, 5));
    cv::Mat frame(size.height + offset.y, size.width + offset.x + uniform(0, 70), CV_8UC1);
    cv::randu(frame, 0, 256);
    const cv::Mat image = frame(cv::Rect(offset, size));
    makeFrame(size).copyTo(image);
    expectSame(image, makeRegions(size), uniform(0, 4) == 0 ? uniform(-1, 255) : 30);
  }
  // The frames are as varied as they are meant to be.
  for (const int columns : columnsOfStatus) EXPECT_GT(columns, 10000);
  EXPECT_GT(framesWithCentres, 200);
  EXPECT_GT(crowdedFrames, 50);
}

// Soft stripes whose rise over 5 rows is just below, at and just above the least that an edge needs.
TEST_P(FastExtraction, AgreesWithThePlainFormOnSoftRamps) {
  for (const double rise : {6.0, 6.1, 6.2, 6.3}) {
    cv::Mat image(100, 70, CV_8UC1);
    for (int y = 0; y < image.rows; ++y) {
      image.row(y).setTo(cv::saturate_cast<uchar>(rise * (40 - std::abs(y - 50))));
    }
    expectSame(image, {cv::Rect({0, 0}, image.size())});
  }
  EXPECT_EQ(framesWithCentres, 3);
  expectSame(cv::Mat::zeros(100, 70, CV_8UC1), {{0, 0, 70, 100}}, -1);  // every flat row is a falling edge
}

// Edges everywhere: rows of a period with more than 99 edges of a kind in a column.
TEST_P(FastExtraction, AgreesWithThePlainFormOnTexture) {
  for (int period = 2; period < 40; ++period) {
    cv::Mat image(1100, 70, CV_8UC1);
    for (int y = 0; y < image.rows; ++y) {
      for (int x = 0; x < image.cols; ++x) {
        image.at<uchar>(y, x) = (y + x) % period < period / 2 ? static_cast<uchar>(200 + (x * y) % 7) : uchar{20};
      }
    }
    expectSame(image, {cv::Rect({0, 0}, image.size())});
  }
}

TEST_P(FastExtraction, AgreesWithThePlainFormAtEveryAlignment) {
  random.seed(5);
  const cv::Mat image = makeFrame({300, 120});
  for (int x = 0; x < 130; ++x) expectSame(image, {{x, x % 20, 150 - x % 9, 100}});
}

TEST(ChooseEdgeKernels, TakesTheFastestThatTheProcessorRuns) {
  EXPECT_EQ(&kernels().edges, kernelsOfThisMachine().back().kernels);
}

INSTANTIATE_TEST_SUITE_P(Kernels, FastExtraction, testing::ValuesIn(kernelsOfThisMachine()),
                         [](const auto& testInfo) { return testInfo.param.name; });

}  // namespace
}  // namespace weld
