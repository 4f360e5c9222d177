#include "tools/demo_report.h"

#include "tools/image_file.h"
#include "tools/output_file.h"
#include "tools/report.h"

#include "scenes/scene.h"

#include <vector>

namespace tool {
namespace {

constexpr int kFrames = 120;
constexpr std::uint64_t kSeed = 3;
constexpr int kNextPartFrame = 75;
constexpr int kFirstKeptFrame = 44;
constexpr int kLastKeptFrame = 67;
constexpr double kLowStepPx = 12.0;  // the joint's default asks for 20

struct TTrouble {
  int firstFrame;
  int lastFrame;
  void (*apply)(scenes::TSceneParams&);
};

const std::vector<TTrouble>& troubles() {
  static const std::vector<TTrouble> rows = {
      // the laser flickers; the laser is off
      {30, 31, [](scenes::TSceneParams& scene) { scene.joint = scenes::TJoint::blank; }},
      {50, 57, [](scenes::TSceneParams& scene) { scene.joint = scenes::TJoint::blank; }},
      // the upper plate lies flat
      {95, 102, [](scenes::TSceneParams& scene) { scene.geometry.stepPx = kLowStepPx; }}};
  return rows;
}

scenes::TSceneParams sceneOf(int frame) {
  static const scenes::TSceneParams first = scenes::randomScene(scenes::TJoint::lap, scenes::TLevel::harsh, kSeed);
  scenes::TMotion motion;
  motion.driftPx = {1.0, 0.3};
  motion.jitterPx = 0.5;
  motion.jumpAtFrame = kNextPartFrame;
  motion.jumpPx = {80.0, -20.0};
  scenes::TSceneParams scene = scenes::frameOf(first, motion, frame);
  for (const TTrouble& trouble : troubles()) {
    if (frame >= trouble.firstFrame && frame <= trouble.lastFrame) {
      trouble.apply(scene);
    }
  }
  return scene;
}

}  // namespace

void writeDemoReport(const std::filesystem::path& folder) {
  makeFolder(folder / "frames");
  TTracking tracking;
  tracking.params = scenes::weldParamsFor(scenes::TJoint::lap, TWeldPosType::centre);
  tracking.tracker.keepTrace = true;
  TFrameTracker tracker(tracking);
  TReport report(tracking);
  for (int n = 0; n < kFrames; ++n) {
    const cv::Mat image = scenes::renderScene(sceneOf(n)).image;
    const TFrame frame{n, "simulated lap seam, frame " + std::to_string(n), image, image.size(), n == 0, {}};
    const TTrackedFrame tracked = tracker.track(frame);
    report.add(tracked.record, tracked.image);
    if (n >= kFirstKeptFrame && n <= kLastKeptFrame) {
      writeImage(folder / "frames" / cv::format("frame_%04d.png", n), frame.image);
    }
  }
  report.write(folder / "report.html");
}

}  // namespace tool
