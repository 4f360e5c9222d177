// Prints what the search by contrast finds on rendered plates and in real frames.
//   contrast_accuracy [--plates 300] [--seed 7000] [--threads N] [--short] [--frames FOLDER]
// * misses what is wanted; ! is worse than is known, and makes the exit code 1. --short: a small sample of plates.
#include "contrast_cells.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <thread>

namespace {

using accuracy::TContrastCell;
using accuracy::TContrastFigures;
using accuracy::TWantedShare;

constexpr int kShortPlates = 6;

double percentOf(int part, int all) {
  return 100.0 * part / std::max(all, 1);
}

// Frames out of so many that may miss a share: what is expected, and one and a half deviations more.
double allowed(double percent, int plates) {
  const double expected = percent / 100.0 * plates;
  return expected + 1.5 * std::sqrt(expected) + 1.0;
}

const char* markOf(double misses, double wantedPercent, double knownPercent, int plates) {
  if (misses > allowed(knownPercent, plates)) return "!";
  return misses > wantedPercent / 100.0 * plates + 1e-9 ? "*" : "";
}

double medianOf(std::vector<double> values) {
  if (values.empty()) return 0.0;
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

// Prints a row; true when it is as good as known.
bool printCell(const TContrastCell& cell, const TContrastFigures& f) {
  static const char* const kLevels[] = {"clean", "noisy", "harsh"};
  const char* const level = kLevels[static_cast<int>(cell.level)];
  const char* const wrong = markOf(f.wrong, cell.wrong.percent, cell.wrong.knownPercent, f.plates);
  if (cell.seams.front() == scenes::TPlateSeam::none) {
    std::printf("| %-22s | %s | | | %.1f%s | | reported at most %.1f |\n", cell.name.c_str(), level,
                percentOf(f.wrong, f.plates), wrong, cell.wrong.percent);
    return *wrong != '!';
  }
  const double median = medianOf(f.errorsPx);
  const char* const found =
      markOf(f.plates - f.found, 100.0 - cell.found.percent, 100.0 - cell.found.knownPercent, f.plates);
  const char* const px = median > 1.3 * cell.medianPx ? "!" : median > cell.medianPx ? "*" : "";
  std::printf("| %-22s | %s | %.1f%s | %.1f | %.1f%s | %.3f%s | %.0f, %.1f, %.2f |\n", cell.name.c_str(), level,
              percentOf(f.found, f.plates), found, percentOf(f.part, f.plates), percentOf(f.wrong, f.plates),
              wrong, median, px, cell.found.percent, cell.wrong.percent, cell.medianPx);
  return *wrong != '!' && *found != '!' && *px != '!';
}

void printCalibration(const std::vector<TContrastFigures>& figures) {
  std::printf("\nHow much the confidence is worth, all lines of the table:\n\n");
  std::printf("| confidence | lines | mean %% | right %% |\n|---|---|---|---|\n");
  for (int bin = 0; bin < 10; ++bin) {
    int lines = 0;
    int right = 0;
    double sum = 0.0;
    for (const TContrastFigures& f : figures) {
      lines += f.lines[bin];
      right += f.right[bin];
      sum += f.confidence[bin];
    }
    std::printf("| %.1f to %.1f | %d | %.0f | %.0f |\n", bin / 10.0, (bin + 1) / 10.0, lines,
                100.0 * sum / std::max(lines, 1), percentOf(right, lines));
  }
}

bool printPlates(int plates, std::uint64_t seed, int threads) {
  std::printf(
      "Plates without a stripe, 1280x1024, %d of a kind and level, seed %llu: percent found, percent found "
      "in part, percent wrong, median error px\n\n",
      plates, static_cast<unsigned long long>(seed));
  std::printf("| plate | level | found | part | wrong | px | wanted |\n|---|---|---|---|---|---|---|\n");
  const std::vector<TContrastFigures> figures = accuracy::measureContrast(plates, seed, threads);
  bool isHeld = true;
  for (std::size_t c = 0; c < figures.size(); ++c)
    isHeld = printCell(accuracy::contrastCells()[c], figures[c]) && isHeld;
  printCalibration(figures);
  return isHeld;
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App program("What the search by contrast finds.", "contrast_accuracy");
  int plates = 300;
  std::uint64_t seed = 7000;
  int threads = static_cast<int>(std::max(std::thread::hardware_concurrency(), 1U));
  bool isShort = false;
  std::string frames = DEFAULT_FRAMES;
  program.add_option("--plates", plates, "Of each kind and level")->check(CLI::PositiveNumber);
  program.add_option("--seed", seed, "Of the first plate");
  program.add_option("--threads", threads, "The figures do not depend on it")->check(CLI::PositiveNumber);
  program.add_option("--frames", frames, "Folder of real frames");
  program.add_flag("--short", isShort, "A small sample of plates");
  CLI11_PARSE(program, argc, argv);
  const bool arePlatesHeld = printPlates(isShort ? kShortPlates : plates, seed, threads);
  const bool areFramesHeld = accuracy::printContrastFrames(frames);
  return arePlatesHeld && areFramesHeld ? 0 : 1;
}
