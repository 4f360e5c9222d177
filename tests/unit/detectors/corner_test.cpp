#include "detectors/corner.h"

#include "detectors/corner_check.h"
#include "detectors/corner_flanks.h"
#include "ending.h"
#include "geometry/segmentation.h"

#include <cmath>
#include <optional>
#include <utility>

namespace {

using ending::TStripePts;
using ending::with;
using painted::bentPoints;
using painted::joined;
using painted::linePoints;
using TFlanks = std::optional<weld::TFlankPair>;
using TSettings = TCornerSettings;

const TStripePts kV = bentPoints(40, 320, 600, 140.0, 0.5, -0.5);

// One of the stages of the detector, on a dark image of that size.
template <typename TStage>
auto inCase(TStage stage, const TSettings& settings = {}, cv::Size size = {640, 480}) {
  const cv::Mat image = painted::dark(size.width, size.height);
  const TWeldParams weldParams = settings.params();
  const weld::TCornerParams params(weldParams);
  const weld::TFrame frame = weld::heapFrame(image, weldParams);
  return stage(weld::TCornerCase{frame, {}, params});
}

void expectSlopes(const TFlanks& flanks, double leftK, double rightK) {
  ASSERT_TRUE(flanks);
  EXPECT_NEAR(flanks->left.k, leftK, 0.03);
  EXPECT_NEAR(flanks->right.k, rightK, 0.03);
}

TEST(FindFlankPairRansac, eachFlankLiesInItsRangeAndTheRightOneMayComeFirst) {
  const auto find = [](const TStripePts& points, const TSettings& settings = {}) {
    return inCase([&](const auto& c) { return weld::findFlankPairRansac(c, points); }, settings);
  };
  expectSlopes(find(kV), 0.5, -0.5);
  EXPECT_FALSE(find(kV, with(TSettings(), &TSettings::leftFlankDeg, {40.0, 45.0})));
  EXPECT_FALSE(find(kV, with(TSettings(), &TSettings::rightFlankDeg, {-45.0, -40.0})));
  // 50 of 610 points are on the left flank: 8 % of all, but 100 % of what the right flank leaves over.
  const TStripePts unlike = joined(linePoints(20, 70, 100.0, 0.5), linePoints(70, 630, 400.0, -0.5));
  expectSlopes(find(unlike, with(TSettings(), &TSettings::minFlankShare, 0.5)), 0.5, -0.5);
}

TEST(FindFlankPairByPolyline, takesTheLongestPieceOfEachRangeOrTheFirst) {
  const auto find = [](const TStripePts& points, const TSettings& settings = {}) {
    return inCase([&](const auto& c) { return weld::findFlankPairByPolyline(c, points); }, settings);
  };
  expectSlopes(
      find(joined(bentPoints(20, 140, 200, 100.0, 0.4, -0.4), bentPoints(200, 400, 620, 124.0, 0.6, -0.5))), 0.6,
      -0.5);
  EXPECT_FALSE(find(linePoints(20, 400, 100.0, 0.4)));
  expectSlopes(find(kV, with(TSettings(), &TSettings::rightFlankDeg, {-80.0, -60.0})), 0.5, 0.5);
}

TFlanks findNear(const TStripePts& points, double leftK, double rightK) {
  return inCase([&](const auto& c) { return weld::findFlankPairNear(c, points, {leftK, rightK}); });
}

TEST(FindFlankPairNear, prefersThePiecesNearThePreviousFlanks) {
  // Two V side by side: a flat one, wider, and a steep one.
  const TStripePts points =
      joined(bentPoints(10, 200, 390, 150.0, 0.2, -0.2), bentPoints(390, 500, 620, 150.0, 0.7, -0.7));
  for (const auto& [previousK, k] : {std::pair{0.2, 0.2}, {0.7, 0.7}, {0.65, 0.7}, {0.25, 0.2}}) {
    expectSlopes(findNear(points, previousK, -previousK), k, -k);
  }
  for (const auto& [offDeg, isNear] : {std::pair{4.5, true}, {5.5, false}}) {
    const double k = std::tan(std::atan(0.2) + offDeg * CV_PI / 180.0);
    const double nearK = isNear ? k : 0.2;  // the wider V, if it is near
    const TStripePts wide = bentPoints(10, 200, 390, 150.0, k, -k);
    expectSlopes(findNear(joined(wide, bentPoints(390, 500, 620, 150.0, 0.2, -0.2)), 0.2, -0.2), nearK, -nearK);
  }
  EXPECT_FALSE(findNear(linePoints(10, 400, 150.0, 0.2), 0.2, -0.2));
  EXPECT_FALSE(findNear(bentPoints(10, 300, 600, 300.0, -0.3, 0.3), 0.3, -0.3)) << "the left flank must lie left";
}

TEST(FindFlankPairs, ofEquallyLongPiecesTheFirstAreTaken) {
  for (const int secondRightLeg : {40, 70}) {  // the same V twice, level pieces around them
    TStripePts points = linePoints(10, 100, 100.0);
    for (const auto& [x, leg] : {std::pair{100, 40}, {260, secondRightLeg}}) {
      points = joined(points, bentPoints(x, x + 40, x + 40 + leg, 100.0, 0.5, -0.5));
      points = joined(points, linePoints(x + 40 + leg, x + 160, 120.0 - 0.5 * leg));
    }
    const auto pieces = inCase([&](const auto& c) { return weld::segmentStripe(c.frame, points, {}); });
    ASSERT_EQ(pieces.size(), 7U);
    ASSERT_EQ(weld::pieceLength(pieces[1]), weld::pieceLength(pieces[4]));
    ASSERT_EQ(weld::pieceLength(pieces[2]) == weld::pieceLength(pieces[5]), secondRightLeg == 40);
    const TFlanks byLength = inCase([&](const auto& c) { return weld::findFlankPairByPolyline(c, points); });
    for (const TFlanks& flanks : {findNear(points, 0.5, -0.5), byLength}) {
      ASSERT_TRUE(flanks);
      EXPECT_LT(flanks->left.inliers.back().x, 180.0F);
      EXPECT_EQ(flanks->right.inliers.back().x < 200.0F, secondRightLeg == 40);
    }
  }
}

TEST(TrimFlankOverlap, cutsWhatReachesBeyondTheFarEndOfTheOther) {
  const auto flank = [](int from, int to, double b, double k) {
    weld::TFittedLine line(weld::heapMemory());
    line.k = k;
    line.b = b;
    line.isValid = true;
    const TStripePts points = linePoints(from, to, k * from + b, k);
    line.inliers.assign(points.begin(), points.end());
    return line;
  };
  // The left flank runs past the right one's last column 500, the right one begins before the left one's first.
  weld::TFlankPair flanks{flank(100, 560, 120.0, 0.5), flank(80, 501, 440.0, -0.5)};
  flanks.right.inliers.back().x = 500.75F;  // truncated, counts as column 500
  for (cv::Point2f& p : flanks.left.inliers) p.x += 0.5F;
  weld::TFlankPair whole = flanks;
  whole.left = flank(100, 560, 120.0, 0.5);
  weld::TFlankPair invalid = flanks;
  invalid.right.isValid = false;
  const struct {
    const char* name;
    weld::TFlankPair flanks;
    cv::Size size;
    float leftEnd, rightStart;
  } rows[] = {
      {"overlapping", flanks, {640, 480}, 499.5F, 100},
      {"points in the columns of the ends stay", whole, {640, 480}, 500, 100},
      {"intersection in column 320 of 320", flanks, {320, 480}, 559.5F, 80},
      {"intersection in row 280 of 280", flanks, {640, 280}, 559.5F, 80},
      {"right flank invalid", invalid, {640, 480}, 559.5F, 80},
      {"9 points on the left", {flank(551, 560, 120.0, 0.5), flanks.right}, {640, 480}, 559, 80},
  };
  for (const auto& row : rows) {
    weld::TFlankPair trimmed = row.flanks;
    inCase([&](const auto& c) { return weld::trimFlankOverlap(c, trimmed), 0; }, {}, row.size);
    EXPECT_EQ(trimmed.left.inliers.back().x, row.leftEnd) << row.name;
    EXPECT_EQ(trimmed.right.inliers.front().x, row.rightStart) << row.name;
    EXPECT_EQ(trimmed.right.isValid, row.flanks.right.isValid) << row.name;
  }
}

TEST(FlankPairs, parallelOnesCrossFarOutside) {
  for (const auto& [rightK, x] : {std::pair{0.3, -5e6F}, {0.3 - 1e-9, 5e6F}}) {
    weld::TFlankPair flanks{weld::TFittedLine(weld::heapMemory()), weld::TFittedLine(weld::heapMemory())};
    flanks.left.k = 0.3;
    flanks.right.k = rightK;
    flanks.left.b = 10.0;
    flanks.right.b = 60.0;
    EXPECT_EQ(weld::crossingOf(flanks).x, x);
  }
}

weld::TPrevious tracked(double includedDeg) {
  weld::TPrevious previous = ending::foundBefore();
  previous.auxVal1 = 0.5;
  previous.auxVal3 = -0.5;
  previous.trackVal = includedDeg;
  return previous;
}

TEST(FindCorner, reportsCornerFlanksAndAngle) {
  const double includedDeg = 180.0 - 2.0 * std::atan(0.5) * 180.0 / CV_PI;
  ending::TSeenChecks seen;
  for (const weld::TPrevious& previous : {weld::TPrevious(), tracked(includedDeg)}) {
    const auto end = ending::of(weld::findCorner, kV, {}, seen, previous);
    ASSERT_TRUE(end.isFound) << end.reason;
    const weld::TSeam& seam = end.seam;
    EXPECT_NEAR(seam.pos.x, 320.0, 1.5);
    EXPECT_NEAR(seam.pos.y, 280.0, 1.0);
    EXPECT_NEAR(seam.auxVal1, 0.5, 0.01);
    EXPECT_NEAR(seam.auxVal3, -0.5, 0.01);
    EXPECT_NEAR(seam.auxVal1 * seam.pos.x + seam.auxVal2, seam.pos.y, 1e-3);
    EXPECT_NEAR(seam.auxVal3 * seam.pos.x + seam.auxVal4, seam.pos.y, 1e-2);
    EXPECT_NEAR(seam.trackVal, includedDeg, 1.0);
  }
}

// Those that the test of the plausibility provokes.
ending::TSeenChecks plausibilityChecks() {
  ending::TSeenChecks seen;
  ending::of(painted::dark(), {}, seen, [](const weld::TFrame& frame) {
    const weld::TCornerParams params(frame.params);
    const TFlanks flanks = inCase([](const auto& c) { return weld::findFlankPairRansac(c, kV); });
    weld::TSeam seam(frame.memory);
    seam.isFound = weld::checkCornerPlausible({frame, {}, params}, weld::crossingOf(*flanks), *flanks);
    return seam;
  });
  return seen;
}

TEST(FindCorner, tellsWhyThereIsNone) {
  ending::TSeenChecks seen;
  const double includedDeg = ending::of(weld::findCorner, kV, {}, seen, tracked(127.0)).seam.trackVal;
  const TSettings usual;
  TSettings sparse = with(usual, &TSettings::flankTolerancePx, 0.6);
  sparse.minFlankShare = 0.0;
  const TStripePts left = linePoints(40, 320, 140.0, 0.5);
  const TStripePts right = linePoints(320, 600, 280.0, -0.5);
  const char* const kNoLeft = "no left flank in its range of angles";
  const char* const kNoRight = "no right flank in its range of angles";
  const char* const kChange = "included angle changed too much since the last frame";
  const struct {
    const char* name;
    TStripePts points;
    TSettings settings;
    const char* reason;
    weld::TPrevious previous{};
  } rows[] = {
      {"9 points", linePoints(20, 29, 240.0), usual, "too few stripe points"},
      {"hill", bentPoints(40, 320, 600, 300.0, -0.5, 0.5), usual, "left flank reaches beyond the corner"},
      {"straight", linePoints(20, 620, 100.0, 0.3), usual, kNoRight},
      {"no left flank, tracked", right, usual, kNoLeft, tracked(includedDeg)},
      {"no right flank, tracked", left, usual, kNoRight, tracked(includedDeg)},
      {"3 points on the left", bentPoints(300, 306, 360, 200.0, 0.5, -0.5), sparse,
       "too few stripe points on a flank"},
      {"16 points", bentPoints(300, 308, 316, 200.0, 0.5, -0.5), usual, kNoRight},
      {"left share too low, but two pieces", kV, with(usual, &TSettings::minFlankShare, 0.6), "found"},
      {"right share too low, but two pieces",
       joined(bentPoints(40, 400, 500, 140.0, 0.5, -0.5), linePoints(500, 640, 20.0, 0.3)),
       with(usual, &TSettings::minFlankShare, 0.5), "found"},
      {"crossing far left", joined(linePoints(40, 300, 100.0, 0.5), linePoints(330, 600, 40.0, -0.1)), usual,
       "flanks meet outside the image"},
      {"10.01 degrees more", kV, usual, kChange, tracked(includedDeg - 10.01)},
      {"10.01 degrees less", kV, usual, kChange, tracked(includedDeg + 10.01)},
      {"9.99 degrees more", kV, usual, "found", tracked(includedDeg - 9.99)},
      {"9.99 degrees less", kV, usual, "found", tracked(includedDeg + 9.99)},
  };
  for (const auto& row : rows) {
    const auto end = ending::of(weld::findCorner, row.points, row.settings.params(), seen, row.previous);
    EXPECT_EQ(end.reason, row.reason) << row.name;
  }
  seen.expectEachStoppedARow(plausibilityChecks());
}

}  // namespace
