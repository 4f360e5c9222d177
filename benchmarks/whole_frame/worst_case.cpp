#include "worst_case.h"

#include "frames.h"
#include "timing.h"
#include "worst_frames.h"

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

namespace bench {

namespace {

using scenes::TJoint;

constexpr double kLimitCopies = 60.0;
constexpr int kScreeningRuns = 3;

struct TSubject {
  const char* name;
  TJoint joint;  // of the usual frame
  bool isPresence = false;
  bool usesRidges = false;
};

constexpr TSubject kSubjects[] = {{"gap", TJoint::buttGap},
                                  {"lap", TJoint::lap},
                                  {"corner", TJoint::corner},
                                  {"plate", TJoint::plate},
                                  {"presence, edge pairs", TJoint::buttGap, true},
                                  {"presence, ridges", TJoint::buttGap, true, true}};

TFrame makeUsualFrame(const TSubject& subject) {
  TFrame frame = makeFrame(subject.joint, TScenery::dark);
  if (!subject.isPresence) return frame;
  initWeldParameters(TWeldType::stripePresence, frame.params, TWeldPosType::centre);
  frame.params.flagPara1 = subject.usesRidges;
  frame.params.flagPara2 = true;
  return frame;
}

struct TWorstCase {
  std::string name;
  cv::Mat image;
  TWeldLineRes previous;
  double us = 0.0;
};

// The usual previous result, moved onto the guide.
TWeldLineRes previousOn(const TWorstGuide& guide, const TFrame& usual) {
  if (guide.stripePts.empty()) return {};
  TWeldLineRes previous = usual.previous;
  previous.isFound = true;
  previous.stripePts = guide.stripePts;
  return previous;
}

double leastMicroseconds(const TWork& work) {
  double least = microsecondsOf(work);
  for (int run = 1; run < kScreeningRuns; ++run) least = std::min(least, microsecondsOf(work));
  return least;
}

// By a quick look at all of them.
TWorstCase findWorst(const TFrame& usual, const std::vector<TWorstFrame>& frames,
                     const std::vector<TWorstGuide>& guides) {
  TWorstCase worst;
  for (const TWorstFrame& frame : frames) {
    for (const TWorstGuide& guide : guides) {
      TWorstCase now{frame.name + ", " + guide.name, frame.image, previousOn(guide, usual)};
      now.us = leastMicroseconds([&] { detect(now.image, usual.params, now.previous); });
      if (now.us > worst.us) worst = now;
    }
  }
  return worst;
}

}  // namespace

void reportWorstCases() {
  const std::vector<TWorstFrame> frames = makeWorstFrames();
  const std::vector<TWorstGuide> guides = makeWorstGuides();
  std::printf(
      "\n## Worst cases, 1280 x 1024\n\n"
      "| joint | usual, times copyTo | worst, times copyTo | worst / usual | limit | met | worst, us | frame |\n"
      "|---|---|---|---|---|---|---|---|\n");
  for (const TSubject& subject : kSubjects) {
    const TFrame usual = makeUsualFrame(subject);
    const TWorstCase worst = findWorst(usual, frames, guides);
    const std::vector<TTiming> t =
        measureAgainstCopy(worst.image, {[&] { detect(usual.scene.image, usual.params, {}); },
                                         [&] { detect(usual.scene.image, usual.params, usual.previous); },
                                         [&] { detect(worst.image, usual.params, worst.previous); }});
    const double usualCopies = std::max(t[0].timesCopy(), t[1].timesCopy());
    // A work of this size sweeps the caches: the copies beside it would flatter it.
    const double worstCopies = t[2].workUs / t[0].copyUs;
    std::printf("| %s | %.1f | %.1f | %.0f | %.0f | %s | %.0f | %s |\n", subject.name, usualCopies, worstCopies,
                worstCopies / usualCopies, kLimitCopies, worstCopies <= kLimitCopies ? "yes" : "no", t[2].workUs,
                worst.name.c_str());
  }
}

}  // namespace bench
