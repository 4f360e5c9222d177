#include "detectors/presence.h"

#include "ending.h"

namespace {

TEST(FindPresence, comparesTheNumbersOfPointsAsIntegers) {
  const char* const kGone = "a half to two thirds of the stripe points gone since the last frame";
  const struct {
    int before, now;
    const char* reason;
  } rows[] = {{100, 0, "no stripe"}, {0, 100, kGone},       {1, 100, "found"}, {99, 100, "found"},
              {100, 100, "found"},   {199, 100, "found"},   {200, 100, kGone}, {299, 100, kGone},
              {300, 100, "found"},   {100000, 100, "found"}};
  ending::TSeenChecks seen;
  for (const auto& row : rows) {
    const ending::TStripePts before = painted::linePoints(0, row.before, 50.0);
    weld::TPrevious previous;
    previous.stripePts = before;
    const auto end = ending::of(weld::findPresence, painted::linePoints(0, row.now, 50.0), {}, seen, previous);
    EXPECT_EQ(end.reason, row.reason) << row.before;
    EXPECT_EQ(end.seam.stripePts.size(), static_cast<std::size_t>(row.now));
    EXPECT_EQ(end.pos, cv::Point2f());
  }
  seen.expectEachStoppedARow();
}

}  // namespace
