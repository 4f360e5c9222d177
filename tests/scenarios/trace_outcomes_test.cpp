// Every way in which a detector can end, provoked through a tracker, and the sentence that tells it.
#include "scenes/scene.h"
#include "support/detector_types.h"
#include "support/painted_frame.h"
#include "zelWeldDetect.h"

#include <gtest/gtest.h>

#include <functional>
#include <regex>
#include <set>
#include <string>
#include <vector>

namespace {

using painted::dark;
using painted::paintPiece;
using TOutcome = TWeldOutcome;
using TChange = std::function<void(TWeldParams&)>;

struct TPiece {
  int fromX;
  int toX;
  double y;
  double k = 0.0;
};

cv::Mat painting(const std::vector<TPiece>& pieces, cv::Mat image = dark()) {
  for (const TPiece& p : pieces) paintPiece(image, p.fromX, p.toX, p.y, p.k);
  return image;
}

// The corner of the frames below is at (320, 280), its flanks at 26.6 degrees.
const TPiece kLeftFlank{40, 320, 140.0, 0.5};
const TPiece kRightFlank{320, 600, 280.0, -0.5};

cv::Mat brokenCorner() {
  cv::Mat image = painted::cornerFrame();
  image.colRange(310, 330).setTo(0);
  return image;
}

// Twelve columns, each as bright over a height of its own.
cv::Mat unlikeColumns() {
  cv::Mat image = dark();
  for (int i = 0; i < 12; ++i) image(cv::Rect(100 + i, 200, 1, 6 + 7 * i)).setTo(220);
  return image;
}

// A stripe that ends in the dark only at its far right: its middle part lies lower, and its left part fades out.
cv::Mat notch() {
  cv::Mat image = painting({{20, 250, 210.0}, {250, 500, 280.0}, {500, 620, 210.0}});
  for (int x = 170; x < 250; ++x) {
    cv::Mat column = image.col(x);
    column *= (255.0 - 2.0 * (x - 170)) / 255.0;
  }
  return image;
}

template <typename T>
TChange set(T TWeldParams::*field, T value) {
  return [=](TWeldParams& params) { params.*field = value; };
}

template <typename... TChanges>
TChange all(TChanges... changes) {
  return [=](TWeldParams& params) { (changes(params), ...); };
}

const TChange kUnchanged = [](TWeldParams&) {};
const TChange kGapsAllowed = all(set(&TWeldParams::nPara1, 1000), set(&TWeldParams::nPara5, 1000));
const TChange kNoGap = all(kGapsAllowed, set(&TWeldParams::haveGap, false));

struct TRow {
  const char* reason;
  const char* sentence;  // of the attempt, as a regular expression
  TWeldType type;
  std::vector<cv::Mat> frames;  // in this order; the outcome is that of the last one
  TChange change = kUnchanged;  // before the last frame
  std::size_t attempt = 0;
};

std::vector<TRow> rowsOfStripeAndGap() {
  const TWeldType gap = TWeldType::buttGap;
  const TWeldType presence = TWeldType::stripePresence;
  const cv::Mat sloped = painting({{20, 300, 100.0, 0.25}, {340, 620, 180.0, 0.25}});
  const cv::Mat bordering = painting({{0, 1, 240.0}, {41, 620, 240.0}});
  return {
      {"found", R"(seam at x 314\.5, y 240\.0)", gap, {painted::gapFrame()}},
      {"no search region: the previous stripe spans too few columns",
       "no search region: the previous stripe spans too few columns",
       gap,
       {painting({{250, 320, 240.0}, {340, 390, 240.0}}), painted::gapFrame()}},
      {"too few columns with an edge pair",
       "no columns with an edge pair, at least 10 needed, a fixed limit",
       gap,
       {dark()}},
      {"too few columns of the usual stripe width",
       "only 2 columns of the usual stripe width, at least 10 needed, a fixed limit",
       gap,
       {unlikeColumns()}},
      {"too few stripe points",
       "no stripe points, at least 10 needed, a fixed limit",
       gap,
       {painting({{100, 120, 240.0}})}},
      {"no line through the stripe points",
       "no line through the stripe points",
       gap,
       {sloped},
       set(&TWeldParams::angleRange4, TAngleRange{-10.0, 10.0})},
      {"too few stripe points on the line",
       R"(share of stripe points on the line 0\.\d+ is below the minimum 0\.9, set by [\w.]+ \(dPara3\))",
       gap,
       {painting({{20, 300, 240.0}, {340, 620, 300.0}})},
       set(&TWeldParams::dPara3, 0.9)},
      {"fewer than two stripe points on the line",
       "fewer than two stripe points on the line",
       gap,
       {painted::gapFrame(), painted::gapFrame()},
       set(&TWeldParams::dPara2, 0.0)},
      {"gap too narrow",
       "gap 9 px is below the minimum gap 10 px, set by [\\w.]+ \\(dPara8\\)",
       gap,
       {painting({{20, 300, 240.0}, {308, 620, 240.0}})}},
      {"seam in the first row or column of the image or outside",
       "seam column 0 px does not exceed the minimum 0 px, a fixed limit",
       gap,
       {bordering},
       set(&TWeldParams::weldPosType, TWeldPosType::left)},
      {"found",
       "stripe with 600 points",
       presence,
       {painting({{20, 620, 240.0}}), painting({{20, 620, 240.0}})}},
      {"no stripe",
       "no stripe points, at least 1 needed, a fixed limit",
       presence,
       {dark()},
       set(&TWeldParams::flagPara1, true)},
      {"a half to two thirds of the stripe points gone since the last frame",
       "no stripe points in the last frame, at least 1 needed, a fixed limit",
       presence,
       {painting({{20, 620, 240.0}})}},
      {"a half to two thirds of the stripe points gone since the last frame",
       "a half to two thirds of the stripe points gone since the last frame",
       presence,
       {painting({{20, 620, 240.0}}), painting({{20, 270, 240.0}})}},
  };
}

std::vector<TRow> rowsOfLapAndPlate() {
  const TWeldType lap = TWeldType::lap;
  const TWeldType plate = TWeldType::plate;
  const cv::Mat tall = painting({{20, 280, 10050.0}}, dark(300, 10100));
  return {
      {"found", R"(seam at x \d+\.\d, y 235\.0)", lap, {painted::lapFrame()}},
      {"too few straight pieces",
       "only 1 straight piece, at least 2 needed, a fixed limit",
       lap,
       {painting({{20, 620, 240.0}})}},
      {"too little stripe near the end of a piece",
       "too little stripe near the end of a piece",
       lap,
       {painted::lapFrame()},
       set(&TWeldParams::dPara2, 0.0)},
      {"step too low",
       R"(step 50 px is below the minimum step 60\.5 px, set by [\w.]+ \(dPara7\))",
       lap,
       {painted::lapFrame()},
       set(&TWeldParams::dPara7, 60.5)},
      {"step too low",
       "step 50 px does not exceed the minimum step 50 px, set by [\\w.]+ \\(dPara7\\)",
       lap,
       {painted::lapFrame()},
       set(&TWeldParams::dPara7, 50.0)},
      {"pieces overlap too far",
       "overlap \\d+ px is above the maximum overlap 30 px, a fixed limit",
       lap,
       {notch()}},
      {"piece too short",
       "length of the shorter piece \\d+ px is below the minimum 400 px, set by [\\w.]+ \\(dPara6\\)",
       lap,
       {painted::lapFrame()},
       set(&TWeldParams::dPara6, 400.0)},
      {"pieces too short together",
       "length of both pieces \\d+ px is below the minimum 300 px, a fixed limit",
       lap,
       {painting({{200, 300, 210.0}, {300, 400, 260.0}})}},
      {"angle of the piece too small",
       R"(angle of the piece -26\.\d degrees is below the minimum -10 degrees, set by [\w.]+ \(angleRange0Min\))",
       plate,
       {painting({{20, 400, 400.0, -0.5}, {420, 470, 100.0}})}},
      {"angle of the piece too large",
       R"(angle of the piece 26\.\d degrees is above the maximum 10 degrees, set by [\w.]+ \(angleRange0Max\))",
       plate,
       {painting({{20, 400, 100.0, 0.5}})}},
      {"piece too short",
       "length of the piece \\d+ px is below the minimum 400 px, set by [\\w.]+ \\(dPara6\\)",
       plate,
       {painted::plateFrame()},
       set(&TWeldParams::dPara6, 400.0)},
      {"piece too low in the image",
       "row of the piece 10050 px is above the maximum 9999 px, a fixed limit",
       plate,
       {tall}},
      {"plate too narrow",
       R"(plate width \d+(\.\d)? px is below the minimum 500 px, set by [\w.]+ \(dPara9\))",
       plate,
       {painted::plateFrame()},
       set(&TWeldParams::dPara9, 500.0)},
  };
}

std::vector<TRow> rowsOfFlanks() {
  const TWeldType corner = TWeldType::corner;
  const cv::Mat whole = painted::cornerFrame();
  const cv::Mat flatter = painting({kLeftFlank, {320, 600, 280.0, -0.37}});
  const cv::Mat shortFlanks = painting({{200, 320, 220.0, 0.5}, {320, 440, 280.0, -0.5}});
  return {
      {"found", R"(seam at x 3(19|20)\.\d, y 2[78]\d\.\d)", corner, {whole}},
      {"no left flank in its range of angles", "no left flank in its range of angles", corner, {whole, painting({kRightFlank})}},
      {"no right flank in its range of angles", "no right flank in its range of angles", corner, {whole, painting({kLeftFlank})}},
      {"too few stripe points on a flank",
       "only \\d stripe points of the left flank, at least 10 needed, a fixed limit",
       corner,
       {painting({{300, 306, 200.0, 0.5}, {306, 360, 202.0, -0.5}})},
       all(set(&TWeldParams::dPara2, 0.6), set(&TWeldParams::dPara3, 0.0))},
      {"flanks meet outside the image",
       R"(flanks meet outside the image, at x -\d+\.\d, y \d+\.\d)",
       corner,
       {painting({{40, 300, 100.0, 0.5}, {330, 600, 40.0, -0.1}})}},
      {"left flank reaches beyond the corner",
       R"(share of the left flank left of the corner 0\.4\d? is below the minimum 0\.7, a fixed limit)",
       corner,
       {painting({{40, 300, 100.0, 0.3}, {330, 600, 115.0, -0.1}})}},
      {"right flank reaches beyond the corner",
       R"(share of the right flank right of the corner 0\.4\d? is below the minimum 0\.7, a fixed limit)",
       corner,
       {painting({{40, 310, 88.0, 0.1}, {340, 600, 178.0, -0.3}})}},
      {"too few stripe points per column on both flanks",
       R"(stripe points per column on the better flank 0\.3\d is below the minimum 0\.45, set by [\w.]+ \(dPara3\))",
       corner,
       {shortFlanks},
       set(&TWeldParams::dPara3, 0.45)},
      {"too few stripe points on both flanks",
       "only 2\\d\\d stripe points on the better flank, more than 300 needed, set by [\\w.]+ \\(dPara6\\)",
       corner,
       {whole},
       set(&TWeldParams::dPara6, 300.0)},
      {"left flank angle too small",
       R"(left flank angle 26\.\d degrees is below the minimum 40 degrees, set by [\w.]+ \(angleRange1Max\))",
       corner,
       {whole},
       all(set(&TWeldParams::angleRange1Max, 40.0), set(&TWeldParams::angleRange1Min, 45.0))},
      {"left flank angle too large",
       R"(left flank angle 26\.\d degrees is above the maximum 20 degrees, set by [\w.]+ \(angleRange1Max\))",
       corner,
       {whole},
       set(&TWeldParams::angleRange1Max, 20.0)},
      {"right flank angle too small",
       R"(right flank angle -20\.\d degrees is below the minimum -20 degrees, set by [\w.]+ \(angleRange2Min\))",
       corner,
       {flatter},
       set(&TWeldParams::angleRange2Min, -20.0)},
      {"right flank angle too large",
       R"(right flank angle -20\.\d degrees is above the maximum -20\.5 degrees, set by [\w.]+ \(angleRange2Max\))",
       corner,
       {flatter},
       set(&TWeldParams::angleRange2Max, -20.5)},
      {"included angle too small",
       R"(included angle 12\d(\.\d)? degrees is below the minimum 140 degrees, set by [\w.]+ \(angleRange5Min\))",
       corner,
       {whole},
       set(&TWeldParams::angleRange5Min, 140.0)},
      {"included angle too large",
       R"(included angle 12\d(\.\d)? degrees is above the maximum 110 degrees, set by [\w.]+ \(angleRange5Max\))",
       corner,
       {whole},
       set(&TWeldParams::angleRange5Max, 110.0)},
  };
}

std::vector<TRow> rowsAroundTheCorner() {
  const TWeldType corner = TWeldType::corner;
  const cv::Mat whole = painted::cornerFrame();
  return {
      {"ratio of the unbroken band out of range",
       R"(band ratio 1\.5 is above the maximum 1, a fixed limit)",
       corner,
       {whole},
       set(&TWeldParams::dPara10, 1.5)},
      {"stripe broken near the corner",
       "20 missing columns in a row near the corner, at most 10 allowed, set by [\\w.]+ \\(nPara5\\)",
       corner,
       {brokenCorner()}},
      {"too many stripe columns missing around the corner",
       "20 missing columns around the corner, fewer than 20 allowed, set by [\\w.]+ \\(nPara1\\)",
       corner,
       {brokenCorner()},
       all(set(&TWeldParams::nPara5, 20), set(&TWeldParams::nPara1, 20))},
      {"left flank ends too far from the corner",
       R"(left flank's stripe points per column near the corner 0\.1\d? is below the minimum 0\.2, a fixed limit)",
       corner,
       {painting({{40, 235, 140.0, 0.5}, {255, 600, 312.5, -0.5}})},
       kNoGap},
      {"right flank ends too far from the corner",
       R"(right flank's stripe points per column near the corner 0\.1\d? is below the minimum 0\.2, a fixed limit)",
       corner,
       {painting({{40, 385, 140.0, 0.5}, {405, 600, 237.5, -0.5}})},
       kNoGap},
      {"included angle changed too much since the last frame",
       R"(change of the included angle 10\.\d+ degrees is above the maximum 10 degrees, a fixed limit)",
       corner,
       {painting({{40, 327, 163.2, 0.407}, {333, 600, 277.6, -0.394}}),
        painting({{40, 320, 118.2, 0.578}, {320, 600, 280.0, -0.591}})},
       kGapsAllowed},
      {"too few ridge points",
       "no ridge points, at least 10 needed, a fixed limit",
       corner,
       {dark()},
       kUnchanged,
       1},
  };
}

std::vector<TRow> allRows() {
  std::vector<TRow> rows;
  for (const auto& part : {rowsOfStripeAndGap(), rowsOfLapAndPlate(), rowsOfFlanks(), rowsAroundTheCorner()}) {
    rows.insert(rows.end(), part.begin(), part.end());
  }
  return rows;
}

TWeldTracker tracing(const TWeldParams& params) {
  TTrackerOptions options = TTrackerOptions::exact();
  options.keepTrace = true;
  return TWeldTracker(params, options);
}

TFrameTrace traceOf(const TRow& row) {
  TWeldParams params = detector_types::paramsFor(row.type);
  TWeldTracker tracker = tracing(params);
  for (const cv::Mat& frame : row.frames) {
    if (&frame == &row.frames.back()) {
      row.change(params);
      tracker.setParams(params);
    }
    tracker.track(frame);
  }
  return tracker.lastTrace();
}

TEST(TraceOutcomes, everyEndOfADetectorIsToldByItsSentence) {
  for (const TRow& row : allRows()) {
    const TFrameTrace trace = traceOf(row);
    ASSERT_GT(trace.attempts.size(), row.attempt) << row.sentence;
    const TTraceAttempt& attempt = trace.attempts[row.attempt];
    EXPECT_STREQ(attempt.reason, row.reason) << row.sentence;
    EXPECT_TRUE(std::regex_match(attempt.sentence, std::regex(row.sentence)))
        << attempt.sentence << "\ninstead of\n"
        << row.sentence;
  }
}

TEST(TraceOutcomes, framesWithoutAnAttemptTellWhy) {
  TWeldTracker gap = tracing(detector_types::paramsFor(TWeldType::buttGap));
  gap.track(cv::Mat());
  EXPECT_EQ(gap.lastTrace().outcome, TOutcome::noImage);
  EXPECT_EQ(gap.lastTrace().sentence, "no image");
  TWeldTracker none = tracing(detector_types::paramsFor(TWeldType::none));
  none.track(painted::gapFrame());
  EXPECT_EQ(none.lastTrace().outcome, TOutcome::noDetector);
  EXPECT_EQ(none.lastTrace().sentence, "no detector for this kind of joint");
  EXPECT_EQ(none.lastTrace().decisive, -1);
}

// Whatever a frame shows, its outcome agrees with the result and every attempt has a sentence.
TEST(TraceOutcomes, scenesAlwaysHaveASentence) {
  for (const scenes::TJoint joint : {scenes::TJoint::lap, scenes::TJoint::corner, scenes::TJoint::vGroove}) {
    for (const TWeldType type : detector_types::kAll) {
      TWeldTracker tracker = tracing(detector_types::paramsFor(type));
      for (int n = 0; n < 3; ++n) {
        const auto scene = scenes::randomScene(joint, scenes::TLevel::harsh, 7 + n / 2, {640, 480});
        const bool isFound = tracker.track(scenes::renderScene(scene).image).state == TSeamState::found;
        const TFrameTrace& trace = tracker.lastTrace();
        EXPECT_EQ(isFound, trace.outcome == TOutcome::found) << trace.sentence;
        for (const TTraceAttempt& attempt : trace.attempts) EXPECT_FALSE(attempt.sentence.empty());
      }
    }
  }
}

}  // namespace
