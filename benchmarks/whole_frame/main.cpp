// Whole calls of detectWeldLineViaTracking on one thread, in times of copying the same frame, warm and cold
// (timing.h): copy and call take turns, and every figure is a median. Prints Markdown.
//
// Baseline kernels are what the library takes after cv::setUseOptimized(false).
#include "contrast_times.h"
#include "frames.h"
#include "peers.h"
#include "plain_way.h"
#include "scenes/joints.h"
#include "support/heap.h"
#include "support/kernels/kernels.h"
#include "timing.h"
#include "trace_cost.h"
#include "tracker_cost.h"
#include "worst_case.h"

#include <opencv2/imgproc.hpp>

#include <cstdio>
#include <string>
#include <utility>
#include <vector>

namespace {

using bench::TFrame;
using bench::TScenery;
using bench::TTiming;
using bench::TWork;
using scenes::TJoint;

constexpr double kMaxAboveGap = 1.5;  // copies that another joint may cost more than a gap on the same frame
constexpr int kMaxAllocations = 10;

enum class TKernels { chosen, baseline };

// The call with its previous result: a tracking frame, or a first detection with an empty one.
TWork detection(const TFrame& frame, const cv::Mat& image, const TWeldLineRes& previous,
                TKernels kernels = TKernels::chosen) {
  return [=, &frame] {
    cv::setUseOptimized(kernels == TKernels::chosen);
    bench::detect(image, frame.params, previous);
    cv::setUseOptimized(true);
  };
}

const char* metText(bool isMet) {
  return isMet ? "yes" : "no";
}

void beginTable(const char* title, const char* columns, const char* rule) {
  std::printf("\n## %s\n\n%s\n%s\n", title, columns, rule);
}

// Of a call, at most.
struct TCopies {
  double warm, cold;
};

struct TTargets {
  TCopies first, tracking;
};

constexpr double kMostBaseline = 1.35;  // of the baseline kernels over these
constexpr double kLeastFasterFirst = 50.0;
constexpr double kLeastFasterTracking = 25.0;  // than the plain way

// In the order of the works of measureScenery.
struct TSceneryTimings {
  TTiming firstChosen, firstBaseline, trackingChosen, trackingBaseline;
  TTiming plainFirst, plainTracking;
  std::vector<TTiming> peers;
};

struct TPeer {
  const char* name;
  bench::TCentres (*find)(const cv::Mat& grey);
};

constexpr TPeer kPeers[] = {{"column maximum and centroid", bench::findByMaximum},
                            {"Gaussian blur, maximum and centroid", bench::findByBlurredMaximum},
                            {"Sobel rise and fall", bench::findBySobel},
                            {"Steger ridge", bench::findBySteger}};

TSceneryTimings measureScenery(const TFrame& frame) {
  const cv::Mat& image = frame.scene.image;
  std::vector<TWork> works{detection(frame, image, {}),
                           detection(frame, image, {}, TKernels::baseline),
                           detection(frame, image, frame.previous),
                           detection(frame, image, frame.previous, TKernels::baseline),
                           [&] { bench::detectGapPlainly(image, frame.params, {}); },
                           [&] { bench::detectGapPlainly(image, frame.params, frame.previous); }};
  for (const TPeer& peer : kPeers) works.push_back([&] { peer.find(image); });
  const std::vector<TTiming> t = bench::measureAgainstCopy(image, works);
  return {t[0], t[1], t[2], t[3], t[4], t[5], {t.begin() + 6, t.end()}};
}

void printAgainstCopy(const std::string& name, const TSceneryTimings& t, const TTargets& target) {
  const auto row = [&](const char* call, const TTiming& timing, const TCopies& most, double share) {
    const bool isMet = timing.timesCopy() <= share * most.warm && timing.cold.timesCopy() <= share * most.cold;
    std::printf("| %s, %s | %.2f | %.2f | %.2f, %.2f | %s | %.0f, %.0f |\n", name.c_str(), call,
                timing.timesCopy(), timing.cold.timesCopy(), share * most.warm, share * most.cold, metText(isMet),
                timing.workUs, timing.cold.workUs);
  };
  row("first, AVX2", t.firstChosen, target.first, 1.0);
  row("first, baseline", t.firstBaseline, target.first, kMostBaseline);
  row("tracking, AVX2", t.trackingChosen, target.tracking, 1.0);
  row("tracking, baseline", t.trackingBaseline, target.tracking, kMostBaseline);
}

void printAgainstPlain(const std::string& name, const TSceneryTimings& t) {
  const auto row = [&](const char* call, const TTiming& plain, const TTiming& fast, double least) {
    const double factor = plain.workUs / fast.workUs;
    std::printf("| %s, %s | %.1f | %.0f | %s | %.0f |\n", name.c_str(), call, factor, least,
                metText(factor >= least), plain.workUs);
  };
  row("first", t.plainFirst, t.firstChosen, kLeastFasterFirst);
  row("tracking", t.plainTracking, t.trackingChosen, kLeastFasterTracking);
}

void printPeers(const std::string& name, const TFrame& frame, const TSceneryTimings& t) {
  const auto row = [&](const char* method, double timesCopy, const std::vector<cv::Point2f>& centres) {
    const bench::TAccuracy accuracy = bench::rate(centres, frame.scene.truth);
    std::printf("| %s, %s | %.2f | %.2f | %.1f | %.1f |\n", name.c_str(), method, timesCopy,
                accuracy.medianErrorPx, accuracy.seenPercent, accuracy.wrongPercent);
  };
  row("this library, first", t.firstChosen.timesCopy(), frame.previous.stripePts);
  row("this library, tracking", t.trackingChosen.timesCopy(),
      bench::detect(frame.scene.image, frame.params, frame.previous).stripePts);
  for (std::size_t i = 0; i < t.peers.size(); ++i) {
    row(kPeers[i].name, t.peers[i].timesCopy(), kPeers[i].find(frame.scene.image));
  }
}

// The three tables about a gap at 1280 x 1024.
void reportGaps() {
  const std::pair<TScenery, TTargets> sceneries[] = {
      {TScenery::dark, {{1.0, 1.05}, {0.75, 0.6}}},
      {TScenery::bright, {{1.35, 1.1}, {0.9, 0.6}}},
      {TScenery::spatter, {{1.7, 1.35}, {1.05, 0.7}}},
  };
  std::vector<TFrame> frames;
  std::vector<TSceneryTimings> timings;
  for (const auto& [scenery, targets] : sceneries) {
    frames.push_back(bench::makeFrame(TJoint::buttGap, scenery));
    timings.push_back(measureScenery(frames.back()));
  }
  beginTable("A gap, 1280 x 1024",
             "| frame, call, kernels | warm, times copyTo | cold | targets, at most | met | us, warm and cold |",
             "|---|---|---|---|---|---|");
  for (std::size_t i = 0; i < frames.size(); ++i) {
    printAgainstCopy(bench::nameOf(sceneries[i].first), timings[i], sceneries[i].second);
  }
  beginTable("Against the plain way", "| frame, call | times faster | target, at least | met | plain, us |",
             "|---|---|---|---|---|");
  for (std::size_t i = 0; i < frames.size(); ++i) {
    printAgainstPlain(bench::nameOf(sceneries[i].first), timings[i]);
  }
  beginTable("Beside other ways to find the stripe",
             "| frame, method | times copyTo | median error px | columns found % | columns off by > 3 px % |",
             "|---|---|---|---|---|");
  for (std::size_t i = 0; i < frames.size(); ++i) {
    printPeers(bench::nameOf(sceneries[i].first), frames[i], timings[i]);
  }
}

// A joint and, on the same frame and around the same previous stripe, a gap.
void reportJoint(TJoint joint) {
  const TFrame frame = bench::makeFrame(joint, TScenery::dark);
  TFrame gap = frame;
  gap.params = scenes::weldParamsFor(TJoint::buttGap);
  const cv::Mat& image = frame.scene.image;
  const std::vector<TTiming> t = bench::measureAgainstCopy(
      image, {detection(frame, image, {}), detection(gap, image, {}), detection(frame, image, frame.previous),
              detection(gap, image, frame.previous)});
  for (const bool isTracking : {false, true}) {
    const TTiming& own = t[isTracking ? 2 : 0];
    const double above = own.timesCopy() - t[isTracking ? 3 : 1].timesCopy();
    std::printf("| %s, %s | %.2f | %.1f | %s | %.2f | %.2f | %s |\n", scenes::shortNameOf(joint),
                isTracking ? "tracking" : "first", above, kMaxAboveGap, metText(above <= kMaxAboveGap),
                own.timesCopy(), own.cold.timesCopy(), frame.previous.isFound ? "yes" : "no");
  }
}

void reportJoints() {
  beginTable("Other joints, dark frame, 1280 x 1024",
             "| joint, call | copies above a gap | target, at most | met | warm, times copyTo | cold | found |",
             "|---|---|---|---|---|---|---|");
  for (const auto& [joint, type] : scenes::seamJoints()) {
    if (joint != TJoint::buttGap) reportJoint(joint);
  }
}

// What a frame costs without a target.
void reportFrame(const std::string& name, const TFrame& frame) {
  const cv::Mat& image = frame.scene.image;
  const std::vector<TTiming> t =
      bench::measureAgainstCopy(image, {detection(frame, image, {}), detection(frame, image, frame.previous)});
  for (const bool isTracking : {false, true}) {
    const TTiming& own = t[isTracking ? 1 : 0];
    std::printf("| %s, %s | %.2f | %.2f | %.0f, %.0f | %.0f, %.0f |\n", name.c_str(),
                isTracking ? "tracking" : "first", own.timesCopy(), own.cold.timesCopy(), own.workUs,
                own.cold.workUs, own.copyUs, own.cold.copyUs);
  }
}

void reportOtherFrames() {
  beginTable("Other frames of a gap",
             "| frame, call | warm, times copyTo | cold | us, warm and cold | copyTo us, warm and cold |",
             "|---|---|---|---|---|");
  for (const cv::Size size : {cv::Size(640, 480), cv::Size(1280, 512), cv::Size(1280, 1024), cv::Size(1280, 4096),
                              cv::Size(2448, 2048), cv::Size(4096, 3000)}) {
    reportFrame("dark " + std::to_string(size.width) + " x " + std::to_string(size.height),
                bench::makeFrame(TJoint::buttGap, TScenery::dark, size));
  }
  reportFrame("dense texture 1280 x 1024", bench::makeFrame(TJoint::buttGap, TScenery::texture));
}

// Colour against grey, in copies of the colour frame and of the grey one.
void reportColour() {
  const TFrame frame = bench::makeFrame(TJoint::buttGap, TScenery::dark);
  cv::Mat bgr;
  cv::cvtColor(frame.scene.image, bgr, cv::COLOR_GRAY2BGR);
  cv::Mat grey;
  const std::vector<TTiming> t = bench::measureAgainstCopy(
      frame.scene.image,
      {detection(frame, bgr, {}), detection(frame, bgr, frame.previous),
       detection(frame, frame.scene.image, frame.previous), [&] { cv::cvtColor(bgr, grey, cv::COLOR_BGR2GRAY); }});
  beginTable("A BGR frame, dark, 1280 x 1024", "| call | times copyTo of the grey frame | us |", "|---|---|---|");
  const char* const names[] = {"BGR, first", "BGR, tracking", "grey, tracking", "conversion of the whole frame"};
  for (std::size_t i = 0; i < t.size(); ++i) {
    std::printf("| %s | %.2f | %.0f |\n", names[i], t[i].timesCopy(), t[i].workUs);
  }
}

void reportAllocations() {
  beginTable("Heap allocations inside the library, 1280 x 1024",
             "| joint, call | allocations | target, at most | met |", "|---|---|---|---|");
  for (const auto& [joint, type] : scenes::seamJoints()) {
    const TFrame frame = bench::makeFrame(joint, TScenery::dark);
    for (const bool isTracking : {false, true}) {
      TWeldParams params = frame.params;
      TWeldLineRes previous = isTracking ? frame.previous : TWeldLineRes{};
      const long before = heap::requests();
      detectWeldLineViaTracking(frame.scene.image, params, std::move(previous));
      const long count = heap::requests() - before;
      if (isTracking) {
        std::printf("| %s, tracking | %ld | %d | %s |\n", scenes::shortNameOf(joint), count, kMaxAllocations,
                    metText(count <= kMaxAllocations));
      } else {
        std::printf("| %s, first | %ld | - | - |\n", scenes::shortNameOf(joint), count);
      }
    }
  }
}

bool usesBaseline(TKernels kernels) {
  cv::setUseOptimized(kernels == TKernels::chosen);
  const bool isBaseline = &weld::kernels() == &weld::kBaselineKernels;
  cv::setUseOptimized(true);
  return isBaseline;
}

}  // namespace

int main() {
  cv::setNumThreads(1);
  if (!usesBaseline(TKernels::baseline)) {
    std::fprintf(stderr, "bench_whole_frame: the library does not take its baseline kernels when told to\n");
    return 1;
  }
  if (usesBaseline(TKernels::chosen))
    std::printf("No AVX2 here: the rows that name it show the baseline kernels.\n");
  reportGaps();
  reportJoints();
  reportOtherFrames();
  reportColour();
  bench::reportContrast();
  reportAllocations();
  bench::reportTrackerCost();
  bench::reportTraceCost();
  bench::reportWorstCases();
  bench::reportWideFrames();
  return 0;
}
