#include "support/trace.h"

#include <gtest/gtest.h>

#include <cmath>

namespace weld {
namespace {

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

TEST(Trace, CountsThePointsAndTheInliersOfAPiece) {
  TStripePiece piece;
  piece.pts.resize(3);
  piece.fitPts.resize(2);
  TFrameTrace frame;
  TTrace(frame).beginAttempt(TSearchPath::first, TStripeExtraction::edgePairs);
  TTrace(frame).setPieces({piece});
  EXPECT_EQ(frame.attempts.at(0).pieces.at(0).points, 3);
  EXPECT_EQ(frame.attempts.at(0).pieces.at(0).inliers, 2);
}

}  // namespace
}  // namespace weld
