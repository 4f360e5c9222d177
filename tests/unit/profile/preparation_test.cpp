#include "profile/fit_table.h"
#include "profile/stripe_noise.h"
#include "scenes/made_joint.h"
#include "scenes/random.h"
#include "support/painted_frame.h"
#include "support/seed.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace weld {
namespace {

std::pmr::memory_resource* const kHeap = std::pmr::get_default_resource();
using TList2f = std::vector<cv::Point2f>;

using painted::joined;
using painted::linePoints;

TEST(CleanCentres, KeepsWhatHasNeighbours) {
  constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
  // The ends join once the wild centres between are gone; three neighbours are a run only together with others.
  const TList2f split = joined(joined(linePoints(0, 3, 50), {{3, 90}, {4, 10}}), linePoints(5, 8, 50));
  const TList2f far = joined(linePoints(0, 3, 50), linePoints(40, 60, 50));
  const struct {
    const char* name;
    TList2f points;
    int kept;
  } rows[] = {
      {"none", {}, 0},
      {"alone", {{3, 4}}, 0},
      {"four", linePoints(0, 4, 9), 4},
      {"three", linePoints(0, 3, 9), 0},
      {"split by wild ones", split, 6},
      {"three far off", far, 20},
      {"not finite", {{0, 1}, {1, kNaN}, {kNaN, 1}, {2, 1}, {3, 1}, {4, 1}, {5, 3e7F}}, 4},
      {"not to the right", {{5, 1}, {4, 1}, {5, 1}, {6, 1}, {7, 1}, {8, 1}}, 4},
      {"step within a steep flank", {{0, 0}, {1, 10}, {2, 20}, {3, 30}}, 4},
      {"step", {{0, 0}, {1, 10.3F}, {2, 20.6F}, {3, 30.9F}}, 0},
  };
  for (const auto& row : rows) EXPECT_EQ(cleanCentres(row.points, {}, kHeap).count(), row.kept) << row.name;
}

TEST(CleanCentres, TakesTheConfidenceAsWeight) {
  const TList2f points = linePoints(0, 5, 9);
  const std::vector<TCentreSource> sources{{TCentreOrigin::ridge, 0.5F},
                                           {TCentreOrigin::ridge, -1.0F},
                                           {TCentreOrigin::ridge, 7.0F},
                                           {TCentreOrigin::ridge, std::numeric_limits<float>::quiet_NaN()}};
  const TCentres centres = cleanCentres(points, sources, kHeap);
  EXPECT_EQ(std::vector<double>(centres.weight.begin(), centres.weight.end()),
            (std::vector<double>{0.5, 0.05, 1.0, 0.05, 1.0}));
}

struct TPrepared {
  explicit TPrepared(const TList2f& points)
      : centres(cleanCentres(points, {}, kHeap)),
        moments(centres.x, centres.y, centres.weight, kHeap),
        noise(measureNoise(centres, moments, kHeap)),
        noisePx(noise.sigmaPx),
        cuts(cutAtoms(centres, moments, noisePx, kHeap)),
        table(centres, moments, cuts, noisePx, kHeap) {}
  TCentres centres;
  TMoments moments;
  TStripeNoise noise;
  double noisePx;
  TList<int> cuts;
  TFitTable table;

  double nearestCut(double x) const {
    double nearest = 1e9;
    for (const int cut : cuts) {
      if (cut < centres.count()) nearest = std::min(nearest, std::abs(centres.at(cut) - x));
    }
    return nearest;
  }
};

TEST(MeasureNoise, IsThatOfTheCentresWhateverTheShape) {
  for (const double sigma : {0.4, 1.0, 2.0}) {
    for (const double slope : {0.0, 1.0}) {
      scenes::TRandom random(testing_support::seedOfCurrentTest(), scenes::TStream::noise);
      TList2f points;
      for (int x = 0; x < 1280; ++x) {
        const double y =
            slope * std::abs(x - 640) + sigma * std::sqrt(1 + slope * slope) * scenes::toGaussian(random.next());
        points.emplace_back(static_cast<float>(x), static_cast<float>(y));
      }
      EXPECT_NEAR(TPrepared(points).noisePx, sigma, 0.15 * sigma) << slope;
      EXPECT_LE(TPrepared(points).noise.inflation, 1.5) << "white";
    }
  }
  EXPECT_DOUBLE_EQ(TPrepared(linePoints(0, 200, 7)).noisePx, 0.25);
  EXPECT_DOUBLE_EQ(TPrepared({}).noisePx, 0.25);
}

TEST(MeasureNoise, TellsHowMuchNeighboursErrAlike) {
  scenes::TRandom random(testing_support::seedOfCurrentTest(), scenes::TStream::speckle);
  TList2f points;
  double speckle = 0.0;
  for (int x = 0; x < 1280; ++x) {
    speckle = 0.8 * speckle + 0.6 * scenes::toGaussian(random.next());
    points.emplace_back(static_cast<float>(x), static_cast<float>(400 + speckle));
  }
  EXPECT_NEAR(TPrepared(points).noise.inflation, 9.0, 3.5);  // (1 + 0.8) / (1 - 0.8) for very many
}

TEST(CutAtoms, CutsAtTheShouldersWithinTwoColumns) {
  for (std::uint64_t seed = 1; seed <= 40; ++seed) {
    const made::TJoint joint = made::makeJoint(TWeldType::vGroove, made::TLevel::clean, seed);
    const TPrepared prepared(joint.points);
    EXPECT_LE(prepared.table.atoms(), kMostAtoms);
    EXPECT_TRUE(std::is_sorted(prepared.cuts.begin(), prepared.cuts.end()));
    for (const TFeature f : {TFeature::leftShoulder, TFeature::rightShoulder}) {
      EXPECT_LE(prepared.nearestCut(joint.at(f).pos.x), 2.0) << seed;
    }
  }
}

TEST(FitTable, LeavesOutAGhostInsideALine) {
  const TPrepared prepared(
      joined(joined(linePoints(0, 300, 100), linePoints(300, 330, 150)), linePoints(330, 700, 100)));
  const TLineEntry& line = prepared.table.line(0, prepared.table.atoms());
  EXPECT_TRUE(line.isStraight);
  EXPECT_EQ(line.dropped, 30);
  EXPECT_NEAR(line.line.offsetOf(315, 100), 0.0, 0.01);
}

TEST(FitTable, TellsARoundFromAStraightStretch) {
  TList2f points;
  for (int x = -150; x <= 150; ++x)
    points.emplace_back(static_cast<float>(x), static_cast<float>(-std::sqrt(4e4 - x * x)));
  TPrepared round(points);
  const TCircleEntry& arc = round.table.circle(0, round.table.atoms());
  EXPECT_TRUE(arc.isValid);
  EXPECT_NEAR(arc.circle.r, 200, 0.1);
  EXPECT_NEAR(arc.startDeg, -48.59, 0.1);
  EXPECT_NEAR(arc.endDeg, 48.59, 0.1);
  EXPECT_FALSE(round.table.line(0, round.table.atoms()).isStraight);
  TPrepared straight(linePoints(0, 300, 5));
  EXPECT_FALSE(straight.table.circle(0, straight.table.atoms()).isValid);
}

}  // namespace
}  // namespace weld
