#include "api/joint_rivals.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace weld {
namespace {

constexpr TWeldType kV = TWeldType::vGroove;
constexpr TWeldType kLap = TWeldType::lap;
constexpr TWeldType kCorner = TWeldType::corner;
constexpr TWeldType kGap = TWeldType::buttGap;

// With its points at columns 300 and 310.
TRankedJoint ranked(TWeldType type, double score) {
  TRankedJoint joint{type, {}};
  joint.fit.score = score;
  joint.fit.features[0] = {true, {300.0, 50.0}, 1.0};
  joint.fit.features[1] = {true, {310.0, 90.0}, 1.0};
  return joint;
}

TEST(JointRivals, sayWhatTheStripeIsRatherThanTheJoint) {
  const struct {
    const char* name;
    TRivalTest rivalOf;
    std::vector<TRankedJoint> joints;  // best first
    float x;                           // of the seam
    std::string text;                  // empty: nothing
    double hiddenPx = 0.0;             // by a flare at it
  } rows[] = {
      {"gap, nothing stands out", rivalOfGap, {}, 300.0F, ""},
      {"gap first", rivalOfGap, {ranked(kGap, 60.0), ranked(kLap, 50.0)}, 0.0F, ""},
      {"gap in a groove", rivalOfGap, {ranked(kV, 60.0)}, 300.0F, "the stripe looks like a V groove"},
      {"lap", rivalOfLap, {ranked(kLap, 60.0)}, 318.0F, ""},
      {"lap elsewhere", rivalOfLap, {ranked(kLap, 60.0)}, 318.5F, "the step of the stripe lies elsewhere"},
      {"lap beside a flare", rivalOfLap, {ranked(kLap, 60.0)}, 358.0F, "", 40.0},
      {"lap away from a flare",
       rivalOfLap,
       {ranked(kLap, 60.0)},
       358.5F,
       "the step of the stripe lies elsewhere",
       40.0},
      {"lap on a plate", rivalOfLap, {}, 300.0F, "a plate or a curve explains the stripe as well"},
      {"lap at a corner", rivalOfLap, {ranked(kCorner, 60.0)}, 300.0F, "the stripe looks like a corner"},
      {"corner, nothing stands out", rivalOfCorner, {}, 300.0F, ""},
      {"corner in a groove", rivalOfCorner, {ranked(kV, 60.0)}, 0.0F, ""},
      {"corner elsewhere",
       rivalOfCorner,
       {ranked(kCorner, 60.0)},
       291.5F,
       "the bend of the stripe lies elsewhere"},
      {"corner at a step", rivalOfCorner, {ranked(kLap, 60.0)}, 300.0F, "the stripe looks like a lap"},
      {"one groove for another", rivalOfGroove, {ranked(kLap, 99.0), ranked(kV, 60.0)}, 0.0F, ""},
      {"lap as a groove",
       rivalOfGroove,
       {ranked(kLap, 101.0), ranked(kV, 60.0)},
       0.0F,
       "the stripe looks like a lap"},
  };
  for (const auto& row : rows) {
    TSeam seam(heapMemory());
    seam.pos = {row.x, 60.0F};
    seam.hiddenPx = row.hiddenPx;
    const char* const text = row.rivalOf(row.joints, seam);
    EXPECT_EQ(text != nullptr ? text : "", row.text) << row.name;
  }
}

}  // namespace
}  // namespace weld
