// What a failed test says, and which of several failed tests speaks for its frame.
#include "trace/trace.h"

#include "trace/trace_conclusion.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

namespace weld {
namespace {

TFailure at(int stage, const char* reason = "too bad") {
  return {stage, TWeldOutcome::fitTooWeak, "step", reason};
}

constexpr double kNone = TJointMeasurement::kNone;

TEST(Sentences, nameValueLimitAndWhatSetsIt) {
  const TCheck step{at(1), "step", TRule::above, "px", "minStepPx"};
  const TCheck angle{at(1), "angle of the piece", TRule::below, "deg"};
  const TCheck share{at(1), "share of points", TRule::notBelow, "", "maxJumpPx"};
  const auto count = [](TRule rule) { return countCheck(at(1), "stripe points on the line", rule); };
  const struct {
    TCheck check;
    double measured, limit;
    const char* sentence;
  } rows[] = {
      {step, 14.2, 20, "step 14.2 px is below the minimum step 20 px, set by minStepPx (dPara7)"},
      {step, 20, 20, "step 20 px does not exceed the minimum step 20 px, set by minStepPx (dPara7)"},
      {step, 19.999, 20, "step 19.999 px is below the minimum step 20 px, set by minStepPx (dPara7)"},
      {step, kNone, 20, "step is not a number"},
      {step, 14, kNone, "minStepPx (dPara7), the limit of step, is not a number"},
      {step, kNone, kNone, "too bad"},
      {angle, 10, 10, "angle of the piece 10 degrees is not below the maximum 10 degrees, a fixed limit"},
      {angle, 1e12, -0.01, "angle of the piece 1e+12 degrees is above the maximum 0 degrees, a fixed limit"},
      {share, 0.123, 0.5, "share of points 0.12 is below the minimum 0.5, set by maxJumpPx"},
      {count(TRule::atLeast), 0, 10, "no stripe points on the line, at least 10 needed, a fixed limit"},
      {count(TRule::above), 1, 1, "only 1 stripe point on the line, more than 1 needed, a fixed limit"},
      {count(TRule::atMost), 7, 6, "7 stripe points on the line, at most 6 allowed, a fixed limit"},
      {count(TRule::below), 6, 6, "6 stripe points on the line, fewer than 6 allowed, a fixed limit"},
  };
  for (const auto& row : rows) {
    TFrameTrace record;
    const TTrace trace(record);
    trace.beginAttempt(TSearchPath::first, TStripeExtraction::edgePairs);
    trace.note(row.check, row.measured, row.limit, false);
    EXPECT_EQ(describeFailure(trace.attempt().checks[0], findWeldJoint(TWeldType::lap)), row.sentence);
  }
}

// The first failed test of an attempt speaks; of several ways the one that got furthest, the later one of equals.
TEST(Conclusions, speakOfTheWayAndTheAttemptThatGotFurthest) {
  const auto check = [](int stage, const char* reason) { return TCheck{at(stage, reason), "step"}; };
  TFrameTrace record;
  const TTrace trace(record);
  const auto attempt = [&](int firstStage, int secondStage, const char* reason) {
    trace.beginAttempt(TSearchPath::first, TStripeExtraction::edgePairs);
    trace.inWay("one").holds(check(firstStage, "one"), false);
    trace.inWay("one").holds(check(firstStage + 9, "one again"), false);
    trace.inWay("other").holds(check(secondStage, "other"), false);
    concludeFailedAttempt(record, weldJoints().front());
    EXPECT_STREQ(trace.attempt().reason, reason);
  };
  attempt(5, 4, "one");
  attempt(5, 5, "other");
  attempt(3, 5, "other");
  concludeFrame(record, {true, false, {}}, nullptr);
  EXPECT_EQ(record.decisive, 0) << "the first of equals";
  EXPECT_STREQ(record.reason, "one");
  attempt(6, 5, "one");
  concludeFrame(record, {true, true, {1, 2}}, nullptr);
  EXPECT_EQ(record.decisive, 3);
  EXPECT_EQ(record.outcome, TWeldOutcome::held);
  EXPECT_EQ(record.sentence, "repeats the seam at x 1.0, y 2.0: one");
  trace.atGate().holds(check(1, "gate passed"), true);
  trace.atGate().holds(check(1, "gate"), false);
  concludeFrame(record, {true, false, {}}, nullptr);
  EXPECT_EQ(record.sentence, "gate");
  EXPECT_EQ(record.outcome, TWeldOutcome::fitTooWeak);
  trace.beginAttempt(TSearchPath::first, TStripeExtraction::ridge);
  concludeFoundAttempt(record, "seam");
  record.gate.clear();
  concludeFrame(record, {true, false, {}}, nullptr);
  EXPECT_EQ(record.sentence, "seam");
}

TEST(Conclusions, frameWithoutAnAttemptTellsWhy) {
  const std::pair<bool, const char*> rows[] = {{false, "no image"}, {true, "no detector for this kind of joint"}};
  for (const auto& [hasImage, sentence] : rows) {
    TFrameTrace record;
    concludeFrame(record, {hasImage, false, {}}, nullptr);
    EXPECT_EQ(record.sentence, sentence);
    EXPECT_EQ(record.decisive, -1);
  }
}

TEST(Trace, RulesHoldAtTheirLimitsAndForWhatIsNoNumber) {
  const struct {
    TRule rule;
    bool below, at, above, noNumber;  // whether a value passes that lies there
  } rows[] = {{TRule::atLeast, false, true, true, false}, {TRule::notBelow, false, true, true, true},
              {TRule::above, false, false, true, false},  {TRule::atMost, true, true, false, false},
              {TRule::notAbove, true, true, false, true}, {TRule::below, true, false, false, false}};
  for (const auto& row : rows) {
    TCheck check{};
    check.rule = row.rule;
    const auto passes = [&](double measured) { return TTrace().passes(check, measured, 7.0); };
    EXPECT_EQ(passes(6.9), row.below) << static_cast<int>(row.rule);
    EXPECT_EQ(passes(7.0), row.at) << static_cast<int>(row.rule);
    EXPECT_EQ(passes(7.1), row.above) << static_cast<int>(row.rule);
    EXPECT_EQ(passes(std::nan("")), row.noNumber) << static_cast<int>(row.rule);
  }
}

}  // namespace
}  // namespace weld
