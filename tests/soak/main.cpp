// soak FRAMES: a long run of mixed frames, then the same once more. Prints how memory went, and fails when it
// grows after the warm-up or when the replay gives other results.
#include "support/checksum.h"
#include "support/heap.h"
#include "workload.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
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

struct TRow {
  int frame = 0;
  double residentMiB = 0.0;
  long liveBlocks = 0;
  int found = 0;  // of the row's frames
  std::uint32_t checksum = 0;
};

double residentMiB() {
  std::ifstream statm("/proc/self/statm");
  long total = 0;
  long resident = 0;
  statm >> total >> resident;
  return static_cast<double>(resident * sysconf(_SC_PAGESIZE)) / kMiB;
}

TRow runRow(soak::TWorkload& workload, int firstFrame, int endFrame) {
  TRow row;
  TChecksum checksum;
  for (int frame = firstFrame; frame < endFrame; ++frame) {
    const TWeldLineRes result = workload.step();
    row.found += result.isFound ? 1 : 0;
    const std::uint32_t sum = checksumOf(result);
    checksum.add(&sum, sizeof sum);
  }
  row.frame = endFrame;
  row.checksum = checksum.value;
  row.residentMiB = residentMiB();
  row.liveBlocks = heap::liveBlocks();
  return row;
}

std::vector<TRow> run(const std::vector<soak::TReel>& reels, int frames) {
  soak::TWorkload workload(reels);
  std::vector<TRow> rows;
  rows.reserve(kRows);
  for (int i = 0; i < kRows; ++i) {
    const auto frameAt = [&](int row) { return static_cast<int>(static_cast<long long>(frames) * row / kRows); };
    rows.push_back(runRow(workload, frameAt(i), frameAt(i + 1)));
    std::printf("%10d %14.2f %12ld %8d\n", rows.back().frame, rows.back().residentMiB, rows.back().liveBlocks,
                rows.back().found);
    std::fflush(stdout);
  }
  return rows;
}

// Says what is wrong with a row; empty when it is as it should be.
std::string complaintAbout(const TRow& row, const TRow& settled) {
  if (row.residentMiB > settled.residentMiB + kAllowedMiB) {
    return cv::format("resident memory grew from %.2f to %.2f MiB", settled.residentMiB, row.residentMiB);
  }
  if (row.liveBlocks > settled.liveBlocks + kAllowedBlocks) {
    return cv::format("live allocations grew from %ld to %ld", settled.liveBlocks, row.liveBlocks);
  }
  return {};
}

int fail(int frame, const std::string& what) {
  std::fprintf(stderr, "soak: by frame %d %s\n", frame, what.c_str());
  return 1;
}

}  // namespace

int main(int argc, char** argv) {
  const int frames = argc == 2 ? std::atoi(argv[1]) : 0;
  if (frames < kMinFrames) {
    std::fprintf(stderr, "soak: wants one argument, a number of frames of at least %d\n", kMinFrames);
    return 2;
  }
  const auto start = std::chrono::steady_clock::now();
  const std::vector<soak::TReel> reels = soak::renderReels();
  std::printf("%10s %14s %12s %8s\n", "frame", "resident, MiB", "allocations", "found");
  const std::vector<TRow> rows = run(reels, frames);
  const long liveBefore = heap::liveBlocks();
  std::printf("the same again\n");
  const std::vector<TRow> replay = run(reels, frames);
  const long liveAfter = heap::liveBlocks();

  TRow settled = rows.front();
  for (int i = 1; i < kWarmUpRows; ++i) {
    settled.residentMiB = std::max(settled.residentMiB, rows[static_cast<std::size_t>(i)].residentMiB);
    settled.liveBlocks = std::max(settled.liveBlocks, rows[static_cast<std::size_t>(i)].liveBlocks);
  }
  for (std::size_t i = 0; i < rows.size(); ++i) {
    if (rows[i].checksum != replay[i].checksum) return fail(rows[i].frame, "the replay gave other results");
    for (const TRow& row : {rows[i], replay[i]}) {
      const std::string complaint = complaintAbout(row, settled);
      if (!complaint.empty()) return fail(row.frame, complaint);
    }
  }
  // The rows of the replay are the one allocation more.
  if (liveAfter > liveBefore + 1)
    return fail(frames, cv::format("%ld allocations were lost", liveAfter - liveBefore));
  const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
  std::printf("%d frames twice in %.0f s: memory flat, results the same\n", frames, elapsed.count());
  return 0;
}
