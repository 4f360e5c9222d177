#include "detectors/lap.h"

#include "detectors/piece_end.h"
#include "geometry/groove.h"
#include "geometry/piece_fit.h"
#include "support/painted_frame.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace {

using TPoints = std::vector<cv::Point2f>;

// A fitted piece over the columns fromX .. toX at the given start row and slope.
TStripePiece piece(int fromX, int toX, double y, double k = 0.0) {
  return weld::fitPiece(painted::linePoints(fromX, toX + 1, y, k), weld::kPieceFitTolPx);
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

std::vector<int> startColumns(const std::vector<TStripePiece>& pieces) {
  const auto pair = weld::selectLapLinePair(pieces);
  if (!pair) return {};
  return {pair->first.startPt.x, pair->second.startPt.x};
}

TEST(SelectLapLinePair, choosesByNumberAndInliers) {
  const struct {
    const char* name;
    std::vector<TStripePiece> pieces;
    std::vector<int> expected;
  } rows[] = {
      {"none", {}, {}},
      {"one", {piece(0, 99, 50)}, {}},
      {"two in their order, though they touch", {piece(0, 99, 50), piece(100, 199, 50)}, {0, 100}},
      {"two the wrong way round", {pieceWithInliers(300, 10), pieceWithInliers(0, 90)}, {300, 0}},
      {"the two with the most inliers",
       {pieceWithInliers(0, 50), pieceWithInliers(200, 10), pieceWithInliers(400, 80)},
       {400, 0}},
      {"equal counts keep their order",
       {pieceWithInliers(0, 50), pieceWithInliers(200, 50), pieceWithInliers(400, 50)},
       {0, 200}},
      {"equal counts as the exchanges leave them",
       {pieceWithInliers(0, 50), pieceWithInliers(200, 50), pieceWithInliers(400, 80)},
       {400, 200}},
  };
  for (const auto& row : rows) EXPECT_EQ(startColumns(row.pieces), row.expected) << row.name;
}

TEST(SelectLapLinePair, joinsTouchingNeighboursOfThreeOrMore) {
  const struct {
    const char* name;
    int secondStartX;
    double secondY;
    double secondAngleDeg;
    bool isJoined;
  } rows[] = {
      {"touching", 100, 50, 0, true},
      {"9 columns apart", 108, 50, 0, true},
      {"10 columns apart", 109, 50, 0, false},
      {"9 rows apart", 100, 59, 0, true},
      {"10 rows apart", 100, 60, 0, false},
      {"10 rows up", 100, 40, 0, false},
      {"9 degrees and a half", 100, 50, 9.5, true},
      {"10 degrees and a half", 100, 50, 10.5, false},
      {"10 degrees and a half upwards", 100, 50, -10.5, false},
  };
  for (const auto& row : rows) {
    TStripePiece first = piece(0, 99, 50);
    TStripePiece second = piece(row.secondStartX, row.secondStartX + 99, row.secondY);
    second.k = static_cast<float>(std::tan(row.secondAngleDeg * CV_PI / 180.0));
    const auto pair = weld::selectLapLinePair({first, second, piece(300, 560, 200)});
    ASSERT_TRUE(pair) << row.name;
    // Joined: the two that are left, in order. Not joined: the longest one first.
    EXPECT_EQ(pair->first.startPt.x, row.isJoined ? 0 : 300) << row.name;
    EXPECT_EQ(pair->first.pts.size(), row.isJoined ? 200U : 261U) << row.name;
  }
}

TEST(SelectLapLinePair, joiningStopsAtTwoPieces) {
  const auto pair = weld::selectLapLinePair({piece(0, 99, 50), piece(100, 199, 50), piece(200, 299, 50)});
  ASSERT_TRUE(pair);
  EXPECT_EQ(pair->first.pts.size(), 200U);
  EXPECT_EQ(pair->second.pts.size(), 100U);
}

// On a dark image no corner moves: it stays at the end of its piece.
struct TLap {
  TStripePiece left = piece(20, 300, 200);
  TStripePiece right = piece(310, 600, 260);
  TPoints stripePts;
  cv::Mat image = painted::dark();
  TWeldParams params;

  TWeldLineRes seam() const {
    TPoints points = stripePts;
    if (points.empty()) {
      points = left.pts;
      points.insert(points.end(), right.pts.begin(), right.pts.end());
    }
    return weld::computeLapSeam(left, right, points, image, params);
  }
};

TEST(ComputeLapSeam, eachAcceptanceTestHoldsAtItsBorder) {
  const struct {
    const char* name;
    void (*change)(TLap&);
    bool isFound;
  } rows[] = {
      {"plain lap", [](TLap&) {}, true},
      {"left not fitted", [](TLap& lap) { lap.left.isFitted = false; }, false},
      {"right not fitted", [](TLap& lap) { lap.right.isFitted = false; }, false},
      {"9 stripe points", [](TLap& lap) { lap.stripePts = painted::linePoints(20, 29, 200); }, false},
      {"step of 20", [](TLap& lap) { lap.right = piece(310, 600, 220); }, false},
      {"step of 21", [](TLap& lap) { lap.right = piece(310, 600, 221); }, true},
      {"step up", [](TLap& lap) { lap.right = piece(310, 600, 160); }, true},
      {"step equal to the parameter", [](TLap& lap) { lap.params.dPara7 = 60.0; }, false},
      {"29 columns back over the left", [](TLap& lap) { lap.right = piece(271, 600, 260); }, true},
      {"30 columns back over the left", [](TLap& lap) { lap.right = piece(270, 600, 260); }, false},
      {"lengths 150 and 150",
       [](TLap& lap) {
         lap.left = piece(150, 300, 200);
         lap.right = piece(310, 460, 260);
       },
       false},
      {"lengths 150 and 151",
       [](TLap& lap) {
         lap.left = piece(150, 300, 200);
         lap.right = piece(310, 461, 260);
       },
       true},
      {"shorter one of 50", [](TLap& lap) { lap.left = piece(250, 300, 200); }, false},
      {"shorter one of 51", [](TLap& lap) { lap.left = piece(249, 300, 200); }, true},
  };
  for (const auto& row : rows) {
    TLap lap;
    row.change(lap);
    const TWeldLineRes result = lap.seam();
    EXPECT_EQ(result.isFound, row.isFound) << row.name;
    if (!result.isFound) {
      EXPECT_TRUE(result.stripePts.empty()) << row.name;
      EXPECT_EQ(result.weldPos, cv::Point2f()) << row.name;
    }
  }
}

TEST(ComputeLapSeam, positionChoosesTheCorner) {
  const cv::Point2f left{300, 200};
  const struct {
    int pos;
    double rightY;
    cv::Point2f seam;
  } rows[] = {{3, 260, left},       {3, 150, {310, 150}}, {4, 260, {310, 260}}, {4, 150, left},
              {0, 260, {305, 230}}, {1, 260, {305, 230}}, {2, 260, {305, 230}}, {77, 260, {305, 230}}};
  for (const auto& row : rows) {
    TLap lap;
    lap.right = piece(310, 600, row.rightY);
    lap.params.weldPosType = static_cast<TWeldPosType>(row.pos);
    EXPECT_EQ(lap.seam().weldPos, row.seam) << row.pos << " " << row.rightY;
  }
  for (const int pos : {3, 4}) {  // a tie is the right corner
    TLap lap;
    lap.right = piece(310, 600, 200);
    lap.params.dPara7 = -1.0;
    lap.params.weldPosType = static_cast<TWeldPosType>(pos);
    EXPECT_EQ(lap.seam().weldPos, cv::Point2f(310, 200));
  }
}

// The marker (-1, -1) comes from too little support. Rows of the result show which coordinates are looked at.
TEST(ComputeLapSeam, markersCountOnlyInTheLeftColumnAndTheRightRow) {
  TLap lap;
  lap.stripePts = lap.left.pts;  // none on the right piece
  EXPECT_FALSE(lap.seam().isFound);
  lap.stripePts = lap.right.pts;  // none on the left piece
  EXPECT_FALSE(lap.seam().isFound);

  // A left corner in row -1 and a right one in column -1 are corners like others.
  TLap above;
  above.left = piece(20, 300, -1);
  EXPECT_TRUE(above.seam().isFound);
  TLap aside;
  aside.left = piece(-300, -5, 200);
  aside.right = piece(-1, 300, 260);
  EXPECT_TRUE(aside.seam().isFound);
  TLap sameRow;
  sameRow.right = piece(310, 600, -1);
  EXPECT_FALSE(sameRow.seam().isFound);
}

TEST(ComputeLapSeam, lineIsRefittedNearTheEndOutsideTheMiddleBandOfTheEndRows) {
  // The last and first 100 points lie 4 rows off the line of the piece; only a refit finds their row.
  const auto bentAtEnd = [](double y) {
    TStripePiece p = piece(20, 300, y);
    for (std::size_t i = p.pts.size() - 100; i < p.pts.size(); ++i) p.pts[i].y += 4.0F;
    return p;
  };
  const auto bentAtStart = [](double y) {
    TStripePiece p = piece(310, 600, y);
    for (std::size_t i = 0; i < 100; ++i) p.pts[i].y += 4.0F;
    return p;
  };
  const struct {
    const char* name;
    double leftY;
    double rightY;
    cv::Point rightEnd;
    float expectedLeftY;
    float expectedRightY;
  } rows[] = {
      {"both in the middle (144 .. 336)", 144, 200, {600, 200}, 144, 200},
      {"left above", 143, 200, {600, 200}, 147, 200},
      {"right below", 200, 337, {600, 337}, 200, 341},
      {"right on the border", 200, 336, {600, 336}, 200, 336},
      {"right piece judged by its end row", 200, 260, {600, 400}, 200, 264},
      {"right piece judged by its end row, not its start row", 200, 400, {600, 300}, 200, 400},
  };
  for (const auto& row : rows) {
    TLap lap;
    lap.left = bentAtEnd(row.leftY);
    lap.right = bentAtStart(row.rightY);
    lap.right.endPt = row.rightEnd;
    // Light that ends at the corner, in the row of the piece and in that of its bent end.
    for (const int bend : {0, 4}) {
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
  const struct {
    int count;
    std::size_t first;
    std::size_t last;
  } rows[] = {{0, 0, 0}, {1, 0, 1}, {100, 99, 100}, {101, 100, 100}, {300, 100, 100}};
  for (const auto& row : rows) {
    const TPoints points = painted::linePoints(0, row.count, 9.0);
    const TPoints first = weld::firstPoints(points);
    const TPoints last = weld::lastPoints(points);
    EXPECT_EQ(first.size(), row.first) << row.count;
    EXPECT_EQ(last.size(), row.last) << row.count;
    if (!first.empty()) {
      EXPECT_EQ(first.front(), points.front());
    }
    if (!last.empty()) {
      EXPECT_EQ(last.back(), points.back());
    }
  }
}

TEST(DetectLapSeam, findsTheStepFirstAndTracking) {
  weld::TDetectorObject object;
  const cv::Mat image = painted::lapFrame();
  const TWeldLineRes first = weld::detectLapSeam(object, image, {}, cv::Mat());
  ASSERT_TRUE(first.isFound);
  EXPECT_NEAR(first.weldPos.x, 311.5, 2.0);
  EXPECT_NEAR(first.weldPos.y, 235.0, 1.0);
  const TWeldLineRes tracked = weld::detectLapSeam(object, image, first, cv::Mat());
  EXPECT_EQ(tracked.weldPos, first.weldPos);
  EXPECT_EQ(tracked.trackVal, 0.0);
}

TEST(DetectLapSeam, ofThreePiecesTheLeftOfTheTwoLongestIsTheLeftOne) {
  cv::Mat image = painted::dark();
  painted::paintPiece(image, 20, 60, 120.0);
  painted::paintPiece(image, 64, 240, 200.0);
  painted::paintPiece(image, 244, 620, 260.0);  // the longest, chosen first
  weld::TDetectorObject object;
  const TWeldLineRes result = weld::detectLapSeam(object, image, {}, cv::Mat());
  ASSERT_TRUE(result.isFound);
  EXPECT_NEAR(result.weldPos.x, 241.5, 2.0);
  EXPECT_NEAR(result.weldPos.y, 230.0, 1.0);
}

TEST(DetectLapSeam, lostTrackIsNotSearchedAgainInTheSameFrame) {
  TWeldLineRes prevRes;
  prevRes.isFound = true;
  prevRes.stripePts = painted::linePoints(20, 620, 30.0);
  weld::TDetectorObject object;
  const TWeldLineRes result = weld::detectLapSeam(object, painted::lapFrame(), prevRes, cv::Mat());
  EXPECT_FALSE(result.isFound);
  EXPECT_TRUE(result.stripePts.empty());
}

}  // namespace
