// Whole calls of two builds of the library in one process: the same frames at the same addresses, in turn, so that
// whatever else the machine does meets both. Prints Markdown.
//
//     bench_paired OTHER_LIBRARY NAME [PART]
//
// OTHER_LIBRARY, libzelWeldDetect.so of another commit, is linked with -Bsymbolic: its calls stay inside it. NAME
// heads its columns.
#include "benchmarks/whole_frame/frames.h"
#include "benchmarks/whole_frame/timing.h"
#include "benchmarks/whole_frame/worst_frames.h"
#include "scenes/joints.h"
#include "support/heap.h"

#include <opencv2/core/utility.hpp>
#include <opencv2/imgproc.hpp>

#include <dlfcn.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

namespace {

using bench::TScenery;
using scenes::TJoint;
using TDetect = decltype(&detectWeldLineViaTracking);

constexpr double kMostSlower = 1.03;
constexpr double kUndisturbed = 0.1;  // of the runs: on a machine with other guests a median moves by 10 %

// The same function, by the name that the compiler gave it here.
TDetect detectOf(const char* library) {
  Dl_info own{};
  void* const handle = dlopen(library, RTLD_NOW | RTLD_LOCAL);
  if (handle == nullptr || dladdr(reinterpret_cast<void*>(&detectWeldLineViaTracking), &own) == 0) {
    std::fprintf(stderr, "bench_paired: %s\n", handle == nullptr ? dlerror() : "needs the shared library");
    std::exit(1);
  }
  void* const found = dlsym(handle, own.dli_sname);
  if (found == nullptr || found == own.dli_saddr) {
    std::fprintf(stderr, "bench_paired: %s has no entry point of its own\n", library);
    std::exit(1);
  }
  return reinterpret_cast<TDetect>(found);
}

bool isSame(const TWeldLineRes& a, const TWeldLineRes& b) {
  return a.isFound == b.isFound && a.weldPos == b.weldPos && a.stripePts == b.stripePts &&
         a.auxVal1 == b.auxVal1 && a.trackVal == b.trackVal;
}

struct TCall {
  std::string name;
  const cv::Mat& image;
  const TWeldParams& params;
  const TWeldLineRes& previous;
};

class TComparison {
public:
  TComparison(TDetect other, std::string part)
      : detects{other, &detectWeldLineViaTracking}, wanted(std::move(part)) {}

  void add(const TCall& call, bool isOptimized = true) {
    const std::string name = call.name + (isOptimized ? "" : ", baseline");
    if (name.find(wanted) == std::string::npos) return;
    cv::setUseOptimized(isOptimized);
    const auto callWith = [&](TDetect detect) {
      TWeldParams params = call.params;
      return detect(call.image, params, call.previous);
    };
    const auto requestsOf = [&](TDetect detect) {
      const long before = heap::requests();
      callWith(detect);
      return heap::requests() - before;
    };
    const bool isEqual = isSame(callWith(detects[0]), callWith(detects[1]));
    const std::vector<bench::TTiming> t = bench::measureAgainstCopy(
        call.image, {[&] { callWith(detects[0]); }, [&] { callWith(detects[1]); }}, kUndisturbed);
    const double warm = t[1].workUs / t[0].workUs;
    std::printf("| %s | %.0f, %.0f | %.0f, %.0f | %.2f%s | %.2f | %ld, %ld | %s |\n", name.c_str(), t[0].workUs,
                t[0].cold.workUs, t[1].workUs, t[1].cold.workUs, warm, warm > kMostSlower ? "!" : "",
                t[1].cold.workUs / t[0].cold.workUs, requestsOf(detects[0]), requestsOf(detects[1]),
                isEqual ? "yes" : "no");
    std::fflush(stdout);
    cv::setUseOptimized(true);
    ratios.push_back(warm);
  }

  // First detection and tracking, by both sets of kernels.
  void addFrame(const std::string& name, const bench::TFrame& frame) {
    const TWeldLineRes none;
    for (const bool isOptimized : {true, false}) {
      add({name + ", first", frame.scene.image, frame.params, none}, isOptimized);
      add({name + ", tracking", frame.scene.image, frame.params, frame.previous}, isOptimized);
    }
  }

  void printSummary() const {
    if (ratios.empty()) return;
    const auto slower =
        std::count_if(ratios.begin(), ratios.end(), [](double ratio) { return ratio > kMostSlower; });
    std::printf("\n%zu rows, %ld of them slower by more than 3 %% (!). Middle %.2f, slowest %.2f.\n",
                ratios.size(), static_cast<long>(slower), bench::median(ratios),
                *std::max_element(ratios.begin(), ratios.end()));
  }

private:
  TDetect detects[2];
  std::string wanted;
  std::vector<double> ratios;  // warm
};

void addColour(TComparison& comparison) {
  bench::TFrame frame = bench::makeFrame(TJoint::buttGap, TScenery::dark);
  cv::cvtColor(frame.scene.image, frame.scene.image, cv::COLOR_GRAY2BGR);
  comparison.addFrame("BGR", frame);
}

void addGaps(TComparison& comparison) {
  for (const TScenery scenery : {TScenery::dark, TScenery::bright, TScenery::spatter, TScenery::texture})
    comparison.addFrame("gap, " + bench::nameOf(scenery), bench::makeFrame(TJoint::buttGap, scenery));
  for (const cv::Size size : {cv::Size(640, 480), cv::Size(1280, 512), cv::Size(1280, 4096), cv::Size(2448, 2048),
                              cv::Size(4096, 3000)}) {
    comparison.addFrame("gap, " + std::to_string(size.width) + " x " + std::to_string(size.height),
                        bench::makeFrame(TJoint::buttGap, TScenery::dark, size));
  }
}

void addJoints(TComparison& comparison) {
  for (const TJoint joint : {TJoint::lap, TJoint::corner, TJoint::plate})
    comparison.addFrame(scenes::shortNameOf(joint), bench::makeFrame(joint, TScenery::dark));
}

void addWorstFrames(TComparison& comparison) {
  const bench::TFrame usual = bench::makeFrame(TJoint::buttGap, TScenery::dark);
  const TWeldLineRes none;
  for (const bench::TWorstFrame& worst : bench::makeWorstFrames())
    comparison.add({worst.name, worst.image, usual.params, none});
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3 && argc != 4) {
    std::fprintf(stderr, "bench_paired: needs the library of another commit and its name\n");
    return 2;
  }
  cv::setNumThreads(1);
  TComparison comparison(detectOf(argv[1]), argc > 3 ? argv[3] : "");
  std::printf(
      "| call | us at %s, warm and cold | here | here/%s, warm | cold | allocations | same answer |\n"
      "|---|---|---|---|---|---|---|\n",
      argv[2], argv[2]);
  addGaps(comparison);
  addJoints(comparison);
  addColour(comparison);
  addWorstFrames(comparison);
  comparison.printSummary();
  return 0;
}
