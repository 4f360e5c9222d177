#include "seam_reel.h"

#include "zelWeldDetect.h"

#include <algorithm>
#include <cmath>

namespace accuracy {

namespace {

using scenes::TDecoy;
using scenes::TJoint;

constexpr double kPlateReachDeg = 11.0;  // pieces up to this angle may be plates: the default limit and some room
constexpr double kLeastStepPx = 18.0;    // steps from here on may be laps
constexpr double kTightGapPx = 1.0;      // half of the gaps of level real are not wider than 1 to 3 px
constexpr double kDriftPx = 1.2;         // per frame
constexpr double kJitterPx = 1.5;

struct TNamedPoint {
  TFeature feature;
  const char* scene;  // its name there
};
constexpr TNamedPoint kPoints[] = {{TFeature::root, "root"},
                                   {TFeature::corner, "root"},
                                   {TFeature::leftShoulder, "leftShoulder"},
                                   {TFeature::rightShoulder, "rightShoulder"},
                                   {TFeature::leftEdge, "gapLeft"},
                                   {TFeature::rightEdge, "gapRight"},
                                   {TFeature::upperCorner, "upperCorner"},
                                   {TFeature::lowerCorner, "lowerCorner"},
                                   {TFeature::leftEnd, "plateLeft"},
                                   {TFeature::rightEnd, "plateRight"}};

scenes::TSceneParams firstFrameOf(const TReel& reel) {
  const TSubject& subject = reel.subject;
  if (subject.decoy) return scenes::randomDecoy(*subject.decoy, reel.level, reel.seed);
  return scenes::randomScene(subject.joint, reel.level, reel.seed);
}

// A straight piece of stripe is a plate. The flanks of most corners are too steep for one.
bool showsPlate(const TSubject& subject, const scenes::TSceneParams& scene) {
  if (subject.decoy) return scene.joint == TJoint::plain && subject.decoy != TDecoy::curve;
  if (scene.joint != TJoint::corner) return true;
  const scenes::TGeometry& g = scene.geometry;
  return std::min(std::abs(g.leftFlankDeg + g.tiltDeg), std::abs(g.rightFlankDeg + g.tiltDeg)) < kPlateReachDeg;
}

// A plate over its table ends in two laps, a groove is full of corners, and one groove often passes for another:
// to ask for these is to measure, not to recognise.
bool shows(const TSubject& subject, const scenes::TSceneParams& scene, TJoint asked) {
  if (!subject.decoy && asked == scene.joint) return true;
  if (asked == TJoint::plate) return showsPlate(subject, scene);
  if (asked == TJoint::lap) return scene.joint == TJoint::plate && scene.geometry.stepPx > kLeastStepPx;
  return isGroove(scene.joint) && (asked == TJoint::corner || isGroove(asked));
}

scenes::TMotion motionOf(const TReel& reel) {
  scenes::TMotion motion;
  if (reel.show == TShow::scene) return motion;
  motion.driftPx = {reel.seed % 2 == 0 ? kDriftPx : -kDriftPx, 0.5};
  motion.jitterPx = kJitterPx;
  motion.flashAtFrame = reel.show == TShow::flash ? kFlashAtFrame : -1;
  motion.flashFrames = kFlashFrames;
  return motion;
}

TWeldParams paramsFor(TJoint asked, scenes::TLevel level) {
  TWeldParams params = scenes::weldParamsFor(asked);
  if (asked == TJoint::buttGap && level == scenes::TLevel::real) params.dPara8 = kTightGapPx;
  return params;
}

double distance(cv::Point2d a, cv::Point2d b) {
  return std::hypot(a.x - b.x, a.y - b.y);
}

void addPoints(const TJointMeasurement& measured, const scenes::TTruth& truth, TAnswer& answer) {
  for (const TFeaturePoint& found : measured.points) {
    for (const TNamedPoint& name : kPoints) {
      if (name.feature != found.feature) continue;
      const auto real = std::find_if(truth.features.begin(), truth.features.end(),
                                     [&](const scenes::TFeature& f) { return f.name == name.scene; });
      if (real == truth.features.end()) continue;
      const bool isMain = found.feature == TFeature::root || found.feature == TFeature::corner;
      answer.points.push_back(
          {distance(cv::Point2d(found.pos), real->point), static_cast<double>(found.sigmaPx), isMain});
    }
  }
}

TAnswer answerOf(const TTrackedSeam& seam, TJoint asked, const TReel& reel, const scenes::TTruth& truth) {
  TAnswer answer;
  answer.isFound = seam.state == TSeamState::found;
  if (!answer.isFound || reel.subject.decoy || asked != reel.subject.joint) return answer;
  answer.errorPx = distance(cv::Point2d(seam.weldPos), scenes::seamPoint(asked, truth, TWeldPosType::centre));
  if (!seam.measurement.isValid) return answer;
  answer.confidence = static_cast<double>(seam.measurement.confidence);
  addPoints(seam.measurement, truth, answer);
  return answer;
}

std::vector<TQuestion> questionsOf(const TReel& reel, const scenes::TSceneParams& scene) {
  std::vector<TQuestion> questions;
  const TSubject& subject = reel.subject;
  if (reel.show == TShow::flash) return {{subject.joint, false}};
  if (!subject.decoy) {
    questions.push_back({subject.joint, false});
    if (!isGroove(subject.joint)) questions.push_back({subject.joint, true});
  }
  for (const scenes::TDrawnJoint& row : scenes::seamJoints()) {
    if (!shows(subject, scene, row.joint)) questions.push_back({row.joint, false});
  }
  return questions;
}

bool isAskedFor(const TReel& reel, const TQuestion& question, int frame) {
  const bool isOther = !reel.subject.decoy && question.asked != reel.subject.joint;
  return !isOther || 3 * frame < reel.frames;
}

std::vector<TWeldType> recognisedIn(const cv::Mat& image) {
  std::vector<TWeldType> types;
  for (const TJointCandidate& candidate : recogniseJoint(image)) types.push_back(candidate.weldType);
  return types;
}

}  // namespace

std::string nameOf(const TSubject& subject) {
  return subject.decoy ? scenes::nameOf(*subject.decoy) : scenes::shortNameOf(subject.joint);
}

bool isGroove(TJoint joint) {
  const TWeldJoint* const known = findWeldJoint(scenes::weldTypeOf(joint));
  return known != nullptr && std::count(known->features.begin(), known->features.end(), TFeature::root) > 0;
}

TReelAnswers playReel(const TReel& reel) {
  const scenes::TSceneParams first = firstFrameOf(reel);
  const scenes::TMotion motion = motionOf(reel);
  TReelAnswers answers;
  std::vector<TWeldTracker> trackers;
  for (const TQuestion& q : questionsOf(reel, first)) {
    const TTrackerOptions options = q.isExact ? TTrackerOptions::exact() : TTrackerOptions();
    trackers.emplace_back(paramsFor(q.asked, reel.level), options);
    answers.asked.push_back({q, {}});
  }
  for (int n = 0; n < reel.frames; ++n) {
    const scenes::TScene scene = scenes::renderScene(scenes::frameOf(first, motion, n));
    for (std::size_t i = 0; i < trackers.size(); ++i) {
      TAsked& asked = answers.asked[i];
      if (!isAskedFor(reel, asked.question, n)) continue;
      const TTrackedSeam seam = trackers[i].track(scene.image);
      asked.frames.push_back(answerOf(seam, asked.question.asked, reel, scene.truth));
    }
    if (reel.show == TShow::scene) answers.recognised = recognisedIn(scene.image);
  }
  return answers;
}

}  // namespace accuracy
