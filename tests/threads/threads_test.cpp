// Trackers of their own, calls of the plain entry point and rankings of joints on many threads at once, with
// images and parameters that all of them share. `make test-tsan` builds this with the thread sanitizer.
#include "support/checksum.h"
#include "support/reel.h"
#include "zelWeldDetect.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <iterator>
#include <thread>
#include <vector>

namespace {

using scenes::TJoint;

const cv::Size kFrameSize{640, 480};
constexpr int kFrames = 5;
constexpr int kJumpAt = 3;  // the frame in which tracking is lost
constexpr int kThreadsPerKind = 6;
constexpr std::uint64_t kSeed = 11;

struct TSequence {
  TWeldParams params;
  std::vector<cv::Mat> images;  // grey and BGR in turns
};

TSequence makeSequence(TJoint joint) {
  const auto first = scenes::randomScene(joint, scenes::TLevel::noisy, kSeed, kFrameSize);
  const scenes::TMotion motion = reel::withJump(reel::drift({1.0, 0.5}, 0.0), kJumpAt, {0.0, 90.0});
  TSequence sequence{scenes::weldParamsFor(joint), {}};
  for (const scenes::TScene& scene : reel::render(first, motion, kFrames)) {
    const bool isGrey = sequence.images.size() % 2 == 0;
    sequence.images.push_back(isGrey ? scene.image : reel::inColour(scene.image));
  }
  return sequence;
}

std::vector<TSequence> makeSequences() {
  std::vector<TSequence> sequences;
  for (const auto& [joint, type] : scenes::detectedJoints()) sequences.push_back(makeSequence(joint));
  sequences.push_back(sequences.back());
  sequences.back().params.flagPara1 = true;  // ridges
  return sequences;
}

using TChecksums = std::vector<std::uint32_t>;  // of every frame

TChecksums callPlainly(TSequence& sequence) {
  TChecksums sums;
  TWeldLineRes previous;
  for (const cv::Mat& image : sequence.images) {
    previous = detectWeldLineViaTracking(image, sequence.params, previous);
    sums.push_back(checksumOf(previous));
  }
  return sums;
}

TChecksums track(TSequence& sequence) {
  TChecksums sums;
  TWeldTracker tracker(sequence.params);
  for (const cv::Mat& image : sequence.images) sums.push_back(checksumOf(tracker.track(image).line));
  return sums;
}

TChecksums rank(TSequence& sequence) {
  TChecksum sum;
  for (const TJointCandidate& candidate : recogniseJoint(sequence.images.front())) {
    sum.add(&candidate.weldType, sizeof candidate.weldType);
    sum.add(&candidate.score, sizeof candidate.score);
  }
  return {sum.value};
}

// The stripe itself is a bright line.
TChecksums findLine(TSequence& sequence) {
  TContrastSearch search;
  search.polarity = TSeamPolarity::bright;
  search.minConfidence = 0.0F;
  const TContourCenterLine line = findSeamByContrast(sequence.images.back(), search);
  TChecksum sum;
  sum.add(line.pts.data(), line.pts.size() * sizeof(cv::Point2f));
  sum.add({line.confidence, line.widthPx});
  return {sum.value};
}

using TRun = TChecksums (*)(TSequence& sequence);
constexpr TRun kRuns[] = {callPlainly, track, rank, findLine};
constexpr int kKinds = static_cast<int>(std::size(kRuns));
constexpr int kThreads = kKinds * kThreadsPerKind;

TEST(Threads, giveTheResultsOfOneThread) {
  std::vector<TSequence> sequences = makeSequences();
  std::vector<TChecksums> expected[kKinds];
  for (int kind = 0; kind < kKinds; ++kind) {
    for (TSequence& sequence : sequences) expected[kind].push_back(kRuns[kind](sequence));
  }

  std::atomic<int> waiting{kThreads};
  std::vector<int> wrong(kThreads);
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      --waiting;
      while (waiting > 0) std::this_thread::yield();
      for (std::size_t i = 0; i < sequences.size(); ++i) {
        const std::size_t s =
            (i + static_cast<std::size_t>(t)) % sequences.size();  // all kinds of frames at any time
        if (kRuns[t % kKinds](sequences[s]) != expected[t % kKinds][s]) ++wrong[static_cast<std::size_t>(t)];
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(wrong, std::vector<int>(wrong.size())) << "sequences with other results, per thread";
}

}  // namespace
