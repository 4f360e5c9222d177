#include "detectors/plate.h"

#include "detectors/piece_end.h"
#include "geometry/piece_fit.h"
#include "geometry/segmentation.h"
#include "support/painted_frame.h"
#include "zelFunctions.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

namespace {

using TPoints = std::vector<cv::Point2f>;

TStripePiece piece(int fromX, int toX, double y, double k = 0.0) {
  return weld::fitPiece(painted::linePoints(fromX, toX + 1, y, k), weld::kPieceFitTolPx);
}

TWeldLineRes detect(const cv::Mat& image, const TWeldParams& params = {}, const TWeldLineRes& prevRes = {}) {
  weld::TPlateDetector object;
  object.setWeldParameters(params);
  return weld::detectPlateSeam(object, image, prevRes, cv::Mat());
}

// A frame with one level piece per row of the table, 200 columns each.
cv::Mat piecesAt(const std::vector<double>& rows) {
  cv::Mat image = painted::dark();
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const int fromX = 10 + 205 * static_cast<int>(i);
    painted::paintPiece(image, fromX, fromX + 200, rows[i]);
  }
  return image;
}

TEST(ComputePlateSeam, eachTestHoldsAtItsBorder) {
  const struct {
    const char* name;
    void (*change)(TStripePiece&, TWeldParams&);
    bool isFound;
  } rows[] = {
      {"plain plate", [](TStripePiece&, TWeldParams&) {}, true},
      {"not fitted", [](TStripePiece& p, TWeldParams&) { p.isFitted = false; }, false},
      {"9 inliers", [](TStripePiece& p, TWeldParams&) { p.fitPts.resize(9); }, false},
      {"10 inliers", [](TStripePiece& p, TWeldParams&) { p.fitPts.resize(10); }, true},
      {"width equal to the minimum", [](TStripePiece&, TWeldParams& params) { params.dPara9 = 300.0; }, true},
      {"width under the minimum", [](TStripePiece&, TWeldParams& params) { params.dPara9 = 300.001; }, false},
      {"outside the middle, too few points for a refit",
       [](TStripePiece& p, TWeldParams&) {
         p = piece(100, 400, 30);
         p.fitPts.resize(10);  // nine of them at the start
       },
       false},
      {"outside the middle, enough for it",
       [](TStripePiece& p, TWeldParams&) {
         p = piece(100, 400, 30);
         p.fitPts.resize(11);
       },
       true},
  };
  for (const auto& row : rows) {
    TStripePiece plate = piece(100, 400, 240);
    TWeldParams params;
    row.change(plate, params);
    const TWeldLineRes result = weld::computePlateSeam(plate, painted::dark(), params);
    EXPECT_EQ(result.isFound, row.isFound) << row.name;
    EXPECT_EQ(result.stripePts.size(), row.isFound ? plate.fitPts.size() : 0U) << row.name;
  }
}

TEST(ComputePlateSeam, positionChoosesTheColumnAndTheLineRunsThroughBothEnds) {
  const TStripePiece plate = piece(100, 420, 200, 0.125);
  const struct {
    int pos;
    float x;
  } rows[] = {{0, 260}, {1, 100}, {2, 420}, {3, 260}, {-1, 260}};
  for (const auto& row : rows) {
    TWeldParams params;
    params.weldPosType = static_cast<TWeldPosType>(row.pos);
    const TWeldLineRes result = weld::computePlateSeam(plate, painted::dark(), params);
    EXPECT_EQ(result.weldPos, cv::Point2f(row.x, 220.0F)) << row.pos;
    EXPECT_EQ(result.auxVal1, 0.125);
    EXPECT_EQ(result.auxVal2, 187.5);
    EXPECT_EQ(result.auxVal3, result.auxVal1);
    EXPECT_EQ(result.auxVal4, result.auxVal2);
    EXPECT_EQ(result.trackVal, 0.0);
  }
}

TEST(ComputePlateSeam, endsInOneColumnDivideByTheSmallestStep) {
  TStripePiece plate = piece(300, 340, 240);
  plate.startPt = {320, 300};
  plate.endPt = {320, 200};
  const TWeldLineRes result = weld::computePlateSeam(plate, painted::dark(), {});
  ASSERT_TRUE(result.isFound);
  EXPECT_EQ(result.auxVal1, static_cast<double>(100.0F / 1e-5F));
}

// Deliberate: the marker of an end without support enters the seam like any other corner.
TEST(ComputePlateSeam, markerOfAnEndWithoutSupportIsNotLookedAt) {
  TStripePiece plate = piece(100, 400, 30);
  for (std::size_t i = 0; i < plate.fitPts.size(); ++i) plate.fitPts[i].y += i < 150 ? 0.0F : 80.0F;
  const TWeldLineRes result = weld::computePlateSeam(plate, painted::dark(), {});
  ASSERT_TRUE(result.isFound);
  EXPECT_EQ(result.weldPos, cv::Point2f((100 - 1) / 2.0F, (30 - 1) / 2.0F));
}

TEST(DetectPlateSeam, highestPieceWinsAndTheFirstOfEquallyHighOnes) {
  const struct {
    const char* name;
    std::vector<double> rows;
    float seamX;
  } rows[] = {
      {"middle one", {300, 200, 300}, 314.5F},
      {"last one", {300, 250, 200}, 519.5F},
      {"first of two equal ones", {200, 300, 200}, 109.5F},
  };
  for (const auto& row : rows) {
    const TWeldLineRes result = detect(piecesAt(row.rows));
    ASSERT_TRUE(result.isFound) << row.name;
    EXPECT_NEAR(result.weldPos.x, row.seamX, 2.0) << row.name;
    EXPECT_NEAR(result.weldPos.y, 200.0, 1.0) << row.name;
  }
}

TEST(DetectPlateSeam, angleAndLengthMustLieStrictlyInside) {
  const cv::Mat image = piecesAt({300, 200, 300});
  const struct {
    const char* name;
    void (*change)(TWeldParams&);
    bool isFound;
  } rows[] = {
      {"defaults", [](TWeldParams&) {}, true},
      {"angle equal to the lower bound", [](TWeldParams& p) { p.angleRange0Min = 0.0; }, false},
      {"angle equal to the upper bound", [](TWeldParams& p) { p.angleRange0Max = 0.0; }, false},
      {"bounds the wrong way round",
       [](TWeldParams& p) {
         p.angleRange0Min = 10.0;
         p.angleRange0Max = -10.0;
       },
       false},
      {"longer than every piece", [](TWeldParams& p) { p.dPara6 = 205.0; }, false},
      {"shorter than every piece", [](TWeldParams& p) { p.dPara6 = 185.0; }, true},
      {"narrower than the width asked for", [](TWeldParams& p) { p.dPara9 = 260.0; }, false},
  };
  for (const auto& row : rows) {
    TWeldParams params;
    row.change(params);
    EXPECT_EQ(detect(image, params).isFound, row.isFound) << row.name;
  }
}

TEST(DetectPlateSeam, lengthMustExceedTheMinimum) {
  const TPoints stripe = painted::linePoints(10, 210, 240.0);
  const std::vector<TStripePiece> pieces = weld::segmentStripe(stripe, weld::kPlateMergeLimits);
  ASSERT_EQ(pieces.size(), 1U);
  const double length = weld::pieceLength(pieces[0]);
  const cv::Mat image = piecesAt({240});
  TWeldParams params;
  params.dPara6 = length;
  EXPECT_FALSE(detect(image, params).isFound);
  params.dPara6 = std::nextafter(length, 0.0);
  EXPECT_TRUE(detect(image, params).isFound);
}

TEST(DetectPlateSeam, tracksWithinFortyRows) {
  const cv::Mat image = piecesAt({240});
  TWeldLineRes prevRes;
  prevRes.isFound = true;
  for (const auto& [offset, isFound] : {std::pair{28.0, true}, {50.0, false}, {-28.0, true}, {-50.0, false}}) {
    prevRes.stripePts = painted::linePoints(10, 205, 240.0 + offset);
    EXPECT_EQ(detect(image, {}, prevRes).isFound, isFound) << offset;
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
  void run(const cv::Mat& image, int frames) {
    for (int i = 0; i < frames; ++i) weld::detectPlateSeam(object, image, {}, cv::Mat());
  }

  weld::TPlateDetector object;
  std::vector<std::string> messages;
  bool isOn = true;
  const cv::Mat plate = piecesAt({300, 200, 300});
  const cv::Mat blank = painted::dark();
};

TEST_F(PlateInfo, oneMessageAfterEveryTwentyFirstSuccessfulFrame) {
  run(plate, 20);
  EXPECT_TRUE(messages.empty());
  run(plate, 1);
  EXPECT_EQ(messages.size(), 1U);
  run(plate, 20);
  EXPECT_EQ(messages.size(), 1U);
  run(plate, 1);
  EXPECT_EQ(messages.size(), 2U);
}

TEST_F(PlateInfo, failedFramesAndASwitchedOffMessageDoNotCount) {
  run(plate, 20);
  run(blank, 5);
  isOn = false;
  run(plate, 5);
  EXPECT_EQ(object.plateInfoFrameCounter, 20);
  isOn = true;
  run(plate, 1);
  EXPECT_EQ(messages.size(), 1U);
  EXPECT_EQ(object.plateInfoFrameCounter, 0);
}

TEST_F(PlateInfo, messageNamesWidthAndAngleInGbk) {
  cv::Mat rising = painted::dark();
  painted::paintPiece(rising, 20, 420, 260.0, -0.1);
  run(rising, 21);
  ASSERT_EQ(messages.size(), 1U);
  const std::string head = "\xBA\xB8\xB7\xEC\xBF\xED\xA3\xBA";
  const std::string middle = "\xCF\xF1\xCB\xD8\xA3\xAC\xD6\xB1\xCF\xDF\xD0\xB1\xC2\xCA\xA3\xBA";
  const std::string tail = "\xA1\xE3";
  const std::string& text = messages[0];
  ASSERT_EQ(text.substr(0, head.size()), head);
  const std::size_t at = text.find(middle);
  ASSERT_NE(at, std::string::npos);
  EXPECT_EQ(text.substr(text.size() - tail.size()), tail);
  EXPECT_GT(std::stod(text.substr(head.size())), 2.0);
  EXPECT_NEAR(std::stod(text.substr(at + middle.size())), std::atan(0.1) * 180.0 / CV_PI, 0.2);
}

}  // namespace
