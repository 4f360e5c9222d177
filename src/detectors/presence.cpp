#include "detectors/presence.h"

#include <cmath>
#include <cstdint>
#include <cstdlib>

namespace weld {

namespace {

constexpr float kMinChange = 0.2F;

constexpr TCheck kAnyPoints =
    countCheck({6, TWeldOutcome::noStripe, "stripe", "no stripe"}, "stripe points", TRule::atLeast);
constexpr TCheck kPointsBefore =
    countCheck({7, TWeldOutcome::changedTooMuch, "stripe",
                "a half to two thirds of the stripe points gone since the last frame"},
               "stripe points in the last frame", TRule::atLeast);
constexpr TCheck kSteadyCount{{7, TWeldOutcome::changedTooMuch, "stripe",
                               "a half to two thirds of the stripe points gone since the last frame"},
                              "steady number of stripe points"};

// Deliberate: the quotient of the counts is an integer, truncated toward zero.
bool isCountSteady(std::size_t countNow, std::size_t countBefore) {
  const auto now = static_cast<std::int64_t>(countNow);
  const auto before = static_cast<std::int64_t>(countBefore);
  const std::int64_t quotient = (now - before) / now;
  return std::abs(static_cast<float>(std::abs(quotient)) - 1.0F) > kMinChange;
}

}  // namespace

TSeam findPresence(const TFrame& frame, const TStripe& stripe, const TPrevious& previous) {
  const TTrace& trace = frame.trace;
  const std::size_t now = stripe.points.size();
  const std::size_t before = previous.stripePts.size();
  TSeam seam(TPoints(stripe.points, frame.memory));
  seam.isFound = trace.passes(kAnyPoints, now, std::size_t{1}) &&
                 trace.passes(kPointsBefore, before, std::size_t{1}) &&
                 trace.holds(kSteadyCount, isCountSteady(now, before));
  return seam;
}

}  // namespace weld
