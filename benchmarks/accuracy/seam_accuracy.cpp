// Prints how exactly and how surely each joint is found in rendered scenes.
#include "option_sets.h"
#include "seam_confidence.h"
#include "seam_trial.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <future>
#include <string>
#include <vector>

namespace {

using accuracy::TTrialScore;
using scenes::TLevel;
using scenes::TSeamCase;

struct TTarget {
  const char* level;
  TLevel value;
  double foundShare;
  double medianPx;
  double p95Px;
};

constexpr TTarget kTargets[] = {{"clean", TLevel::clean, 1.0, 0.5, 1.0},
                                {"noisy", TLevel::noisy, 0.99, 0.7, 1.5},
                                {"harsh", TLevel::harsh, 0.95, 1.0, 3.0}};
constexpr double kMaxFalseShare = 0.005;

const char* mark(bool isReached) {
  return isReached ? "" : " *";
}

// Median and 95th percentile of what the arithmetic makes of perfect centres.
std::string floorText(const TTrialScore& score) {
  if (score.floorsPx.empty()) return "-";
  char text[32];
  std::snprintf(text, sizeof text, "%.2f / %.2f", scenes::quantile(score.floorsPx, 0.5),
                scenes::quantile(score.floorsPx, 0.95));
  return text;
}

void printScore(const TSeamCase& trial, const TTarget& target, const char* mode, const TTrialScore& score) {
  const double share = score.foundShare();
  const double median = score.errorAt(0.5);
  const double p95 = score.errorAt(0.95);
  std::printf("| %-16s | %-5s | %-8s | %6d | %6.2f %%%s | %6.2f%s | %6.2f%s | %5d | %3d | %s |\n",
              nameOf(trial).c_str(), target.level, mode, score.frames, 100.0 * share,
              mark(share >= target.foundShare), median, mark(median <= target.medianPx), p95,
              mark(p95 <= target.p95Px), score.lost, score.longestLoss, floorText(score).c_str());
  std::fflush(stdout);
}

// Of a groove the root and both shoulders: its lower point is the root, its upper one lies between the shoulders.
bool isRow(const TSeamCase& trial) {
  const bool isGroove = scenes::randomScene(trial.joint, TLevel::clean, 1).geometry.groove.has_value();
  return !isGroove || (trial.pos != TWeldPosType::lower && trial.pos != TWeldPosType::upper);
}

void printSeamTable(int scenes, int sequences, const TTrackerOptions& options) {
  std::printf(
      "| joint | level | mode | frames | found | median px | 95 %% px | lost | longest loss | floor px |\n");
  std::printf("|---|---|---|---|---|---|---|---|---|---|\n");
  for (const TSeamCase& trial : scenes::seamCases()) {
    if (!isRow(trial)) continue;
    for (const TTarget& target : kTargets) {
      auto tracked =
          std::async(std::launch::async, accuracy::scoreSequences, trial, target.value, sequences, options);
      printScore(trial, target, "first", accuracy::scoreFirstDetections(trial, target.value, scenes, options));
      printScore(trial, target, "tracking", tracked.get());
    }
  }
}

void printFalseTable(int scenesEach, const TTrackerOptions& options) {
  std::printf("\n| joint | frames without it | found in |\n|---|---|---|\n");
  for (const TSeamCase& trial : scenes::seamCases()) {
    if (trial.pos != TWeldPosType::centre && trial.joint != scenes::TJoint::plate) continue;
    const scenes::TScore score = accuracy::scoreFalsePositives(trial, scenesEach, options);
    const double share = score.foundShare();
    std::printf("| %-16s | %6d | %6.2f %%%s |\n", nameOf(trial).c_str(), score.frames, 100.0 * share,
                mark(share <= kMaxFalseShare));
  }
}

int countArgument(int argc, char** argv, int index, int fallback) {
  return argc > index ? std::max(1, std::atoi(argv[index])) : fallback;
}

}  // namespace

int main(int argc, char** argv) {
  const int scenes = countArgument(argc, argv, 1, 300);
  const int sequences = countArgument(argc, argv, 2, 20);
  std::printf("%d scenes and %d sequences of 60 frames per row, 1280x1024. * misses its target.\n", scenes,
              sequences);
  for (const accuracy::TOptionSet& set : accuracy::kOptionSets) {
    std::printf("\n%s\n\n", set.title);
    printSeamTable(scenes, sequences, set.options);
    printFalseTable(std::max(1, scenes / 2), set.options);
  }
  std::printf("\nWhat the grooves claim, default options, first detections:\n");
  accuracy::printConfidence(std::max(1, scenes / 3));
  return 0;
}
