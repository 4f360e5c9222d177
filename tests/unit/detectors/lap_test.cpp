#include "detectors/lap.h"

#include "ending.h"

#include <cmath>

namespace {

using ending::piece;
using ending::TStripePts;
using painted::joined;
using painted::linePoints;
using weld::TPiece;

TEST(SelectLapPieces, joinsTouchingNeighboursOfThreeOrMore) {
  const TWeldParams params;
  const auto select = [&](const std::vector<TPiece>& pieces) {
    return weld::selectLapPieces(weld::heapFrame({}, params), weld::TPieces(pieces.begin(), pieces.end()));
  };
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
    TPiece second = piece(row.secondStartX, row.secondStartX + 99, row.secondY);
    second.k = static_cast<float>(std::tan(row.secondAngleDeg * CV_PI / 180.0));
    const auto pair = select({piece(0, 99, 50), second, piece(300, 560, 200)});
    // Joined: the two that are left, in order. Not joined: the longest one first.
    EXPECT_EQ(pair.value().first.startPt.x, row.isJoined ? 0 : 300)
        << row.secondStartX << " " << row.secondY << " " << row.secondAngleDeg;
  }
  const auto stopped = select({piece(0, 99, 50), piece(100, 199, 50), piece(200, 299, 50)});
  EXPECT_EQ(stopped.value().second.pts.size(), 100U) << "joining stops at two pieces";
}

// On a dark image no corner moves: it stays at the end of its piece.
struct TLap {
  TPiece left = piece(20, 300, 200);
  TPiece right = piece(310, 600, 260);
  TStripePts stripePts{};

  ending::TEnding end(ending::TSeenChecks& seen, const TWeldParams& params = TLapSettings().params()) const {
    const auto all = joined({left.pts.begin(), left.pts.end()}, {right.pts.begin(), right.pts.end()});
    return ending::of(painted::dark(), params, seen, [&](const weld::TFrame& frame) {
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

TEST(ComputeLapSeam, ofATieTheRightCornerIsTheUpperAndTheLowerOne) {
  const TLap level{piece(20, 300, 200), piece(310, 600, 200)};
  for (const TWeldPosType pos : {TWeldPosType::upper, TWeldPosType::lower}) {
    ending::TSeenChecks seen;
    EXPECT_EQ(level.end(seen, ending::with(TLapSettings(), &TLapSettings::minStepPx, -1.0).params(pos)).pos,
              cv::Point2f(310, 200));
  }
}

}  // namespace
