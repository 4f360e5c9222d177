#include "zelWeldDetect.h"

#include <gtest/gtest.h>

#include <climits>

namespace {

using namespace LightingAdaptation;

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
}

}  // namespace
