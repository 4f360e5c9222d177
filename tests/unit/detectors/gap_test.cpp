#include "detectors/gap.h"

#include "ending.h"

namespace {

using ending::TStripePts;
using ending::with;
using painted::joined;
using painted::linePoints;
using TSettings = TGapSettings;

// A level stripe whose columns from .. to - 1 are missing.
TStripePts without(int from, int to) {
  return joined(linePoints(20, from, 240.0), linePoints(to, 620, 240.0));
}

const TStripePts kGap = without(300, 340);
const TStripePts kSloped = joined(linePoints(20, 300, 100.0, 0.25), linePoints(340, 620, 180.0, 0.25));
const TStripePts kTwoRows = joined(linePoints(20, 300, 240.0), linePoints(340, 620, 300.0));
const TStripePts kBacked = joined(joined(linePoints(20, 300, 240.0), linePoints(300, 340, 246.0)),
                                  linePoints(340, 620, 240.0));  // 6 rows under the line
const TStripePts kTwoGaps =
    joined(joined(linePoints(20, 200, 240.0), linePoints(230, 400, 240.0)), linePoints(430, 620, 240.0));
const TStripePts kAtBorder = joined(linePoints(0, 1, 240.0), linePoints(41, 620, 240.0));

TEST(FindGap, endsWithItsSeamOrItsReason) {
  const TSettings usual;
  const TSettings level = with(usual, &TSettings::stripeAngleDeg, {-10.0, 10.0});
  const char* const kBorder = "seam in the first row or column of the image or outside";
  const auto pos = [](int value) { return static_cast<TWeldPosType>(value); };
  const struct {
    const char* name;
    TStripePts points;
    TSettings settings;
    const char* reason;
    float seamX = 0.0F;  // the row is the line's at the left edge
    TWeldPosType pos = TWeldPosType::centre;
    bool isTracking = false;
  } rows[] = {
      {"9 points", linePoints(20, 29, 240.0), usual, "too few stripe points"},
      {"10 points", linePoints(20, 30, 240.0), usual, "gap too narrow"},
      {"14 degrees, up to 10 allowed", kSloped, level, "no line through the stripe points"},
      {"the same, tracked", kSloped, level, "found", 319.5F, pos(0), true},
      {"upright", TStripePts(40, {300, 240}), usual, "no line through the stripe points", 0, pos(0), true},
      {"every point on the line", kGap, with(usual, &TSettings::minLineShare, 1.0), "found", 319.5F},
      {"half of them", kTwoRows, with(usual, &TSettings::minLineShare, 0.9), "too few stripe points on the line"},
      {"none nearer than 0", kGap, with(usual, &TSettings::lineTolerancePx, 0.0),
       "fewer than two stripe points on the line", 0, pos(0), true},
      {"9 columns measure 10", without(300, 309), usual, "found", 304},
      {"8 columns measure 9", without(300, 308), usual, "gap too narrow"},
      {"10 columns, half a pixel", without(300, 310), usual, "found", 304.5F},
      {"neighbours measure 1", without(300, 300), with(usual, &TSettings::minGapPx, 1.0), "found", 20.5F},
      {"the left one of equals", kTwoGaps, usual, "found", 214.5F},
      {"backing beyond the tolerance", kBacked, usual, "found", 319.5F},
      {"backing within it", kBacked, with(usual, &TSettings::lineTolerancePx, 7.0), "gap too narrow"},
      {"first column", kAtBorder, usual, kBorder, 0, pos(1)},
      {"its other side", kAtBorder, usual, "found", 41, pos(2)},
      {"first row", joined(linePoints(20, 300, 0.0), linePoints(340, 620, 0.0)), usual, kBorder},
      {"left", kSloped, usual, "found", 299, pos(1)},
      {"right", kSloped, usual, "found", 340, pos(2)},
      {"right, tracked", kSloped, usual, "found", 340, pos(2), true},
      {"upper is the centre", kSloped, usual, "found", 319.5F, pos(3)},
      {"no such position", kSloped, usual, "found", 319.5F, pos(-7)},
  };
  ending::TSeenChecks seen;
  for (const auto& row : rows) {
    const weld::TPrevious previous = row.isTracking ? ending::foundBefore() : weld::TPrevious();
    const auto end = ending::of(weld::findGap, row.points, row.settings.params(row.pos), seen, previous);
    EXPECT_EQ(end.reason, row.reason) << row.name;
    EXPECT_EQ(end.pos.x, row.seamX) << row.name;
    const bool isSloped = row.points == kSloped;
    EXPECT_NEAR(end.pos.y, !end.isFound ? 0.0 : isSloped ? 100.0 + 0.25 * (299 - 20) : 240.0, 0.6) << row.name;
    EXPECT_EQ(end.seam.stripePts.size(), row.points.size()) << row.name;
  }
  seen.expectEachStoppedARow();
}

}  // namespace
