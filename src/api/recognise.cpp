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

#include <optional>

namespace {

// A gap bends no profile: the columns that a plate would have and the stripe lacks speak for it. Nothing where the
// default tracker would not take it at once.
std::optional<TJointCandidate> recogniseGap(const weld::TFrame& frame, const weld::TStripe& stripe) {
  const weld::TJoint* const joint = weld::findJoint(TWeldType::buttGap);
  const weld::TSeam seam = joint->rules.findOwn(frame, stripe, {});
  if (!seam.isFound || seam.isUnsure) return std::nullopt;
  const TJointMeasurement measured = weld::measureSeam(seam, joint, frame.memory);
  if (!measured.isValid) return std::nullopt;
  return TJointCandidate{TWeldType::buttGap, measured.gapPx};
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
  const weld::TStripeProfile profile(stripe.points, stripe.sources, stripe.widthPx, &memory);
  for (const weld::TRankedJoint& ranked : weld::rankProfiles(profile, {}, &memory))
    candidates.push_back({ranked.weldType, ranked.fit.score});
  if (!candidates.empty()) return candidates;
  if (const auto gap = recogniseGap(frame, stripe)) candidates.push_back(*gap);
  return candidates;
}
