#include "tools/sweep.h"

#include "tools/cli_error.h"
#include "tools/text.h"

#include <algorithm>
#include <cmath>

namespace tool {
namespace {

constexpr std::size_t kMaxValues = 1000;
constexpr double kStepSlack = 1e-6;  // share of a step by which rounding may miss the end of the range
constexpr double kShareSlack = 0.01;
constexpr double kJitterFactor = 1.2;
constexpr double kJitterSlackPx = 0.05;

// The least jitter among the points with a good share.
std::optional<double> leastJitter(const std::vector<TSweepPoint>& points, double leastShare) {
  std::optional<double> least;
  for (const TSweepPoint& point : points) {
    if (point.jitterPx && point.foundShare >= leastShare) {
      least = std::min(least.value_or(*point.jitterPx), *point.jitterPx);
    }
  }
  return least;
}

}  // namespace

bool isRange(const std::string& assignment) {
  return assignment.find(':') != std::string::npos;
}

TSweepRange parseRange(const std::string& assignment) {
  const std::string right = "; write name=from:to:step, for example minStepPx=5:40:5";
  const std::size_t cut = assignment.find('=');
  const std::vector<double> numbers =
      cut == std::string::npos ? std::vector<double>() : parseNumbers(assignment.substr(cut + 1), ':', 3);
  if (numbers.empty()) {
    throw usageError("--set: '" + assignment + "' is no range" + right);
  }
  const double from = numbers[0];
  const double to = numbers[1];
  const double step = numbers[2];
  if (!(step > 0.0)) {
    throw usageError("--set: " + assignment + ": the step must be above 0" + right);
  }
  if (!(from < to)) {
    throw usageError("--set: " + assignment + ": the range must ascend" + right);
  }
  const double steps = std::floor((to - from) / step + kStepSlack);
  if (!(steps < static_cast<double>(kMaxValues))) {
    throw usageError("--set: " + assignment + ": more than " + std::to_string(kMaxValues) +
                     " values; take a larger step");
  }
  TSweepRange range{assignment.substr(0, cut), {}};
  for (int i = 0; i <= static_cast<int>(steps); ++i) {
    range.values.push_back(from + i * step);
  }
  return range;
}

std::vector<bool> goodPoints(const std::vector<TSweepPoint>& points) {
  double bestShare = 0.0;
  for (const TSweepPoint& point : points) {
    bestShare = std::max(bestShare, point.foundShare);
  }
  const double leastShare = bestShare - kShareSlack;
  const std::optional<double> least = leastJitter(points, leastShare);
  std::vector<bool> isGood;
  for (const TSweepPoint& point : points) {
    const bool isSteady =
        !least || (point.jitterPx && *point.jitterPx <= std::max(*least * kJitterFactor, *least + kJitterSlackPx));
    isGood.push_back(bestShare > 0.0 && point.foundShare >= leastShare && isSteady);
  }
  return isGood;
}

std::optional<TGoodRange> widestGoodRange(const std::vector<bool>& isGood) {
  std::optional<TGoodRange> widest;
  for (std::size_t first = 0; first < isGood.size(); ++first) {
    std::size_t end = first;
    while (end < isGood.size() && isGood[end]) {
      ++end;
    }
    if (end > first && (!widest || end - first > widest->last - widest->first + 1)) {
      widest = TGoodRange{first, end - 1, first + (end - 1 - first) / 2};
    }
    first = std::max(first, end);
  }
  return widest;
}

}  // namespace tool
