#include "seam_trial.h"

#include "seam_floor.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace accuracy {

namespace {

using scenes::TJoint;
using scenes::TLevel;

constexpr int kFramesPerSequence = 60;
constexpr std::uint64_t kFirstSeed = 1000;
constexpr double kNoiseSigma = 12.0;

TWeldTracker trackerFor(const TCase& trial, const TTrackerOptions& options) {
  return TWeldTracker(scenes::weldParamsFor(trial.joint, trial.pos), options);
}

// The seam as the frame shows it: a held one was not found.
TWeldLineRes findSeam(TWeldTracker& tracker, const scenes::TScene& scene) {
  return tracker.track(scene.image).line;
}

void addFrame(const TCase& trial, const scenes::TScene& scene, const TWeldLineRes& result, TScore& score) {
  ++score.frames;
  if (const std::optional<double> floor = floorOf(trial, scene)) score.floorsPx.push_back(*floor);
  if (!result.isFound) return;
  ++score.found;
  const cv::Point2d error = cv::Point2d(result.weldPos) - scenes::seamPoint(trial.joint, scene.truth, trial.pos);
  score.errorsPx.push_back(std::hypot(error.x, error.y));
}

TScore scoreSequence(const TCase& trial, TLevel level, std::uint64_t seed, const TTrackerOptions& options) {
  const double direction = seed % 2 == 0 ? 1.0 : -1.0;
  scenes::TMotion motion;
  motion.driftPx = {1.2 * direction, 0.5};
  motion.jitterPx = 1.5;
  const scenes::TSceneParams first = scenes::randomScene(trial.joint, level, seed);
  TScore score;
  TWeldTracker tracker = trackerFor(trial, options);
  int loss = 0;
  for (int n = 0; n < kFramesPerSequence; ++n) {
    const scenes::TScene scene = scenes::renderScene(scenes::frameOf(first, motion, n));
    const TWeldLineRes result = findSeam(tracker, scene);
    addFrame(trial, scene, result, score);
    loss = result.isFound || score.found == 0 ? 0 : loss + 1;
    score.lost += loss > 0 ? 1 : 0;
    score.longestLoss = std::max(score.longestLoss, loss);
  }
  return score;
}

// Joints that the detector of a joint must not take for its own. A straight stripe is a plate, and so are the
// upper pieces of a lap and the shoulders of a groove.
std::vector<TJoint> foreignJoints(TJoint joint) {
  switch (joint) {
    case TJoint::buttGap:
      return {TJoint::blank, TJoint::plain, TJoint::corner};
    case TJoint::lap:
      return {TJoint::blank, TJoint::plain, TJoint::buttGap, TJoint::corner};
    case TJoint::corner:
      return {TJoint::blank, TJoint::plain, TJoint::buttGap, TJoint::lap, TJoint::plate};
    default:
      return {TJoint::blank, TJoint::corner};
  }
}

}  // namespace

void TScore::add(const TScore& other) {
  frames += other.frames;
  found += other.found;
  lost += other.lost;
  longestLoss = std::max(longestLoss, other.longestLoss);
  errorsPx.insert(errorsPx.end(), other.errorsPx.begin(), other.errorsPx.end());
  floorsPx.insert(floorsPx.end(), other.floorsPx.begin(), other.floorsPx.end());
}

TScore scoreFirstDetections(const TCase& trial, TLevel level, int scenes, const TTrackerOptions& options) {
  TScore score;
  for (int i = 0; i < scenes; ++i) {
    const scenes::TScene scene = scenes::renderScene(scenes::randomScene(trial.joint, level, kFirstSeed + i));
    TWeldTracker tracker = trackerFor(trial, options);
    addFrame(trial, scene, findSeam(tracker, scene), score);
  }
  return score;
}

TScore scoreSequences(const TCase& trial, TLevel level, int sequences, const TTrackerOptions& options) {
  TScore score;
  for (int i = 0; i < sequences; ++i) score.add(scoreSequence(trial, level, kFirstSeed + i, options));
  return score;
}

TScore scoreFalsePositives(const TCase& trial, int scenesEach, const TTrackerOptions& options) {
  TScore score;
  for (const TJoint joint : foreignJoints(trial.joint)) {
    for (int i = 0; i < scenesEach; ++i) {
      scenes::TSceneParams params =
          scenes::randomScene(joint, i % 2 == 0 ? TLevel::clean : TLevel::noisy, kFirstSeed + i);
      if (joint == TJoint::blank) params.look.noiseSigma = kNoiseSigma;
      // An upright corner has no flank flat enough to be a plate.
      if (trial.joint == TJoint::plate) params.geometry.tiltDeg = 0.0;
      ++score.frames;
      TWeldTracker tracker = trackerFor(trial, options);
      score.found += findSeam(tracker, scenes::renderScene(params)).isFound ? 1 : 0;
    }
  }
  return score;
}

double quantile(std::vector<double> errors, double share) {
  if (errors.empty()) return std::numeric_limits<double>::quiet_NaN();
  std::sort(errors.begin(), errors.end());
  const auto index = static_cast<std::size_t>(share * static_cast<double>(errors.size()));
  return errors[std::min(index, errors.size() - 1)];
}

}  // namespace accuracy
