#include "tools/stats.h"

#include "tools/text.h"

#include <algorithm>
#include <cmath>

namespace tool {

double percentile(std::vector<double> values, double share) {
  if (values.empty()) {
    return 0.0;
  }
  std::sort(values.begin(), values.end());
  const double position = share * static_cast<double>(values.size() - 1);
  const auto below = static_cast<std::size_t>(position);
  const std::size_t above = std::min(below + 1, values.size() - 1);
  return values[below] + (position - static_cast<double>(below)) * (values[above] - values[below]);
}

void TRunStats::add(TSeamState state, double ms) {
  const bool isFound = state == TSeamState::found;
  timesMs.push_back(ms);
  foundCount += isFound ? 1 : 0;
  heldCount += state == TSeamState::held ? 1 : 0;
  lossRun = isFound ? 0 : lossRun + 1;
  longestRun = std::max(longestRun, lossRun);
}

double TRunStats::foundShare() const {
  return timesMs.empty() ? 0.0 : static_cast<double>(foundCount) / static_cast<double>(timesMs.size());
}

std::string summaryOf(const TRunStats& stats) {
  return "frames " + std::to_string(stats.frames()) + ", found " + std::to_string(stats.found()) + " (" +
         fixed(100.0 * stats.foundShare(), 1) + " %), held " + std::to_string(stats.held()) + ", lost " +
         std::to_string(stats.lost()) + ", longest loss " + std::to_string(stats.longestLoss()) +
         " frames, ms per frame: median " + fixed(stats.medianMs(), 2) + ", 95th percentile " +
         fixed(stats.p95Ms(), 2);
}

}  // namespace tool
