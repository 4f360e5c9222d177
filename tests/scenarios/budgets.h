// What whole frames and sequences must reach. Each figure leaves some room over what is measured; a change that
// eats it up has made a detector worse.
#pragma once

#include "scenarios/scenario.h"
#include "scenes/scene.h"

#include <ostream>
#include <string>

namespace budgets {

// Seam found in at least that share of the frames; median of the errors, and the error that 90 % stay below.
struct TBudget {
  scenes::TJoint joint;
  TWeldPosType pos;
  scenes::TLevel level;
  double minFoundShare;
  double maxMedianPx;
  double max90Px;
};

inline std::string nameOf(const TBudget& budget) {
  return std::string(scenario::nameOf(budget.joint)) + "_" + scenario::nameOf(budget.level) + "_position" +
         std::to_string(static_cast<int>(budget.pos));
}

inline void PrintTo(const TBudget& budget, std::ostream* out) {
  *out << nameOf(budget);
}

constexpr auto kGap = scenes::TJoint::buttGap;
constexpr auto kLap = scenes::TJoint::lap;
constexpr auto kCorner = scenes::TJoint::corner;
constexpr auto kPlate = scenes::TJoint::plate;
constexpr auto kClean = scenes::TLevel::clean;
constexpr auto kNoisy = scenes::TLevel::noisy;

constexpr TBudget kFirstDetection[] = {
    {kGap, TWeldPosType::centre, kClean, 1.0, 0.3, 0.6},
    {kGap, TWeldPosType::left, kClean, 1.0, 0.3, 0.6},
    {kGap, TWeldPosType::right, kClean, 1.0, 0.3, 0.6},
    {kGap, TWeldPosType::centre, kNoisy, 0.95, 0.5, 1.0},
    {kLap, TWeldPosType::centre, kClean, 1.0, 0.6, 1.0},
    {kLap, TWeldPosType::upper, kClean, 1.0, 0.6, 1.5},
    {kLap, TWeldPosType::lower, kClean, 1.0, 0.6, 1.5},
    {kLap, TWeldPosType::centre, kNoisy, 0.95, 0.9, 1.5},
    {kCorner, TWeldPosType::centre, kClean, 1.0, 0.3, 0.6},
    {kCorner, TWeldPosType::centre, kNoisy, 0.95, 0.5, 1.0},
    {kPlate, TWeldPosType::centre, kClean, 1.0, 0.3, 1.5},
    {kPlate, TWeldPosType::left, kClean, 1.0, 0.3, 1.5},
    {kPlate, TWeldPosType::right, kClean, 1.0, 0.3, 1.5},
    {kPlate, TWeldPosType::right, kNoisy, 0.95, 1.2, 1.8},
};

// A gap beside reflections, spatter and glow, first detection and tracking.
constexpr double kDisturbedGapFoundShare = 0.95;
constexpr double kDisturbedGap95Px = 1.0;
constexpr double kOnStripePx = 3.0;  // a point farther from the true centre is a stray
constexpr double kGhostStrayShare = 0.01;
constexpr double kCrossingStrayShare = 0.04;
constexpr double kSpatterStrayShare = 0.06;

// The corner tracks smoothed points after truncation, which alone costs about 0.7 px. A plate loses columns on its
// left while it is tracked; its right end is scored.
constexpr TBudget kTracking[] = {
    {kGap, TWeldPosType::centre, kClean, 1.0, 0.3, 0.6},
    {kGap, TWeldPosType::centre, kNoisy, 0.95, 0.5, 1.0},
    {kLap, TWeldPosType::centre, kClean, 1.0, 0.8, 1.2},
    {kLap, TWeldPosType::centre, kNoisy, 0.95, 0.9, 1.5},
    {kCorner, TWeldPosType::centre, kClean, 1.0, 0.9, 1.2},
    {kCorner, TWeldPosType::centre, kNoisy, 0.95, 1.0, 1.5},
    {kPlate, TWeldPosType::right, kClean, 1.0, 0.5, 1.5},
    {kPlate, TWeldPosType::right, kNoisy, 0.95, 1.2, 1.8},
};

}  // namespace budgets
