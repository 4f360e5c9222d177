#include "seam_targets.h"

#include "seam_reel.h"

#include <array>

namespace accuracy {

namespace {

using scenes::TJoint;
using scenes::TLevel;

constexpr double kAny = -1.0;  // nothing is wanted

struct TErrors {
  double medianPx;
  double p95Px;
};
using TErrorRow = std::array<TErrors, 4>;  // clean, noisy, harsh, real
using TRowOf4 = std::array<double, 4>;
constexpr TErrors kAnyError{kAny, kAny};

// What several joints have in common.
struct TGroup {
  TRowOf4 foundFirst, foundTracking;
  TErrorRow main, points;
  double harshTrackingShare;  // of the 95 % errors at level harsh, while tracking
  TRowOf4 wrong;
  TRowOf4 falseFirst, falseTracking;
};

constexpr TErrorRow kShoulders{{{0.1, 0.4}, {0.2, 1.0}, {1.0, 4.0}, kAnyError}};
constexpr TErrorRow kSharp{{{0.05, 0.2}, {0.15, 0.5}, {0.2, 0.7}, {0.4, 1.5}}};
constexpr TErrorRow kEnds{{{0.1, 0.4}, {0.3, 0.9}, {0.4, 1.2}, {0.6, 2.0}}};
constexpr TRowOf4 kNoWrong{kAny, kAny, kAny, kAny};
constexpr TRowOf4 kGrooveFalse{0.0, 0.2, 1.0, kAny};
constexpr TRowOf4 kGrooveFalseTracking{0.0, 0.2, 0.2, kAny};
constexpr TRowOf4 kPlainFound{100.0, 100.0, 99.0, 97.0};
constexpr TRowOf4 kPlainWrong{0.0, 0.0, 0.2, 1.0};
constexpr TRowOf4 kPlainFalse{0.0, 0.1, 0.3, 0.5};

constexpr TGroup kFlanks{{100.0, 99.5, 98.0, kAny},
                         {100.0, 99.5, 98.0, kAny},
                         {{{0.2, 0.6}, {0.3, 1.0}, {0.8, 4.0}, kAnyError}},
                         kShoulders,
                         0.5,
                         kNoWrong,
                         kGrooveFalse,
                         kGrooveFalseTracking};
constexpr TGroup kU{{100.0, 99.0, 95.0, kAny},
                    {100.0, 99.0, 98.0, kAny},
                    {{{0.1, 0.4}, {0.3, 1.5}, {1.0, 4.0}, kAnyError}},
                    kShoulders,
                    0.5,
                    kNoWrong,
                    kGrooveFalse,
                    kGrooveFalseTracking};
constexpr TGroup kFlares{{100.0, 99.0, 95.0, kAny},
                         {100.0, 99.0, 98.0, kAny},
                         {{{0.15, 0.4}, {0.5, 1.8}, {2.5, 10.0}, kAnyError}},
                         kShoulders,
                         0.5,
                         kNoWrong,
                         kGrooveFalse,
                         kGrooveFalseTracking};
constexpr TGroup kGapAndCorner{kPlainFound, kPlainFound, kSharp,      kSharp,
                               1.0,         kPlainWrong, kPlainFalse, kPlainFalse};
constexpr TGroup kLapAndPlate{kPlainFound, kPlainFound, kEnds, kEnds, 1.0, kPlainWrong, kPlainFalse, kPlainFalse};

constexpr TRowOf4 kRecovery{0.0, 0.0, 1.0, 2.0};  // of joints that are not grooves
constexpr TRowOf4 kRecognised{99.5, 99.0, 90.0, kAny};
constexpr TRowOf4 kSilent{100.0, 99.8, 99.0, kAny};
constexpr TWanted kConfidenceOff{-0.1, 0.1};
constexpr TWanted kSigma{0.7, 1.4};

const TGroup& groupOf(TJoint joint) {
  if (joint == TJoint::vGroove || joint == TJoint::singleBevel) return kFlanks;
  if (joint == TJoint::uGroove) return kU;
  if (isGroove(joint)) return kFlares;
  return joint == TJoint::buttGap || joint == TJoint::corner ? kGapAndCorner : kLapAndPlate;
}

TWanted least(double value) {
  return value == kAny ? TWanted() : atLeast(value);
}

TWanted most(double value) {
  return value == kAny ? TWanted() : atMost(value);
}

std::size_t indexOf(TLevel level) {
  return static_cast<std::size_t>(level);
}

}  // namespace

TSeamTarget seamTarget(TJoint joint, TLevel level, bool isTracking) {
  const TGroup& group = groupOf(joint);
  const std::size_t i = indexOf(level);
  const double share = isTracking && level == TLevel::harsh ? group.harshTrackingShare : 1.0;
  const auto p95 = [share](double px) { return px == kAny ? TWanted() : atMost(share * px); };
  return {least(isTracking ? group.foundTracking[i] : group.foundFirst[i]),
          most(group.main[i].medianPx),
          p95(group.main[i].p95Px),
          most(group.points[i].medianPx),
          p95(group.points[i].p95Px),
          most(group.wrong[i])};
}

TWanted falseTarget(TJoint asked, TLevel level, bool isTracking) {
  const TGroup& group = groupOf(asked);
  return most(isTracking ? group.falseTracking[indexOf(level)] : group.falseFirst[indexOf(level)]);
}

TWanted recoveryTarget(TJoint joint, TLevel level) {
  return isGroove(joint) ? TWanted() : most(kRecovery[indexOf(level)]);
}

TWanted recognitionTarget(TLevel level) {
  return least(kRecognised[indexOf(level)]);
}

TWanted silenceTarget(TLevel level) {
  return least(kSilent[indexOf(level)]);
}

TWanted confidenceTarget() {
  return kConfidenceOff;
}

TWanted sigmaTarget() {
  return kSigma;
}

}  // namespace accuracy
