#include "contrast/stretch.h"

#include "contrast/course.h"

#include <algorithm>
#include <cmath>

namespace weld {

namespace {

constexpr float kLoss = 0.5F;        // of a bridged station, against the gain of a measured one
constexpr int kSmallGap = 2;         // stations that break no run
constexpr int kLeastRun = 4;         // measured stations: fewer have no direction
constexpr int kDirectionFit = 10;    // stations at the end of a run that tell its direction
constexpr float kMostMissPx = 4.0F;  // where both runs are carried on to the middle of the gap
constexpr float kMissPerPx = 0.12F;  // of the gap
constexpr float kMostTurn = 0.4F;    // change of slope

struct TRun {
  TStretch part;
  int measured = 0;
  float total = 0.0F;  // of the best chain that ends with this run
  int previous = -1;   // run of that chain
};

TList<TRun> runsOf(const TList<std::uint8_t>& measured, TMemory* memory) {
  TList<TRun> runs(memory);
  for (int i = 0; i < static_cast<int>(measured.size()); ++i) {
    if (measured[i] == 0) continue;
    if (runs.empty() || i - runs.back().part.end > kSmallGap) runs.push_back({{i, i + 1}});
    runs.back().part.end = i + 1;
    ++runs.back().measured;
  }
  runs.erase(std::remove_if(runs.begin(), runs.end(), [](const TRun& run) { return run.measured < kLeastRun; }),
             runs.end());
  return runs;
}

// Straight line through the measured stations of a part: the place at a station, which may lie outside.
struct TCarried {
  float at = 0.0F;
  float slope = 0.0F;  // px per px
};

TCarried carry(const TList<float>& places, const TList<std::uint8_t>& measured, TStretch part, float station) {
  float n = 0.0F, t1 = 0.0F, t2 = 0.0F, y0 = 0.0F, y1 = 0.0F;
  for (int i = part.begin; i < part.end; ++i) {
    if (measured[i] == 0) continue;
    const float t = static_cast<float>(i) - station;
    n += 1.0F;
    t1 += t;
    t2 += t * t;
    y0 += places[i];
    y1 += t * places[i];
  }
  const float spread = n * t2 - t1 * t1;
  const float slope = spread > 0.0F ? (n * y1 - t1 * y0) / spread : 0.0F;
  return {(y0 - slope * t1) / std::max(n, 1.0F), slope / kStationPx};
}

bool goesOn(const TList<float>& places, const TList<std::uint8_t>& measured, const TRun& from, const TRun& to) {
  const float middle = 0.5F * static_cast<float>(from.part.end - 1 + to.part.begin);
  const float gapPx = static_cast<float>(to.part.begin - from.part.end + 1) * kStationPx;
  const TStretch tail{std::max(from.part.begin, from.part.end - kDirectionFit), from.part.end};
  const TStretch head{to.part.begin, std::min(to.part.end, to.part.begin + kDirectionFit)};
  const TCarried ended = carry(places, measured, tail, middle);
  const TCarried begun = carry(places, measured, head, middle);
  return std::abs(ended.at - begun.at) <= kMostMissPx + kMissPerPx * gapPx &&
         std::abs(ended.slope - begun.slope) <= kMostTurn;
}

// The chain that ends with a run; stations of the runs that it leaves out count no longer.
TStretch takeChain(const TList<TRun>& runs, int last, TList<std::uint8_t>& measured) {
  TStretch chain = runs[last].part;
  for (int i = last; i >= 0; i = runs[i].previous) {
    chain.begin = runs[i].part.begin;
    if (runs[i].previous < 0) break;
    std::fill(measured.begin() + runs[runs[i].previous].part.end, measured.begin() + chain.begin, std::uint8_t{0});
  }
  return chain;
}

}  // namespace

TStretch findStretch(const TList<float>& places, TList<std::uint8_t>& measured, TMemory* memory) {
  TList<TRun> runs = runsOf(measured, memory);
  int best = -1;
  for (int i = 0; i < static_cast<int>(runs.size()); ++i) {
    TRun& run = runs[i];
    for (int j = 0; j < i; ++j) {
      const float before = runs[j].total - kLoss * static_cast<float>(run.part.begin - runs[j].part.end);
      if (before <= run.total || !goesOn(places, measured, runs[j], run)) continue;
      run.total = before;
      run.previous = j;
    }
    run.total += static_cast<float>(run.measured);
    if (best < 0 || run.total > runs[best].total) best = i;
  }
  return best >= 0 ? takeChain(runs, best, measured) : TStretch();
}

}  // namespace weld
