#include "api/seam_gate.h"

#include "support/image_test.h"

#include <cmath>

namespace weld {

namespace {

constexpr TCheck kNumber{{50, TWeldOutcome::seamOutside, "seam", "seam point is not a number"},
                         "seam point is a number"};
constexpr TCheck kSupport{{51, TWeldOutcome::fitTooWeak, "end of a piece", "corner without support"},
                          "support of both ends"};
constexpr TCheck kInside{{52, TWeldOutcome::seamOutside, "seam", "seam point outside the image"},
                         "seam point in the image"};
constexpr TCheck kJump{{53, TWeldOutcome::jumpHeldBack, "seam", "seam too far from the last one"},
                       "jump of the seam",
                       TRule::notAbove,
                       "px",
                       "maxJumpPx"};
constexpr TCheck kRepeats = countCheck({53, TWeldOutcome::jumpHeldBack, "seam", "seam too far from the last one"},
                                       "frames at the new place", TRule::atLeast, "acceptAfterFrames");

// A second frame that shows it elsewhere, by more than drift, speaks against it.
constexpr double kSamePlacePx = 20.0;
constexpr TCheck kUnsure{{53, TWeldOutcome::jumpHeldBack, "seam", "unsure seam that has not repeated yet"},
                         "unsure seam seen before"};

}  // namespace

bool isSeamPointPossible(const TFrame& frame, const TSeam& seam, const TJointRules& rules) {
  const TTrace& trace = frame.trace;
  return trace.holds(kNumber, std::isfinite(seam.pos.x) && std::isfinite(seam.pos.y)) &&
         trace.holds(kSupport, rules.hasSupport == nullptr || rules.hasSupport(seam)) &&
         trace.holds(kInside, isOnPixels(frame.image.size(), seam.pos));
}

double seamDistance(cv::Point2f a, cv::Point2f b) {
  const cv::Point2d d = cv::Point2d(a) - cv::Point2d(b);
  return std::sqrt(d.dot(d));
}

namespace {

constexpr double kRootShare = 0.67;  // of a jump of the root alone

TShoulders shouldersOf(const TSeam& seam) {
  if (!seam.profile) return {};
  const TMeasuredPoint& left = seam.profile->feature(TFeature::leftShoulder);
  const TMeasuredPoint& right = seam.profile->feature(TFeature::rightShoulder);
  return {left.isFound && right.isFound, cv::Point2f(left.pos), cv::Point2f(right.pos)};
}

double jumpOf(const TSeam& seam, const TJumpMemory& memory) {
  if (!memory.hasSeam) return 0.0;
  const double seamPx = seamDistance(seam.pos, memory.seam);
  const TShoulders now = shouldersOf(seam);
  const TShoulders& before = memory.shoulders;
  if (!now.areFound || !before.areFound || seam.profile->profile->measuring != TMeasuring::groove) return seamPx;
  const double shouldersPx = std::max(seamDistance(now.left, before.left), seamDistance(now.right, before.right));
  return std::max(shouldersPx, kRootShare * seamPx);
}

}  // namespace

bool passesJumpTest(const TSeam& found, const TTrackerOptions& options, TJumpMemory& memory, const TTrace& trace) {
  if (!found.isFound) memory.pendingFrames = 0;
  if (!found.isFound || !std::isfinite(options.maxJumpPx)) return true;
  const cv::Point2f seam = found.pos;
  const double jumpPx = jumpOf(found, memory);
  const bool repeats = memory.pendingFrames > 0 && seamDistance(seam, memory.pending) <= options.maxJumpPx;
  const int frames = repeats ? memory.pendingFrames + 1 : 1;
  if (found.isUnsure && !memory.hasSeam) {
    const bool isSeenAgain =
        repeats && seamDistance(seam, memory.pending) <= kSamePlacePx && found.isFlush == memory.isPendingFlush;
    memory = isSeenAgain ? TJumpMemory{true, seam, 0, {}, shouldersOf(found)}
                         : TJumpMemory{false, {}, 1, seam, {}, found.isFlush};
    return trace.holds(kUnsure, isSeenAgain);
  }
  const bool isConfirmed = jumpPx > options.maxJumpPx && frames >= options.acceptAfterFrames;
  const bool passes = isConfirmed ? trace.passes(kRepeats, frames, options.acceptAfterFrames)
                                  : trace.passes(kJump, jumpPx, options.maxJumpPx);
  memory = passes ? TJumpMemory{true, seam, 0, {}, shouldersOf(found)}
                  : TJumpMemory{true, memory.seam, frames, seam, memory.shoulders};
  return passes;
}

}  // namespace weld
