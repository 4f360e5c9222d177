// The toolkit on a V, and on what has no meaning.
#include "geometry/piece_fit.h"
#include "geometry/stripe_smoothing.h"
#include "support/painted_frame.h"
#include "zelWeldDetect.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <limits>
#include <vector>

namespace {

using TPoints = std::vector<cv::Point2f>;

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInf = std::numeric_limits<float>::infinity();
const TPoints kV = painted::bentPoints(20, 320, 620, 100.0, 0.5, -0.5);

TBaseWeld toolkitOf(double edgeDrop, double supportPx, double tolPx) {
  TWeldParams params;
  params.dPara1 = edgeDrop;
  params.dPara2 = supportPx;
  params.dPara4 = tolPx;
  TBaseWeld weld;
  weld.setWeldParameters(params);
  return weld;
}

struct TCounts {
  std::vector<TStripePiece> pieces{1};
  std::vector<TSplitAtom> atoms{1};

  explicit TCounts(const TPoints& points, float epsilonPx = 3.0F) {
    TBaseWeld().segmentStripe(points, pieces, 5.0F, 200.0F, 20.0F, epsilonPx);
    TBaseWeld().splitWeldLine2lines(points, atoms, cv::Mat());
  }
};

TEST(Toolkit, cutsAVIntoItsLegs) {
  const TCounts legs(kV);
  ASSERT_TRUE(legs.pieces.size() == 2 && legs.atoms.size() == 2);
  EXPECT_NEAR(legs.pieces[0].k, 0.5F, 0.01F);
  EXPECT_NEAR(legs.pieces[1].k, -0.5F, 0.01F);
  EXPECT_EQ(legs.atoms[0].endX, 320);
  EXPECT_NEAR(TBaseWeld().findALineRansac(20.0, 30.0, 2.0, 0.45, kV).k, 0.5, 0.02);
  cv::Mat image = cv::Mat::zeros(480, 640, CV_8UC1);
  image.colRange(0, 201).setTo(200);
  const cv::Point2f corner =
      toolkitOf(30.0, 5.0, 3.0).modifySingleVGroovePos(kV, {204.0F, 0.0F}, 0.5F, 90.0F, image);
  EXPECT_EQ(corner, cv::Point2f(200.0F, 190.0F)) << "where the light ends";
}

TEST(Toolkit, pointsThatAreNotFiniteOrAbsurdlyFarGiveNothing) {
  for (const cv::Point2f bad :
       {cv::Point2f{kNaN, 0}, {100, kNaN}, {kInf, 0}, {100, -kInf}, {2e9F, 0}, {100, 2e9F}}) {
    for (const std::size_t at : {0U, 100U, 599U}) {
      TPoints points = kV;
      points[at] = bad;
      const TCounts counts(points);
      EXPECT_TRUE(counts.pieces.empty() && counts.atoms.empty()) << bad << at;
    }
  }
  std::vector<cv::Point> near;
  double share = 0.125;
  EXPECT_TRUE(
      TBaseWeld().calcFitPercent(TPoints{{-0.5F, 0.5F}, {kNaN, 7}, {3e9F, -3e9F}}, near, 0, 0, 1e12, share));
  EXPECT_EQ(near, (std::vector<cv::Point>{{0, 0}, {INT_MIN, 7}, {INT_MIN, INT_MIN}}));
  share = 0.125;
  EXPECT_FALSE(TBaseWeld().calcFitPercent(TPoints(), near, 0.0, 10.0, 1.0, share));
  EXPECT_TRUE(near.empty() && share == 0.125) << "an empty list leaves the share alone";
}

// Column and row that jump about.
TPoints shuffledPoints(int count) {
  TPoints points;
  for (int i = 0; i < count; ++i) points.emplace_back(i * 7919LL % 1277, i * 104729LL % 1021);
  return points;
}

TEST(Toolkit, listsOutOfOrderAreCutAsLongAsTheirPiecesHoldNotTooMuch) {
  EXPECT_GT(TCounts(shuffledPoints(2000)).pieces.size(), 100U);
  const TCounts many(shuffledPoints(100000));
  EXPECT_TRUE(many.pieces.empty() && many.atoms.empty());
}

TEST(Toolkit, numbersWithoutMeaningGiveTheFailedResult) {
  for (const double bad : {static_cast<double>(kNaN), HUGE_VAL, -HUGE_VAL, -1.0}) {
    EXPECT_TRUE(TCounts(kV, static_cast<float>(bad)).pieces.empty()) << bad;
    EXPECT_EQ(toolkitOf(30.0, 5.0, bad).findALine(kV, 0, 100).isValid, bad > 0.0) << bad;
    EXPECT_EQ(TBaseWeld().findALineRansac(-45.0, 45.0, bad, 0.0, kV).isValid, bad > 0.0) << bad;
    EXPECT_EQ(TBaseWeld().calcFitLinePercent(bad, 100.0, 5.0, {{1, 1}}), 0.0) << bad;
  }
  EXPECT_FALSE(TBaseWeld().findALine(kV, 0, INT_MAX).isValid);
  cv::Mat image = cv::Mat::zeros(480, 640, CV_8UC1);
  image.colRange(0, 201).setTo(200);
  const auto refine = [&](const TPoints& support, float x, float k, const cv::Mat& in) {
    return toolkitOf(30.0, 5.0, 3.0).modifySingleVGroovePos(support, {x, 0.0F}, k, 90.0F, in);
  };
  const cv::Point2f marker(-1.0F, -1.0F);
  for (const float wild : {kNaN, kInf, 3e38F, -3e38F, 2147483647.0F}) {
    for (const float x : {wild, -wild}) {
      const cv::Point2f pos = refine(kV, x, 0.5F, image);
      EXPECT_TRUE(pos == marker || (pos.x >= 0.0F && pos.x < 640.0F) || !(std::abs(x) < 1e9F));
    }
    EXPECT_EQ(refine(kV, 204.0F, wild, image), marker);
    EXPECT_EQ(refine(TPoints(20, {wild, wild}), 204.0F, 0.5F, image), marker);
  }
  EXPECT_EQ(refine(kV, 204.0F, 0.5F, cv::Mat(0, 40, CV_8UC1)), marker);
  for (const int type : {CV_16UC1, CV_8UC2})
    EXPECT_THROW(refine(kV, 204.0F, 0.5F, cv::Mat::zeros(480, 640, type)), cv::Exception);
}

TEST(StripeSmoothing, dropsJumpsOfFourRowsAColumnAndListsOfFourToSixPoints) {
  const TPoints jumps{{0, 0}, {1, 4}, {2, 7.5F}, {3, 50}, {4, 50}};  // each against the point before, kept or not
  EXPECT_EQ(weld::toVector(weld::dropSteepJumps(jumps, 4.0F, weld::heapMemory())),
            (TPoints{{0, 0}, {2, 7.5F}, {4, 50}}));
  for (const int count : {3, 4, 6, 7}) {
    const TPoints level = painted::linePoints(0, count, 5.0);
    EXPECT_EQ(weld::smoothStripe(level, weld::heapMemory()).empty(), count == 4 || count == 6) << count;
  }
}

TEST(Toolkit, shortListsAndEmptyRanges) {
  TPoints few{{0, 5}, {1, 5}};
  TBaseWeld().removeDiscontinuousPts(few, 4);
  EXPECT_EQ(few.size(), 2U);
  few.emplace_back(2.0F, 5.0F);
  TBaseWeld().removeDiscontinuousPts(few, 4);
  EXPECT_TRUE(few.empty());
  EXPECT_FALSE(TBaseWeld().findALine(painted::linePoints(0, 40, 30.0), 0, 0).isValid);
}

TEST(FitPiece, pointsAtTheToleranceAreOff) {
  const TPoints points = painted::joined(painted::linePoints(0, 41, 10.0), {{20, 13}, {20, 7}});
  const weld::TPiece piece = weld::fitPiece({points.begin(), points.end()}, 3.0F, weld::heapMemory());
  EXPECT_EQ(piece.fitPts.size(), 41U);
}

TEST(CheckImgLegality, needsDataDimensionsAndElements) {
  const int sizes[] = {2, 3, 4};
  const int noSizes[] = {2, 0, 4};
  EXPECT_TRUE(TBaseWeld().checkImgLegality(cv::Mat(1, 1, CV_16UC3)));
  EXPECT_TRUE(TBaseWeld().checkImgLegality(cv::Mat(3, sizes, CV_8UC1)));
  for (const cv::Mat& none : {cv::Mat(), cv::Mat(0, 5, CV_8UC1), cv::Mat(3, noSizes, CV_8UC1)})
    EXPECT_FALSE(TBaseWeld().checkImgLegality(none));
}

}  // namespace
