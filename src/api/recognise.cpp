// Which joint the stripe of an image may be.
#include "api/attempt.h"
#include "api/joints.h"
#include "api/measure.h"
#include "profile/profile_engine.h"
#include "stripe/edge_pairs/edge_pairs.h"
#include "stripe/fused.h"
#include "stripe/whole_stripe.h"
#include "support/arena.h"
#include "support/grey_image.h"
#include "support/image_test.h"

#include <algorithm>
#include <optional>

namespace {

bool isGap(const weld::TRankedJoint& joint) {
  return joint.weldType == TWeldType::buttGap;
}

struct TGapClaim {
  TJointCandidate candidate;
  bool isSure = false;  // the default tracker would take it at once
};

// A gap bends no profile: the columns that a plate would have and the stripe lacks speak for it.
std::optional<TGapClaim> recogniseGap(const weld::TFrame& frame, const weld::TStripe& stripe) {
  const weld::TJoint* const joint = weld::findJoint(TWeldType::buttGap);
  const weld::TSeam seam = joint->rules.findOwn(frame, stripe, {});
  if (!seam.isFound) return std::nullopt;
  const TJointMeasurement measured = weld::measureSeam(seam, joint, frame.memory);
  if (!measured.isValid) return std::nullopt;
  return TGapClaim{{TWeldType::buttGap, measured.gapPx}, !seam.isUnsure};
}

}  // namespace

std::vector<TJointCandidate> recogniseJoint(const cv::Mat& image) {
  std::vector<TJointCandidate> candidates;
  if (!weld::hasPixels(image)) return candidates;
  weld::requireReadable(image);
  weld::TArena memory;
  const TWeldParams params;
  const weld::TFrame frame{image, params, &memory, {}};
  weld::TRidgeSearch ridges(&memory);
  const weld::TLook look = weld::lookEverywhere(frame);
  const weld::TStripe stripe =
      fuse(frame, weld::extractEdgePairs(frame, look.regions), weld::extractRidges(frame, look.regions, ridges));
  const bool hasExtent = static_cast<double>(stripe.points.size()) >= weld::kLeastExtent * image.cols;
  if (!hasExtent || !isWholeStripe(frame, stripe.points)) return candidates;
  const weld::TList<weld::TFlare> flares = weld::findFlares(frame, stripe.points);
  const std::optional<weld::TStripe> rest = weld::withoutFlares(frame, stripe, flares);
  const weld::TStripe& seen = rest ? *rest : stripe;
  const weld::TStripeProfile profile(seen.points, seen.sources, seen.widthPx, &memory);
  const weld::TList<weld::TRankedJoint> ranked = weld::rankProfiles(profile, {}, &memory);
  const bool mayBeGap = ranked.empty() || std::any_of(ranked.begin(), ranked.end(), isGap);
  const std::optional<TGapClaim> gap = mayBeGap ? recogniseGap(frame, stripe) : std::nullopt;
  for (const weld::TRankedJoint& joint : ranked) {
    // A hole that is none may be a flare, or light may go on through it.
    if (gap || !isGap(joint)) candidates.push_back({joint.weldType, joint.fit.score});
  }
  if (candidates.empty() && gap && gap->isSure) candidates.push_back(gap->candidate);
  return candidates;
}
