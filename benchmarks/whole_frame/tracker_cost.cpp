#include "tracker_cost.h"

#include "scenes/joints.h"
#include "timing.h"
#include "zelWeldTracker.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <vector>

namespace bench {

namespace {

using scenes::TLevel;

constexpr unsigned kFirstSeed = 611;  // nothing was made quicker on these
constexpr unsigned kSequences = 4;
constexpr int kFrames = 25;
constexpr int kRepetitions = 5;  // of a sequence; of each frame the quickest counts
constexpr double kMostMean = 1.3;
constexpr double kMostTail = 2.5;  // of 95 % of the frames
constexpr double kMostCopies = 60.0;

// Of one frame, the quickest run.
struct TCost {
  double defaultUs = HUGE_VAL;
  double plainUs = HUGE_VAL;
  double copyUs = HUGE_VAL;
};

double trackUs(TWeldTracker& tracker, const cv::Mat& image) {
  return microsecondsOf([&] { tracker.track(image); });
}

std::vector<cv::Mat> sequenceOf(scenes::TJoint joint, TLevel level, unsigned seed) {
  const scenes::TSceneParams first = scenes::randomScene(joint, level, seed);
  scenes::TMotion motion;
  motion.driftPx = {seed % 2 == 0 ? 1.2 : -1.2, 0.5};
  motion.jitterPx = 1.5;
  std::vector<cv::Mat> images;
  images.reserve(kFrames);
  for (int i = 0; i < kFrames; ++i) images.push_back(scenes::renderScene(scenes::frameOf(first, motion, i)).image);
  return images;
}

// The quickest run of every frame. A tracker goes through the frames by itself, as in a controller: right after
// another one it would find their bits in the branch predictor, and look the quicker of the two.
void timeRun(const TWeldParams& params, const TTrackerOptions& options, const std::vector<cv::Mat>& images,
             std::vector<TCost>& costs, double TCost::*us) {
  TWeldTracker tracker(params, options);
  cv::Mat copy;
  for (std::size_t i = 0; i < images.size(); ++i) {
    const auto copyFrame = [&] { images[i].copyTo(copy); };
    copyFrame();
    costs[i].copyUs = std::min(costs[i].copyUs, microsecondsOf(copyFrame));
    costs[i].*us = std::min(costs[i].*us, trackUs(tracker, images[i]));
  }
}

// Without the first detection.
void measure(scenes::TJoint joint, const std::vector<cv::Mat>& images, std::vector<TCost>& costs) {
  const TWeldParams params = scenes::weldParamsFor(joint);
  std::vector<TCost> of(images.size());
  for (int repetition = 0; repetition < kRepetitions; ++repetition) {
    timeRun(params, {}, images, of, &TCost::defaultUs);
    timeRun(params, TTrackerOptions::exact(), images, of, &TCost::plainUs);
  }
  costs.insert(costs.end(), of.begin() + 1, of.end());
}

void report(scenes::TJoint joint, TLevel level, const char* levelName) {
  std::vector<TCost> costs;
  for (unsigned i = 0; i < kSequences; ++i) measure(joint, sequenceOf(joint, level, kFirstSeed + i), costs);
  double defaultUs = 0.0;
  double plainUs = 0.0;
  double copies = 0.0;
  std::vector<double> factors;
  for (const TCost& cost : costs) {
    defaultUs += cost.defaultUs;
    plainUs += cost.plainUs;
    copies = std::max(copies, cost.defaultUs / cost.copyUs);
    factors.push_back(cost.defaultUs / cost.plainUs);
  }
  const double tail = quantile(factors, 0.95);
  const auto count = static_cast<double>(costs.size());
  const bool isMet = defaultUs <= kMostMean * plainUs && tail <= kMostTail && copies <= kMostCopies;
  std::printf("| %s, %s | %.2f | %.2f | %.0f | %s | %.0f, %.0f |\n", scenes::shortNameOf(joint), levelName,
              defaultUs / plainUs, tail, copies, isMet ? "yes" : "no", defaultUs / count, plainUs / count);
}

}  // namespace

void reportTrackerCost() {
  std::printf(
      "\n## The default tracker over the plain rules, sequences, 1280 x 1024\n\n"
      "| joint, level | mean (%.1f) | 95 %% (%.1f) | dearest frame, copies (%.0f) | met | us, default and plain "
      "|\n"
      "|---|---|---|---|---|---|\n",
      kMostMean, kMostTail, kMostCopies);
  for (const auto& [joint, type] : scenes::seamJoints()) {
    report(joint, TLevel::noisy, "noisy");
    report(joint, TLevel::harsh, "harsh");
  }
}

}  // namespace bench
