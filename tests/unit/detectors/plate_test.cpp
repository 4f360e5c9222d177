#include "detectors/plate.h"

#include "detectors/piece_end.h"
#include "geometry/segmentation.h"
#include "run_detector.h"
#include "trace/trace_conclusion.h"
#include "zelFunctions.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace {

using run_detector::piece;

TWeldLineRes detect(const cv::Mat& image, const TWeldParams& params = {}, const TWeldLineRes& prevRes = {}) {
  return run_detector::run(weld::detectPlateSeam, image, params, prevRes);
}

TWeldLineRes compute(const TStripePiece& plate, const TWeldParams& params = {}) {
  return weld::computePlateSeam(plate, painted::dark(), params);
}

TWeldParams with(double TWeldParams::*field, double value) {
  TWeldParams params;
  params.*field = value;
  return params;
}

// A frame with one level piece per row of the table, 200 columns each.
cv::Mat piecesAt(const std::vector<double>& rows) {
  cv::Mat image = painted::dark();
  int fromX = 10;
  for (const double row : rows) {
    painted::paintPiece(image, fromX, fromX + 200, row);
    fromX += 205;
  }
  return image;
}

TEST(ComputePlateSeam, eachTestHoldsAtItsBorder) {
  const auto withInliers = [](std::size_t count, double y) {
    TStripePiece plate = piece(100, 400, y);
    plate.fitPts.resize(count);
    return plate;
  };
  TStripePiece unfitted = piece(100, 400, 240);
  unfitted.isFitted = false;
  const struct {
    const char* name;
    TStripePiece plate;
    double minWidthPx;
    bool isFound;
  } rows[] = {
      {"not fitted", unfitted, 200.0, false},
      {"9 inliers", withInliers(9, 240), 200.0, false},
      {"10 inliers", withInliers(10, 240), 200.0, true},
      {"width equal to the minimum", piece(100, 400, 240), 300.0, true},
      {"width under the minimum", piece(100, 400, 240), 300.001, false},
      {"outside the middle, nine left for a refit of the start", withInliers(10, 30), 200.0, false},
      {"outside the middle, ten left", withInliers(11, 30), 200.0, true},
  };
  for (const auto& row : rows) {
    const TWeldLineRes result = compute(row.plate, with(&TWeldParams::dPara9, row.minWidthPx));
    EXPECT_EQ(result.isFound, row.isFound) << row.name;
    EXPECT_EQ(result.stripePts.size(), row.isFound ? row.plate.fitPts.size() : 0U) << row.name;
  }
}

// Ends that no image has been found for.
TEST(ComputePlateSeam, pieceThatCannotBeFittedAgainIsToldInTheTrace) {
  TStripePiece unfitted = piece(100, 400, 240);
  unfitted.isFitted = false;
  TStripePiece sparse = piece(100, 400, 240);
  sparse.fitPts.resize(9);
  TStripePiece sparseEnd = piece(100, 400, 30);
  sparseEnd.fitPts.resize(10);
  const struct {
    TStripePiece plate;
    TWeldOutcome outcome;
    const char* sentence;
  } rows[] = {
      {unfitted, TWeldOutcome::pieceNotFitted, "no line through a piece of the stripe"},
      {sparse, TWeldOutcome::pieceNotFitted,
       "only 9 points on the line of the piece, at least 10 needed, a fixed limit"},
      {sparseEnd, TWeldOutcome::endNotRefitted, "no line through the points near the end of a piece"},
  };
  for (const auto& row : rows) {
    TFrameTrace trace;
    weld::TTrace(trace).beginAttempt(TSearchPath::first, TStripeExtraction::edgePairs);
    const TWeldLineRes result = weld::computePlateSeam(row.plate, painted::dark(), {}, weld::TTrace(trace));
    weld::concludeAttempts(trace, result, TWeldType::plate);
    EXPECT_EQ(trace.attempts.front().outcome, row.outcome) << row.sentence;
    EXPECT_EQ(trace.attempts.front().sentence, row.sentence);
  }
}

TEST(ComputePlateSeam, positionChoosesTheColumnAndTheLineRunsThroughBothEnds) {
  for (const auto& [pos, x] : {std::pair{0, 260.0F}, {1, 100.0F}, {2, 420.0F}, {3, 260.0F}, {-1, 260.0F}}) {
    TWeldParams params;
    params.weldPosType = static_cast<TWeldPosType>(pos);
    const TWeldLineRes result = compute(piece(100, 420, 200, 0.125), params);
    EXPECT_EQ(result.weldPos, cv::Point2f(x, 220.0F)) << pos;
    for (const double k : {result.auxVal1, result.auxVal3}) EXPECT_EQ(k, 0.125);
    for (const double b : {result.auxVal2, result.auxVal4}) EXPECT_EQ(b, 187.5);
  }
  TStripePiece upright = piece(300, 340, 240);
  upright.startPt = {320, 300};
  upright.endPt = {320, 200};
  EXPECT_EQ(compute(upright).auxVal1, static_cast<double>(100.0F / 1e-5F)) << "the smallest step divides";
}

// Deliberate: the marker of an end without support enters the seam like any other corner.
TEST(ComputePlateSeam, markerOfAnEndWithoutSupportIsNotLookedAt) {
  TStripePiece plate = piece(100, 400, 30);
  for (std::size_t i = 150; i < plate.fitPts.size(); ++i) plate.fitPts[i].y += 80.0F;
  const TWeldLineRes result = compute(plate);
  ASSERT_TRUE(result.isFound);
  EXPECT_EQ(result.weldPos, cv::Point2f((100 - 1) / 2.0F, (30 - 1) / 2.0F));
}

TEST(DetectPlateSeam, highestPieceWinsAndTheFirstOfEquallyHighOnes) {
  const std::pair<std::vector<double>, float> rows[] = {
      {{300, 200, 300}, 314.5F}, {{300, 250, 200}, 519.5F}, {{200, 300, 200}, 109.5F}};
  for (const auto& [pieceRows, seamX] : rows) {
    const TWeldLineRes result = detect(piecesAt(pieceRows));
    ASSERT_TRUE(result.isFound) << seamX;
    EXPECT_NEAR(result.weldPos.x, seamX, 2.0);
    EXPECT_NEAR(result.weldPos.y, 200.0, 1.0);
  }
}

TEST(DetectPlateSeam, angleAndLengthMustLieStrictlyInside) {
  const auto pieces = weld::segmentStripe(painted::linePoints(10, 210, 240.0), weld::kPlateMergeLimits);
  ASSERT_EQ(pieces.size(), 1U);
  const double length = weld::pieceLength(pieces[0]);
  TWeldParams reversed = with(&TWeldParams::angleRange0Min, 10.0);
  reversed.angleRange0Max = -10.0;
  const struct {
    const char* name;
    TWeldParams params;
    bool isFound;
  } rows[] = {
      {"defaults", {}, true},
      {"angle equal to the lower bound", with(&TWeldParams::angleRange0Min, 0.0), false},
      {"angle equal to the upper bound", with(&TWeldParams::angleRange0Max, 0.0), false},
      {"bounds the wrong way round", reversed, false},
      {"length equal to the minimum", with(&TWeldParams::dPara6, length), false},
      {"length above the minimum", with(&TWeldParams::dPara6, std::nextafter(length, 0.0)), true},
  };
  for (const auto& row : rows) EXPECT_EQ(detect(piecesAt({240}), row.params).isFound, row.isFound) << row.name;
}

TEST(DetectPlateSeam, tracksWithinFortyRows) {
  for (const auto& [offset, isFound] : {std::pair{28.0, true}, {50.0, false}, {-28.0, true}, {-50.0, false}}) {
    const TWeldLineRes prevRes = run_detector::foundWith(painted::linePoints(10, 205, 240.0 + offset));
    EXPECT_EQ(detect(piecesAt({240}), {}, prevRes).isFound, isFound) << offset;
  }
}

class PlateInfo : public testing::Test {
protected:
  void SetUp() override {
    zel::setMessageSink([this](const std::string& text, std::uint32_t) { messages.push_back(text); });
    zel::setParamBoolSource([this](const std::string& name) { return isOn && name == "NeedPrintPlateWeldInfo"; });
  }
  void TearDown() override {
    zel::setMessageSink({});
    zel::setParamBoolSource({});
  }
  std::size_t messagesAfter(const cv::Mat& image, int frames) {
    for (int i = 0; i < frames; ++i) {
      const TWeldLineRes result = weld::detectPlateSeam(object, image, {}, cv::Mat());
      weld::showPlateInfo(object, result, object.stripe.widthPx);
    }
    return messages.size();
  }

  weld::TPlateDetector object;
  std::vector<std::string> messages;
  bool isOn = true;
};

TEST_F(PlateInfo, oneMessageAfterEveryTwentyFirstSuccessfulFrameWhileSwitchedOn) {
  const cv::Mat plate = piecesAt({300, 200, 300});
  EXPECT_EQ(messagesAfter(plate, 20), 0U);
  EXPECT_EQ(messagesAfter(painted::dark(), 5), 0U);
  isOn = false;
  EXPECT_EQ(messagesAfter(plate, 5), 0U);
  isOn = true;
  EXPECT_EQ(messagesAfter(plate, 1), 1U);
  EXPECT_EQ(messagesAfter(plate, 20), 1U);
  EXPECT_EQ(messagesAfter(plate, 1), 2U);
}

TEST_F(PlateInfo, messageNamesWidthAndAngleInGbk) {
  cv::Mat rising = painted::dark();
  painted::paintPiece(rising, 20, 420, 260.0, -0.1);
  ASSERT_EQ(messagesAfter(rising, 21), 1U);
  const std::string head = "\xBA\xB8\xB7\xEC\xBF\xED\xA3\xBA";
  const std::string middle = "\xCF\xF1\xCB\xD8\xA3\xAC\xD6\xB1\xCF\xDF\xD0\xB1\xC2\xCA\xA3\xBA";
  const std::string tail = "\xA1\xE3";
  const std::string& text = messages[0];
  const std::size_t at = text.find(middle);
  ASSERT_EQ(text.rfind(head, 0), 0U);
  ASSERT_NE(at, std::string::npos);
  EXPECT_EQ(text.substr(text.size() - tail.size()), tail);
  EXPECT_GT(std::stod(text.substr(head.size())), 2.0);
  EXPECT_NEAR(std::stod(text.substr(at + middle.size())), std::atan(0.1) * 180.0 / CV_PI, 0.2);
}

}  // namespace
