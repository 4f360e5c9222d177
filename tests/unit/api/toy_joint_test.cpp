// A joint of the test's own: the row of the table and the function that finds it are all that one needs.
#include "api/attempt.h"
#include "support/painted_frame.h"
#include "trace/trace_conclusion.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace weld {
namespace {

constexpr TCheck kAnyPoints =
    countCheck({4, TWeldOutcome::noStripe, "stripe", "too few stripe points"}, "stripe points", TRule::atLeast);
constexpr TCheck kDepth{
    {10, TWeldOutcome::sizeOutOfRange, "dip", "dip too shallow"}, "dip", TRule::notBelow, "px", "minDipPx"};

// The lowest point of the stripe in the image.
TSeam findDip(const TFrame& frame, const TStripe& stripe, const TPrevious& /*previous*/) {
  TSeam seam(TPoints(stripe.points, frame.memory));
  if (!frame.trace.passes(kAnyPoints, stripe.points.size(), std::size_t{1})) return seam;
  const auto isHigher = [](cv::Point2f a, cv::Point2f b) { return a.y < b.y; };
  const auto [top, dip] = std::minmax_element(stripe.points.begin(), stripe.points.end(), isHigher);
  frame.trace.addTestedPoint(*dip);
  seam.isFound = frame.trace.passes(kDepth, static_cast<double>(dip->y - top->y), frame.params.dPara7);
  if (seam.isFound) seam.pos = *dip;
  return seam;
}

TJoint dipJoint() {
  const TParameterValue dPara7{TParameterKind::number, [](const TWeldParams& p) { return p.dPara7; },
                               [](TWeldParams& p, double value) { p.dPara7 = value; }};
  TJoint joint{{TWeldType::none,
                "dip",
                "dip",
                "the lowest point of the stripe",
                {TWeldPosType::centre},
                {TFeature::root},
                {{"minDipPx", "dPara7", "px", {0.0, 1000.0}, "smallest depth", "bends", "nothing", dPara7}}},
               {}};
  joint.rules.find = findDip;
  return joint;
}

TEST(ToyJoint, runsThroughExtractionTraceAndTracking) {
  const TJoint joint = dipJoint();
  TWeldParams params;
  cv::Mat dip = painted::dark();
  painted::paintPiece(dip, 40, 300, 140.0, 0.5);
  painted::paintPiece(dip, 300, 600, 270.0, -0.6);
  cv::Mat level = painted::dark();
  painted::paintPiece(level, 40, 600, 200.0);
  const struct {
    cv::Mat image;
    bool isFound;
    const char* sentence;
  } rows[] = {{dip, true, "seam at x 300.0, y 270.0"},
              {level, false, "dip 0 px is below the minimum dip 20 px, set by minDipPx (dPara7)"},
              {painted::dark(), false, "no columns with an edge pair, at least 10 needed, a fixed limit"}};
  findWeldParameter(joint.info, "minDipPx")->value.set(params, 20.0);
  for (const auto& row : rows) {
    TPrevious previous;
    TSeam seam(heapMemory());
    for (const TSearchPath path : {TSearchPath::first, TSearchPath::tracking}) {
      TFrameTrace trace;
      const TFrame frame{row.image, params, heapMemory(), TTrace(trace)};
      TRidgeSearch ridges(frame.memory);
      TFound found = attemptByRule({frame, joint, ridges}, {}, previous);
      concludeFrame(trace, {true, false, {}}, &joint.info);
      EXPECT_EQ(found.seam.isFound, row.isFound);
      EXPECT_EQ(trace.sentence, row.sentence);
      ASSERT_EQ(trace.attempts.size(), 1U);
      EXPECT_EQ(trace.attempts[0].path, row.isFound ? path : TSearchPath::first);
      seam = std::move(found.seam);
      previous = TPrevious(seam);
    }
  }
}

}  // namespace
}  // namespace weld
