#include "detectors/corner.h"

#include "detectors/corner_check.h"
#include "ending.h"

#include <cmath>

namespace {

using ending::TStripePts;
using ending::with;
using painted::bentPoints;
using painted::joined;
using painted::linePoints;
using TSettings = TCornerSettings;

constexpr int kWidth = 640;
constexpr int kCornerX = 320;
constexpr double kCornerY = 240.0;
const double kFlankDeg = std::atan(0.5) * 180.0 / CV_PI;
constexpr double kIncludedTolDeg = 1e-3;
const double kNaN = std::nan("");

// A V that passes every test: flanks of 0.5 and -0.5, one point per column, no column missing.
class TCorner {
public:
  TCorner() {
    left(100, kCornerX);
    right(kCornerX + 1, 541);
    for (int x = 0; x < kWidth; ++x) status.push_back({x, 0});
  }

  // Flank points over the columns from .. to - 1.
  TCorner& left(int from, int to) { return spread(flanks.left, from, to); }
  TCorner& right(int from, int to) { return spread(flanks.right, from, to); }
  TCorner& moreLeft(int from, int to) {
    const weld::TPoints before = flanks.left.inliers;
    left(from, to);
    flanks.left.inliers.insert(flanks.left.inliers.begin(), before.begin(), before.end());
    return *this;
  }
  TCorner& leftSlope(double k) {
    flanks.left.k = k;
    return *this;
  }
  TCorner& mark(int fromX, int toX, int value = 1, int step = 1) {
    for (int x = fromX; x < toX; x += step) status[static_cast<std::size_t>(x)].status = value;
    return *this;
  }
  // No two neighbours, so that no run forms.
  TCorner& missEverySecond(int fromX, int toX) { return mark(fromX, toX, 1, 2); }
  template <typename T>
  TCorner& set(T TSettings::*field, T value) {
    settings.*field = value;
    return *this;
  }
  TCorner& noGap() { return set(&TSettings::allowsGap, false); }
  TCorner& band(double share) { return set(&TSettings::solidShare, share); }
  TCorner& share(double least) { return set(&TSettings::minFlankShare, least); }

  std::string end(ending::TSeenChecks& seen) const {
    const auto check = [this](const weld::TFrame& frame) {
      weld::TSeam seam(frame.memory);
      const weld::TCornerParams params(frame.params);
      seam.isFound =
          weld::checkCornerPlausible({frame, status, params}, {kCornerX, static_cast<float>(kCornerY)}, flanks);
      return seam;
    };
    return ending::of(painted::dark(), settings.params(), seen, check).reason;
  }

private:
  static weld::TFittedLine flank(double k) {
    weld::TFittedLine line(weld::heapMemory());
    line.k = k;
    line.b = kCornerY - k * kCornerX;
    return line;
  }
  TCorner& spread(weld::TFittedLine& flank, int from, int to) {
    const auto points = painted::linePoints(from, to, flank.k * from + flank.b, flank.k);
    flank.inliers.assign(points.begin(), points.end());
    return *this;
  }

  weld::TFlankPair flanks{flank(0.5), flank(-0.5)};
  std::vector<TWeldPointStatus> status;
  TSettings settings;
};

struct TRow {
  const char* name;
  TCorner corner;
  std::string reason = "found";
};
using TRows = std::vector<TRow>;

TRows countsSidesAndDensity() {
  const char* const kFew = "too few stripe points on a flank";
  const char* const kLeft = "left flank reaches beyond the corner";
  const char* const kRight = "right flank reaches beyond the corner";
  const char* const kSparse = "too few stripe points per column on both flanks";
  return {
      {"10 points on the left", TCorner().left(300, 310)},
      {"9 points on the left", TCorner().left(300, 309), kFew},
      {"10 points on the right", TCorner().right(330, 340)},
      {"9 points on the right", TCorner().right(330, 339), kFew},
      {"71 of 100 left of the corner", TCorner().left(249, 349)},
      {"70 of 100 left of the corner", TCorner().left(250, 350), kLeft},
      {"71 of 100 right of the corner", TCorner().right(292, 392)},
      {"70 of 100 right of the corner", TCorner().right(291, 391), kRight},
      {"51 points on the better side", TCorner().left(269, 320).right(321, 350)},
      {"50 points on the better side", TCorner().left(270, 320).right(321, 350),
       "too few stripe points on both flanks"},
      {"one dense flank is enough", TCorner().left(300, 320).right(321, 500)},
      {"160 of 320 columns at a share of one half", TCorner().left(160, 320).right(321, 481).share(0.5), kSparse},
      {"161 of 320 columns at a share of one half", TCorner().left(159, 320).right(321, 481).share(0.5)},
  };
}

// Strictly inside ranges whose bounds come in either order.
TRows angles() {
  using TRange = TAngleRange TSettings::*;
  const auto with = [](TRange range, double min, double max) {
    return TCorner().set(range, TAngleRange{min, max});
  };
  const TRange left = &TSettings::leftFlankDeg;
  const TRange right = &TSettings::rightFlankDeg;
  const TRange included = &TSettings::includedAngleDeg;
  const double includedDeg = 180.0 - 2.0 * kFlankDeg;
  return {
      {"left reversed", with(left, 45, 0)},
      {"right reversed", with(right, 0, -45)},
      {"included reversed", with(included, 178, 90)},
      {"left too flat", with(left, kFlankDeg + 1e-9, 45), "left flank angle too small"},
      {"left just steep enough", with(left, kFlankDeg - 1e-9, 45)},
      {"left too steep", with(left, 0, kFlankDeg - 1e-9), "left flank angle too large"},
      {"left equal to a bound", with(left, 0, 45).leftSlope(1.0), "left flank angle too large"},
      {"right too flat", with(right, -45, -kFlankDeg - 1e-9), "right flank angle too large"},
      {"right too steep", with(right, -kFlankDeg + 1e-9, 0), "right flank angle too small"},
      {"included too small", with(included, includedDeg + kIncludedTolDeg, 178), "included angle too small"},
      {"included large enough", with(included, includedDeg - kIncludedTolDeg, 178)},
      {"included too large", with(included, 90, includedDeg - kIncludedTolDeg), "included angle too large"},
      {"no number", with(left, kNaN, kNaN), "left flank angle too small"},
  };
}

// With 0.3 the band runs from the left point 154 (column 254) to the right point 66 (column 387).
TRows missingRunsInTheBand() {
  const char* const kBroken = "stripe broken near the corner";
  const char* const kInvalid = "ratio of the unbroken band out of range";
  return {
      {"10 missing in the band", TCorner().mark(260, 270)},
      {"11 missing in the band", TCorner().mark(260, 271), kBroken},
      {"11 with a found one between", TCorner().mark(260, 272).mark(265, 266, 0)},
      {"11 with an unpaired one between", TCorner().mark(260, 272).mark(265, 266, 2)},
      {"band begins behind column 254", TCorner().mark(244, 265)},
      {"11 behind column 254", TCorner().mark(244, 266), kBroken},
      {"band ends before column 387", TCorner().mark(377, 390)},
      {"11 before column 387", TCorner().mark(376, 390), kBroken},
      {"larger allowance", TCorner().mark(260, 275).set(&TSettings::maxBreakColumns, 15)},
      {"ratio below 0", TCorner().band(-1e-9), kInvalid},
      {"ratio 0", TCorner().band(0.0)},
      {"ratio 0 begins at the last left point", TCorner().band(0.0).mark(260, 300)},
      {"ratio 1", TCorner().band(1.0)},
      {"ratio 1 begins at the first left point", TCorner().band(1.0).mark(110, 121), kBroken},
      {"ratio above 1", TCorner().band(1.0 + 1e-9), kInvalid},
      {"ratio that is not a number", TCorner().band(kNaN), kInvalid},
  };
}

// The nearest flank points beyond 10 columns are those of columns 309 and 331; without one, 50 columns count.
TRows missingColumnsAroundTheCorner() {
  const char* const kMissing = "too many stripe columns missing around the corner";
  const TCorner noLeft = TCorner().left(310, 320).missEverySecond(272, 290);
  const TCorner noRight = TCorner().right(321, 331).missEverySecond(351, 368);
  return {
      {"9 missing", TCorner().missEverySecond(311, 329)},
      {"10 missing", TCorner().missEverySecond(310, 330), kMissing},
      {"309 and 331 aside", TCorner().missEverySecond(311, 329).mark(309, 310).mark(331, 332)},
      {"limit of 1", TCorner().set(&TSettings::maxMissingColumns, 1).mark(320, 321), kMissing},
      {"limit of 0 fails every corner", TCorner().set(&TSettings::maxMissingColumns, 0), kMissing},
      {"no left point near: 50th column missing", TCorner(noLeft).mark(270, 271)},
      {"no left point near: 49th column missing", TCorner(noLeft).mark(271, 272), kMissing},
      {"no right point near: 50th column missing", TCorner(noRight).mark(370, 371)},
      {"no right point near: 49th column missing", TCorner(noRight).mark(369, 370), kMissing},
  };
}

// Flanks that overlap left of the corner leave it beyond both inner ends.
TRows withoutGap() {
  const char* const kLeft = "left flank ends too far from the corner";
  return {
      {"corner between the inner ends", TCorner().noGap()},
      {"far from both inner ends but between them", TCorner().noGap().left(20, 200).right(450, 620)},
      {"beyond both ends, dense enough", TCorner().noGap().left(100, 300).right(310, 541)},
      {"20 left points within 100 columns", TCorner().noGap().left(100, 241).right(310, 541)},
      {"19 left points within 100 columns", TCorner().noGap().left(100, 240).right(310, 541), kLeft},
      {"the same with a gap allowed", TCorner().left(100, 240).right(310, 541)},
      {"beyond a jump", TCorner().noGap().left(100, 200).right(310, 541).moreLeft(270, 310), kLeft},
      {"first of equal stretches", TCorner().noGap().left(100, 170).right(310, 541).moreLeft(240, 310), kLeft},
      {"jump of 50 is none", TCorner().noGap().left(100, 200).right(310, 541).moreLeft(249, 310)},
      {"right flank begins 80 columns off", TCorner().noGap().left(150, 330).right(401, 600),
       "right flank ends too far from the corner"},
  };
}

void expectPlausibleAtEveryBorder(ending::TSeenChecks& seen) {
  ASSERT_EQ(TCorner().end(seen), "found");
  for (const TRows& rows : {countsSidesAndDensity(), angles(), missingRunsInTheBand(),
                            missingColumnsAroundTheCorner(), withoutGap()}) {
    for (const TRow& row : rows) EXPECT_EQ(row.corner.end(seen), row.reason) << row.name;
  }
}

const TStripePts kV = bentPoints(40, 320, 600, 140.0, 0.5, -0.5);

weld::TPrevious tracked(double includedDeg) {
  weld::TPrevious previous = ending::foundBefore();
  previous.auxVal1 = 0.5;
  previous.auxVal3 = -0.5;
  previous.trackVal = includedDeg;
  return previous;
}

void expectEndsOfStripes(ending::TSeenChecks& seen) {
  const double includedDeg = ending::of(weld::findCorner, kV, {}, seen, tracked(127.0)).seam.trackVal;
  const TSettings usual;
  TSettings sparse = with(usual, &TSettings::flankTolerancePx, 0.6);
  sparse.minFlankShare = 0.0;
  const TStripePts left = linePoints(40, 320, 140.0, 0.5);
  const TStripePts right = linePoints(320, 600, 280.0, -0.5);
  const char* const kNoLeft = "no left flank in its range of angles";
  const char* const kNoRight = "no right flank in its range of angles";
  const char* const kChange = "included angle changed too much since the last frame";
  const struct {
    const char* name;
    TStripePts points;
    TSettings settings;
    const char* reason;
    weld::TPrevious previous{};
  } rows[] = {
      {"9 points", linePoints(20, 29, 240.0), usual, "too few stripe points"},
      {"hill", bentPoints(40, 320, 600, 300.0, -0.5, 0.5), usual, "left flank reaches beyond the corner"},
      {"straight", linePoints(20, 620, 100.0, 0.3), usual, kNoRight},
      {"no left flank, tracked", right, usual, kNoLeft, tracked(includedDeg)},
      {"no right flank, tracked", left, usual, kNoRight, tracked(includedDeg)},
      {"3 points on the left", bentPoints(300, 306, 360, 200.0, 0.5, -0.5), sparse,
       "too few stripe points on a flank"},
      {"16 points", bentPoints(300, 308, 316, 200.0, 0.5, -0.5), usual, kNoRight},
      {"left share too low, but two pieces", kV, with(usual, &TSettings::minFlankShare, 0.6), "found"},
      {"right share too low, but two pieces",
       joined(bentPoints(40, 400, 500, 140.0, 0.5, -0.5), linePoints(500, 640, 20.0, 0.3)),
       with(usual, &TSettings::minFlankShare, 0.5), "found"},
      {"crossing far left", joined(linePoints(40, 300, 100.0, 0.5), linePoints(330, 600, 40.0, -0.1)), usual,
       "flanks meet outside the image"},
      {"10.01 degrees more", kV, usual, kChange, tracked(includedDeg - 10.01)},
      {"10.01 degrees less", kV, usual, kChange, tracked(includedDeg + 10.01)},
      {"9.99 degrees more", kV, usual, "found", tracked(includedDeg - 9.99)},
      {"9.99 degrees less", kV, usual, "found", tracked(includedDeg + 9.99)},
  };
  for (const auto& row : rows) {
    const auto end = ending::of(weld::findCorner, row.points, row.settings.params(), seen, row.previous);
    EXPECT_EQ(end.reason, row.reason) << row.name;
  }
}

TEST(FindCorner, endsWithItsSeamOrItsReason) {
  ending::TSeenChecks seen;
  expectPlausibleAtEveryBorder(seen);
  expectEndsOfStripes(seen);
  seen.expectEachStoppedARow();
}

TEST(FindCorner, reportsCornerFlanksAndAngle) {
  ending::TSeenChecks seen;
  const weld::TSeam seam = ending::of(weld::findCorner, kV, {}, seen).seam;
  EXPECT_LT(cv::norm(seam.pos - cv::Point2f(320.0F, 280.0F)), 1.5);
  EXPECT_NEAR(seam.auxVal1, 0.5, 0.01);
  EXPECT_NEAR(seam.auxVal3, -0.5, 0.01);
  EXPECT_NEAR(seam.trackVal, 180.0 - 2.0 * kFlankDeg, 1.0);
}

}  // namespace
