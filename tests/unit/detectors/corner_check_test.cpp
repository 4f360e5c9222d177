#include "detectors/corner_check.h"

#include "support/painted_frame.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <string>
#include <vector>

namespace {

using TPoints = std::vector<cv::Point2f>;

constexpr int kWidth = 640;
constexpr int kCornerX = 320;
constexpr double kCornerY = 240.0;

// A V that passes every test: flanks of 0.5 and -0.5, one point per column, no column missing.
struct TCorner {
  cv::Point2f corner{kCornerX, static_cast<float>(kCornerY)};
  weld::TFlankPair flanks;
  std::vector<TWeldPointStatus> status;
  TWeldParams params;

  TCorner() {
    flanks.left.k = 0.5;
    flanks.left.b = kCornerY - 0.5 * kCornerX;
    flanks.right.k = -0.5;
    flanks.right.b = kCornerY + 0.5 * kCornerX;
    spread(100, kCornerX, kCornerX + 1, 541);
    for (int x = 0; x < kWidth; ++x) status.push_back({x, 0});
  }

  // Flank points over the columns leftFrom .. leftTo - 1 and rightFrom .. rightTo - 1.
  void spread(int leftFrom, int leftTo, int rightFrom, int rightTo) {
    const auto rowAt = [](const TLinePara& line, int x) { return line.k * x + line.b; };
    flanks.left.inlierPts = painted::linePoints(leftFrom, leftTo, rowAt(flanks.left, leftFrom), flanks.left.k);
    flanks.right.inlierPts =
        painted::linePoints(rightFrom, rightTo, rowAt(flanks.right, rightFrom), flanks.right.k);
  }

  void miss(int fromX, int toX) {
    for (int x = fromX; x < toX; ++x) status[static_cast<std::size_t>(x)].status = 1;
  }

  bool isPlausible() const {
    weld::TDetectorObject object;
    object.setSamplinePointsStatus(status);
    return weld::checkCornerPlausible(object, corner, flanks, {kWidth, 480}, weld::cornerParams(params));
  }
};

struct TRow {
  const char* name;
  std::function<void(TCorner&)> change;
  bool isPlausible;
};

void expectRows(const std::vector<TRow>& rows) {
  ASSERT_TRUE(TCorner().isPlausible());
  for (const TRow& row : rows) {
    TCorner corner;
    row.change(corner);
    EXPECT_EQ(corner.isPlausible(), row.isPlausible) << row.name;
  }
}

TEST(CheckCornerPlausible, pointCountsSidesAndDensity) {
  expectRows({
      {"10 points on the left", [](TCorner& c) { c.spread(300, 310, 321, 541); }, true},
      {"9 points on the left", [](TCorner& c) { c.spread(300, 309, 321, 541); }, false},
      {"10 points on the right", [](TCorner& c) { c.spread(100, 320, 330, 340); }, true},
      {"9 points on the right", [](TCorner& c) { c.spread(100, 320, 330, 339); }, false},
      {"71 of 100 left of the corner", [](TCorner& c) { c.spread(249, 349, 321, 541); }, true},
      {"70 of 100 left of the corner", [](TCorner& c) { c.spread(250, 350, 321, 541); }, false},
      {"71 of 100 right of the corner", [](TCorner& c) { c.spread(100, 320, 292, 392); }, true},
      {"70 of 100 right of the corner", [](TCorner& c) { c.spread(100, 320, 291, 391); }, false},
      {"51 points on the better side", [](TCorner& c) { c.spread(269, 320, 321, 350); }, true},
      {"50 points on the better side", [](TCorner& c) { c.spread(270, 320, 321, 350); }, false},
      {"one dense flank is enough", [](TCorner& c) { c.spread(300, 320, 321, 500); }, true},
      {"160 of 320 columns at a share of one half",
       [](TCorner& c) {
         c.spread(160, 320, 321, 481);
         c.params.dPara3 = 0.5;
       },
       false},
      {"161 of 320 columns at a share of one half",
       [](TCorner& c) {
         c.spread(159, 320, 321, 481);
         c.params.dPara3 = 0.5;
       },
       true},
  });
}

TEST(CheckCornerPlausible, anglesLieStrictlyInsideRangesInEitherOrder) {
  const double flankDeg = std::atan(0.5) * 180.0 / CV_PI;
  expectRows({
      {"left range reversed", [](TCorner& c) { std::swap(c.params.angleRange1Min, c.params.angleRange1Max); },
       true},
      {"right range reversed", [](TCorner& c) { std::swap(c.params.angleRange2Min, c.params.angleRange2Max); },
       true},
      {"included reversed", [](TCorner& c) { std::swap(c.params.angleRange5Min, c.params.angleRange5Max); }, true},
      {"left too flat", [=](TCorner& c) { c.params.angleRange1Min = flankDeg + 1e-9; }, false},
      {"left just steep enough", [=](TCorner& c) { c.params.angleRange1Min = flankDeg - 1e-9; }, true},
      {"left too steep", [=](TCorner& c) { c.params.angleRange1Max = flankDeg - 1e-9; }, false},
      {"right too flat", [=](TCorner& c) { c.params.angleRange2Max = -flankDeg - 1e-9; }, false},
      {"right too steep", [=](TCorner& c) { c.params.angleRange2Min = -flankDeg + 1e-9; }, false},
      {"left equal to a bound",
       [](TCorner& c) {
         c.flanks.left.k = 1.0;
         c.params.angleRange1Max = 45.0;
       },
       false},
      {"included too small", [=](TCorner& c) { c.params.angleRange5Min = 180.0 - 2.0 * flankDeg + 1e-3; }, false},
      {"included large enough", [=](TCorner& c) { c.params.angleRange5Min = 180.0 - 2.0 * flankDeg - 1e-3; },
       true},
      {"included too large", [=](TCorner& c) { c.params.angleRange5Max = 180.0 - 2.0 * flankDeg - 1e-3; }, false},
      {"range that is not a number",
       [](TCorner& c) { c.params.angleRange1Min = c.params.angleRange1Max = std::nan(""); }, false},
  });
}

TEST(CheckCornerPlausible, gapBandMayMissNoLongRun) {
  // With 0.3 the band runs from the left point 154 (column 254) to the right point 66 (column 387); status 2
  // keeps the columns next to the corner from counting as missing in the next test.
  expectRows({
      {"10 missing in the band", [](TCorner& c) { c.miss(260, 270); }, true},
      {"11 missing in the band", [](TCorner& c) { c.miss(260, 271); }, false},
      {"11 with a found one between",
       [](TCorner& c) {
         c.miss(260, 272);
         c.status[265].status = 0;
       },
       true},
      {"11 with an unpaired one between",
       [](TCorner& c) {
         c.miss(260, 272);
         c.status[265].status = 2;
       },
       true},
      {"band begins behind column 254", [](TCorner& c) { c.miss(244, 265); }, true},
      {"11 behind column 254", [](TCorner& c) { c.miss(244, 266); }, false},
      {"band ends before column 387", [](TCorner& c) { c.miss(377, 390); }, true},
      {"11 before column 387", [](TCorner& c) { c.miss(376, 390); }, false},
      {"larger allowance",
       [](TCorner& c) {
         c.miss(260, 275);
         c.params.nPara5 = 15;
       },
       true},
      {"ratio below 0", [](TCorner& c) { c.params.dPara10 = -1e-9; }, false},
      {"ratio 0", [](TCorner& c) { c.params.dPara10 = 0.0; }, true},
      {"ratio 0 begins at the last left point",
       [](TCorner& c) {
         c.params.dPara10 = 0.0;
         c.miss(260, 300);
       },
       true},
      {"ratio 1", [](TCorner& c) { c.params.dPara10 = 1.0; }, true},
      {"ratio 1 begins at the first left point",
       [](TCorner& c) {
         c.params.dPara10 = 1.0;
         c.miss(110, 121);
       },
       false},
      {"ratio above 1", [](TCorner& c) { c.params.dPara10 = 1.0 + 1e-9; }, false},
      {"ratio that is not a number", [](TCorner& c) { c.params.dPara10 = std::nan(""); }, false},
  });
}

TEST(CheckCornerPlausible, fewColumnsMayMissNextToTheCorner) {
  const auto spaced = [](TCorner& c, int from, int to) {  // no two neighbours, so that no run forms
    for (int x = from; x < to; x += 2) c.miss(x, x + 1);
  };
  // The nearest flank points beyond 10 columns are those of columns 309 and 331.
  expectRows({
      {"9 missing", [=](TCorner& c) { spaced(c, 311, 329); }, true},
      {"10 missing", [=](TCorner& c) { spaced(c, 310, 330); }, false},
      {"columns 309 and 331 do not count",
       [=](TCorner& c) {
         spaced(c, 311, 329);
         c.miss(309, 310);
         c.miss(331, 332);
       },
       true},
      {"nothing may miss at a limit of 1",
       [](TCorner& c) {
         c.params.nPara1 = 1;
         c.miss(320, 321);
       },
       false},
      {"limit of 0 fails every corner", [](TCorner& c) { c.params.nPara1 = 0; }, false},
      {"without a left point beyond 10 columns 50 count",
       [=](TCorner& c) {
         c.spread(310, 320, 321, 541);
         spaced(c, 272, 290);
         c.miss(270, 271);
       },
       true},
      {"without a left point beyond 10 columns 50 count, one more",
       [=](TCorner& c) {
         c.spread(310, 320, 321, 541);
         spaced(c, 272, 290);
         c.miss(300, 301);
       },
       false},
      {"without a right point beyond 10 columns 50 count",
       [=](TCorner& c) {
         c.spread(100, 320, 321, 331);
         spaced(c, 350, 369);
         c.miss(370, 371);
       },
       false},
  });
}

TEST(CheckCornerPlausible, withoutGapStripeMustReachTheCorner) {
  const auto noGap = [](TCorner& c) { c.params.haveGap = false; };
  expectRows({
      {"corner between the inner ends", noGap, true},
      {"far from both inner ends but between them",
       [=](TCorner& c) {
         noGap(c);
         c.spread(20, 200, 450, 620);
       },
       true},
      // Beyond both ends to the right: flanks overlap left of the corner.
      {"beyond both ends, dense enough",
       [=](TCorner& c) {
         noGap(c);
         c.spread(100, 300, 310, 541);
       },
       true},
      {"beyond both ends, 20 left points within 100 columns",
       [=](TCorner& c) {
         noGap(c);
         c.spread(100, 241, 310, 541);
       },
       true},
      {"beyond both ends, 19 left points within 100 columns",
       [=](TCorner& c) {
         noGap(c);
         c.spread(100, 240, 310, 541);
       },
       false},
      {"the same with a gap allowed", [=](TCorner& c) { c.spread(100, 240, 310, 541); }, true},
      {"left points beyond a jump are no stripe",
       [=](TCorner& c) {
         noGap(c);
         c.spread(100, 200, 310, 541);
         const TPoints near = painted::linePoints(270, 310, 215.0, 0.5);
         c.flanks.left.inlierPts.insert(c.flanks.left.inlierPts.end(), near.begin(), near.end());
       },
       false},
      {"jump of 50 is none",
       [=](TCorner& c) {
         noGap(c);
         c.spread(100, 200, 310, 541);
         const TPoints near = painted::linePoints(249, 310, 204.5, 0.5);
         c.flanks.left.inlierPts.insert(c.flanks.left.inlierPts.end(), near.begin(), near.end());
       },
       true},
  });
}

TEST(CalcIntersecAngle, differenceBeyondHalfATurnLosesHalfATurn) {
  const struct {
    const char* name;
    double leftDeg;  // direction from the corner to the first point of the flank, y down
    double rightDeg;
    double expected;
  } rows[] = {
      {"right angle", 180.0, 90.0, 90.0},         {"V with its root below", -153.0, -27.0, 126.0},
      {"200 degrees are 20", 170.0, -30.0, 20.0}, {"179 degrees stay", 90.0, -89.0, 179.0},
      {"either order", -30.0, 170.0, 20.0},       {"same direction", 45.0, 45.0, 0.0},
  };
  for (const auto& row : rows) {
    const cv::Point2f corner{320, 240};
    weld::TFlankPair flanks;
    const auto aim = [&](TLinePara& flank, double deg) {
      const double rad = deg * CV_PI / 180.0;
      const double dx = std::abs(std::cos(rad)) < 1e-9 ? 0.0 : 100.0 * std::cos(rad);
      // The height of the flank at its first point counts, not the row of the point.
      flank.inlierPts = {{static_cast<float>(320.0 + dx), -7.0F}};
      flank.k = 0.0;
      flank.b = 240.0 + 100.0 * std::sin(rad);
    };
    aim(flanks.left, row.leftDeg);
    aim(flanks.right, row.rightDeg);
    EXPECT_NEAR(weld::calcIntersecAngle(flanks, corner), row.expected, 1e-4) << row.name;
  }
}

}  // namespace
