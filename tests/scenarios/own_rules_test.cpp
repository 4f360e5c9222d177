// What the default tracker finds and refuses where the plain rules do otherwise.
#include "support/painted_frame.h"
#include "zelWeldDetect.h"

#include <gtest/gtest.h>

#include <string>

namespace {

struct TEnd {
  TTrackedSeam seam;
  std::string sentence;
};

TEnd trackOnce(const cv::Mat& image, const TWeldParams& params, TTrackerOptions options = {}) {
  options.keepTrace = true;
  TWeldTracker tracker(params, options);
  TTrackedSeam seam = tracker.track(image);
  return {seam, tracker.lastTrace().sentence};
}

// 0..1, the same for every run.
double grain(int x, int y) {
  unsigned v = static_cast<unsigned>(x) * 2654435761U + static_cast<unsigned>(y) * 40503U;
  v = (v ^ (v >> 15)) * 2246822519U;
  return static_cast<double>((v ^ (v >> 13)) & 0xFFFFU) / 65535.0;
}

struct TTightJoint {
  const char* name;
  std::vector<int> breaks;  // columns
  double depth;             // of the light that a break swallows, 0..1
  bool hasLine;             // dark, through each break, in the light beside the stripe
  TSeamState state;
  const char* sentence;
};

// A speckled stripe of 5 rows over 280 columns in room light.
cv::Mat speckled(const TTightJoint& joint) {
  cv::Mat image(300, 500, CV_8UC1);
  for (int y = 0; y < image.rows; ++y) {
    for (int x = 0; x < image.cols; ++x)
      image.at<uchar>(y, x) = cv::saturate_cast<uchar>(38.0 + 4.0 * grain(x, y));
  }
  for (const int column : joint.breaks) {
    for (int y = 0; joint.hasLine && y < image.rows; ++y) image(cv::Rect(column + (y - 150) / 3, y, 2, 1)) -= 5;
  }
  for (int x = 100; x < 380; ++x) {
    const bool isDark =
        std::any_of(joint.breaks.begin(), joint.breaks.end(), [x](int b) { return x == b || x == b + 1; });
    const int top = 148 + (joint.hasLine && x > joint.breaks.front() ? 1 : 0);
    for (int y = top; y < top + 5; ++y) {
      const double light = (90.0 + 160.0 * grain(x / 2, y / 2)) * (isDark ? 1.0 - joint.depth : 1.0);
      image.at<uchar>(y, x) = cv::saturate_cast<uchar>(std::max(light, 38.0));
    }
  }
  return image;
}

TEST(OwnRules, findATightButtByItsDarkBreakOrSayWhyNot) {
  TGapSettings settings;
  settings.minGapPx = 2.0;
  settings.lineTolerancePx = 3.0;
  const TTightJoint joints[] = {
      {"break and line", {240}, 0.6, true, TSeamState::found, "seam at"},
      {"speckle alone", {}, 0.0, false, TSeamState::lost, "score of the darkest break"},
      {"shallow break without a line", {240}, 0.6, false, TSeamState::lost, ""},
      {"two breaks", {180, 300}, 0.6, true, TSeamState::lost, "score over that of the next break"},
  };
  for (const TTightJoint& joint : joints) {
    const TEnd end = trackOnce(speckled(joint), settings.params());
    EXPECT_EQ(end.seam.state, joint.state) << joint.name << ": " << end.sentence;
    EXPECT_NE(end.sentence.find(joint.sentence), std::string::npos) << joint.name << ": " << end.sentence;
    if (joint.state != TSeamState::found) continue;
    EXPECT_NEAR(end.seam.weldPos.x, 240.5F, 1.5F);
    EXPECT_NEAR(end.seam.weldPos.y, 150.5F, 1.5F);
    EXPECT_NEAR(end.seam.measurement.gapPx, 3.0, 1.1);
    const float left = trackOnce(speckled(joint), settings.params(TWeldPosType::left)).seam.weldPos.x;
    const float right = trackOnce(speckled(joint), settings.params(TWeldPosType::right)).seam.weldPos.x;
    EXPECT_NEAR(left, end.seam.weldPos.x - 1.5F, 0.51F);
    EXPECT_NEAR(right, end.seam.weldPos.x + 1.5F, 0.51F);
  }
}

// Two breaks alike leave one frame unsure; the one that moves with the part is the seam.
TEST(OwnRules, aTightButtAmongDarkGrainsIsFoundOverFrames) {
  TGapSettings settings;
  settings.minGapPx = 2.0;
  settings.lineTolerancePx = 3.0;
  TWeldTracker tracker(settings.params());
  const int others[] = {170, 320, 140, 290, 190, 330, 150};
  TTrackedSeam seam;
  for (int i = 0; i < 7; ++i) {
    const int column = 236 + i;
    seam = tracker.track(speckled({"", {column, others[i]}, 0.6, true, TSeamState::lost, ""}));
    EXPECT_TRUE(i > 0 || seam.state == TSeamState::lost);
    if (seam.state != TSeamState::found) continue;
    EXPECT_NEAR(seam.weldPos.x, static_cast<float>(column) + 0.5F, 2.0F) << i;
  }
  EXPECT_EQ(seam.state, TSeamState::found);
}

// The break lies on the shorter of two pieces: of one plate, or of the flank of something else.
TEST(OwnRules, aTightButtOnAShortPieceOfAStraightStripeIsFoundOnceItRepeats) {
  TGapSettings settings;
  settings.minGapPx = 2.0;
  settings.lineTolerancePx = 3.0;
  for (const int offsetPx : {0, 40}) {
    SCOPED_TRACE(offsetPx);
    TTrackerOptions options;
    options.keepTrace = true;
    TWeldTracker tracker(settings.params(), options);
    TTrackedSeam seam;
    for (int i = 0; i < 2; ++i) {
      const cv::Mat whole = speckled({"", {160 + i}, 0.6, true, TSeamState::lost, ""});
      cv::Mat image = whole.clone();
      whole(cv::Rect(240, 0, 260, 250)).copyTo(image(cv::Rect(240, offsetPx, 260, 250)));
      image.colRange(232, 240).setTo(38);
      seam = tracker.track(image);
    }
    EXPECT_EQ(seam.state, offsetPx == 0 ? TSeamState::found : TSeamState::lost) << tracker.lastTrace().sentence;
    EXPECT_NEAR(seam.weldPos.x, offsetPx == 0 ? 161.5F : 0.0F, 1.5F);
  }
}

TEST(OwnRules, aGrooveIsNoButtGapAndABackingNoGroove) {
  const TWeldParams params = TGapSettings().params();
  EXPECT_EQ(trackOnce(painted::grooveFrame(), params, TTrackerOptions::exact()).seam.state, TSeamState::found);
  const TEnd groove = trackOnce(painted::grooveFrame(), params);
  EXPECT_EQ(groove.seam.state, TSeamState::lost);
  EXPECT_NE(groove.sentence.find("stripe beside the line"), std::string::npos) << groove.sentence;
  cv::Mat backed = painted::gapFrame();
  painted::paintPiece(backed, 303, 327, 270.0);
  EXPECT_EQ(trackOnce(backed, params).seam.state, TSeamState::found);
}

// The plain rules find a seam in each of these frames.
TEST(OwnRules, aSeamThatTheStripeDoesNotShowIsRefused) {
  cv::Mat cut = painted::dark();
  painted::paintPiece(cut, 0, 460, 220.0);
  painted::paintPiece(cut, 460, 640, 300.0);
  const struct {
    const char* name;
    cv::Mat image;
    TWeldParams params;
    const char* sentence;
  } rows[] = {
      {"plate cut off", cut, TPlateSettings().params(), "the plate runs out of the picture"},
      {"gap under a plate", painted::plateFrame(), TGapSettings().params(), "through which the stripe goes on"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(trackOnce(row.image, row.params, TTrackerOptions::exact()).seam.state, TSeamState::found)
        << row.name;
    const TEnd end = trackOnce(row.image, row.params);
    EXPECT_EQ(end.seam.state, TSeamState::lost) << row.name;
    EXPECT_NE(end.sentence.find(row.sentence), std::string::npos) << row.name << ": " << end.sentence;
  }
}

// Lost stretches as wide as the least gap are new in every frame, the gap is not.
TEST(OwnRules, aGapAmongLostStretchesCountsOnceItRepeats) {
  const auto withLost = [](int column) {
    cv::Mat image = painted::gapFrame();
    image.colRange(column, column + 14).setTo(0);
    return image;
  };
  TWeldTracker tracker(TGapSettings().params());
  EXPECT_EQ(tracker.track(withLost(100)).state, TSeamState::lost);
  EXPECT_EQ(tracker.track(withLost(450)).state, TSeamState::found);
}

TEST(OwnRules, scrapsOnALineAreNoSeam) {
  cv::Mat scraps = painted::dark();
  painted::paintPiece(scraps, 200, 235, 240.0);
  painted::paintPiece(scraps, 260, 295, 240.0);
  const TWeldParams params = TGapSettings().params();
  EXPECT_EQ(trackOnce(scraps, params, TTrackerOptions::exact()).seam.state, TSeamState::found);
  const TEnd end = trackOnce(scraps, params);
  EXPECT_EQ(end.seam.state, TSeamState::lost);
  EXPECT_NE(end.sentence.find("70 columns with a stripe centre"), std::string::npos) << end.sentence;
}

// Half of the stripe too dim for edge pairs: one poor frame must not make the poor half the measure of the next.
TEST(OwnRules, aStripeThatEdgePairsLoseGrowsBackAfterAPoorFrame) {
  cv::Mat whole = painted::gapFrame();
  cv::Mat dim = whole.clone();
  dim.colRange(420, 640) /= 7;
  cv::Mat poor = whole.clone();
  poor.colRange(420, 640).setTo(0);
  for (const TWeldParams& params : {TGapSettings().params(), TPresenceSettings().params()}) {
    TWeldTracker tracker(params);
    for (const cv::Mat& image : {whole, dim, poor, poor}) tracker.track(image);
    EXPECT_GT(tracker.track(dim).line.stripePts.size(), 550U) << static_cast<int>(params.weldType);
  }
}

TEST(OwnRules, aCornerIsWhereTheStripeBendsAndItsFlanksTouch) {
  const TWeldParams params = TCornerSettings().params();
  cv::Mat offset = painted::dark();  // the lines cross in the middle of the left piece
  painted::paintPiece(offset, 40, 300, 300.0, 0.02);
  painted::paintPiece(offset, 300, 600, 293.0, -0.25);
  EXPECT_EQ(trackOnce(offset, params, TTrackerOptions::exact()).seam.state, TSeamState::found);
  const TEnd end = trackOnce(offset, params);
  EXPECT_EQ(end.seam.state, TSeamState::lost);
  EXPECT_NE(end.sentence.find("bend of the stripe at the corner"), std::string::npos) << end.sentence;

  cv::Mat table = painted::dark();  // a longer line than the right flank, apart from the corner
  painted::paintPiece(table, 40, 320, 140.0, 0.5);
  painted::paintPiece(table, 320, 370, 280.0, -0.7);
  painted::paintPiece(table, 390, 630, 420.0, -0.3);
  EXPECT_NE(trackOnce(table, params, TTrackerOptions::exact()).seam.state, TSeamState::found);
  const TEnd corner = trackOnce(table, params);
  ASSERT_EQ(corner.seam.state, TSeamState::found) << corner.sentence;
  EXPECT_LT(cv::norm(corner.seam.weldPos - cv::Point2f(320.0F, 280.0F)), 2.0);
}

TEST(OwnRules, aPieceOfALapThatFadesOutBesideTheOtherEndsNextToIt) {
  cv::Mat image(300, 700, CV_8UC1, cv::Scalar(0));
  image(cv::Rect(100, 144, 201, 12)) = 255;
  image(cv::Rect(304, 194, 296, 12)) = 255;
  for (int x = 301; x < 325; ++x) {
    const int half = 6 - (x - 301) / 6;
    image(cv::Rect(x, 150 - half, 1, 2 * half)) = 255 - 7 * (x - 300);  // a blob that touches the left end
  }
  TWeldParams params;
  params.weldType = TWeldType::lap;
  const TTrackedSeam seam = trackOnce(image, params).seam;
  ASSERT_EQ(seam.state, TSeamState::found);
  EXPECT_NEAR(seam.weldPos.x, 302.0, 2.0);
}

// Flush with its table: the plate is the dim stretch of one straight stripe.
TEST(OwnRules, aFlushPlateEndsWhereTheLightChanges) {
  cv::Mat image = painted::dark();
  painted::paintPiece(image, 5, 635, 200.0, 0.02);
  cv::Mat oneEnd = image.clone();
  image.colRange(200, 420) /= 3;
  oneEnd.colRange(200, 640) /= 3;
  const TPlateSettings settings;
  for (const TWeldPosType pos : {TWeldPosType::left, TWeldPosType::right, TWeldPosType::centre}) {
    const double x = pos == TWeldPosType::left ? 199.5 : pos == TWeldPosType::right ? 419.5 : 309.5;
    TWeldTracker tracker(settings.params(pos));
    for (int i = 0; i < 3; ++i) {
      const TTrackedSeam seam = tracker.track(image);
      ASSERT_EQ(seam.state, TSeamState::found) << i;
      EXPECT_NEAR(seam.weldPos.x, x, 1.0) << i;
      EXPECT_NEAR(seam.measurement.widthPx, 220.0, 2.0) << i;
    }
  }
  const TEnd end = trackOnce(oneEnd, settings.params(TWeldPosType::left));
  EXPECT_EQ(end.seam.state, TSeamState::lost) << "the rest may as well be the table";
  EXPECT_NE(end.sentence.find("one end of the plate only"), std::string::npos) << end.sentence;
}

}  // namespace
