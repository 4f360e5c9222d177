#include "ridge_accuracy.h"

#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace ridge_accuracy {

namespace {

namespace fs = std::filesystem;

constexpr int kLineGrey = 64;  // overlay pixels of a drawn centre line are brighter
constexpr double kTurnStepDeg = 0.05;
constexpr int kTurnSteps = 40;
constexpr int kMaskDominance = 60;  // red of the stripe mask over green and blue

using TFrameLines = std::map<std::string, TCentreLine>;

// Rows "file,x,y" under a heading.
TFrameLines readCentreLines(const fs::path& file) {
  TFrameLines lines;
  std::ifstream in(file);
  std::string row;
  std::getline(in, row);
  while (std::getline(in, row)) {
    std::istringstream fields(row);
    std::string name;
    std::string x;
    std::string y;
    if (!std::getline(fields, name, ',') || !std::getline(fields, x, ',') || !std::getline(fields, y, ','))
      continue;
    lines[name][std::stoi(x)].push_back(std::stod(y));
  }
  return lines;
}

// Middle of every vertical run of pixels that `isLine` accepts.
template <typename TPredicate>
TCentreLine traceRuns(const cv::Mat& overlay, TPredicate isLine) {
  TCentreLine line;
  for (int x = 0; x < overlay.cols; ++x) {
    for (int y = 0; y < overlay.rows; ++y) {
      const int first = y;
      while (y < overlay.rows && isLine(x, y)) ++y;
      if (y > first) line[x].push_back((first + y - 1) / 2.0);
    }
  }
  return line;
}

// Middle of the run of rows above half the column's greatest level, around that level: a crude centre that
// owes nothing to ridge extraction. Levels are means of five rows.
double middleOfBrightest(const cv::Mat& smooth, int x) {
  int peak = 0;
  for (int y = 1; y < smooth.rows; ++y) {
    if (smooth.at<uchar>(y, x) > smooth.at<uchar>(peak, x)) peak = y;
  }
  const int half = smooth.at<uchar>(peak, x) / 2;
  int first = peak;
  int last = peak;
  while (first > 0 && smooth.at<uchar>(first - 1, x) >= half) --first;
  while (last + 1 < smooth.rows && smooth.at<uchar>(last + 1, x) >= half) ++last;
  return (first + last) / 2.0;
}

struct TFrameTally : TTally {
  int contested = 0;  // centres off the reference that the brightest run of their column confirms
};

void score(const cv::Mat& grey, const TCentreLine& line, TFrameTally& tally) {
  const auto found = weld::extractRidgeCentres(grey, kSettings, weld::heapMemory());
  addFrame(found, line, grey.cols, tally);
  cv::Mat smooth;
  cv::blur(grey, smooth, cv::Size(1, 5));
  for (const weld::TRidgePoint& ridge : found) {
    const int x = static_cast<int>(ridge.point.x);
    const auto y = static_cast<double>(ridge.point.y);
    const auto rows = line.find(x);
    if (rows == line.end() || distanceTo(rows->second, y) <= kNearPx) continue;
    if (std::abs(middleOfBrightest(smooth, x) - y) <= kNearPx) ++tally.contested;
  }
}

void printRow(const std::string& name, const TFrameTally& tally) {
  std::printf("%-44s %7d %8.2f %8.2f %8d %8d %9d %8d\n", name.c_str(), tally.columns, tally.nearPercent(),
              tally.meanError(), tally.columns - tally.near - tally.absent, tally.absent, tally.contested,
              tally.extra);
}

void printMissing(const fs::path& file) {
  std::printf("%-44s missing, skipped\n", file.filename().string().c_str());
}

// The line turned about the middle of the frame, as far as it stays inside.
TCentreLine turn(const TCentreLine& line, double angleDeg, cv::Size size) {
  TCentreLine turned;
  const double slope = std::tan(angleDeg * CV_PI / 180.0);
  for (const auto& [x, rows] : line) {
    for (const double y : rows) {
      const double dx = x - size.width / 2.0;
      const double dy = y - size.height / 2.0;
      const int column = static_cast<int>(std::lround(x - slope * dy));
      if (column >= 0 && column < size.width) turned[column].push_back(y + slope * dx);
    }
  }
  return turned;
}

// The overlay of a still may have been drawn on a frame levelled by a small turn: the turn that fits best.
double findTurnDeg(const cv::Mat& grey, const TCentreLine& line) {
  const auto found = weld::extractRidgeCentres(grey, kSettings, weld::heapMemory());
  double best = 0.0;
  double bestPercent = -1.0;
  for (int step = -kTurnSteps; step <= kTurnSteps; ++step) {
    TTally tally;
    addFrame(found, turn(line, step * kTurnStepDeg, grey.size()), grey.cols, tally);
    if (tally.nearPercent() <= bestPercent) continue;
    bestPercent = tally.nearPercent();
    best = step * kTurnStepDeg;
  }
  return best;
}

void scoreStill(const fs::path& folder, const std::string& stem) {
  const cv::Mat grey = cv::imread((folder / (stem + ".png")).string(), cv::IMREAD_GRAYSCALE);
  const cv::Mat overlay = cv::imread((folder / (stem + "_centreline_weak.jpg")).string(), cv::IMREAD_GRAYSCALE);
  if (grey.empty() || overlay.empty()) return printMissing(folder / stem);
  const TCentreLine line = traceRuns(overlay, [&](int x, int y) { return overlay.at<uchar>(y, x) > kLineGrey; });
  TFrameTally asIs;
  score(grey, line, asIs);
  printRow(stem, asIs);
  const double turnDeg = findTurnDeg(grey, line);
  TFrameTally turned;
  score(grey, turn(line, turnDeg, grey.size()), turned);
  std::printf("  overlay turned by %5.2f deg:\n", turnDeg);
  printRow("  " + stem, turned);
}

void scoreRun(const fs::path& folder) {
  if (!fs::is_directory(folder)) return printMissing(folder);
  TFrameTally total;
  for (const auto& [name, line] : readCentreLines(folder / "centreline_weak.csv")) {
    const cv::Mat grey = cv::imread((folder / name).string(), cv::IMREAD_GRAYSCALE);
    if (grey.empty()) continue;
    TFrameTally frame;
    score(grey, line, frame);
    score(grey, line, total);
    printRow("  " + name, frame);
  }
  printRow(folder.filename().string(), total);
}

// The mask of a stripe tells where it is, not its centre to 3 px: both its middle and its inside are scored.
void scoreMask(const fs::path& folder) {
  const cv::Mat grey = cv::imread((folder / "line0.jpg").string(), cv::IMREAD_GRAYSCALE);
  const cv::Mat mask = cv::imread((folder / "line0_mask.png").string(), cv::IMREAD_COLOR);
  if (grey.empty() || mask.empty()) return printMissing(folder);
  const auto isStripe = [&](int x, int y) {
    const cv::Vec3b& pixel = mask.at<cv::Vec3b>(y, x);
    return pixel[2] - std::max(pixel[0], pixel[1]) > kMaskDominance;
  };
  TFrameTally middle;
  score(grey, traceRuns(mask, isStripe), middle);
  printRow("lsdnn-corner, middle of mask", middle);
  TCentreLine inside;
  for (int x = 0; x < mask.cols; ++x) {
    for (int y = 0; y < mask.rows; ++y) {
      if (isStripe(x, y)) inside[x].push_back(y);
    }
  }
  TFrameTally within;
  score(grey, inside, within);
  printRow("lsdnn-corner, inside mask", within);
}

}  // namespace

void printFrameTable(const std::string& framesFolder) {
  const fs::path root(framesFolder);
  if (!fs::is_directory(root)) {
    std::printf("\nReal frames: no folder %s, skipped\n", framesFolder.c_str());
    return;
  }
  std::printf("\n%-44s %7s %8s %8s %8s %8s %9s %8s\n", "real frames", "columns", "near %", "mean px", "off",
              "absent", "contested", "extra");
  const fs::path groove = root / "hanhiver-groove";
  for (const char* stem : {"v_rough_big", "v_rough_small", "v_smooth_big"}) scoreStill(groove, stem);
  for (const char* run : {"run1_v_multipass", "run2_v_small_root", "run5_bevel_step", "run7_filled_bead"}) {
    scoreRun(groove / run);
  }
  scoreMask(root / "lsdnn-corner");
}

}  // namespace ridge_accuracy
