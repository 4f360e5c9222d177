#include "workload.h"

#include "scenes/joints.h"

#include <cstdlib>

namespace soak {

namespace {

using scenes::TJoint;

const cv::Size kFrameSize{640, 480};
constexpr int kReelFrames = 12;
constexpr std::uint64_t kSeed = 3;

// Shares of the frames.
constexpr double kBlank = 0.03;      // without a stripe
constexpr double kForeign = 0.03;    // of another joint
constexpr double kNoImage = 0.005;   // empty
constexpr double kSetParams = 0.01;  // another seam position
constexpr double kReset = 0.005;
constexpr double kNewTracker = 0.001;
constexpr double kPlain = 0.3;  // through the plain entry point

TReel renderReel(TJoint joint, scenes::TLevel level) {
  TReel reel{scenes::weldParamsFor(joint), {}};
  const scenes::TSceneParams first = scenes::randomScene(joint, level, kSeed, kFrameSize);
  scenes::TMotion motion;
  motion.driftPx = {1.5, 1.0};
  motion.jitterPx = 1.0;
  for (int n = 0; n < kReelFrames; ++n) {
    cv::Mat image = scenes::renderScene(scenes::frameOf(first, motion, n)).image;
    const bool isColour = n % 4 == 3;
    if (isColour) cv::merge(std::vector<cv::Mat>(3, image.clone()), image);
    reel.images.push_back(image);
  }
  return reel;
}

}  // namespace

std::vector<TReel> renderReels() {
  std::vector<TReel> reels;
  for (const auto& [joint, type] : scenes::detectedJoints()) {
    for (const scenes::TLevel level : {scenes::TLevel::clean, scenes::TLevel::harsh}) {
      reels.push_back(renderReel(joint, level));
    }
  }
  reels.back().params.flagPara1 = true;  // presence on ridges
  return reels;
}

TWorkload::TWorkload(const std::vector<TReel>& sourceReels)
    : reels(sourceReels), blank(kFrameSize, CV_8UC1, cv::Scalar(0)), random(kSeed, scenes::TStream::layout) {
  for (std::size_t i = 0; i < reels.size(); ++i) actors.push_back({i, 0, TWeldTracker(reels[i].params), {}});
}

// Back and forth through the reel.
const cv::Mat& TWorkload::nextImage(TActor& actor) {
  const std::vector<cv::Mat>& images = reels[actor.reel].images;
  const int last = static_cast<int>(images.size()) - 1;
  actor.position = (actor.position + 1) % (2 * last);
  return images[static_cast<std::size_t>(last - std::abs(last - actor.position))];
}

void TWorkload::disturb(TActor& actor) {
  TWeldParams params = reels[actor.reel].params;
  if (random.chance(kSetParams)) {
    params.weldPosType = static_cast<TWeldPosType>(random.integer(0, 4));
    actor.tracker.setParams(params);
  }
  if (random.chance(kReset)) actor.tracker.reset();
  if (random.chance(kNewTracker)) actor.tracker = TWeldTracker(params);
}

TWeldLineRes TWorkload::step() {
  TActor& actor = actors[static_cast<std::size_t>(random.integer(0, static_cast<int>(actors.size()) - 1))];
  disturb(actor);
  cv::Mat image = nextImage(actor);
  if (random.chance(kForeign)) {
    image = reels[static_cast<std::size_t>(random.integer(0, static_cast<int>(reels.size()) - 1))].images.front();
  }
  if (random.chance(kBlank)) image = blank;
  if (random.chance(kNoImage)) image = cv::Mat();
  if (!random.chance(kPlain)) return actor.tracker.track(image).line;
  TWeldParams params = reels[actor.reel].params;
  actor.previous = detectWeldLineViaTracking(image, params, actor.previous);
  return actor.previous;
}

}  // namespace soak
