#include "detectors/lap.h"

#include "detectors/piece_end.h"
#include "ending.h"

#include <cmath>

namespace {

using ending::piece;
using ending::TStripePts;
using painted::joined;
using painted::linePoints;
using weld::TPiece;
using TPieces = std::vector<TPiece>;
using TSettings = TLapSettings;

auto selectPair(const TPieces& pieces) {
  const cv::Mat image = painted::dark();
  const TWeldParams params;
  return weld::selectLapPieces(weld::heapFrame(image, params), weld::TPieces(pieces.begin(), pieces.end()));
}

TEST(SelectLapPieces, choosesByNumberAndInliers) {
  // Only the ends, the slope and the number of inliers are looked at.
  const auto inliers = [](int startX, std::size_t count) {
    TPiece p{weld::TPoints()};
    p.startPt = {startX, 100};
    p.endPt = {startX + 50, 100};
    p.fitPts.resize(count);
    p.isFitted = true;
    return p;
  };
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
    const auto pair = selectPair(row.pieces);
    std::vector<int> starts;
    if (pair) starts = {pair->first.startPt.x, pair->second.startPt.x};
    EXPECT_EQ(starts, row.expectedStarts) << row.name;
  }
}

TEST(SelectLapPieces, joinsTouchingNeighboursOfThreeOrMore) {
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
    TPiece second = piece(row.secondStartX, row.secondStartX + 99, row.secondY);
    second.k = static_cast<float>(std::tan(row.secondAngleDeg * CV_PI / 180.0));
    const auto pair = selectPair({piece(0, 99, 50), second, piece(300, 560, 200)});
    ASSERT_TRUE(pair);
    // Joined: the two that are left, in order. Not joined: the longest one first.
    EXPECT_EQ(pair->first.startPt.x, row.isJoined ? 0 : 300);
    EXPECT_EQ(pair->first.pts.size(), row.isJoined ? 200U : 261U);
  }
  const auto stopped = selectPair({piece(0, 99, 50), piece(100, 199, 50), piece(200, 299, 50)});
  ASSERT_TRUE(stopped);
  EXPECT_EQ(stopped->second.pts.size(), 100U) << "joining stops at two pieces";
}

// On a dark image no corner moves: it stays at the end of its piece.
struct TLap {
  TPiece left = piece(20, 300, 200);
  TPiece right = piece(310, 600, 260);
  TStripePts stripePts{};
  TSettings settings{};
  TWeldPosType pos = TWeldPosType::centre;
  cv::Mat image = painted::dark();

  ending::TEnding end(ending::TSeenChecks& seen) const {
    const auto all = joined({left.pts.begin(), left.pts.end()}, {right.pts.begin(), right.pts.end()});
    return ending::of(image, settings.params(pos), seen, [&](const weld::TFrame& frame) {
      return weld::computeLapSeam(frame, left, right, stripePts.empty() ? all : stripePts);
    });
  }
};

// The two longest pieces, left to right.
void expectEndsOfStripes(ending::TSeenChecks& seen) {
  const TStripePts whole = joined(linePoints(20, 310, 210), linePoints(314, 620, 260));
  const TStripePts three =  // the longest one, chosen first, lies on the right
      joined(joined(linePoints(20, 60, 120), linePoints(64, 240, 200)), linePoints(244, 620, 260));
  const struct {
    TStripePts points;
    const char* reason;
    cv::Point2f seam{};
  } rows[] = {{linePoints(20, 620, 240), "too few straight pieces"},
              {linePoints(20, 39, 240), "too few stripe points"},
              {whole, "found", {311.5F, 235.0F}},
              {three, "found", {241.5F, 230.0F}}};
  for (const auto& row : rows) {
    const auto end = ending::of(weld::findLap, row.points, {}, seen);
    EXPECT_EQ(end.reason, row.reason);
    EXPECT_NEAR(end.pos.x, row.seam.x, 2.0);
    EXPECT_NEAR(end.pos.y, row.seam.y, 1.0);
  }
}

void expectEndsOfPieces(ending::TSeenChecks& seen) {
  const TLap plain;
  TPiece unfitted = plain.left;
  unfitted.isFitted = false;
  TPiece sparse = piece(20, 300, 30);
  sparse.pts.resize(9);
  const auto right = [&](int x, double y) { return TLap{plain.left, piece(x, 600, y)}; };
  const auto seenAs = [&](const TStripePts& points) { return TLap{plain.left, plain.right, points}; };
  const TStripePts leftPts(plain.left.pts.begin(), plain.left.pts.end());
  const TStripePts rightPts(plain.right.pts.begin(), plain.right.pts.end());
  const char* const kUnfitted = "no line through a piece of the stripe";
  const char* const kNoSupport = "too little stripe near the end of a piece";
  const struct {
    const char* name;
    TLap lap;
    const char* reason;
  } rows[] = {
      {"plain lap", plain, "found"},
      {"left not fitted", {unfitted}, kUnfitted},
      {"right not fitted", {plain.left, unfitted}, kUnfitted},
      {"9 stripe points", seenAs(linePoints(20, 29, 200)), "too few stripe points"},
      {"9 points for a refit", {sparse}, "no line through the points near the end of a piece"},
      {"no points on the left piece", seenAs(rightPts), kNoSupport},
      {"no points on the right piece", seenAs(leftPts), kNoSupport},
      {"step of 20", right(310, 220), "step too low"},
      {"step of 21", right(310, 221), "found"},
      {"step up", right(310, 160), "found"},
      {"29 columns back over the left", right(271, 260), "found"},
      {"30 columns back over the left", right(270, 260), "pieces overlap too far"},
      {"lengths 150 and 150", {piece(150, 300, 200), piece(310, 460, 260)}, "pieces too short together"},
      {"lengths 150 and 151", {piece(150, 300, 200), piece(310, 461, 260)}, "found"},
      {"shorter one of 50", {piece(250, 300, 200)}, "piece too short"},
      {"shorter one of 51", {piece(249, 300, 200)}, "found"},
      // Of the two markers of a corner without support only the left column and the right row are looked at.
      {"left corner in row -1", {piece(20, 300, -1)}, "found"},
      {"right corner in column -1", {piece(-300, -5, 200), piece(-1, 300, 260)}, "found"},
      {"right corner in row -1", right(310, -1), kNoSupport},
  };
  for (const auto& row : rows) {
    const auto end = row.lap.end(seen);
    EXPECT_EQ(end.reason, row.reason) << row.name;
    EXPECT_EQ(end.seam.stripePts.empty(), !end.isFound) << row.name;
    EXPECT_EQ(end.pos == cv::Point2f(), !end.isFound) << row.name;
  }
}

TEST(FindLap, endsWithItsSeamOrItsReason) {
  ending::TSeenChecks seen;
  expectEndsOfStripes(seen);
  expectEndsOfPieces(seen);
  seen.expectEachStoppedARow();
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
  ending::TSeenChecks seen;
  for (const auto& row : rows) {
    TLap lap{piece(20, 300, 200), piece(310, 600, row.rightY)};
    lap.settings.minStepPx = -1.0;
    lap.pos = static_cast<TWeldPosType>(row.pos);
    EXPECT_EQ(lap.end(seen).pos, row.seam) << row.pos << " " << row.rightY;
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
  ending::TSeenChecks seen;
  for (const auto& row : rows) {
    TLap lap{piece(20, 300, row.leftY), piece(310, 600, row.rightY)};
    for (std::size_t i = 0; i < 100; ++i) {
      lap.left.pts[lap.left.pts.size() - 1 - i].y += kBendPx;
      lap.right.pts[i].y += kBendPx;
    }
    lap.right.endPt.y = row.rightEndY;
    for (const int bend : {0, 4}) {  // light that ends at the corner, in both rows that may be looked at
      lap.image(cv::Rect(20, static_cast<int>(row.leftY) + bend, 281, 1)).setTo(200);
      lap.image(cv::Rect(310, static_cast<int>(row.rightY) + bend, 291, 1)).setTo(200);
    }
    lap.pos = TWeldPosType::upper;
    EXPECT_NEAR(lap.end(seen).pos.y, row.expectedLeftY, 0.01) << row.name;
    lap.pos = TWeldPosType::lower;
    EXPECT_NEAR(lap.end(seen).pos.y, row.expectedRightY, 0.01) << row.name;
  }
}

TEST(PieceEndPoints, hundredAtMostAndNeverTheLastOfTheFirst) {
  const std::size_t rows[][3] = {{0, 0, 0}, {1, 0, 1}, {100, 99, 100}, {101, 100, 100}, {300, 100, 100}};
  for (const auto& [count, firstCount, lastCount] : rows) {
    const TStripePts points = linePoints(0, static_cast<int>(count), 9.0);
    const weld::TPointView first = weld::firstPoints(points);
    const weld::TPointView last = weld::lastPoints(points);
    EXPECT_EQ(first.begin(), points.data()) << count;
    EXPECT_EQ(first.size(), firstCount);
    EXPECT_EQ(last.end(), points.data() + count) << count;
    EXPECT_EQ(last.size(), lastCount);
  }
}

}  // namespace
