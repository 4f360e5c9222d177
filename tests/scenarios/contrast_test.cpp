// Seams found by their contrast: the calls, the tracker, and what they refuse.
#include "scenes/exact_math.h"
#include "scenes/plate.h"
#include "scenes/random.h"
#include "support/checksum.h"
#include "support/heap.h"
#include "zelWeldDetect.h"

#include <gtest/gtest.h>

#include <opencv2/imgproc.hpp>

#include <cmath>
#include <limits>
#include <vector>

namespace {

using scenes::TLevel;
using scenes::TPlateSeam;

const cv::Size kSize{653, 517};  // vectors of every length leave a remainder
constexpr long kRefinedLines = 3;
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

scenes::TPlateScene plate(TPlateSeam seam, TLevel level, std::uint64_t seed) {
  return renderPlate(randomPlate(seam, level, seed, kSize));
}

std::uint32_t checksumOf(const TContourCenterLine& line) {
  TChecksum sum;
  sum.add(line.pts.data(), line.pts.size() * sizeof(cv::Point2f));
  sum.add(line.widthsPx.data(), line.widthsPx.size() * sizeof(float));
  sum.add(line.measured.data(), line.measured.size());
  sum.add({line.widthPx, line.contrast, line.directionDeg, line.confidence});
  return sum.value;
}

// Every compiler, optimisation and instruction set must give these. A change that means to move a result puts the
// number that the failure prints in place of the old one.
TEST(ContrastBits, areTheSameEverywhere) {
  struct TRow {
    TPlateSeam seam;
    TSeamPolarity polarity;
    std::uint32_t image;
    std::uint32_t line;
  };
  for (const TRow& row : {TRow{TPlateSeam::gap, TSeamPolarity::dark, 1833275673U, 31285087U},
                          TRow{TPlateSeam::tight, TSeamPolarity::automatic, 488312638U, 126687739U},
                          TRow{TPlateSeam::step, TSeamPolarity::edge, 2789282811U, 1662438177U},
                          TRow{TPlateSeam::scribe, TSeamPolarity::bright, 105205309U, 762318919U}}) {
    const scenes::TPlateScene scene = plate(row.seam, TLevel::noisy, 3);
    TContrastSearch search;
    search.polarity = row.polarity;
    TChecksum image;
    image.add(scene.image.data, scene.image.total());
    EXPECT_EQ(image.value, row.image) << static_cast<int>(row.seam);
    EXPECT_EQ(checksumOf(findSeamByContrast(scene.image, search)), row.line) << static_cast<int>(row.seam);
  }
}

TEST(Contrast, aTransposedImageGivesTheTransposedLine) {
  for (const TPlateSeam seam : {TPlateSeam::gap, TPlateSeam::tight, TPlateSeam::step, TPlateSeam::scribe}) {
    const cv::Mat image = plate(seam, TLevel::clean, 8).image;
    const TContourCenterLine line = findSeamByContrast(image, {});
    const TContourCenterLine turned = findSeamByContrast(image.t(), {});
    ASSERT_GE(line.confidence, 0.5F);
    ASSERT_EQ(line.pts.size(), turned.pts.size());
    const bool isSame = cv::norm(line.pts.front() - cv::Point2f(turned.pts.front().y, turned.pts.front().x)) < 9.0;
    for (std::size_t i = 0; i < line.pts.size(); ++i) {
      const cv::Point2f p = turned.pts[isSame ? i : line.pts.size() - 1 - i];
      EXPECT_LT(cv::norm(line.pts[i] - cv::Point2f(p.y, p.x)), 1e-3) << i;
    }
    EXPECT_NEAR(std::abs(line.contrast), std::abs(turned.contrast), 1e-4);
  }
}

// Behind a tack weld a path strays; a wide gap fills half of a narrow band.
TEST(Contrast, aLineReachesTheEndsOfItsSeam) {
  TContrastSearch search;
  search.polarity = TSeamPolarity::edge;
  for (const std::uint64_t seed : {40066U, 40107U}) {
    const scenes::TPlateScene step = renderPlate(randomPlate(TPlateSeam::step, TLevel::harsh, seed));
    EXPECT_GT(findSeamByContrast(step.image, search).pts.size(), 95U) << seed;
  }

  const scenes::TPlateScene gap = renderPlate(randomPlate(TPlateSeam::gap, TLevel::clean, 50081));
  const cv::Point2d chord = gap.truth.stations.back().point - gap.truth.stations.front().point;
  search.polarity = TSeamPolarity::dark;
  search.roughPos = gap.truth.stations[gap.truth.stations.size() / 3].point;
  search.directionDeg = static_cast<float>(scenes::directionDeg(chord.x, chord.y));
  search.bandPx = 60.0F;
  const TContourCenterLine line = findSeamByContrast(gap.image, search);
  ASSERT_GE(line.confidence, 0.5F);
  EXPECT_GT(cv::norm(line.pts.back() - line.pts.front()), 0.95 * cv::norm(chord));
}

TEST(Contrast, imagesAndSettingsThatCannotBeUsed) {
  EXPECT_TRUE(findSeamByContrast({}, {}).pts.empty());
  EXPECT_TRUE(zel::TransforLog({}).empty());
  EXPECT_TRUE(findSeamByContrast(cv::Mat1b(47, 400, 90), {}).pts.empty());
  EXPECT_TRUE(findSeamByContrast(cv::Mat1b(400, 400, 90), {}).pts.empty());
  EXPECT_THROW(findSeamByContrast(cv::Mat1f(400, 400, 90.0F), {}), cv::Exception);
  EXPECT_THROW(zel::TransforLog(cv::Mat1f(4, 4, 90.0F)), cv::Exception);

  const cv::Mat image = plate(TPlateSeam::gap, TLevel::clean, 4).image;
  const std::uint32_t usual = checksumOf(findSeamByContrast(image, {}));
  TContrastSearch odd;
  odd.directionDeg = odd.directionTolDeg = odd.reachPx = odd.minWidthPx = odd.maxWidthPx = kNaN;
  odd.minLengthPx = -3.0F;
  odd.minConfidence = 7.0F;
  odd.roughPos = {kNaN, 1e30F};
  odd.bandPx = 30.0F;
  odd.polarity = static_cast<TSeamPolarity>(77);
  EXPECT_EQ(checksumOf(findSeamByContrast(image, odd)), usual);
  cv::Mat colour;
  cv::cvtColor(image, colour, cv::COLOR_GRAY2BGR);
  EXPECT_EQ(checksumOf(findSeamByContrast(colour, {})), usual);

  // Bands anywhere, also outside the image.
  scenes::TRandom random(9, scenes::TStream::layout);
  for (int n = 0; n < 60; ++n) {
    TContrastSearch band;
    band.roughPos = {static_cast<float>(random.uniform(-900.0, 1500.0)),
                     static_cast<float>(random.uniform(-900.0, 1500.0))};
    band.directionDeg = static_cast<float>(random.uniform(-180.0, 180.0));
    band.directionTolDeg = static_cast<float>(random.uniform(0.0, 90.0));
    band.bandPx = static_cast<float>(random.uniform(0.1, 2000.0));
    band.reachPx = static_cast<float>(random.uniform(0.0, 500.0));
    const TContourCenterLine line = findSeamByContrast(image, band);
    EXPECT_EQ(line.pts.size(), line.widthsPx.size());
    EXPECT_EQ(line.pts.size(), line.measured.size());
  }
}

TEST(Contrast, whatIsAskedForIsHeldTo) {
  const scenes::TPlateScene scene = plate(TPlateSeam::gap, TLevel::clean, 4);
  TContrastSearch search;
  search.polarity = TSeamPolarity::dark;
  const TContourCenterLine line = findSeamByContrast(scene.image, search);
  ASSERT_FALSE(line.pts.empty());
  const double chord = cv::norm(line.pts.back() - line.pts.front());
  const auto isFound = [&](const TContrastSearch& s) { return !findSeamByContrast(scene.image, s).pts.empty(); };
  TContrastSearch other = search;
  other.minLengthPx = static_cast<float>(chord + 1.0);
  EXPECT_FALSE(isFound(other));
  other = search;
  other.maxWidthPx = line.widthPx - 0.1F;
  EXPECT_FALSE(isFound(other));
  other = search;
  other.directionDeg = line.directionDeg + 40.0F;
  other.directionTolDeg = 20.0F;
  EXPECT_FALSE(isFound(other));
  other.directionTolDeg = 41.0F;
  EXPECT_TRUE(isFound(other));
  EXPECT_EQ(TBaseWeld().getWeldPts(scene.image), line.pts);
  const cv::Point2f middle = line.pts[line.pts.size() / 2];
  const TContourCenterLine near = TBaseWeld().getWeldPtsByContrastAndRoughPos(
      scene.image, middle + cv::Point2f(8, 8), line.directionDeg, 40.0F);
  ASSERT_FALSE(near.pts.empty());
  EXPECT_LT(distanceToSeam(scene.truth, near.pts[near.pts.size() / 2]), 0.3);
}

TEST(Contrast, theLogarithmRunsFromBlackToWhite) {
  const cv::Mat3b image(1, 2, cv::Vec3b(0, 255, 10));
  EXPECT_EQ(cv::Mat3b(zel::TransforLog(image))(0, 1), cv::Vec3b(0, 255, 54));
  EXPECT_EQ(cv::countNonZero(cv::Mat(zel::TransforLog(image, kNaN) != zel::TransforLog(image)).reshape(1)), 0);
}

// A seam that drifts, is lost on a bare plate, and comes back elsewhere.
TEST(ContrastTracker, followsHoldsAndLosesTheSeam) {
  TTrackerOptions options;
  options.source = TSeamSource::contrast;
  options.contrast.polarity = TSeamPolarity::dark;
  options.holdFrames = 1;
  options.lookAtPx = 200.0F;
  options.keepTrace = true;
  scenes::TPlateParams params = randomPlate(TPlateSeam::gap, TLevel::noisy, 6, kSize);
  params.course = {{300.0, 250.0}, 80.0, 20.0, 300.0};
  params.course.widthPx = 8.0;
  params.course.depth = 0.6;
  params.look.tacks = 0;
  scenes::TMotion motion;
  motion.driftPx = {2.0, 0.0};
  TWeldTracker tracker(TWeldParams(), options);
  float lastX = 0.0F;
  for (int n = 0; n < 5; ++n) {
    const scenes::TPlateScene scene = renderPlate(plateFrameOf(params, motion, n));
    const TTrackedSeam seam = tracker.track(scene.image);
    ASSERT_EQ(seam.state, TSeamState::found) << tracker.lastTrace().sentence;
    EXPECT_NEAR(seam.weldPos.y, 200.0F, 1e-3);
    EXPECT_LT(distanceToSeam(scene.truth, seam.weldPos), 0.4);
    EXPECT_EQ(tracker.lastTrace().attempts.size(), 1U) << "the band is enough";
    EXPECT_NEAR(seam.weldPos.x - lastX, n > 0 ? 2.0F : seam.weldPos.x, 0.4);
    lastX = seam.weldPos.x;
  }
  params.seam = TPlateSeam::none;
  const cv::Mat bare = renderPlate(params).image;
  EXPECT_EQ(tracker.track(bare).state, TSeamState::held);
  EXPECT_EQ(tracker.track(bare).state, TSeamState::lost);
  const TFrameTrace& trace = tracker.lastTrace();
  EXPECT_EQ(trace.attempts.back().extraction, TStripeExtraction::none);
  EXPECT_TRUE(trace.outcome == TWeldOutcome::noLine || trace.outcome == TWeldOutcome::lineUncertain)
      << trace.sentence;
}

TEST(ContrastTracker, edgesOfTheSeamAreAsFarApartAsItIsWide) {
  scenes::TPlateParams params = randomPlate(TPlateSeam::gap, TLevel::clean, 6, kSize);
  params.course = {{300.0, 250.0}, 90.0, 0.0, 300.0};
  params.course.widthPx = 12.0;
  const cv::Mat image = renderPlate(params).image;
  TTrackerOptions options;
  options.source = TSeamSource::contrast;
  const auto xOf = [&](TWeldPosType pos) {
    TWeldParams weld;
    initWeldParameters(TWeldType::buttGap, weld, pos);
    return TWeldTracker(weld, options).track(image).weldPos.x;
  };
  EXPECT_NEAR(xOf(TWeldPosType::centre), 300.0F, 0.2);
  EXPECT_NEAR(xOf(TWeldPosType::left), 294.0F, 0.5);
  EXPECT_NEAR(xOf(TWeldPosType::right), 306.0F, 0.5);
  const TJointMeasurement measured = TWeldTracker(TWeldParams(), options).track(image).measurement;
  EXPECT_TRUE(measured.isValid && measured.confidence > 0.9F);
  EXPECT_NEAR(measured.widthPx, 12.0, 0.7);
  EXPECT_NEAR(std::abs(measured.baseAngleDeg), 90.0, 0.5);
}

// A stripe that shows no gap, over a plate whose seam shows: the line gives the column, the stripe the row.
TEST(ContrastTracker, stripeAndContrastTogether) {
  scenes::TPlateParams params = randomPlate(TPlateSeam::tight, TLevel::clean, 6, kSize);
  params.course = {{330.0, 250.0}, 85.0, 0.0, 300.0};
  params.course.depth = 0.6;
  cv::Mat image = renderPlate(params).image * 0.5;
  for (int y = 292; y < 299; ++y) image.row(y).setTo(230);
  TTrackerOptions options;
  options.source = TSeamSource::both;
  options.contrast.polarity = TSeamPolarity::dark;
  options.contrast.directionDeg = 90.0F;
  options.contrast.directionTolDeg = 30.0F;
  options.keepTrace = true;
  TWeldParams weld;
  initWeldParameters(TWeldType::buttGap, weld, TWeldPosType::centre);
  TWeldTracker tracker(weld, options);
  const TTrackedSeam seam = tracker.track(image);
  ASSERT_EQ(seam.state, TSeamState::found) << tracker.lastTrace().sentence;
  EXPECT_NEAR(seam.weldPos.y, 295.0F, 1.0);
  EXPECT_NEAR(seam.weldPos.x, 330.0 + 45.0 * std::tan(5.0 * CV_PI / 180.0), 0.7);
  EXPECT_NEAR(seam.measurement.baseAngleDeg, 85.0, 1.0) << "of the line: the stripe has no gap to be measured";
  EXPECT_TRUE(std::isnan(seam.measurement.gapPx));
}

TEST(ContrastAllocations, aFinderThatIsKeptAsksForTheResultOnly) {
  const cv::Mat image = plate(TPlateSeam::tight, TLevel::noisy, 3).image;
  TContrastFinder finder;
  for (int n = 0; n < 3; ++n) finder.find(image, {});
  const long before = heap::requests();
  ASSERT_FALSE(finder.find(image, {}).pts.empty());
  EXPECT_LE(heap::requests() - before, 3 * kRefinedLines);
}

}  // namespace
