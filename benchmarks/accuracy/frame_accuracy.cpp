// Prints what the library finds in real camera frames, against their labels.
//   frame_accuracy [FOLDER] [--assert]
// FOLDER: of the frames; else that of the environment variable ZELWELD_FRAMES. --assert: the exit code is 1 where
// a bound of frame_families.cpp is not held, 77 where there are no frames.
#include "frame_score.h"
#include "option_sets.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

namespace fs = std::filesystem;
using accuracy::TPointRow;
using accuracy::TPointScore;
using accuracy::TRunRow;
using accuracy::TRunScore;

constexpr int kSkipped = 77;

const char* mark(bool isHeld) {
  return isHeld ? "" : " *";
}

std::string lookText(const accuracy::TAsked& asked) {
  const accuracy::TPreparation& p = asked.preparation;
  std::string text;
  if (!p.roi.empty()) text += cv::format("--roi %d,%d,%d,%d ", p.roi.x, p.roi.y, p.roi.width, p.roi.height);
  if (p.rotateDeg != 0) text += cv::format("--rotate %d ", p.rotateDeg);
  if (p.channel == accuracy::TChannel::red) text += "--channel red ";
  if (p.channel == accuracy::TChannel::redExcess) text += "--channel red-excess ";
  return text + asked.settings;
}

std::string nameOf(const TPointRow& row) {
  return row.feature ? featureText(*row.feature) : weldPosText(row.asked.pos);
}

// Prints a row; true when its bounds are held.
bool printPoints(const fs::path& root, const TPointRow& row, TPointScore& sum, TPointScore& exactSum) {
  const TPointScore score = scorePoints(root, row, TTrackerOptions());
  const TPointScore exact = scorePoints(root, row, TTrackerOptions::exact());
  const bool isHeld = score.right >= row.leastRight && score.wrong <= row.mostWrong;
  std::printf("| %-27s | %-11s %-14s | %2d / %2d / %2d%-2s | %5.1f | %2d | %2d / %2d / %2d | %s |\n", row.folder,
              findWeldJoint(row.asked.joint)->shortName, nameOf(row).c_str(), score.right, score.wrong,
              score.refused, mark(isHeld), accuracy::medianOf(score.errorsPx), score.empty, exact.right,
              exact.wrong, exact.refused, lookText(row.asked).c_str());
  std::fflush(stdout);
  for (const auto& [from, to] : {std::pair(&score, &sum), std::pair(&exact, &exactSum)}) {
    to->right += from->right;
    to->wrong += from->wrong;
    to->refused += from->refused;
  }
  return isHeld;
}

bool printPointTable(const fs::path& root) {
  std::printf("Labelled points: right / wrong / refused, median error, frames rightly left without an answer\n\n");
  std::printf("| folder | joint and point | default | px | empty | exact | settings |\n");
  std::printf("|---|---|---|---|---|---|---|\n");
  TPointScore sum;
  TPointScore exact;
  bool isHeld = true;
  for (const TPointRow& row : accuracy::pointRows()) isHeld = printPoints(root, row, sum, exact) && isHeld;
  std::printf("| all | | %d / %d / %d | | | %d / %d / %d | |\n", sum.right, sum.wrong, sum.refused, exact.right,
              exact.wrong, exact.refused);
  return isHeld;
}

bool printRun(const fs::path& root, const TRunRow& row) {
  const TRunScore score = scoreRun(root, row, TTrackerOptions());
  double sum = 0.0;
  for (const double percent : score.columnPercents) sum += percent;
  const double mean = sum / static_cast<double>(score.columnPercents.size());
  const double worst = *std::min_element(score.columnPercents.begin(), score.columnPercents.end());
  const bool isFoundHeld = score.found >= row.leastFound && score.found <= row.mostFound;
  const bool areColumnsHeld = mean >= row.leastColumnsPercent;
  std::printf("| %-33s | %-8s | %2d of %2d%-2s | %2d | %5.1f%-2s | %5.1f | %2d of %2d | %s |\n", row.folder,
              findWeldJoint(row.asked.joint)->shortName, score.found, score.frames, mark(isFoundHeld), score.named,
              mean, mark(areColumnsHeld), worst, score.jumpedToes, score.quietSteps, row.asked.settings);
  std::fflush(stdout);
  return isFoundHeld && areColumnsHeld;
}

bool printRunTable(const fs::path& root) {
  std::printf(
      "\nRuns, tracked: found; not found and called a groove; columns within 3 px of the weak lines, mean "
      "and worst frame; shoulders that move by more than 5 px between neighbours at rest\n\n");
  std::printf(
      "| run | joint | found | named | columns %% | worst %% | toes | settings "
      "|\n|---|---|---|---|---|---|---|---|\n");
  bool isHeld = true;
  for (const TRunRow& row : accuracy::runRows()) isHeld = printRun(root, row) && isHeld;
  return isHeld;
}

fs::path framesFolder(const std::vector<std::string>& arguments) {
  const char* const fromEnvironment = std::getenv("ZELWELD_FRAMES");
  if (!arguments.empty()) return arguments.front();
  return fromEnvironment != nullptr ? fromEnvironment : DEFAULT_FRAMES;
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<std::string> arguments(argv + 1, argv + argc);
  const auto flag = std::find(arguments.begin(), arguments.end(), "--assert");
  const bool isAsserted = flag != arguments.end();
  if (isAsserted) arguments.erase(flag);
  const fs::path root = framesFolder(arguments);
  if (!fs::is_directory(root)) {
    std::printf("Real frames: no folder %s, skipped\n", root.c_str());
    return isAsserted ? kSkipped : 0;
  }
  const bool arePointsHeld = printPointTable(root);
  const bool areRunsHeld = printRunTable(root);
  return isAsserted && !(arePointsHeld && areRunsHeld) ? 1 : 0;
}
