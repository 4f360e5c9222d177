#include "api/seam_gate.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace weld {
namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInf = std::numeric_limits<float>::infinity();

TSeam seamAt(cv::Point2f p) {
  TSeam seam(heapMemory());
  seam.isFound = true;
  seam.pos = p;
  return seam;
}

// A plate between two ends as the detector reports it.
TSeam plateBetween(cv::Point2f start, cv::Point2f end) {
  TSeam plate = seamAt((start + end) * 0.5F);
  plate.auxVal1 = static_cast<double>((start.y - end.y) / (start.x - end.x));
  plate.auxVal2 = static_cast<double>(start.y) - static_cast<double>(start.x) * plate.auxVal1;
  return plate;
}

TEST(SeamGate, refusesImpossiblePoints) {
  const cv::Mat image = cv::Mat::zeros(480, 640, CV_8UC1);
  const TWeldParams params;
  const cv::Point2f marker(-1.0F, -1.0F);
  const struct {
    const char* name;
    TSeam seam;
    TWeldType type;
    bool isPossible;
  } rows[] = {
      {"first pixel", seamAt({0.0F, 0.0F}), TWeldType::lap, true},
      {"last pixel", seamAt({639.0F, 479.0F}), TWeldType::lap, true},
      {"left of it", seamAt({-0.5F, 240.0F}), TWeldType::lap, false},
      {"right of it", seamAt({639.5F, 240.0F}), TWeldType::lap, false},
      {"above it", seamAt({320.0F, -0.5F}), TWeldType::lap, false},
      {"below it", seamAt({320.0F, 479.5F}), TWeldType::lap, false},
      {"no number", seamAt({320.0F, kNaN}), TWeldType::lap, false},
      {"no end", seamAt({kInf, 240.0F}), TWeldType::corner, false},
      {"plate", plateBetween({80.0F, 240.0F}, {520.0F, 233.0F}), TWeldType::plate, true},
      {"plate, start unsupported", plateBetween(marker, {520.0F, 233.0F}), TWeldType::plate, false},
      {"plate, end unsupported", plateBetween({83.0F, 240.0F}, marker), TWeldType::plate, false},
      {"line through the marker, no plate", plateBetween(marker, {520.0F, 233.0F}), TWeldType::corner, true},
  };
  for (const auto& row : rows) {
    const TJointRules& rules = findJoint(row.type)->rules;
    EXPECT_EQ(isSeamPointPossible(heapFrame(image, params), row.seam, rules), row.isPossible) << row.name;
  }
}

TEST(SeamGate, letsAJumpPassOnceItHasRepeated) {
  const struct {
    const char* name;
    std::vector<float> columns;  // of the seam, frame by frame, NaN without one; maxJumpPx 40, acceptAfterFrames 3
    std::vector<bool> passes;
  } rows[] = {
      {"steady", {100, 140, 180}, {true, true, true}},
      {"just too far", {100, 140.5F, 100}, {true, false, true}},
      {"new place", {100, 300, 310, 305, 300}, {true, false, false, true, true}},
      {"wanders on", {100, 300, 340, 380, 420}, {true, false, false, true, true}},
      {"wanders too fast", {100, 300, 340.5F, 381, 421.5F}, {true, false, false, false, false}},
      {"one outlier", {100, 300, 105, 300, 300}, {true, false, true, false, false}},
      {"no two alike", {100, 300, 500, 200, 400}, {true, false, false, false, false}},
      {"lost between", {100, 300, 300, kNaN, 300, 300}, {true, false, false, true, false, false}},
  };
  for (const auto& row : rows) {
    TTrackerOptions options;
    TJumpMemory memory;
    for (std::size_t i = 0; i < row.columns.size(); ++i) {
      TSeam seam = seamAt({row.columns[i], 50.0F});
      seam.isFound = row.columns[i] == row.columns[i];
      EXPECT_EQ(passesJumpTest(seam, options, memory, {}), row.passes[i]) << row.name << ' ' << i;
    }
  }
}

TEST(SeamGate, takesTheMoveOfAGroovesShouldersForThatOfTheGroove) {
  const struct {
    const char* name;
    TMeasuring measuring;
    cv::Point2d root;  // from 300, 200 on, between shoulders at 100 and 500
    double shoulderX;  // of the left one
    bool passes;
  } rows[] = {{"a bead fills it", TMeasuring::groove, {300, 258}, 120, true},
              {"farther than a bead does", TMeasuring::groove, {300, 262}, 120, false},
              {"elsewhere", TMeasuring::groove, {350, 200}, 150, false},
              {"one with a wall", TMeasuring::bevel, {300, 258}, 120, false}};
  for (const auto& row : rows) {
    const TProfileTemplate form{"", row.measuring};
    const auto grooveAt = [&](cv::Point2d root, double shoulderX) {
      TSeam seam = seamAt(cv::Point2f(root));
      seam.isFound = true;
      seam.profile.emplace().profile = &form;
      seam.profile->features[static_cast<std::size_t>(TFeature::leftShoulder)] = {true, {shoulderX, 100.0}, 1.0};
      seam.profile->features[static_cast<std::size_t>(TFeature::rightShoulder)] = {true, {500.0, 100.0}, 1.0};
      return seam;
    };
    TJumpMemory memory;
    EXPECT_TRUE(passesJumpTest(grooveAt({300, 200}, 100), TTrackerOptions(), memory, {}));
    EXPECT_EQ(passesJumpTest(grooveAt(row.root, row.shoulderX), TTrackerOptions(), memory, {}), row.passes)
        << row.name;
  }
}

TEST(SeamGate, withoutALimitOfJumpsLetsAllPass) {
  TTrackerOptions options;
  for (const double none : {HUGE_VAL, std::nan("")}) {
    options.maxJumpPx = none;
    TJumpMemory memory;
    TSeam seam = seamAt({100.0F, 50.0F});
    seam.isUnsure = true;
    EXPECT_TRUE(passesJumpTest(seam, options, memory, {}));
    EXPECT_TRUE(passesJumpTest(seamAt({900.0F, 50.0F}), options, memory, {}));
  }
}

TEST(SeamGate, letsAnUnsureFirstSeamPassOnceItHasRepeated) {
  const struct {
    const char* name;
    std::vector<float> columns;  // of unsure seams, frame by frame, NaN without one
    std::vector<bool> passes;
    bool isFlushFirst = false;  // the others are not
  } rows[] = {
      {"same place", {100, 120, 100}, {false, true, true}},
      {"of another kind", {100, 100, 100}, {false, false, true}, true},
      {"elsewhere", {100, 120.5F, 100, 300}, {false, false, false, false}},
      {"lost between", {100, kNaN, 100, 100}, {false, true, false, true}},
      {"known place", {100, 100, kNaN, 130}, {false, true, true, true}},
  };
  for (const auto& row : rows) {
    TJumpMemory memory;
    for (std::size_t i = 0; i < row.columns.size(); ++i) {
      TSeam seam = seamAt({row.columns[i], 50.0F});
      seam.isFound = row.columns[i] == row.columns[i];
      seam.isUnsure = true;
      seam.isFlush = row.isFlushFirst && i == 0;
      EXPECT_EQ(passesJumpTest(seam, TTrackerOptions(), memory, {}), row.passes[i]) << row.name << ' ' << i;
    }
  }
}

}  // namespace
}  // namespace weld
