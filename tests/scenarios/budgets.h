// What whole frames and sequences must reach. Each figure leaves some room over what is measured; a change that
// eats it up has made a detector worse.
#pragma once

#include "scenarios/scenario.h"
#include "support/reel.h"

#include <ostream>
#include <string>

namespace budgets {

using TPos = TWeldPosType;

constexpr auto kGap = scenes::TJoint::buttGap;
constexpr auto kLap = scenes::TJoint::lap;
constexpr auto kCorner = scenes::TJoint::corner;
constexpr auto kPlate = scenes::TJoint::plate;
constexpr auto kClean = scenes::TLevel::clean;
constexpr auto kNoisy = scenes::TLevel::noisy;

// Which frames are shown.
struct TSeries {
  const char* name;
  int scenes;
  int frames;  // of each scene: the first one is searched as a whole, the others track
  scenes::TMotion motion;
};

const TSeries kFirst{"first", 60, 1, {}};
const TSeries kTracked{"tracked", 1, 60, reel::drift({1.5, 0.6}, 1.0)};
const TSeries kBeside{"beside", 15, 3, {}};  // what stands beside the stripe

// What stands there.
struct TDisturbance {
  const char* name = "";
  void (*apply)(scenes::TLook&) = nullptr;
  double maxStrayShare = 1.0;  // of the stripe points
};

// Seam found in at least that share of the frames; median of the errors, and the error that 90 % stay below.
struct TBudget {
  TSeries series;
  scenes::TJoint joint;
  TPos pos;
  scenes::TLevel level;
  double minFoundShare;
  double maxMedianPx;
  double max90Px;
  TDisturbance beside{};
};

inline std::string nameOf(const TBudget& budget) {
  const std::string name =
      std::string(scenes::shortNameOf(budget.joint)) + "_" + scenario::nameOf(budget.level) + "_";
  return name + weldPosText(budget.pos) + "_" + budget.series.name + budget.beside.name;
}

inline void PrintTo(const TBudget& budget, std::ostream* out) {
  *out << nameOf(budget);
}

constexpr double kOnStripePx = 3.0;  // a point farther from the true centre is a stray

const TDisturbance kParallelGhost{"ParallelGhost",
                                  [](scenes::TLook& look) {
                                    look.ghostShare = 0.6;
                                    look.ghostOffsetPx = 60.0;
                                    look.ghostSpan = 0.5;
                                  },
                                  0.01};
const TDisturbance kCrossingGhost{"CrossingGhost",
                                  [](scenes::TLook& look) {
                                    look.ghostShare = 0.6;
                                    look.ghostOffsetPx = 20.0;
                                    look.ghostTiltDeg = 12.0;
                                    look.ghostSpan = 0.5;
                                  },
                                  0.04};
const TDisturbance kArcGlow{"ArcGlow", [](scenes::TLook& look) { look.arcGlow = 120.0; }, 0.01};
const TDisturbance kSpatter{"Spatter",
                            [](scenes::TLook& look) {
                              look.blobs = 6;
                              look.spatter = 12;
                            },
                            0.06};

const TBudget kBudgets[] = {
    {kFirst, kGap, TPos::centre, kClean, 1.0, 0.3, 0.6},
    {kFirst, kGap, TPos::left, kClean, 1.0, 0.3, 0.6},
    {kFirst, kGap, TPos::right, kClean, 1.0, 0.3, 0.6},
    {kFirst, kGap, TPos::centre, kNoisy, 0.95, 0.5, 1.0},
    {kFirst, kLap, TPos::centre, kClean, 1.0, 0.6, 1.0},
    {kFirst, kLap, TPos::upper, kClean, 1.0, 0.6, 1.5},
    {kFirst, kLap, TPos::lower, kClean, 1.0, 0.6, 1.5},
    {kFirst, kLap, TPos::centre, kNoisy, 0.95, 0.9, 1.5},
    {kFirst, kCorner, TPos::centre, kClean, 1.0, 0.3, 0.6},
    {kFirst, kCorner, TPos::centre, kNoisy, 0.95, 0.5, 1.0},
    {kFirst, kPlate, TPos::centre, kClean, 1.0, 0.3, 1.5},
    {kFirst, kPlate, TPos::left, kClean, 1.0, 0.3, 1.5},
    {kFirst, kPlate, TPos::right, kClean, 1.0, 0.3, 1.5},
    {kFirst, kPlate, TPos::right, kNoisy, 0.95, 1.2, 1.8},
    {kTracked, kGap, TPos::centre, kClean, 1.0, 0.3, 0.6},
    {kTracked, kGap, TPos::centre, kNoisy, 0.95, 0.5, 1.0},
    {kTracked, kLap, TPos::centre, kClean, 1.0, 0.8, 1.2},
    {kTracked, kLap, TPos::centre, kNoisy, 0.95, 0.9, 1.5},
    // The corner tracks smoothed points after truncation, which alone costs about 0.7 px. A plate loses columns on
    // its left while it is tracked; its right end is scored.
    {kTracked, kCorner, TPos::centre, kClean, 1.0, 0.9, 1.2},
    {kTracked, kCorner, TPos::centre, kNoisy, 0.95, 1.0, 1.5},
    {kTracked, kPlate, TPos::right, kClean, 1.0, 0.5, 1.5},
    {kTracked, kPlate, TPos::right, kNoisy, 0.95, 1.2, 1.8},
    {kBeside, kGap, TPos::centre, kClean, 0.95, 0.3, 0.8, kParallelGhost},
    {kBeside, kGap, TPos::centre, kClean, 0.95, 0.3, 0.8, kCrossingGhost},
    {kBeside, kGap, TPos::centre, kClean, 0.95, 0.3, 0.8, kArcGlow},
    // Spots sharper than the stripe can hide it for more columns than a gap has.
    {kBeside, kGap, TPos::centre, kClean, 0.95, 0.5, HUGE_VAL, kSpatter},
};

}  // namespace budgets
