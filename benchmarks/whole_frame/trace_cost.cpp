#include "trace_cost.h"

#include "frames.h"
#include "scenes/joints.h"
#include "timing.h"

#include <cstdio>
#include <vector>

namespace bench {

namespace {

TWeldTracker makeTracker(const TWeldParams& params, bool keepTrace) {
  TTrackerOptions options = TTrackerOptions::exact();
  options.keepTrace = keepTrace;
  return TWeldTracker(params, options);
}

}  // namespace

void reportTraceCost() {
  std::printf("\n## What a trace costs\n\n| joint, call | times copyTo | us |\n|---|---|---|\n");
  for (const auto& [joint, type] : scenes::seamJoints()) {
    const char* const name = scenes::shortNameOf(joint);
    const TFrame frame = makeFrame(joint, TScenery::dark);
    const cv::Mat& image = frame.scene.image;
    TWeldTracker plain = makeTracker(frame.params, false);
    TWeldTracker tracing = makeTracker(frame.params, true);
    const std::vector<TTiming> t =
        measureAgainstCopy(image, {[&] { plain.track(image); }, [&] { tracing.track(image); }});
    std::printf("| %s, tracking | %.2f | %.0f |\n", name, t[0].timesCopy(), t[0].workUs);
    std::printf("| %s, tracking with a trace | %.2f | %.0f |\n", name, t[1].timesCopy(), t[1].workUs);
  }
}

}  // namespace bench
