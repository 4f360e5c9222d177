#include "seam_trial.h"

#include "seam_floor.h"

#include <algorithm>

namespace accuracy {

namespace {

using scenes::TJoint;
using scenes::TLevel;

constexpr int kFramesPerSequence = 60;
constexpr std::uint64_t kFirstSeed = 1000;
constexpr double kNoiseSigma = 12.0;

TWeldTracker trackerFor(const TSeamCase& trial, const TTrackerOptions& options) {
  return TWeldTracker(scenes::weldParamsFor(trial.joint, trial.pos), options);
}

// The seam as the frame shows it: a held one was not found.
TWeldLineRes findSeam(TWeldTracker& tracker, const scenes::TScene& scene) {
  return tracker.track(scene.image).line;
}

void addFrame(const TSeamCase& trial, const scenes::TScene& scene, const TWeldLineRes& result,
              TTrialScore& score) {
  if (const std::optional<double> floor = floorOf(trial, scene)) score.floorsPx.push_back(*floor);
  score.add(trial, scene.truth, result);
}

TTrialScore scoreSequence(const TSeamCase& trial, TLevel level, std::uint64_t seed,
                          const TTrackerOptions& options) {
  const double direction = seed % 2 == 0 ? 1.0 : -1.0;
  scenes::TMotion motion;
  motion.driftPx = {1.2 * direction, 0.5};
  motion.jitterPx = 1.5;
  const scenes::TSceneParams first = scenes::randomScene(trial.joint, level, seed);
  TTrialScore score;
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
// upper pieces of a lap and the shoulders of a groove. The rest are grooves.
std::vector<TJoint> foreignJoints(TJoint joint) {
  switch (joint) {
    case TJoint::buttGap:
      return {TJoint::blank, TJoint::plain, TJoint::corner};
    case TJoint::lap:
      return {TJoint::blank, TJoint::plain, TJoint::buttGap, TJoint::corner};
    case TJoint::corner:
      return {TJoint::blank, TJoint::plain, TJoint::buttGap, TJoint::lap, TJoint::plate};
    case TJoint::plate:
      return {TJoint::blank, TJoint::corner};
    default:
      return {TJoint::blank, TJoint::plain, TJoint::plate};
  }
}

}  // namespace

TTrialScore scoreFirstDetections(const TSeamCase& trial, TLevel level, int scenes,
                                 const TTrackerOptions& options) {
  TTrialScore score;
  for (int i = 0; i < scenes; ++i) {
    const scenes::TScene scene = scenes::renderScene(scenes::randomScene(trial.joint, level, kFirstSeed + i));
    TWeldTracker tracker = trackerFor(trial, options);
    addFrame(trial, scene, findSeam(tracker, scene), score);
  }
  return score;
}

TTrialScore scoreSequences(const TSeamCase& trial, TLevel level, int sequences, const TTrackerOptions& options) {
  TTrialScore score;
  for (int i = 0; i < sequences; ++i) {
    const TTrialScore one = scoreSequence(trial, level, kFirstSeed + i, options);
    score.add(one);
    score.lost += one.lost;
    score.longestLoss = std::max(score.longestLoss, one.longestLoss);
    score.floorsPx.insert(score.floorsPx.end(), one.floorsPx.begin(), one.floorsPx.end());
  }
  return score;
}

scenes::TScore scoreFalsePositives(const TSeamCase& trial, int scenesEach, const TTrackerOptions& options) {
  scenes::TScore score;
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

}  // namespace accuracy
