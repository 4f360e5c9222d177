// Whatever the caller passes, the library neither crashes nor reads out of bounds nor reports nonsense. The
// sanitizer build gives these tests their teeth; `make fuzz` goes on where they end.
#include "support/detector_types.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <vector>

namespace {

using detector_types::frameFor;
using detector_types::paramsFor;

constexpr double kAbsurd[] = {NAN, INFINITY, -INFINITY, 1e300, -1e300, 2147483648.0, 1e6, 0.0, -1.0, 1e-300};

void expectSane(const cv::Mat& image, TWeldParams params, const TWeldLineRes& previous) {
  const TWeldLineRes result = detectWeldLineViaTracking(image, params, previous);
  EXPECT_TRUE(std::isfinite(result.weldPos.x) && std::isfinite(result.weldPos.y));
  EXPECT_TRUE(result.isFound || result.weldPos == cv::Point2f());
  const cv::Rect2f pixels({}, cv::Size2f(image.size()));
  for (const cv::Point2f& p : result.stripePts) ASSERT_TRUE(pixels.contains(p)) << p;
}

std::vector<std::vector<cv::Point2f>> garbageStripes() {
  const std::vector<cv::Point2f> level = painted::linePoints(0, 640, 240.0);
  std::vector<std::vector<cv::Point2f>> stripes{
      {}, {{1, 1}}, std::vector<cv::Point2f>(200, {320, 240}), {level.rbegin(), level.rend()}};
  for (const double absurd : kAbsurd) {
    const auto bad = static_cast<float>(absurd);
    stripes.emplace_back(50, cv::Point2f{bad, bad});
    for (const cv::Point2f& p : {cv::Point2f{bad, 240}, {320, bad}}) {
      stripes.push_back(level);
      stripes.back()[300] = p;
    }
  }
  return stripes;
}

TEST(Robustness, absurdPreviousResultsAndTinyImagesAreHarmless) {
  for (const TWeldType type : detector_types::kAll) {
    TWeldParams params = paramsFor(type);
    for (const bool isFlagSet : {false, true}) {
      params.flagPara1 = params.flagPara2 = isFlagSet;
      for (const cv::Size& size : {cv::Size(1, 1), {1, 480}, {640, 1}, {5, 5}, {10, 11}, {40, 12}, {12, 40}}) {
        for (const int grey : {0, 128, 255}) {
          const cv::Mat image(size, CV_8UC1, cv::Scalar(grey));
          expectSane(image, params, {isFlagSet, {}, painted::linePoints(0, 20, 5.0), 0, 0, 0, 0, 0});
        }
      }
    }
    params.flagPara1 = false;
    for (const std::vector<cv::Point2f>& stripe : garbageStripes()) {
      for (const double value : {0.5, static_cast<double>(NAN), -1e300})
        expectSane(frameFor(type), params, {true, {NAN, INFINITY}, stripe, value, value, value, value, value});
    }
  }
}

// One parameter at a time, then all of them.
TEST(Robustness, absurdParametersAreHarmless) {
  for (const TWeldType type : detector_types::kAll) {
    const cv::Mat image = frameFor(type);
    TWeldParams usual = paramsFor(type);
    const TWeldLineRes first = detectWeldLineViaTracking(image, usual, {});
    for (const double absurd : kAbsurd) {
      TWeldParams all = usual;
      all.weldPosType = static_cast<TWeldPosType>(INT_MIN);
      std::vector<TWeldParams> variants;
      for (const TWeldParameter& row : findWeldJoint(type)->parameters) {
        const bool fits = row.value.kind != TParameterKind::count || std::abs(absurd) < INT_MAX;
        variants.push_back(usual);
        for (TWeldParams* params : {&variants.back(), &all}) row.value.set(*params, fits ? absurd : INT_MIN);
      }
      variants.push_back(all);
      for (const TWeldParams& params : variants) {
        for (const TWeldLineRes& previous : {TWeldLineRes(), first}) expectSane(image, params, previous);
      }
    }
  }
}

}  // namespace
