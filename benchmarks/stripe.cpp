// Stripe extraction and the whole detection of a gap, measured in times of copying the same frame: copy and
// work take turns, so that whatever else the machine does meets both. `timesCopyTo` is the ratio of the
// medians, `errorPx` the median distance of the centres from the true stripe.
//
// OPENCV_CPU_DISABLE=AVX2 in the environment makes the whole detection take the baseline kernels.
#include "against_copy.h"
#include "plain_extraction.h"
#include "scenes/scene.h"
#include "stripe/edge_pairs/candidates.h"
#include "stripe/edge_pairs/region_scan.h"
#include "stripe/regions.h"
#include "zelWeldDetect.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace {

constexpr int kThreshold = 30;
constexpr int kBandPx = 60;

struct TFrame {
  std::string name;
  scenes::TScene scene;
  std::vector<cv::Rect> whole;
  std::vector<cv::Rect> bands;
  TWeldLineRes previous;
};

scenes::TSceneParams sceneOf(const std::string& name, cv::Size size) {
  scenes::TSceneParams params = scenes::randomScene(scenes::TJoint::buttGap, scenes::TLevel::clean, 1, size);
  params.look.fwhmPx = 10.0;
  params.look.rootFwhmPx = 10.0;
  if (name == "bright") {
    params.look.background = 60.0;
    params.look.noiseSigma = 5.0;
  }
  if (name == "spatter") {
    params.look.noiseSigma = 3.0;
    params.look.spatter = 12;
    params.look.blobs = 4;
    params.look.arcGlow = 120.0;
  }
  return params;
}

TWeldLineRes detect(const cv::Mat& image, const TWeldLineRes& previous) {
  TWeldParams params = scenes::weldParamsFor(scenes::TJoint::buttGap);
  return detectWeldLineViaTracking(image, params, previous);
}

TFrame makeFrame(const std::string& name, cv::Size size) {
  TFrame frame{name, scenes::renderScene(sceneOf(name, size)), {cv::Rect({0, 0}, size)}, {}, {}};
  frame.previous = detect(frame.scene.image, {});
  const std::vector<cv::Point> guide(frame.previous.stripePts.begin(), frame.previous.stripePts.end());
  const auto bands = weld::buildStripeRegions(size, guide, kBandPx, weld::heapMemory());
  frame.bands.assign(bands.begin(), bands.end());
  return frame;
}

double centreError(const TFrame& frame, const std::vector<cv::Point2f>& centres) {
  std::vector<double> errors;
  for (const cv::Point2f c : centres) {
    const double truth = frame.scene.truth.centreY[static_cast<std::size_t>(c.x)];
    if (!std::isnan(truth)) errors.push_back(std::abs(c.y - truth));
  }
  return bench::median(errors);
}

// The work returns the centres.
template <typename TWork>
void runOnFrame(benchmark::State& state, const TFrame& frame, TWork work) {
  const std::vector<cv::Point2f> centres = work();
  const double errorPx = centreError(frame, centres);
  if (centres.size() < frame.scene.truth.centreY.size() / 2 || errorPx > 1.0) {
    state.SkipWithError("the stripe was not found");
    return;
  }
  bench::runAgainstCopy(state, frame.scene.image, [&] { benchmark::DoNotOptimize(work()); });
  state.counters["errorPx"] = errorPx;
}

std::vector<cv::Point2f> extractWith(const weld::TEdgeKernels& kernels, const cv::Mat& image,
                                     const std::vector<cv::Rect>& regions) {
  const TWeldParams params;
  weld::TRegionScanner scanner(image, kThreshold, weld::heapMemory(), kernels);
  for (const cv::Rect& region : regions) scanner.scanStripeRegion(region);
  const auto reduced = weld::reduceStripeCandidates(weld::heapFrame(image, params), scanner.candidates);
  return {reduced.centres.begin(), reduced.centres.end()};
}

void addFrame(const std::string& name, cv::Size size) {
  const auto frame = std::make_shared<const TFrame>(makeFrame(name, size));
  const auto add = [&](const std::string& what, auto work) {
    const std::string title =
        what + "/" + name + "/" + std::to_string(size.width) + "x" + std::to_string(size.height);
    benchmark::RegisterBenchmark(title.c_str(),
                                 [frame, work](benchmark::State& state) { runOnFrame(state, *frame, work); })
        ->UseManualTime()
        ->Unit(benchmark::kMicrosecond);
  };
  const cv::Mat& image = frame->scene.image;
  add("detectFirst", [=] { return detect(image, {}).stripePts; });
  add("detectTracking", [=] { return detect(image, frame->previous).stripePts; });
  for (const bool isTracking : {false, true}) {
    const std::string suffix = isTracking ? "Bands" : "Whole";
    const std::vector<cv::Rect>& regions = isTracking ? frame->bands : frame->whole;
    add("extract" + suffix + "Baseline",
        [=] { return extractWith(weld::kBaselineKernels.edges, image, regions); });
    add("extract" + suffix + "Chosen", [=] { return extractWith(weld::kernels().edges, image, regions); });
    add("extract" + suffix + "Plain",
        [=] { return weld::plain::extractStripe(image, regions, kThreshold).centres; });
  }
}

}  // namespace

int main(int argc, char** argv) {
  for (const char* name : {"clean", "bright", "spatter"}) addFrame(name, {1280, 1024});
  for (const cv::Size size : {cv::Size(640, 480), cv::Size(2448, 2048), cv::Size(4096, 3000)})
    addFrame("clean", size);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
