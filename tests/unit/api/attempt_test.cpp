// Where the plain rules look for a joint's stripe, how they extract it, and what a frame says that gives no seam.
#include "api/attempt.h"
#include "support/painted_frame.h"
#include "trace/trace_conclusion.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

namespace weld {
namespace {

using painted::linePoints;
using TStripePts = std::vector<cv::Point2f>;

TFrameTrace run(const cv::Mat& image, const TWeldParams& params, const TStripePts& previous,
                bool wasFound = true) {
  TFrameTrace trace;
  TPrevious before;
  before.isFound = wasFound && !previous.empty();
  before.stripePts = previous;
  const TFrame frame{image, params, heapMemory(), TTrace(trace)};
  TRidgeSearch ridges(frame.memory);
  attemptByRule({frame, *findJoint(params.weldType), ridges}, {}, before);
  return trace;
}

cv::Mat level(double y, int fromX = 20, int toX = 620) {
  cv::Mat image = painted::dark();
  painted::paintPiece(image, fromX, toX, y);
  return image;
}

// Twelve columns, each as bright over a height of its own.
cv::Mat unlikeColumns() {
  cv::Mat image = painted::dark();
  for (int i = 0; i < 12; ++i) image(cv::Rect(100 + i, 200, 1, 6 + 7 * i)).setTo(220);
  return image;
}

// A corner thinner than edge pairs allow.
cv::Mat thinCorner() {
  cv::Mat image = painted::dark();
  for (int x = 40; x < 600; ++x) {
    const int y = 280 - std::abs(x - 320) / 2;
    image.at<uchar>(y, x) = 250;
    image.at<uchar>(y - 1, x) = image.at<uchar>(y + 1, x) = 120;
  }
  return image;
}

// The regions hold what the previous stripe tells, or the whole image.
TEST(AttemptByRule, looksNearThePreviousStripe) {
  const TWeldParams gap = TGapSettings().params();
  const TWeldParams plate = TPlateSettings().params();
  const struct {
    const char* name;
    TWeldParams params;
    TStripePts previous;
    bool wasFound, seesStripe;
  } rows[] = {
      {"gap, first", gap, {}, false, true},
      {"gap, previous stripe of 151 columns", gap, linePoints(250, 401, 240.0), true, false},
      {"gap, of 152 columns", gap, linePoints(250, 402, 240.0), true, true},
      {"gap, 90 rows off", gap, linePoints(20, 620, 150.0), true, false},
      {"gap, 50 rows off", gap, linePoints(20, 620, 190.0), true, true},
      {"gap, 90 rows off, but not found", gap, linePoints(20, 620, 150.0), false, true},
      {"plate, 28 rows up", plate, linePoints(20, 620, 212.0), true, true},
      {"plate, 50 rows up", plate, linePoints(20, 620, 190.0), true, false},
      {"plate, 28 rows down", plate, linePoints(20, 620, 268.0), true, true},
      {"plate, 50 rows down", plate, linePoints(20, 620, 290.0), true, false},
      {"presence, anywhere", TPresenceSettings().params(), linePoints(20, 620, 40.0), true, true},
      {"presence, near, first", TPresenceSettings{false, true}.params(), linePoints(20, 620, 40.0), false, true},
      {"presence, near", TPresenceSettings{false, true}.params(), linePoints(20, 620, 40.0), true, false},
      {"presence, ridges", TPresenceSettings{true, true}.params(), linePoints(20, 620, 40.0), true, true},
  };
  for (const auto& row : rows) {
    const TFrameTrace trace = run(level(240.0), row.params, row.previous, row.wasFound);
    EXPECT_EQ(!trace.attempts[0].centres.empty(), row.seesStripe) << row.name;
  }
}

TEST(AttemptByRule, tellsWhatIsWrongWithTheStripe) {
  const TWeldParams gap = TGapSettings().params();
  const TWeldParams corner = TCornerSettings().params();
  const TStripePts anywhere = linePoints(40, 600, 200.0);
  const TStripePts tooShort = linePoints(250, 401, 240.0);
  const std::string none = "no columns with an edge pair, at least 10 needed, a fixed limit";
  const struct {
    cv::Mat image;
    TStripePts previous;
    TWeldParams params;
    std::string sentences;  // of the attempts
  } rows[] = {
      {painted::gapFrame(), {}, gap, "seam at x 314.5, y 240.0"},
      {painted::gapFrame(), tooShort, gap, "no search region: the previous stripe spans too few columns"},
      {painted::dark(), {}, gap, none},
      {unlikeColumns(), {}, gap, "only 2 columns of the usual stripe width, at least 10 needed, a fixed limit"},
      {level(240.0, 100, 120), {}, gap, "no stripe points, at least 10 needed, a fixed limit"},
      {level(240.0), anywhere, TPresenceSettings().params(), "stripe with 600 points"},
      // The second chance.
      {painted::dark(), {}, corner, none + "; no ridge points, at least 10 needed, a fixed limit"},
      {thinCorner(), {}, corner, none + "; seam at x 320.0, y 279.7"},
      {thinCorner(), painted::bentPoints(40, 320, 600, 140.0, 0.5, -0.5), corner,
       none + "; seam at x 320.0, y 279.7"},
  };
  for (const auto& row : rows) {
    std::string sentences;
    for (const TTraceAttempt& attempt : run(row.image, row.params, row.previous).attempts)
      sentences += (sentences.empty() ? "" : "; ") + attempt.sentence;
    EXPECT_EQ(sentences, row.sentences);
  }
}

TEST(LookAlong, endsWithTheGuide) {
  const cv::Mat image = painted::dark();
  const TWeldParams params;
  const TFrame frame = heapFrame(image, params);
  const TStripePts guide = linePoints(20, 420, 240.0);
  EXPECT_EQ(lookNear(frame, guide, {}).regions.back().br().x, 639);
  const TLook look = lookAlong(frame, guide, {});
  EXPECT_EQ(look.regions.back().br().x, 420);
  EXPECT_EQ(look.path, TSearchPath::tracking);
  EXPECT_EQ(lookAlong(frame, {}, {}).path, TSearchPath::first);
}

}  // namespace
}  // namespace weld
