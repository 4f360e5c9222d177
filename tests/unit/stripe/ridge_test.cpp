#include "stripe/ridge/ridge.h"

#include "scenes/random.h"
#include "scenes/scene.h"
#include "support/kernels/kernels.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

namespace weld {
namespace {

constexpr double kMaxSigmaPx = 6.0;
constexpr double kMinContrast = 30.0;
constexpr double kNearPx = 3.0;

using scenes::TJoint;
using scenes::TLook;

std::vector<TRidgePoint> extract(const cv::Mat& grey) {
  return toVector(extractRidgeCentres(grey, {kMaxSigmaPx, kMinContrast}, heapMemory()));
}

// A stripe of that full width at half maximum along y = k * x + b, clipped at 255.
cv::Mat drawStripe(cv::Size size, double k, double b, double peak = 200.0, double fwhmPx = 7.0) {
  cv::Mat image(size, CV_8UC1);
  const double sigma = fwhmPx / 2.3548;
  for (int y = 0; y < size.height; ++y) {
    for (int x = 0; x < size.width; ++x) {
      const double distance = (y - (k * x + b)) / sigma;
      image.at<uchar>(y, x) = cv::saturate_cast<uchar>(peak * std::exp(-0.5 * distance * distance));
    }
  }
  return image;
}

// Columns of scenes.
struct TScore {
  int columns = 0;
  int visible = 0;
  int near = 0;          // found at their true row
  int wrong = 0;         // found elsewhere, or where there is no stripe
  double errorPx = 0.0;  // sum over the near ones

  void add(const scenes::TScene& scene) {
    const std::vector<double>& truth = scene.truth.centreY;
    columns += scene.image.cols;
    for (const double y : truth) visible += std::isnan(y) ? 0 : 1;
    for (const TRidgePoint& ridge : extract(scene.image)) {
      const double error =
          std::abs(static_cast<double>(ridge.point.y) - truth[static_cast<std::size_t>(ridge.point.x)]);
      const bool isNear = error <= kNearPx;
      ++(isNear ? near : wrong);
      errorPx += isNear ? error : 0.0;
    }
  }
};

TEST(RidgeCentres, SceneOfKnownTruth_MeetsTheAccuracyOfItsKind) {
  const struct {
    const char* name;
    TJoint joint;
    double maxErrorPx;  // mean
    double peak, rootPeak, fwhmPx, rootFwhmPx, background, noiseSigma;
    double speckle = 0.0;
    double ghostShare = 0.0;
    double ghostTiltDeg = 0.0;
  } rows[] = {
      {"clean", TJoint::corner, 0.05, 200, 200, 7, 7, 0, 0},
      {"noise", TJoint::lap, 0.12, 200, 200, 7, 7, 30, 12},
      {"saturated", TJoint::buttGap, 0.1, 600, 600, 12, 12, 0, 2},
      {"3 to 54 px wide, saturated", TJoint::vGroove, 0.1, 400, 400, 54, 3, 0, 2},
      {"dim thin root", TJoint::vGroove, 0.1, 500, 40, 16, 3, 0, 3},
      {"defocused", TJoint::plain, 0.1, 70, 70, 35, 35, 30, 2},
      {"speckle", TJoint::corner, 0.5, 200, 200, 7, 7, 0, 0, 0.6},
      {"parallel ghost", TJoint::plate, 0.1, 200, 200, 7, 7, 0, 0, 0.0, 0.5},
      {"crossing ghost", TJoint::plain, 0.2, 200, 200, 7, 7, 0, 0, 0.0, 0.5, 20.0},
  };
  for (const auto& row : rows) {
    scenes::TSceneParams params;
    params.joint = row.joint;
    params.seed = 31;
    TLook& look = params.look;
    look.peak = row.peak;
    look.rootPeak = row.rootPeak;
    look.fwhmPx = row.fwhmPx;
    look.rootFwhmPx = row.rootFwhmPx;
    look.background = row.background;
    look.noiseSigma = row.noiseSigma;
    look.speckle = row.speckle;
    look.ghostShare = row.ghostShare;
    look.ghostTiltDeg = row.ghostTiltDeg;
    if (row.ghostTiltDeg != 0.0) look.ghostOffsetPx = 0.0;  // it crosses the stripe at the seam
    TScore score;
    score.add(scenes::renderScene(params));
    EXPECT_GE(score.near, 0.98 * score.visible) << row.name;
    EXPECT_LE(score.errorPx, row.maxErrorPx * score.near) << row.name;
    EXPECT_LE(score.wrong, 0.001 * score.columns) << row.name;
  }
}

TEST(RidgeCentres, RandomScenes_KeepTheirAccuracy) {
  const struct {
    scenes::TLevel level;
    double minNearShare;   // of the visible columns
    double maxErrorPx;     // mean of those
    double maxWrongShare;  // of the image columns
  } rows[] = {{scenes::TLevel::noisy, 0.9985, 0.193, 0.00087}, {scenes::TLevel::harsh, 0.9912, 0.245, 0.0134}};
  for (const auto& row : rows) {
    TScore sum;
    for (const TJoint joint : {TJoint::buttGap, TJoint::lap, TJoint::corner, TJoint::plate, TJoint::vGroove,
                               TJoint::uGroove, TJoint::flareV}) {
      for (std::uint64_t seed = 40; seed < 44; ++seed) {
        sum.add(scenes::renderScene(scenes::randomScene(joint, row.level, seed, {640, 512})));
      }
    }
    EXPECT_GE(sum.near, row.minNearShare * sum.visible) << static_cast<int>(row.level);
    EXPECT_LE(sum.errorPx, row.maxErrorPx * sum.near) << static_cast<int>(row.level);
    EXPECT_LE(sum.wrong, row.maxWrongShare * sum.columns) << static_cast<int>(row.level);
  }
}

TEST(RidgeCentres, FrameWithoutStripe_GivesNone) {
  const struct {
    double background, noiseSigma, texture, arcGlow;
  } rows[] = {{0, 0, 0, 0}, {255, 0, 0, 0}, {40, 12, 0, 0}, {90, 30, 0, 0}, {80, 0, 60, 0}, {40, 6, 20, 200}};
  for (const auto& row : rows) {
    scenes::TSceneParams params;
    params.joint = TJoint::blank;
    params.seed = 32;
    params.look.background = row.background;
    params.look.noiseSigma = row.noiseSigma;
    params.look.texture = row.texture;
    params.look.arcGlow = row.arcGlow;
    EXPECT_TRUE(extract(scenes::renderScene(params).image).empty())
        << "noise " << row.noiseSigma << ", texture " << row.texture;
  }
}

TEST(RidgeCentres, AnyPhaseAndWidth_IsMeasuredWithoutBias) {
  for (const double fwhmPx : {2.5, 4.0, 7.0, 15.0, 35.0, 60.0}) {
    for (const double phase : {0.0, 0.23, 0.5, 0.81}) {
      const auto ridge = extract(drawStripe({64, 512}, 0.0, 120.0 + phase, 150.0, fwhmPx) + 60.0);
      ASSERT_EQ(ridge.size(), 64U) << fwhmPx;
      EXPECT_NEAR(ridge[30].point.y, 120.0 + phase, 0.05) << fwhmPx;
      EXPECT_NEAR(ridge[30].widthPx, fwhmPx, 0.1 * fwhmPx + 0.3);
      EXPECT_NEAR(ridge[30].contrast, 150.0, 25.0) << fwhmPx;
    }
  }
}

TEST(RidgeCentres, StepAndMissingStretch_BreakThePathWithoutInventedColumns) {
  cv::Mat image = drawStripe({400, 300}, 0.0, 100.0);
  drawStripe({200, 300}, 0.0, 180.0).copyTo(image.colRange(200, 400));
  image.colRange(80, 110) = cv::Scalar(0);
  const auto ridge = extract(image);
  EXPECT_EQ(ridge.size(), 370U);
  for (const TRidgePoint& p : ridge) {
    EXPECT_FALSE(p.point.x >= 80.0F && p.point.x < 110.0F) << p.point.x;
    EXPECT_NEAR(p.point.y, p.point.x < 200.0F ? 100.0 : 180.0, 0.05);
  }
}

TEST(RidgeCentres, FaintStripe_IsKeptWhereItContinuesAClearOneOnly) {
  // 7 grey levels are below what a stripe of its own must have.
  cv::Mat image = drawStripe({400, 200}, 0.1, 60.0, 70.0);
  drawStripe({200, 200}, 0.1, 80.0, 7.0).copyTo(image.colRange(200, 400));
  EXPECT_GT(extract(image).size(), 390U);
  EXPECT_TRUE(extract(image.colRange(200, 400)).empty());
}

TEST(RidgeCentres, SharpCornerInNoise_IsNotSmoothedAway) {
  scenes::TSceneParams params;
  params.joint = TJoint::corner;
  params.seed = 34;
  params.geometry.leftFlankDeg = 45.0;
  params.geometry.rightFlankDeg = -45.0;
  params.look.noiseSigma = 8.0;
  const scenes::TScene scene = scenes::renderScene(params);
  for (const TRidgePoint& p : extract(scene.image)) {
    if (std::abs(static_cast<double>(p.point.x) - scene.truth.seam.x) > 5.0) continue;
    EXPECT_NEAR(p.point.y, scene.truth.centreY[static_cast<std::size_t>(p.point.x)], 1.0);
  }
}

TEST(RidgeCentres, StripeCutByTheBorder_HasNoCentre) {
  const auto ridge = extract(drawStripe({300, 200}, -0.2, 40.0, 150.0, 20.0) + 60.0);
  ASSERT_FALSE(ridge.empty());
  for (const TRidgePoint& p : ridge) {
    EXPECT_NEAR(p.point.y, 40.0 - 0.2 * static_cast<double>(p.point.x), 0.5);
    EXPECT_LE(p.widthPx, 21.0F);
  }
}

TEST(RidgeCentres, OddSizesAbsurdParametersAndOtherTypes_AreSafe) {
  for (const cv::Size size : {cv::Size(1, 1), cv::Size(1, 300), cv::Size(300, 1), cv::Size(3, 7), cv::Size(17, 5),
                              cv::Size(5, 17), cv::Size(33, 31)}) {
    EXPECT_NO_THROW(extract(drawStripe(size, 0.0, size.height / 2.0))) << size;
    EXPECT_TRUE(extract(cv::Mat(size, CV_8UC1, cv::Scalar(255))).empty()) << size;
  }
  EXPECT_TRUE(extract(cv::Mat()).empty());
  const cv::Mat image = drawStripe({200, 120}, 0.1, 50.0);
  const double infinity = std::numeric_limits<double>::infinity();
  for (const double value : {std::nan(""), -infinity, infinity, -1e300, 1e300, -1.0, 0.0, 1e-300}) {
    EXPECT_NO_THROW(extractRidgeCentres(image, {value, kMinContrast}, heapMemory())) << value;
    EXPECT_NO_THROW(extractRidgeCentres(image, {kMaxSigmaPx, value}, heapMemory())) << value;
  }
  for (const int type : {CV_8UC3, CV_16UC1, CV_8SC1}) {
    EXPECT_THROW(extract(cv::Mat::zeros(20, 20, type)), cv::Exception);
  }
}

TEST(RidgeCentres, EveryProcessorAndAView_GiveTheSameBits) {
  for (const cv::Size size : {cv::Size(333, 301), cv::Size(640, 97), cv::Size(65, 97)}) {
    cv::Mat image = drawStripe(size, 0.1, 20.0, 120.0);
    scenes::TRandom random(7, scenes::TStream::noise);
    for (uchar& grey : cv::Mat1b(image)) grey = cv::saturate_cast<uchar>(grey + random.integer(0, 90));
    const std::vector<TRidgePoint> expected = extract(image);
    EXPECT_FALSE(expected.empty()) << size;
    cv::Mat view = cv::Mat(size + cv::Size(13, 7), CV_8UC1, cv::Scalar(77))({{5, 3}, size});
    image.copyTo(view);
    cv::setUseOptimized(false);
    const std::vector<TRidgePoint> baseline = extract(image);
    cv::setUseOptimized(true);
    for (const std::vector<TRidgePoint>& other : {baseline, extract(view)}) {
      ASSERT_EQ(other.size(), expected.size()) << size;
      EXPECT_EQ(std::memcmp(other.data(), expected.data(), expected.size() * sizeof(TRidgePoint)), 0) << size;
    }
  }
}

TEST(RidgeRows, GiveWhatPlainLoopsGiveAtEveryWidth) {
  using TRow = std::vector<short>;
  for (const TRidgeRows* kernels : {&kBaselineKernels.ridgeRows, &weld::kernels().ridgeRows}) {
    scenes::TRandom random(1, scenes::TStream::layout);
    for (int n = 1; n <= 100; ++n) {
      const auto draw = [&] {
        TRow row(static_cast<std::size_t>(n));
        for (short& value : row) value = static_cast<short>(random.integer(0, 9));  // often equal
        return row;
      };
      const TRow a = draw(), b = draw(), c = draw(), d = draw();
      const std::vector<unsigned char> pixels(a.begin(), a.end());
      TRow pairs(a.size()), sums(a.size()), halves(a.size()), quarters(a.size()), response(a.size());
      std::vector<int> maxima(a.size() + kFoundMargin);
      kernels->pairColumns(pixels.data(), n, pairs.data());
      kernels->addRows(a.data(), b.data(), n, sums.data());
      kernels->halveSums(a.data(), n, halves.data());
      kernels->halveSumsAndColumns(a.data(), n, quarters.data());
      kernels->respond({a.data(), b.data(), c.data(), d.data()}, n, response.data());
      maxima.resize(kernels->findMaxima({a.data(), b.data(), c.data(), d.data()}, n, maxima.data()));
      std::vector<int> expectedMaxima;
      for (int x = 0; x < n; ++x) {
        EXPECT_EQ(sums[x], a[x] + b[x]) << n;
        EXPECT_EQ(halves[x], (a[x] + 1) / 2) << n;
        EXPECT_EQ(response[x], b[x] + c[x] - 2 * std::max(a[x], d[x])) << n;
        if (b[x] > a[x] && b[x] >= c[x] && b[x] >= d[x]) expectedMaxima.push_back(x);
        if (x % 2 != 0) continue;
        const int pair = a[x] + a[std::min(x + 1, n - 1)];
        EXPECT_EQ(pairs[x / 2], pair * kRidgeLevelUnit / 2) << n;
        EXPECT_EQ(quarters[x / 2], (pair + 2) / 4) << n;
      }
      EXPECT_EQ(maxima, expectedMaxima) << n;
    }
  }
}

}  // namespace
}  // namespace weld
