#include "trace/trace.h"

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

}  // namespace
}  // namespace weld
