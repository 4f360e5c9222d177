#include "detectors/corner_check.h"

#include "support/painted_frame.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace {

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
    flanks.left.k = 0.5;
    flanks.left.b = kCornerY - 0.5 * kCornerX;
    flanks.right.k = -0.5;
    flanks.right.b = kCornerY + 0.5 * kCornerX;
    left(100, kCornerX);
    right(kCornerX + 1, 541);
    for (int x = 0; x < kWidth; ++x) status.push_back({x, 0});
  }

  // Flank points over the columns from .. to - 1.
  TCorner& left(int from, int to) { return spread(flanks.left, from, to); }
  TCorner& right(int from, int to) { return spread(flanks.right, from, to); }
  TCorner& moreLeft(int from, int to) {
    const std::vector<cv::Point2f> before = flanks.left.inlierPts;
    left(from, to);
    flanks.left.inlierPts = painted::joined(before, flanks.left.inlierPts);
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
  TCorner& set(T TWeldParams::*field, T value) {
    params.*field = value;
    return *this;
  }
  TCorner& noGap() { return set(&TWeldParams::haveGap, false); }
  TCorner& band(double ratio) { return set(&TWeldParams::dPara10, ratio); }
  TCorner& share(double least) { return set(&TWeldParams::dPara3, least); }

  bool isPlausible() const {
    weld::TDetectorObject object;
    object.setSamplinePointsStatus(status);
    const cv::Point2f corner{kCornerX, static_cast<float>(kCornerY)};
    return weld::checkCornerPlausible(object, corner, flanks, {kWidth, 480}, weld::cornerParams(params));
  }

private:
  TCorner& spread(TLinePara& flank, int from, int to) {
    flank.inlierPts = painted::linePoints(from, to, flank.k * from + flank.b, flank.k);
    return *this;
  }

  weld::TFlankPair flanks;
  std::vector<TWeldPointStatus> status;
  TWeldParams params;
};

struct TRow {
  const char* name;
  TCorner corner;
  bool isPlausible;
};

void expectRows(const std::vector<TRow>& rows) {
  ASSERT_TRUE(TCorner().isPlausible());
  for (const TRow& row : rows) EXPECT_EQ(row.corner.isPlausible(), row.isPlausible) << row.name;
}

TEST(CheckCornerPlausible, pointCountsSidesAndDensity) {
  expectRows({
      {"10 points on the left", TCorner().left(300, 310), true},
      {"9 points on the left", TCorner().left(300, 309), false},
      {"10 points on the right", TCorner().right(330, 340), true},
      {"9 points on the right", TCorner().right(330, 339), false},
      {"71 of 100 left of the corner", TCorner().left(249, 349), true},
      {"70 of 100 left of the corner", TCorner().left(250, 350), false},
      {"71 of 100 right of the corner", TCorner().right(292, 392), true},
      {"70 of 100 right of the corner", TCorner().right(291, 391), false},
      {"51 points on the better side", TCorner().left(269, 320).right(321, 350), true},
      {"50 points on the better side", TCorner().left(270, 320).right(321, 350), false},
      {"one dense flank is enough", TCorner().left(300, 320).right(321, 500), true},
      {"160 of 320 columns at a share of one half", TCorner().left(160, 320).right(321, 481).share(0.5), false},
      {"161 of 320 columns at a share of one half", TCorner().left(159, 320).right(321, 481).share(0.5), true},
  });
}

TEST(CheckCornerPlausible, anglesLieStrictlyInsideRangesInEitherOrder) {
  const auto with = [](double TWeldParams::*bound, double deg) { return TCorner().set(bound, deg); };
  const auto reversed = [&](double TWeldParams::*least, double TWeldParams::*most) {
    return TCorner().set(least, TWeldParams{}.*most).set(most, TWeldParams{}.*least);
  };
  const double includedDeg = 180.0 - 2.0 * kFlankDeg;
  expectRows({
      {"left reversed", reversed(&TWeldParams::angleRange1Min, &TWeldParams::angleRange1Max), true},
      {"right reversed", reversed(&TWeldParams::angleRange2Min, &TWeldParams::angleRange2Max), true},
      {"included reversed", reversed(&TWeldParams::angleRange5Min, &TWeldParams::angleRange5Max), true},
      {"left too flat", with(&TWeldParams::angleRange1Min, kFlankDeg + 1e-9), false},
      {"left just steep enough", with(&TWeldParams::angleRange1Min, kFlankDeg - 1e-9), true},
      {"left too steep", with(&TWeldParams::angleRange1Max, kFlankDeg - 1e-9), false},
      {"left equal to a bound", with(&TWeldParams::angleRange1Max, 45.0).leftSlope(1.0), false},
      {"right too flat", with(&TWeldParams::angleRange2Max, -kFlankDeg - 1e-9), false},
      {"right too steep", with(&TWeldParams::angleRange2Min, -kFlankDeg + 1e-9), false},
      {"included too small", with(&TWeldParams::angleRange5Min, includedDeg + kIncludedTolDeg), false},
      {"included large enough", with(&TWeldParams::angleRange5Min, includedDeg - kIncludedTolDeg), true},
      {"included too large", with(&TWeldParams::angleRange5Max, includedDeg - kIncludedTolDeg), false},
      {"no number", with(&TWeldParams::angleRange1Min, kNaN).set(&TWeldParams::angleRange1Max, kNaN), false},
  });
}

TEST(CheckCornerPlausible, gapBandMayMissNoLongRun) {
  // With 0.3 the band runs from the left point 154 (column 254) to the right point 66 (column 387).
  expectRows({
      {"10 missing in the band", TCorner().mark(260, 270), true},
      {"11 missing in the band", TCorner().mark(260, 271), false},
      {"11 with a found one between", TCorner().mark(260, 272).mark(265, 266, 0), true},
      {"11 with an unpaired one between", TCorner().mark(260, 272).mark(265, 266, 2), true},
      {"band begins behind column 254", TCorner().mark(244, 265), true},
      {"11 behind column 254", TCorner().mark(244, 266), false},
      {"band ends before column 387", TCorner().mark(377, 390), true},
      {"11 before column 387", TCorner().mark(376, 390), false},
      {"larger allowance", TCorner().mark(260, 275).set(&TWeldParams::nPara5, 15), true},
      {"ratio below 0", TCorner().band(-1e-9), false},
      {"ratio 0", TCorner().band(0.0), true},
      {"ratio 0 begins at the last left point", TCorner().band(0.0).mark(260, 300), true},
      {"ratio 1", TCorner().band(1.0), true},
      {"ratio 1 begins at the first left point", TCorner().band(1.0).mark(110, 121), false},
      {"ratio above 1", TCorner().band(1.0 + 1e-9), false},
      {"ratio that is not a number", TCorner().band(kNaN), false},
  });
}

TEST(CheckCornerPlausible, fewColumnsMayMissNextToTheCorner) {
  // The nearest flank points beyond 10 columns are those of columns 309 and 331; without one, 50 columns count.
  const TCorner noLeft = TCorner().left(310, 320).missEverySecond(272, 290);
  const TCorner noRight = TCorner().right(321, 331).missEverySecond(351, 368);
  expectRows({
      {"9 missing", TCorner().missEverySecond(311, 329), true},
      {"10 missing", TCorner().missEverySecond(310, 330), false},
      {"309 and 331 aside", TCorner().missEverySecond(311, 329).mark(309, 310).mark(331, 332), true},
      {"nothing may miss at a limit of 1", TCorner().set(&TWeldParams::nPara1, 1).mark(320, 321), false},
      {"limit of 0 fails every corner", TCorner().set(&TWeldParams::nPara1, 0), false},
      {"no left point beyond 10 columns: 50th column missing", TCorner(noLeft).mark(270, 271), true},
      {"no left point beyond 10 columns: 49th column missing", TCorner(noLeft).mark(271, 272), false},
      {"no right point beyond 10 columns: 50th column missing", TCorner(noRight).mark(370, 371), true},
      {"no right point beyond 10 columns: 49th column missing", TCorner(noRight).mark(369, 370), false},
  });
}

TEST(CheckCornerPlausible, withoutGapStripeMustReachTheCorner) {
  // Flanks that overlap left of the corner leave it beyond both inner ends.
  expectRows({
      {"corner between the inner ends", TCorner().noGap(), true},
      {"far from both inner ends but between them", TCorner().noGap().left(20, 200).right(450, 620), true},
      {"beyond both ends, dense enough", TCorner().noGap().left(100, 300).right(310, 541), true},
      {"20 left points within 100 columns", TCorner().noGap().left(100, 241).right(310, 541), true},
      {"19 left points within 100 columns", TCorner().noGap().left(100, 240).right(310, 541), false},
      {"the same with a gap allowed", TCorner().left(100, 240).right(310, 541), true},
      {"beyond a jump", TCorner().noGap().left(100, 200).right(310, 541).moreLeft(270, 310), false},
      {"jump of 50 is none", TCorner().noGap().left(100, 200).right(310, 541).moreLeft(249, 310), true},
  });
}

TEST(CalcIntersecAngle, differenceBeyondHalfATurnLosesHalfATurn) {
  // Directions from the corner to the first point of the flank, y down.
  const struct {
    double leftDeg, rightDeg, expectedDeg;
  } rows[] = {{180, 90, 90}, {-153, -27, 126}, {170, -30, 20}, {90, -89, 179}, {-30, 170, 20}, {45, 45, 0}};
  const auto aimed = [](double deg) {
    const double rad = deg * CV_PI / 180.0;
    const double dx = std::abs(std::cos(rad)) < 1e-9 ? 0.0 : 100.0 * std::cos(rad);
    TLinePara flank;  // the height of the flank at its first point counts, not the row of the point
    flank.inlierPts = {{static_cast<float>(kCornerX + dx), -7.0F}};
    flank.b = kCornerY + 100.0 * std::sin(rad);
    return flank;
  };
  for (const auto& row : rows) {
    const weld::TFlankPair flanks{aimed(row.leftDeg), aimed(row.rightDeg)};
    EXPECT_NEAR(weld::calcIntersecAngle(flanks, {kCornerX, kCornerY}), row.expectedDeg, 1e-4) << row.leftDeg;
  }
}

}  // namespace
