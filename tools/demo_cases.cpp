#include "tools/demo_cases.h"

#include "scenes/groove.h"
#include "scenes/plate.h"
#include "scenes/score.h"

#include <algorithm>
#include <cmath>

namespace tool {
namespace {

using scenes::TLevel;
using scenes::TPlateSeam;
using scenes::TSeamCase;

constexpr int kPlateFrames = 6;  // per sequence: plates take long to draw

struct TLevelRow {
  TLevel level;
  const char* name;
};
constexpr TLevelRow kLevels[] = {{TLevel::clean, "clean"}, {TLevel::noisy, "noisy"}};

struct TPlateRow {
  TPlateSeam seam;
  const char* name;
  TSeamPolarity polarity;
};
constexpr TPlateRow kPlates[] = {{TPlateSeam::gap, "bare plate gap", TSeamPolarity::dark},
                                 {TPlateSeam::tight, "bare plate tight", TSeamPolarity::dark},
                                 {TPlateSeam::step, "bare plate step", TSeamPolarity::edge},
                                 {TPlateSeam::scribe, "bare plate scribe", TSeamPolarity::bright}};

scenes::TMotion motionOf(int sequence) {
  scenes::TMotion motion;
  motion.driftPx = {sequence % 2 == 0 ? 0.8 : -0.8, 0.2};
  motion.jitterPx = 0.5;
  return motion;
}

std::uint64_t seedOf(int sequence) {
  return static_cast<std::uint64_t>(sequence) + 1;
}

// Median distance of the stripe's centres to the true ones.
double stripeErrorPx(const scenes::TTruth& truth, const TWeldLineRes& result) {
  std::vector<double> distances;
  for (const cv::Point2f& point : result.stripePts) {
    const double trueY = truth.centreY[static_cast<std::size_t>(point.x)];
    if (!std::isnan(trueY)) {
      distances.push_back(std::abs(point.y - trueY));
    }
  }
  return scenes::quantile(distances, 0.5);
}

TDemoFrame drawStripe(const TSeamCase& seamCase, TLevel level, int sequence, int n) {
  const scenes::TSceneParams first = scenes::randomScene(seamCase.joint, level, seedOf(sequence));
  scenes::TScene scene = scenes::renderScene(scenes::frameOf(first, motionOf(sequence), n));
  if (!hasSeamPoint(seamCase.joint)) {
    return {scene.image, {}, [truth = scene.truth](const TWeldLineRes& result) {
              return stripeErrorPx(truth, result);
            }};
  }
  const cv::Point2d seam = scenes::seamPoint(seamCase.joint, scene.truth, seamCase.pos);
  return {scene.image, seam,
          [seam](const TWeldLineRes& result) { return cv::norm(cv::Point2d(result.weldPos) - seam); }};
}

// The seam is a line: what counts is how far from it the found point is.
TDemoFrame drawPlate(TPlateSeam seam, TLevel level, int sequence, int n) {
  const scenes::TPlateParams first = scenes::randomPlate(seam, level, seedOf(sequence));
  const scenes::TPlateScene scene = scenes::renderPlate(scenes::plateFrameOf(first, motionOf(sequence), n));
  return {scene.image, {}, [truth = scene.truth](const TWeldLineRes& result) {
            return scenes::distanceToSeam(truth, result.weldPos);
          }};
}

TDemoCase stripeCase(const TSeamCase& seamCase, const TLevelRow& row) {
  TDemoCase demo;
  demo.name = scenes::nameOf(seamCase);
  demo.level = row.name;
  demo.params = scenes::weldParamsFor(seamCase.joint, seamCase.pos);
  demo.skipsFirst = !hasSeamPoint(seamCase.joint);  // presence compares with the frame before
  demo.draw = [=](int sequence, int n) { return drawStripe(seamCase, row.level, sequence, n); };
  return demo;
}

TDemoCase plateCase(const TPlateRow& plate, const TLevelRow& row) {
  TDemoCase demo;
  demo.name = plate.name;
  demo.level = row.name;
  demo.options.source = TSeamSource::contrast;
  demo.options.contrast.polarity = plate.polarity;
  demo.frames = kPlateFrames;
  demo.draw = [=](int sequence, int n) { return drawPlate(plate.seam, row.level, sequence, n); };
  return demo;
}

}  // namespace

std::vector<TDemoCase> demoCases() {
  std::vector<TDemoCase> cases;
  for (const TSeamCase& seamCase : scenes::detectedCases()) {
    // A groove's other points come from the same profile as its root and its left shoulder.
    if (scenes::isGroove(seamCase.joint) && seamCase.pos > TWeldPosType::left) {
      continue;
    }
    for (const TLevelRow& row : kLevels) {
      cases.push_back(stripeCase(seamCase, row));
    }
  }
  for (const TPlateRow& plate : kPlates) {
    for (const TLevelRow& row : kLevels) {
      cases.push_back(plateCase(plate, row));
    }
  }
  return cases;
}

}  // namespace tool
