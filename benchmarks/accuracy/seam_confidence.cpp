#include "seam_confidence.h"

#include "scenes/score.h"
#include "zelWeldDetect.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <vector>

namespace accuracy {

namespace {

using scenes::TJoint;
using scenes::TLevel;

constexpr std::uint64_t kFirstSeed = 3000;
constexpr std::size_t kBins = 10;
constexpr double kRightPx = 3.0;
constexpr double kLeastSigmaPx = 0.01;

struct TLevelName {
  const char* name;
  TLevel level;
};
constexpr TLevelName kLevels[] = {{"clean", TLevel::clean}, {"noisy", TLevel::noisy}, {"harsh", TLevel::harsh}};

struct TPoint {
  ::TFeature feature;
  const char* scene;  // its name there
};
constexpr TPoint kPoints[] = {{::TFeature::root, "root"},
                              {::TFeature::leftShoulder, "leftShoulder"},
                              {::TFeature::rightShoulder, "rightShoulder"}};

struct TBin {
  int frames = 0;
  int right = 0;
  double confidence = 0.0;  // sum
};

// Of the points of one joint at one level.
struct TSigmas {
  std::vector<double> ratios;  // distance from the truth over sigma

  double deviation() const {
    double sum = 0.0;
    for (const double ratio : ratios) sum += ratio * ratio;
    return ratios.empty() ? 0.0 : std::sqrt(sum / static_cast<double>(ratios.size()));
  }
};

std::vector<TJoint> grooves() {
  std::vector<TJoint> joints;
  for (const scenes::TDrawnJoint& row : scenes::seamJoints()) {
    if (scenes::randomScene(row.joint, TLevel::clean, 1).geometry.groove) joints.push_back(row.joint);
  }
  return joints;
}

void addRatios(const TJointMeasurement& measured, const scenes::TTruth& truth, TSigmas& sigmas) {
  for (const TPoint& point : kPoints) {
    for (const TFeaturePoint& found : measured.points) {
      if (found.feature != point.feature) continue;
      for (const scenes::TFeature& real : truth.features) {
        if (real.name != point.scene) continue;
        const cv::Point2d error = cv::Point2d(found.pos) - real.point;
        sigmas.ratios.push_back(std::hypot(error.x, error.y) / std::max<double>(kLeastSigmaPx, found.sigmaPx));
      }
    }
  }
}

using TBins = std::array<TBin, kBins>;

void addConfidence(double confidence, double errorPx, TBins& bins) {
  const auto index = static_cast<std::size_t>(std::clamp(confidence, 0.0, 0.999) * kBins);
  TBin& bin = bins[index];
  ++bin.frames;
  bin.right += errorPx < kRightPx ? 1 : 0;
  bin.confidence += confidence;
}

void measureScenes(TJoint joint, TLevel level, int scenes, TBins& bins, TSigmas& sigmas) {
  for (int i = 0; i < scenes; ++i) {
    const scenes::TScene scene = scenes::renderScene(scenes::randomScene(joint, level, kFirstSeed + i));
    TWeldTracker tracker(scenes::weldParamsFor(joint));
    const TTrackedSeam seam = tracker.track(scene.image);
    if (seam.state != TSeamState::found) continue;
    const cv::Point2d error =
        cv::Point2d(seam.weldPos) - scenes::seamPoint(joint, scene.truth, TWeldPosType::centre);
    addConfidence(static_cast<double>(seam.measurement.confidence), std::hypot(error.x, error.y), bins);
    addRatios(seam.measurement, scene.truth, sigmas);
  }
}

void printRecognition(int scenes) {
  std::printf(
      "\n| joint | level | frames | recognised | among the rivals | nothing said |\n|---|---|---|---|---|---|\n");
  std::vector<TJoint> joints = grooves();
  joints.insert(joints.end(), {TJoint::plain, TJoint::blank});
  for (const TJoint joint : joints) {
    for (const TLevelName& level : kLevels) {
      int first = 0;
      int named = 0;
      int silent = 0;
      for (int i = 0; i < scenes; ++i) {
        const cv::Mat image = scenes::renderScene(scenes::randomScene(joint, level.level, kFirstSeed + i)).image;
        const std::vector<TJointCandidate> found = recogniseJoint(image);
        const auto isIt = [&](const TJointCandidate& c) { return c.weldType == scenes::weldTypeOf(joint); };
        silent += found.empty() ? 1 : 0;
        first += !found.empty() && isIt(found.front()) ? 1 : 0;
        named += std::any_of(found.begin(), found.end(), isIt) ? 1 : 0;
      }
      const double percent = 100.0 / scenes;
      std::printf("| %s | %s | %d | %.1f %% | %.1f %% | %.1f %% |\n", scenes::shortNameOf(joint), level.name,
                  scenes, percent * first, percent * named, percent * silent);
      std::fflush(stdout);
    }
  }
}

}  // namespace

void printConfidence(int scenes) {
  TBins bins;
  std::printf("\n| joint | level | points | error over sigma, rms | median |\n|---|---|---|---|---|\n");
  for (const TJoint joint : grooves()) {
    for (const TLevelName& level : kLevels) {
      TSigmas sigmas;
      measureScenes(joint, level.level, scenes, bins, sigmas);
      std::printf("| %s | %s | %zu | %.2f | %.2f |\n", scenes::shortNameOf(joint), level.name,
                  sigmas.ratios.size(), sigmas.deviation(), scenes::quantile(sigmas.ratios, 0.5));
      std::fflush(stdout);
    }
  }
  std::printf("\n| confidence | frames | mean confidence | root within 3 px |\n|---|---|---|---|\n");
  for (std::size_t b = 0; b < kBins; ++b) {
    const TBin& bin = bins[b];
    if (bin.frames == 0) {
      std::printf("| %.1f | 0 | - | - |\n", static_cast<double>(b) / kBins);
      continue;
    }
    std::printf("| %.1f | %d | %.2f | %.2f |\n", static_cast<double>(b) / kBins, bin.frames,
                bin.confidence / bin.frames, static_cast<double>(bin.right) / bin.frames);
  }
  printRecognition(scenes);
}

}  // namespace accuracy
