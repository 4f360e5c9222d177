// The shape of a groove that the frames before showed.
#include "detectors/known_shape.h"

#include <gtest/gtest.h>

#include <cmath>

namespace weld {
namespace {

// A V groove of 80 x 60 px, its root edges so far from the middle.
TProfileFit grooveAt(cv::Point2d at, double leftPx, double rightPx) {
  TProfileFit fit;
  const auto set = [&](TFeature feature, double x, double y) {
    fit.features[static_cast<std::size_t>(feature)] = {true, at + cv::Point2d(x, y), 0.5};
  };
  set(TFeature::leftShoulder, -40.0, 0.0);
  set(TFeature::rightShoulder, 40.0, 0.0);
  set(TFeature::leftRoot, -leftPx, 60.0);
  set(TFeature::rightRoot, rightPx, 60.0);
  set(TFeature::root, 0.5 * (rightPx - leftPx), 60.0);
  fit.measures.widthPx = 80.0;
  fit.measures.depthPx = 60.0;
  fit.measures.gapPx = leftPx + rightPx;
  return fit;
}

// Frame after frame of a part that drifts, the right root edge so far from the middle.
struct TDrift {
  TKnownShapes shapes;
  int frame = 0;
  double offPx = 0.0;

  TProfileFit show(double rightPx) {
    TProfileFit fit = grooveAt({100.0 + 7.0 * frame, 200.0 - 3.0 * frame}, 5.0, rightPx);
    offPx = keepShape(fit, shapes);
    fit.features[static_cast<std::size_t>(TFeature::root)].pos -=
        cv::Point2d(100.0 + 7.0 * frame, 200.0 - 3.0 * frame);
    ++frame;
    return fit;
  }
};

TEST(KnownShape, anEdgeThatOneFrameShowsElsewhereIsMovedBack) {
  TDrift drift;
  for (int i = 0; i < 3; ++i) EXPECT_EQ(drift.show(5.0).measures.gapPx, 10.0);
  const TProfileFit fit = drift.show(25.0);
  EXPECT_NEAR(fit.measures.gapPx, 10.0, 1e-4);
  EXPECT_NEAR(fit.feature(TFeature::root).pos.x, 0.0, 1e-4);
  EXPECT_NEAR(fit.measures.depthPx, 60.0, 1e-4);
  EXPECT_EQ(drift.offPx, 0.0);
}

TEST(KnownShape, anEdgeThatHasMovedCountsFromTheThirdFrame) {
  TDrift drift;
  for (int i = 0; i < 7; ++i) drift.show(5.0);
  EXPECT_NEAR(drift.show(25.0).measures.gapPx, 10.0, 1e-4);
  EXPECT_NEAR(drift.show(25.0).measures.gapPx, 10.0, 1e-4);
  EXPECT_EQ(drift.show(25.0).measures.gapPx, 30.0);
}

TEST(KnownShape, aRootThatLiesElsewhereInEveryFrameIsAsUnsure) {
  TDrift drift;
  for (const double rightPx : {5.0, 15.0, 25.0}) EXPECT_EQ(drift.show(rightPx).measures.gapPx, 5.0 + rightPx);
  const TProfileFit fit = drift.show(65.0);
  EXPECT_EQ(fit.measures.gapPx, 70.0);
  EXPECT_GT(drift.offPx, 15.0);
  EXPECT_EQ(fit.feature(TFeature::root).sigmaPx, drift.offPx);
}

TEST(KnownShape, oneFrameTellsNothing) {
  TDrift drift;
  drift.show(5.0);
  EXPECT_EQ(drift.show(25.0).measures.gapPx, 30.0);
}

TEST(KnownShape, aFormThatCameUpOfLateIsNotUsual) {
  TDrift drift;
  const auto showClosed = [&] {
    TProfileFit fit = grooveAt({100.0, 200.0}, 0.0, 0.0);
    for (const TFeature edge : {TFeature::leftRoot, TFeature::rightRoot})
      fit.features[static_cast<std::size_t>(edge)] = {};
    keepShape(fit, drift.shapes);
  };
  EXPECT_TRUE(isUsual(drift.shapes));
  for (int i = 0; i < 4; ++i) drift.show(5.0);
  EXPECT_TRUE(isUsual(drift.shapes));
  for (int i = 0; i < 3; ++i) {
    showClosed();
    EXPECT_FALSE(isUsual(drift.shapes)) << i;
  }
  showClosed();
  EXPECT_TRUE(isUsual(drift.shapes));
}

}  // namespace
}  // namespace weld
