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

constexpr double kLeastFound = 0.9;  // of a suggestion
constexpr double kMostJitterPx = 5.0;
constexpr double kMostApartPx = 5.0;  // seams of neighbouring values
constexpr double kSureShare = 0.5;    // of the best confidence

// Whether what a value found may be a seam at all.
bool isPlausible(const TSweepPoint& point, double bestConfidence) {
  if (point.truth) {
    return point.truth->wrong == 0;
  }
  return point.canFail && point.stripeEndShare <= 0.5 && point.confidence >= kSureShare * bestConfidence;
}

std::vector<bool> plausiblePoints(const std::vector<TSweepPoint>& points) {
  double bestConfidence = 0.0;
  for (const TSweepPoint& point : points) {
    bestConfidence = std::max(bestConfidence, point.confidence);
  }
  std::vector<bool> isPossible;
  for (const TSweepPoint& point : points) {
    isPossible.push_back(isPlausible(point, bestConfidence));
  }
  return isPossible;
}

double bestShare(const std::vector<TSweepPoint>& points, const std::vector<bool>& isPossible) {
  double best = 0.0;
  for (std::size_t i = 0; i < points.size(); ++i) {
    best = std::max(best, isPossible[i] ? points[i].foundShare : 0.0);
  }
  return best;
}

// The least jitter among the points with a good share.
std::optional<double> leastJitter(const std::vector<TSweepPoint>& points, const std::vector<bool>& isPossible,
                                  double leastShare) {
  std::optional<double> least;
  for (std::size_t i = 0; i < points.size(); ++i) {
    const TSweepPoint& point = points[i];
    if (isPossible[i] && point.jitterPx && point.foundShare >= leastShare) {
      least = std::min(least.value_or(*point.jitterPx), *point.jitterPx);
    }
  }
  return least;
}

// Why no value is good: what rules out the one that finds most.
std::string objectionToAll(const std::vector<TSweepPoint>& points) {
  const auto most = std::max_element(points.begin(), points.end(), [](const TSweepPoint& a, const TSweepPoint& b) {
    return a.foundShare < b.foundShare;
  });
  if (most->foundShare == 0.0) {
    return "no value found a seam";
  }
  const std::string value = plain(most->value);
  if (most->truth && most->truth->wrong > 0) {
    return "value " + value + " finds most, and " + std::to_string(most->truth->wrong) + " of " +
           std::to_string(most->truth->judged) + " labelled frames wrong";
  }
  if (!most->canFail) {
    return "at " + value + " the test can no longer fail: it would accept everything";
  }
  return most->stripeEndShare > 0.5 ? "the seams lie where the stripe ends" : "the seams are unsure";
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
  const std::vector<bool> isPossible = plausiblePoints(points);
  const double best = bestShare(points, isPossible);
  const double leastShare = best - kShareSlack;
  const std::optional<double> least = leastJitter(points, isPossible, leastShare);
  std::vector<bool> isGood;
  for (std::size_t i = 0; i < points.size(); ++i) {
    const TSweepPoint& point = points[i];
    const bool isSteady =
        !least || (point.jitterPx && *point.jitterPx <= std::max(*least * kJitterFactor, *least + kJitterSlackPx));
    isGood.push_back(isPossible[i] && best > 0.0 && point.foundShare >= leastShare && isSteady);
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

std::string objectionTo(const std::vector<TSweepPoint>& points, const std::optional<TGoodRange>& good) {
  if (!good) {
    return objectionToAll(points);
  }
  const TSweepPoint& chosen = points[good->middle];
  if (chosen.foundShare < kLeastFound) {
    return "the best value finds " + fixed(100.0 * chosen.foundShare, 1) + " % of the frames, less than 90 %";
  }
  if (chosen.jitterPx.value_or(0.0) > kMostJitterPx) {
    return "the seam jumps by " + fixed(*chosen.jitterPx, 1) + " px from frame to frame, more than 5 px";
  }
  const bool isAtEdge = good->first == 0 || good->last + 1 == points.size();
  if (good->first == good->last && isAtEdge && points.size() > 1) {
    return "only " + plain(chosen.value) + ", at the edge of the sweep, is good: move the range";
  }
  for (std::size_t i = good->first + 1; i <= good->last; ++i) {
    if (points[i].apartPx > kMostApartPx) {
      return plain(points[i - 1].value) + " and " + plain(points[i].value) + " find seams " +
             fixed(points[i].apartPx, 1) + " px apart: see in a report which is right";
    }
  }
  return "";
}

}  // namespace tool
