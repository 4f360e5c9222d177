#include "api/seam_gate.h"

#include <cmath>
#include <utility>

namespace weld {

namespace {

// Where the refinement of a plate's end puts an end without support.
const cv::Point2d kMarker{-1.0, -1.0};
constexpr double kOnMarkerPx = 1e-3;  // single precision of the ends moves the line by less

constexpr TCheck kNumber{TWeldOutcome::pointNotFinite, "seam point is a number"};
constexpr TCheck kSupport{TWeldOutcome::markerPoint, "support of both ends"};
constexpr TCheck kInside{TWeldOutcome::pointOutside, "seam point in the image"};
constexpr TCheck kJump{TWeldOutcome::jumpHeldBack, "jump of the seam", TRule::notAbove, "px", "maxJumpPx"};
constexpr TCheck kRepeats =
    countCheck(TWeldOutcome::jumpHeldBack, "frames at the new place", TRule::atLeast, "acceptAfterFrames");

// A plate's line runs through both its ends, so that it shows a marker that the mean of the ends hides.
bool hasMarkerEnd(const TWeldLineRes& plate) {
  const double slope = plate.auxVal1;
  const double intercept = plate.auxVal2;
  return std::abs(slope * kMarker.x + intercept - kMarker.y) < kOnMarkerPx;
}

bool isInside(cv::Point2f p, cv::Size imageSize) {
  return p.x >= 0.0F && p.y >= 0.0F && p.x <= static_cast<float>(imageSize.width - 1) &&
         p.y <= static_cast<float>(imageSize.height - 1);
}

}  // namespace

bool isSeamPointPossible(const TWeldLineRes& seam, TWeldType type, cv::Size imageSize, const TTrace& trace) {
  const cv::Point2f p = seam.weldPos;
  return trace.holds(kNumber, std::isfinite(p.x) && std::isfinite(p.y)) &&
         trace.holds(kSupport, type != TWeldType::plate || !hasMarkerEnd(seam)) &&
         trace.holds(kInside, isInside(p, imageSize));
}

TWeldLineRes withoutSeam(TWeldLineRes refused) {
  TWeldLineRes result;
  result.stripePts = std::move(refused.stripePts);
  return result;
}

double seamDistance(cv::Point2f a, cv::Point2f b) {
  const cv::Point2d d = cv::Point2d(a) - cv::Point2d(b);
  return std::sqrt(d.dot(d));
}

bool passesJumpTest(cv::Point2f seam, const TTrackerOptions& options, TJumpMemory& memory, const TTrace& trace) {
  if (std::isinf(options.maxJumpPx)) return true;
  const double jumpPx = memory.hasSeam ? seamDistance(seam, memory.seam) : 0.0;
  const bool repeats = memory.pendingFrames > 0 && seamDistance(seam, memory.pending) <= options.maxJumpPx;
  const int frames = repeats ? memory.pendingFrames + 1 : 1;
  const bool isConfirmed = jumpPx > options.maxJumpPx && frames >= options.acceptAfterFrames;
  const bool passes = isConfirmed ? trace.passes(kRepeats, frames, options.acceptAfterFrames)
                                  : trace.passes(kJump, jumpPx, options.maxJumpPx);
  memory = passes ? TJumpMemory{true, seam, 0, {}} : TJumpMemory{true, memory.seam, frames, seam};
  return passes;
}

}  // namespace weld
