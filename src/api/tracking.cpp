// The per-frame entry point.
#include "zelWeldDetect.h"

#include "api/attempt.h"
#include "support/arena.h"
#include "support/grey_image.h"
#include "support/image_test.h"

#include <array>

namespace {

constexpr std::size_t kStackBytes = 16384;  // for the small lists of a frame; the others come from the heap

}  // namespace

TWeldLineRes detectWeldLineViaTracking(cv::Mat img, TWeldParams& params, TWeldLineRes prevRes) {
  const weld::TJoint* const joint = weld::findJoint(params.weldType);
  if (!weld::hasPixels(img) || joint == nullptr) return {};
  weld::requireReadable(img);
  alignas(64) std::array<std::byte, kStackBytes> stack;
  weld::TArena memory(stack.data(), stack.size());
  const weld::TFrame frame{img, params, &memory, {}};
  weld::TRidgeSearch ridges(&memory);
  const weld::TFound found = attemptByRule({frame, *joint, ridges}, {}, weld::TPrevious(prevRes));
  if (joint->rules.announce != nullptr) {
    int frames = 0;
    joint->rules.announce(frames, found.seam, found.stripe.widthPx);
  }
  return toLineRes(found.seam);
}
