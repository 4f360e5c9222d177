// soak FRAMES: a long day of mixed work for the library, the same every time, then the same once more: trackers
// and callers of the plain entry point follow seams, lose them, find them again, change parameters and start over.
// Prints how memory went, and fails when it grows after the warm-up or when the replay gives other results.
#include "scenes/random.h"
#include "support/checksum.h"
#include "support/heap.h"
#include "support/reel.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

namespace {

constexpr int kRows = 20;
constexpr int kWarmUpRows = 2;  // of the first run
constexpr int kMinFrames = 1000;
constexpr double kAllowedMiB = 1.0;  // that pages of a settled heap may come and go
constexpr long kAllowedBlocks = 50;  // trackers that just lost or found their seam hold a few more or fewer
constexpr double kMiB = 1024.0 * 1024.0;

const cv::Size kFrameSize{640, 480};
constexpr int kReelFrames = 12;
constexpr std::uint64_t kSeed = 3;

// Shares of the frames.
constexpr double kBlank = 0.03;      // without a stripe
constexpr double kForeign = 0.03;    // of another joint
constexpr double kNoImage = 0.005;   // empty
constexpr double kSetParams = 0.01;  // another seam position
constexpr double kReset = 0.005;
constexpr double kNewTracker = 0.001;
constexpr double kPlain = 0.3;  // through the plain entry point

// Frames of one joint, drifting; rendered once and shown again and again.
struct TReel {
  TWeldParams params;
  std::vector<cv::Mat> images{};
};

std::vector<TReel> renderReels() {
  std::vector<TReel> reels;
  for (const auto& [joint, type] : scenes::detectedJoints()) {
    for (const scenes::TLevel level : {scenes::TLevel::clean, scenes::TLevel::harsh}) {
      reels.push_back({scenes::weldParamsFor(joint)});
      const scenes::TSceneParams first = scenes::randomScene(joint, level, kSeed, kFrameSize);
      for (const scenes::TScene& scene : reel::render(first, reel::drift({1.5, 1.0}, 1.0), kReelFrames)) {
        const bool isColour = reels.back().images.size() % 4 == 3;
        reels.back().images.push_back(isColour ? reel::inColour(scene.image) : scene.image);
      }
    }
  }
  reels.back().params.flagPara1 = true;  // presence on ridges
  return reels;
}

class TWorkload {
public:
  explicit TWorkload(const std::vector<TReel>& sourceReels)
      : reels(sourceReels), blank(kFrameSize, CV_8UC1, cv::Scalar(0)), random(kSeed, scenes::TStream::layout) {
    for (std::size_t i = 0; i < reels.size(); ++i) actors.push_back({i, 0, TWeldTracker(reels[i].params), {}});
  }

  // One frame for one of the actors.
  TWeldLineRes step() {
    TActor& actor = actors[indexBelow(actors.size())];
    TWeldParams params = reels[actor.reel].params;
    disturb(actor, params);
    cv::Mat image = nextImage(actor);
    if (random.chance(kForeign)) image = reels[indexBelow(reels.size())].images.front();
    if (random.chance(kBlank)) image = blank;
    if (random.chance(kNoImage)) image = cv::Mat();
    if (!random.chance(kPlain)) return actor.tracker.track(image).line;
    return actor.previous = detectWeldLineViaTracking(image, params, actor.previous);
  }

private:
  struct TActor {
    std::size_t reel = 0;
    int position = 0;  // in the reel
    TWeldTracker tracker;
    TWeldLineRes previous;  // of the plain entry point
  };

  std::size_t indexBelow(std::size_t count) {
    return static_cast<std::size_t>(random.integer(0, static_cast<int>(count) - 1));
  }

  // Back and forth through the reel.
  const cv::Mat& nextImage(TActor& actor) {
    constexpr int kLast = kReelFrames - 1;
    actor.position = (actor.position + 1) % (2 * kLast);
    return reels[actor.reel].images[static_cast<std::size_t>(kLast - std::abs(kLast - actor.position))];
  }

  void disturb(TActor& actor, TWeldParams params) {
    if (random.chance(kSetParams)) {
      params.weldPosType = static_cast<TWeldPosType>(random.integer(0, 4));
      actor.tracker.setParams(params);
    }
    if (random.chance(kReset)) actor.tracker.reset();
    if (random.chance(kNewTracker)) actor.tracker = TWeldTracker(params);
  }

  const std::vector<TReel>& reels;
  cv::Mat blank;
  scenes::TRandom random;
  std::vector<TActor> actors;
};

struct TRow {
  int frame = 0;
  double residentMiB = 0.0;
  long liveBlocks = 0;
  std::uint32_t checksum = 0;
};

double residentMiB() {
  std::ifstream statm("/proc/self/statm");
  long total = 0;
  long resident = 0;
  statm >> total >> resident;
  return static_cast<double>(resident * sysconf(_SC_PAGESIZE)) / kMiB;
}

std::vector<TRow> run(const std::vector<TReel>& reels, int frames) {
  TWorkload workload(reels);
  std::vector<TRow> rows;
  rows.reserve(kRows);
  std::printf("%10s %14s %12s %8s\n", "frame", "resident, MiB", "allocations", "found");
  for (int i = 0, frame = 0; i < kRows; ++i) {
    TChecksum checksum;
    int found = 0;
    for (const auto end = static_cast<int>(static_cast<long long>(frames) * (i + 1) / kRows); frame < end;
         ++frame) {
      const TWeldLineRes result = workload.step();
      found += result.isFound ? 1 : 0;
      const std::uint32_t sum = checksumOf(result);
      checksum.add(&sum, sizeof sum);
    }
    rows.push_back({frame, residentMiB(), heap::liveBlocks(), checksum.value});
    std::printf("%10d %14.2f %12ld %8d\n", frame, rows.back().residentMiB, rows.back().liveBlocks, found);
    std::fflush(stdout);
  }
  return rows;
}

// Says what is wrong; empty when all is as it should be.
std::string complaintAbout(const std::vector<TRow>& rows, const std::vector<TRow>& replay) {
  TRow settled = rows.front();
  for (int i = 1; i < kWarmUpRows; ++i) {
    settled.residentMiB = std::max(settled.residentMiB, rows[static_cast<std::size_t>(i)].residentMiB);
    settled.liveBlocks = std::max(settled.liveBlocks, rows[static_cast<std::size_t>(i)].liveBlocks);
  }
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const int frame = rows[i].frame;
    if (rows[i].checksum != replay[i].checksum)
      return cv::format("by frame %d the replay gave other results", frame);
    for (const TRow& row : {rows[i], replay[i]}) {
      if (row.residentMiB > settled.residentMiB + kAllowedMiB)
        return cv::format("by frame %d memory grew from %.2f to %.2f MiB", frame, settled.residentMiB,
                          row.residentMiB);
      if (row.liveBlocks > settled.liveBlocks + kAllowedBlocks)
        return cv::format("by frame %d allocations grew from %ld to %ld", frame, settled.liveBlocks,
                          row.liveBlocks);
    }
  }
  return {};
}

}  // namespace

int main(int argc, char** argv) {
  const int frames = argc == 2 ? std::atoi(argv[1]) : 0;
  if (frames < kMinFrames) {
    std::fprintf(stderr, "soak: wants one argument, a number of frames of at least %d\n", kMinFrames);
    return 2;
  }
  const std::vector<TReel> reels = renderReels();
  const std::vector<TRow> rows = run(reels, frames);
  const long liveBefore = heap::liveBlocks();
  std::printf("the same again\n");
  const std::vector<TRow> replay = run(reels, frames);
  const long lost = heap::liveBlocks() - liveBefore - 1;  // the rows of the replay
  std::string complaint = complaintAbout(rows, replay);
  if (complaint.empty() && lost > 0) complaint = cv::format("%ld allocations were lost", lost);
  if (!complaint.empty()) {
    std::fprintf(stderr, "soak: %s\n", complaint.c_str());
    return 1;
  }
  std::printf("%d frames twice: memory flat, results the same\n", frames);
  return 0;
}
