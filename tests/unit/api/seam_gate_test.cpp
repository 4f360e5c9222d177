#include "api/seam_gate.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

namespace weld {
namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
const cv::Size kImage{640, 480};

// A plate between two ends as the detector reports it.
TWeldLineRes plateBetween(cv::Point2f start, cv::Point2f end) {
  TWeldLineRes result;
  result.isFound = true;
  result.weldPos = (start + end) * 0.5F;
  const float k = (start.y - end.y) / (start.x - end.x);
  result.auxVal1 = static_cast<double>(k);
  result.auxVal2 = static_cast<double>(start.y) - static_cast<double>(start.x) * result.auxVal1;
  return result;
}

TWeldLineRes seamAt(cv::Point2f p) {
  TWeldLineRes result;
  result.isFound = true;
  result.weldPos = p;
  return result;
}

TEST(SeamGate, refusesImpossiblePoints) {
  struct TRow {
    const char* name;
    TWeldLineRes seam;
    TWeldType type;
    bool isPossible;
  };
  const cv::Point2f marker(-1.0F, -1.0F);
  const TRow rows[] = {
      {"inside", seamAt({320.0F, 240.0F}), TWeldType::lap, true},
      {"first pixel", seamAt({0.0F, 0.0F}), TWeldType::lap, true},
      {"last pixel", seamAt({639.0F, 479.0F}), TWeldType::lap, true},
      {"left of it", seamAt({-0.5F, 240.0F}), TWeldType::lap, false},
      {"right of it", seamAt({639.5F, 240.0F}), TWeldType::lap, false},
      {"above it", seamAt({320.0F, -0.5F}), TWeldType::lap, false},
      {"below it", seamAt({320.0F, 479.5F}), TWeldType::lap, false},
      {"no number", seamAt({320.0F, kNaN}), TWeldType::lap, false},
      {"no end", seamAt({std::numeric_limits<float>::infinity(), 240.0F}), TWeldType::corner, false},
      {"plate", plateBetween({80.0F, 240.0F}, {520.0F, 233.0F}), TWeldType::plate, true},
      {"plate, start unsupported", plateBetween(marker, {520.0F, 233.0F}), TWeldType::plate, false},
      {"plate, end unsupported", plateBetween({83.0F, 240.0F}, marker), TWeldType::plate, false},
      {"line through the marker, no plate", plateBetween(marker, {520.0F, 233.0F}), TWeldType::corner, true},
  };
  for (const TRow& row : rows)
    EXPECT_EQ(isSeamPointPossible(row.seam, row.type, kImage, {}), row.isPossible) << row.name;
}

TEST(SeamGate, letsAJumpPassOnceItHasRepeated) {
  struct TRow {
    const char* name;
    std::vector<float> columns;  // of the seam, frame by frame; maxJumpPx 40, acceptAfterFrames 3
    std::vector<bool> passes;
  };
  const TRow rows[] = {
      {"steady", {100, 140, 180}, {true, true, true}},
      {"just too far", {100, 140.5F, 100}, {true, false, true}},
      {"new place", {100, 300, 310, 305, 300}, {true, false, false, true, true}},
      {"wanders on", {100, 300, 330, 360, 390}, {true, false, false, true, true}},
      {"one outlier", {100, 300, 105, 300, 300}, {true, false, true, false, false}},
      {"no two alike", {100, 300, 500, 200, 400}, {true, false, false, false, false}},
  };
  for (const TRow& row : rows) {
    TTrackerOptions options;
    TJumpMemory memory;
    for (std::size_t i = 0; i < row.columns.size(); ++i) {
      EXPECT_EQ(passesJumpTest({row.columns[i], 50.0F}, options, memory, {}), row.passes[i])
          << row.name << ' ' << i;
    }
  }
}

}  // namespace
}  // namespace weld
