#include "stripe/stripe_end.h"

#include "stripe/stripe_curve.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace weld {
namespace {

// 0..1, the same for every run.
double grain(int x, int y) {
  unsigned v = static_cast<unsigned>(x) * 2654435761U + static_cast<unsigned>(y) * 40503U;
  v = (v ^ (v >> 15)) * 2246822519U;
  return static_cast<double>((v ^ (v >> 13)) & 0xFFFFU) / 65535.0;
}

struct TPiece {
  const char* name;
  double endX;           // of the light, in middles of columns
  double speckle = 0.0;  // share of the light
  int holeFrom = 0;      // columns without light
  int holeTo = 0;
  int lastCentre = 140;
  double tolerancePx = 0.1;
  int restColumns = 3;      // lit behind a hole that ends at 156
  int innerHoleFrom = 200;  // to 132: without light and centres
};

double rowAt(double x) {
  return 40.0 + 0.1 * x;
}

TEST(EndOfLight, isReadBetweenColumnsPastHolesAndGrains) {
  const TPiece rows[] = {
      {"whole column", 140.0},
      {"third of a column more", 140.3},
      {"third of a column less", 139.7},
      {"centres run on into the dark", 137.4, 0.0, 0, 0, 140},
      {"centres stop before the light does", 151.2, 0.0, 0, 0, 140},
      {"a hole before the end", 151.2, 0.0, 142, 145, 140},
      {"speckle", 146.0, 0.5, 0, 0, 140, 0.5},
      {"three columns behind a long hole", 141.0, 0.0, 142, 156, 140},
      {"four columns behind a long hole", 160.0, 0.0, 142, 156, 140, 0.1, 4},
      {"little of the piece seen before its end", 140.3, 0.0, 0, 0, 140, 0.1, 3, 112},
  };
  for (const TPiece& row : rows) {
    for (const bool isRight : {true, false}) {
      cv::Mat image(120, 281, CV_8UC1, cv::Scalar(20));
      TPoints centres(heapMemory());
      for (int x = 40; x < 200; ++x) {
        const double rest = x > 156 && row.holeTo == 156 ? 1.0 - (x > 156 + row.restColumns ? 1.0 : 0.0) : 0.0;
        const bool isInnerHole = x >= row.innerHoleFrom && x <= 132;
        const bool isHole = (x >= row.holeFrom && x <= row.holeTo) || isInnerHole;
        const double lit = isHole ? 0.0 : std::max(rest, std::clamp(row.endX + 1.0 - x, 0.0, 1.0));
        for (int y = -4; y <= 4; ++y) {
          const double light = 150.0 * lit * (1.0 - row.speckle * grain(x / 2, y / 2 + 9));
          image.at<unsigned char>(static_cast<int>(std::lround(rowAt(x))) + y, isRight ? x : 280 - x) =
              cv::saturate_cast<unsigned char>(20.0 + light);
        }
        if (x > row.lastCentre || isInnerHole) continue;
        const cv::Point2d centre(isRight ? x : 280 - x, rowAt(x) + (x % 20 == 0 ? 5.0 : 0.0));
        centres.insert(isRight ? centres.end() : centres.begin(), cv::Point2f(centre));
      }
      const TWeldParams params;
      const cv::Point2d end = endOfLight(heapFrame(image, params), {centres, isRight, 9.0}).pos;
      EXPECT_NEAR(isRight ? end.x : 280.0 - end.x, row.endX, row.tolerancePx) << row.name << isRight;
      EXPECT_NEAR(end.y, rowAt(row.endX), 0.3) << row.name << isRight;
      if (row.restColumns != 4) continue;
      const double beside = endOfLight(heapFrame(image, params), {centres, isRight, 9.0, 20, 0}).pos.x;
      EXPECT_NEAR(isRight ? beside : 280.0 - beside, 141.0, 0.1) << "no holes beside another piece";
    }
  }
}

TEST(StripeCurve, bendsOnlyWhereTheCentresShowABow) {
  for (const double bowPx : {0.0, 3.0}) {
    TPoints points(heapMemory());
    for (int x = 0; x < 300; ++x) {
      const double share = (x - 150) / 150.0;
      const double row =
          50.0 + 0.2 * x + bowPx * (1.0 - share * share) + grain(x, 1) - 0.5 + (x % 20 == 0 ? 9 : 0);
      points.emplace_back(static_cast<float>(x), static_cast<float>(row));
    }
    const auto curve = fitStripeCurve(points, 300.0, heapMemory());
    ASSERT_TRUE(curve);
    EXPECT_EQ(curve->c != 0.0, bowPx != 0.0);
    EXPECT_NEAR(curve->rowAt(300.0), 110.0, 0.3);
    EXPECT_NEAR(curve->slopeAt(300.0), 0.2 - bowPx / 75.0, 0.005);
  }
  EXPECT_FALSE(fitStripeLine(TPoints(9, {1.0F, 2.0F}, heapMemory()), 0.0, heapMemory()));
  EXPECT_FALSE(fitStripeLine(TPoints(90, {1.0F, 2.0F}, heapMemory()), 0.0, heapMemory())) << "one column";
}

}  // namespace
}  // namespace weld
