#include "detectors/plate.h"

#include "detectors/piece_end.h"
#include "ending.h"
#include "geometry/segmentation.h"
#include "zelFunctions.h"

#include <cmath>
#include <cstdint>
#include <utility>

namespace {

using ending::piece;
using ending::TStripePts;
using ending::with;
using painted::bentPoints;
using painted::joined;
using painted::linePoints;
using TSettings = TPlateSettings;

// A level piece per row, 200 columns each.
TStripePts piecesAt(const std::vector<double>& rows) {
  TStripePts points;
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const int fromX = 10 + 205 * static_cast<int>(i);
    points = joined(points, linePoints(fromX, fromX + 200, rows[i]));
  }
  return points;
}

ending::TEnding compute(const weld::TPiece& plate, const TWeldParams& params, ending::TSeenChecks& seen) {
  return ending::of(painted::dark(), params, seen,
                    [&](const weld::TFrame& frame) { return weld::computePlateSeam(frame, plate); });
}

void expectEndsOfStripes(ending::TSeenChecks& seen) {
  const TSettings usual;
  const auto angles = [&](double min, double max) {
    return with(usual, &TSettings::plateAngleDeg, TAngleRange{min, max});
  };
  const TStripePts level = piecesAt({240});
  const TWeldParams any;
  const auto pieces = weld::segmentStripe(weld::heapFrame(painted::dark(), any), level, weld::kPlateMergeLimits);
  ASSERT_EQ(pieces.size(), 1U);
  const double length = weld::pieceLength(pieces[0]);
  TStripePts teeth;
  for (int x = 100; x < 180; x += 16) teeth = joined(teeth, bentPoints(x, x + 8, x + 16, 240.0, 1.5, -1.5));
  const struct {
    const char* name;
    TStripePts points;
    TSettings settings;
    const char* reason;
    float seamX = 0.0F;
  } rows[] = {
      {"no points", {}, usual, "too few stripe points"},
      {"teeth", teeth, usual, "too few straight pieces"},
      {"angle on the lower bound", level, angles(0, 10), "angle of the piece too small"},
      {"angle on the upper bound", level, angles(-10, 0), "angle of the piece too large"},
      {"bounds the wrong way round", level, angles(10, -10), "angle of the piece too small"},
      {"the longer piece decides", joined(linePoints(20, 400, 400.0, -0.5), linePoints(420, 460, 100.0)), usual,
       "angle of the piece too small"},
      {"length at the minimum", level, with(usual, &TSettings::minPiecePx, length), "piece too short"},
      {"above it", level, with(usual, &TSettings::minPiecePx, std::nextafter(length, 0.0)), "found", 109.5F},
      {"row 9999", piecesAt({9999}), usual, "piece too low in the image"},
      {"row 9998", piecesAt({9998}), usual, "found", 109.5F},
      {"the highest", piecesAt({300, 200, 300}), usual, "found", 314.5F},
      {"the last one", piecesAt({300, 250, 200}), usual, "found", 519.5F},
      {"of equals the first", piecesAt({200, 300, 200}), usual, "found", 109.5F},
  };
  for (const auto& row : rows) {
    const auto end = ending::of(weld::findPlate, row.points, row.settings.params(), seen);
    EXPECT_EQ(end.reason, row.reason) << row.name;
    EXPECT_NEAR(end.pos.x, row.seamX, 2.0) << row.name;
  }
}

void expectEndsOfPieces(ending::TSeenChecks& seen) {
  const auto withInliers = [](std::size_t count, double y) {
    weld::TPiece plate = piece(100, 400, y);
    plate.fitPts.resize(count);
    return plate;
  };
  weld::TPiece unfitted = piece(100, 400, 240);
  unfitted.isFitted = false;
  const struct {
    const char* name;
    weld::TPiece plate;
    double minWidthPx;
    const char* reason;
  } rows[] = {
      {"not fitted", unfitted, 200.0, "no line through a piece of the stripe"},
      {"9 inliers", withInliers(9, 240), 200.0, "no line through a piece of the stripe"},
      {"10 inliers", withInliers(10, 240), 200.0, "found"},
      {"width at the minimum", piece(100, 400, 240), 300.0, "found"},
      {"width under it", piece(100, 400, 240), 300.001, "plate too narrow"},
      {"outside the middle, nine left for a refit of the start", withInliers(10, 30), 200.0,
       "no line through the points near the end of a piece"},
      {"outside the middle, ten left", withInliers(11, 30), 200.0, "found"},
  };
  for (const auto& row : rows) {
    const auto end = compute(row.plate, with(TSettings(), &TSettings::minWidthPx, row.minWidthPx).params(), seen);
    EXPECT_EQ(end.reason, row.reason) << row.name;
    EXPECT_EQ(end.seam.stripePts.size(), end.isFound ? row.plate.fitPts.size() : 0U) << row.name;
  }
}

TEST(FindPlate, endsWithItsSeamOrItsReason) {
  ending::TSeenChecks seen;
  expectEndsOfStripes(seen);
  expectEndsOfPieces(seen);
  seen.expectEachStoppedARow();
}

TEST(ComputePlateSeam, uprightPlatesAndEndsWithoutSupportGiveFigures) {
  ending::TSeenChecks seen;
  weld::TPiece upright = piece(300, 340, 240);
  upright.startPt = {320, 300};
  upright.endPt = {320, 200};
  const weld::TSeam steep = compute(upright, {}, seen).seam;
  EXPECT_EQ(steep.auxVal1, static_cast<double>(100.0F / 1e-5F)) << "smallest divisor";
  EXPECT_TRUE(weld::havePlateEndsSupport(steep));
  // Deliberate: the marker of an end without support enters the seam like any other corner.
  weld::TPiece faded = piece(100, 400, 30);
  for (std::size_t i = 150; i < faded.fitPts.size(); ++i) faded.fitPts[i].y += 80.0F;
  const auto end = compute(faded, {}, seen);
  EXPECT_EQ(end.pos, cv::Point2f((100 - 1) / 2.0F, (30 - 1) / 2.0F));
  EXPECT_FALSE(weld::havePlateEndsSupport(end.seam));
}

// In the GBK code page, after every 21st successful frame while it is switched on.
TEST(ShowPlateInfo, messageNamesWidthAndAngle) {
  bool isOn = true;
  std::vector<std::string> messages;
  zel::setMessageSink([&](const std::string& text, std::uint32_t) { messages.push_back(text); });
  zel::setParamBoolSource([&](const std::string& name) { return isOn && name == "NeedPrintPlateWeldInfo"; });
  const struct {
    int frames;
    bool isFound, isOn;
    std::size_t messages;  // so far
  } rows[] = {{20, true, true, 0}, {5, false, true, 0}, {5, true, false, 0},
              {1, true, true, 1},  {20, true, true, 1}, {1, true, true, 2}};
  weld::TSeam plate(weld::heapMemory());
  plate.auxVal1 = -0.1;
  int frames = 0;
  for (const auto& row : rows) {
    plate.isFound = row.isFound;
    isOn = row.isOn;
    for (int i = 0; i < row.frames; ++i) weld::showPlateInfo(frames, plate, 6.0);
    EXPECT_EQ(messages.size(), row.messages);
  }
  EXPECT_EQ(messages[0],
            "\xBA\xB8\xB7\xEC\xBF\xED\xA3\xBA"
            "6.00\xCF\xF1\xCB\xD8\xA3\xAC\xD6\xB1\xCF\xDF\xD0\xB1\xC2\xCA\xA3\xBA"
            "5.71\xA1\xE3");
  zel::setMessageSink({});
  zel::setParamBoolSource({});
}

}  // namespace
