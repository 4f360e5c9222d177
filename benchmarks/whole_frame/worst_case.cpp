#include "worst_case.h"

#include "frames.h"
#include "scenes/joints.h"
#include "timing.h"
#include "worst_frames.h"

#include <algorithm>
#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace bench {

namespace {

using scenes::TJoint;

constexpr double kLimitCopies = 60.0;
constexpr int kScreeningRuns = 5;
constexpr int kRuns = 101;

struct TSubject {
  std::string name;
  TJoint joint = TJoint::buttGap;  // of the usual frame
  bool isPresence = false;
  bool usesRidges = false;
};

std::vector<TSubject> makeSubjects() {
  std::vector<TSubject> subjects;
  for (const scenes::TDrawnJoint& row : scenes::seamJoints()) {
    subjects.push_back({scenes::shortNameOf(row.joint), row.joint});
  }
  subjects.push_back({"presence, edge pairs", TJoint::buttGap, true});
  subjects.push_back({"presence, ridges", TJoint::buttGap, true, true});
  return subjects;
}

TFrame makeUsualFrame(const TSubject& subject) {
  TFrame frame = makeFrame(subject.joint, TScenery::dark);
  if (!subject.isPresence) return frame;
  frame.params = TPresenceSettings{subject.usesRidges, true}.params();
  return frame;
}

// Something done to a frame, timed after what leads up to it.
struct TCase {
  std::string name;
  std::function<void()> prepare;
  std::function<void()> work;
};

struct TTimedCase {
  std::string name;
  double us = 0.0;
};

double medianMicroseconds(const TCase& timed, int runs) {
  std::vector<double> us;
  for (int run = 0; run < runs; ++run) {
    timed.prepare();
    us.push_back(microsecondsOf(timed.work));
  }
  return median(us);
}

// By a quick look at all of them, and a closer one at the dearest.
TTimedCase findDearest(const std::vector<TCase>& cases) {
  const TCase* dearest = nullptr;
  double mostUs = 0.0;
  for (const TCase& now : cases) {
    const double us = medianMicroseconds(now, kScreeningRuns);
    if (us <= mostUs) continue;
    mostUs = us;
    dearest = &now;
  }
  return {dearest->name, medianMicroseconds(*dearest, kRuns)};
}

// The usual previous result, moved onto the guide.
TWeldLineRes previousOn(const TWorstGuide& guide, const TFrame& usual) {
  if (guide.stripePts.empty()) return {};
  TWeldLineRes previous = usual.previous;
  previous.isFound = true;
  previous.stripePts = guide.stripePts;
  return previous;
}

void doNothing() {}

// Calls of the plain entry point.
std::vector<TCase> plainCases(const TFrame& usual, const std::vector<TWorstFrame>& frames) {
  std::vector<TCase> cases;
  for (const TWorstGuide& guide : makeWorstGuides()) {
    const TWeldLineRes previous = previousOn(guide, usual);
    for (const TWorstFrame& frame : frames) {
      cases.push_back({frame.name + ", " + guide.name, doNothing,
                       [=, &usual] { detect(frame.image, usual.params, previous); }});
    }
  }
  return cases;
}

// What a tracker with the default options goes through when it loses its seam: the frame that loses it, one in
// which the seam is held, and the first one after that.
std::vector<TCase> trackerCases(const TFrame& usual, const std::vector<TWorstFrame>& frames) {
  const int framesUntilFirst = TTrackerOptions().holdFrames + 1;
  const std::pair<const char*, int> moments[] = {{"losing", 0}, {"holding", 1}, {"searching", framesUntilFirst}};
  const auto tracker = std::make_shared<TWeldTracker>(usual.params);
  std::vector<TCase> cases;
  for (const TWorstFrame& frame : frames) {
    for (const auto& [moment, framesBefore] : moments) {
      const auto prepare = [=, &usual, count = framesBefore] {
        tracker->reset();
        tracker->track(usual.scene.image);
        for (int i = 0; i < count; ++i) tracker->track(frame.image);
      };
      cases.push_back({frame.name + ", " + moment, prepare, [=] { tracker->track(frame.image); }});
    }
  }
  return cases;
}

double usualMicroseconds(const TFrame& usual) {
  const auto detectWith = [&](const TWeldLineRes& previous) {
    return TCase{"", doNothing, [&] { detect(usual.scene.image, usual.params, previous); }};
  };
  const TWeldLineRes none;
  return std::max(medianMicroseconds(detectWith(none), kRuns),
                  medianMicroseconds(detectWith(usual.previous), kRuns));
}

double copyMicroseconds(const cv::Mat& image) {
  cv::Mat copy;
  return medianMicroseconds({"", doNothing, [&] { image.copyTo(copy); }}, kRuns);
}

// Thin zig-zag stripe in flanks too short for straight pieces: every vertex is split off by itself.
cv::Mat1b drawWideZigzag(int columns) {
  constexpr int kHalfPeriodPx = 6;
  cv::Mat1b image(24, columns, static_cast<unsigned char>(10));
  for (int x = 0; x < columns; ++x) {
    const int phase = x % (2 * kHalfPeriodPx);
    const int rise = phase < kHalfPeriodPx ? phase : 2 * kHalfPeriodPx - phase;
    image(cv::Rect(x, 4 + 5 * rise / 2, 1, 3)) = 220;
  }
  return image;
}

}  // namespace

void reportWideFrames() {
  std::printf("\n## Very wide frames, a corner's first detection\n\n| columns | ms |\n|---|---|\n");
  const TWeldParams params = TCornerSettings().params();
  for (const int columns : {1280, 8192, 16384, 65536}) {
    const cv::Mat1b image = drawWideZigzag(columns);
    const double us = medianMicroseconds({"", doNothing, [&] { detect(image, params, {}); }}, kScreeningRuns);
    std::printf("| %d | %.1f |\n", columns, us / 1e3);
  }
}

void reportWorstCases() {
  const std::vector<TWorstFrame> frames = makeWorstFrames();
  std::printf(
      "\n## Worst cases, 1280 x 1024\n\n"
      "| joint, caller | usual, times copyTo | worst, times copyTo | worst / usual | limit | met | worst, us "
      "| dearest frame |\n|---|---|---|---|---|---|---|---|\n");
  for (const TSubject& subject : makeSubjects()) {
    const TFrame usual = makeUsualFrame(subject);
    const double copyUs = copyMicroseconds(usual.scene.image);
    const double usualUs = usualMicroseconds(usual);
    const auto row = [&](const char* caller, const TTimedCase& worst) {
      std::printf("| %s, %s | %.1f | %.1f | %.0f | %.0f | %s | %.0f | %s |\n", subject.name.c_str(), caller,
                  usualUs / copyUs, worst.us / copyUs, worst.us / usualUs, kLimitCopies,
                  worst.us <= kLimitCopies * copyUs ? "yes" : "no", worst.us, worst.name.c_str());
      std::fflush(stdout);
    };
    row("plain", findDearest(plainCases(usual, frames)));
    row("tracker", findDearest(trackerCases(usual, frames)));
  }
}

}  // namespace bench
