#include "detectors/lap.h"

#include "detectors/piece_end.h"
#include "run_detector.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace {

using run_detector::piece;
using TPoints = std::vector<cv::Point2f>;
using TPieces = std::vector<TStripePiece>;

TWeldLineRes detect(const cv::Mat& image, const TWeldLineRes& prevRes = {}) {
  return run_detector::run(weld::detectLapSeam, image, {}, prevRes);
}

// A piece of which only the ends, the slope and the number of inliers are looked at.
TStripePiece pieceWithInliers(int startX, std::size_t inliers) {
  TStripePiece p;
  p.startPt = {startX, 100};
  p.endPt = {startX + 50, 100};
  p.fitPts.resize(inliers);
  p.isFitted = true;
  return p;
}

TEST(SelectLapLinePair, choosesByNumberAndInliers) {
  const auto inliers = pieceWithInliers;
  const struct {
    const char* name;
    TPieces pieces;
    std::vector<int> expectedStarts;
  } rows[] = {
      {"none", {}, {}},
      {"one", {piece(0, 99, 50)}, {}},
      {"two in their order, though they touch", {piece(0, 99, 50), piece(100, 199, 50)}, {0, 100}},
      {"two the wrong way round", {inliers(300, 10), inliers(0, 90)}, {300, 0}},
      {"the two with the most", {inliers(0, 50), inliers(200, 10), inliers(400, 80)}, {400, 0}},
      {"equal counts keep their order", {inliers(0, 50), inliers(200, 50), inliers(400, 50)}, {0, 200}},
      {"as the exchanges leave them", {inliers(0, 50), inliers(200, 50), inliers(400, 80)}, {400, 200}},
  };
  for (const auto& row : rows) {
    const auto pair = weld::selectLapLinePair(row.pieces);
    std::vector<int> starts;
    if (pair) starts = {pair->first.startPt.x, pair->second.startPt.x};
    EXPECT_EQ(starts, row.expectedStarts) << row.name;
  }
}

TEST(SelectLapLinePair, joinsTouchingNeighboursOfThreeOrMore) {
  const struct {
    int secondStartX;
    double secondY;
    double secondAngleDeg;
    bool isJoined;
  } rows[] = {
      {100, 50, 0, true},   {108, 50, 0, true},     {109, 50, 0, false},
      {100, 59, 0, true},   {100, 60, 0, false},    {100, 40, 0, false},  // up to 9 columns and 9 rows apart
      {100, 50, 9.5, true}, {100, 50, 10.5, false}, {100, 50, -10.5, false},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::Message() << row.secondStartX << " " << row.secondY << " " << row.secondAngleDeg);
    TStripePiece second = piece(row.secondStartX, row.secondStartX + 99, row.secondY);
    second.k = static_cast<float>(std::tan(row.secondAngleDeg * CV_PI / 180.0));
    const auto pair = weld::selectLapLinePair({piece(0, 99, 50), second, piece(300, 560, 200)});
    ASSERT_TRUE(pair);
    // Joined: the two that are left, in order. Not joined: the longest one first.
    EXPECT_EQ(pair->first.startPt.x, row.isJoined ? 0 : 300);
    EXPECT_EQ(pair->first.pts.size(), row.isJoined ? 200U : 261U);
  }
  const auto stopped = weld::selectLapLinePair({piece(0, 99, 50), piece(100, 199, 50), piece(200, 299, 50)});
  ASSERT_TRUE(stopped);
  EXPECT_EQ(stopped->second.pts.size(), 100U) << "joining stops at two pieces";
}

// On a dark image no corner moves: it stays at the end of its piece.
struct TLap {
  TStripePiece left = piece(20, 300, 200);
  TStripePiece right = piece(310, 600, 260);
  TPoints stripePts = painted::joined(left.pts, right.pts);
  TWeldParams params;
  cv::Mat image = painted::dark();

  TWeldLineRes seam() const { return weld::computeLapSeam(left, right, stripePts, image, params); }
};

TLap lapOf(const TStripePiece& left, const TStripePiece& right) {
  return {left, right, painted::joined(left.pts, right.pts), {}};
}

TLap seenAs(const TPoints& stripePts) {
  return {piece(20, 300, 200), piece(310, 600, 260), stripePts, {}};
}

TEST(ComputeLapSeam, eachAcceptanceTestHoldsAtItsBorder) {
  const TLap plain;
  TStripePiece unfitted = plain.left;
  unfitted.isFitted = false;
  TLap highStep;
  highStep.params.dPara7 = 60.0;
  const auto rightFrom = [&](int x, double y) { return lapOf(plain.left, piece(x, 600, y)); };
  const auto leftFrom = [&](int x) { return lapOf(piece(x, 300, 200), plain.right); };
  // Of the two markers of a corner without support only the left column and the right row are looked at.
  const struct {
    const char* name;
    TLap lap;
    bool isFound;
  } rows[] = {
      {"plain lap", plain, true},
      {"left not fitted", lapOf(unfitted, plain.right), false},
      {"right not fitted", lapOf(plain.left, unfitted), false},
      {"9 stripe points", seenAs(painted::linePoints(20, 29, 200)), false},
      {"no points on the right piece", seenAs(plain.left.pts), false},
      {"no points on the left piece", seenAs(plain.right.pts), false},
      {"step of 20", rightFrom(310, 220), false},
      {"step of 21", rightFrom(310, 221), true},
      {"step up", rightFrom(310, 160), true},
      {"step equal to the parameter", highStep, false},
      {"29 columns back over the left", rightFrom(271, 260), true},
      {"30 columns back over the left", rightFrom(270, 260), false},
      {"lengths 150 and 150", lapOf(piece(150, 300, 200), piece(310, 460, 260)), false},
      {"lengths 150 and 151", lapOf(piece(150, 300, 200), piece(310, 461, 260)), true},
      {"shorter one of 50", leftFrom(250), false},
      {"shorter one of 51", leftFrom(249), true},
      {"left corner in row -1", lapOf(piece(20, 300, -1), plain.right), true},
      {"right corner in column -1", lapOf(piece(-300, -5, 200), piece(-1, 300, 260)), true},
      {"right corner in row -1", rightFrom(310, -1), false},
  };
  for (const auto& row : rows) {
    const TWeldLineRes result = row.lap.seam();
    EXPECT_EQ(result.isFound, row.isFound) << row.name;
    EXPECT_EQ(result.stripePts.empty(), !row.isFound) << row.name;
    EXPECT_EQ(result.weldPos == cv::Point2f(), !row.isFound) << row.name;
  }
}

TEST(ComputeLapSeam, positionChoosesTheCorner) {
  const cv::Point2f left{300, 200};
  const struct {
    int pos;
    double rightY;
    cv::Point2f seam;
  } rows[] = {{3, 260, left},       {3, 150, {310, 150}}, {4, 260, {310, 260}},
              {4, 150, left},       {3, 200, {310, 200}}, {4, 200, {310, 200}},  // a tie is the right corner
              {0, 260, {305, 230}}, {1, 260, {305, 230}}, {77, 260, {305, 230}}};
  for (const auto& row : rows) {
    TLap lap = lapOf(piece(20, 300, 200), piece(310, 600, row.rightY));
    lap.params.dPara7 = -1.0;
    lap.params.weldPosType = static_cast<TWeldPosType>(row.pos);
    EXPECT_EQ(lap.seam().weldPos, row.seam) << row.pos << " " << row.rightY;
  }
}

TEST(ComputeLapSeam, lineIsRefittedNearTheEndOutsideTheMiddleBandOfTheEndRows) {
  // The last and first 100 points lie 4 rows off the line of the piece; only a refit finds their row.
  constexpr float kBendPx = 4.0F;
  const struct {
    const char* name;
    double leftY, rightY;
    int rightEndY;
    float expectedLeftY, expectedRightY;
  } rows[] = {
      {"both in the middle (144 .. 336)", 144, 200, 200, 144, 200},
      {"left above", 143, 200, 200, 147, 200},
      {"right below", 200, 337, 337, 200, 341},
      {"right on the border", 200, 336, 336, 200, 336},
      {"right piece judged by its end row", 200, 260, 400, 200, 264},
      {"right piece judged by its end row, not its start row", 200, 400, 300, 200, 400},
  };
  for (const auto& row : rows) {
    TStripePiece left = piece(20, 300, row.leftY);
    TStripePiece right = piece(310, 600, row.rightY);
    for (std::size_t i = 0; i < 100; ++i) {
      left.pts[left.pts.size() - 1 - i].y += kBendPx;
      right.pts[i].y += kBendPx;
    }
    right.endPt.y = row.rightEndY;
    TLap lap = lapOf(left, right);
    for (const int bend : {0, 4}) {  // light that ends at the corner, in both rows that may be looked at
      lap.image(cv::Rect(20, static_cast<int>(row.leftY) + bend, 281, 1)).setTo(200);
      lap.image(cv::Rect(310, static_cast<int>(row.rightY) + bend, 291, 1)).setTo(200);
    }
    lap.params.weldPosType = TWeldPosType::upper;
    EXPECT_NEAR(lap.seam().weldPos.y, row.expectedLeftY, 0.01) << row.name;
    lap.params.weldPosType = TWeldPosType::lower;
    EXPECT_NEAR(lap.seam().weldPos.y, row.expectedRightY, 0.01) << row.name;
  }
}

TEST(PieceEndPoints, hundredAtMostAndNeverTheLastOfTheFirst) {
  const std::size_t rows[][3] = {{0, 0, 0}, {1, 0, 1}, {100, 99, 100}, {101, 100, 100}, {300, 100, 100}};
  for (const auto& [count, firstCount, lastCount] : rows) {
    const TPoints points = painted::linePoints(0, static_cast<int>(count), 9.0);
    const TPoints first = weld::firstPoints(points);
    const TPoints last = weld::lastPoints(points);
    EXPECT_EQ(first, TPoints(points.begin(), points.begin() + static_cast<std::ptrdiff_t>(firstCount))) << count;
    EXPECT_EQ(last, TPoints(points.end() - static_cast<std::ptrdiff_t>(lastCount), points.end())) << count;
  }
}

TEST(DetectLapSeam, findsTheStepFirstAndTrackingButNotAgainInTheFrameThatLostIt) {
  const cv::Mat image = painted::lapFrame();
  const TWeldLineRes first = detect(image);
  ASSERT_TRUE(first.isFound);
  EXPECT_NEAR(first.weldPos.x, 311.5, 2.0);
  EXPECT_NEAR(first.weldPos.y, 235.0, 1.0);
  EXPECT_EQ(detect(image, first).weldPos, first.weldPos);
  EXPECT_TRUE(detect(image, run_detector::foundWith(painted::linePoints(20, 620, 30.0))).stripePts.empty());
}

TEST(DetectLapSeam, ofThreePiecesTheLeftOfTheTwoLongestIsTheLeftOne) {
  cv::Mat image = painted::dark();
  painted::paintPiece(image, 20, 60, 120.0);
  painted::paintPiece(image, 64, 240, 200.0);
  painted::paintPiece(image, 244, 620, 260.0);  // the longest, chosen first
  const TWeldLineRes result = detect(image);
  ASSERT_TRUE(result.isFound);
  EXPECT_NEAR(result.weldPos.x, 241.5, 2.0);
  EXPECT_NEAR(result.weldPos.y, 230.0, 1.0);
}

}  // namespace
