#include "accuracy/ridge_accuracy.h"

#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace ridge_accuracy {

namespace {

namespace fs = std::filesystem;

constexpr int kLineGrey = 64;      // overlay pixels of a drawn centre line are brighter
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
    if (!std::getline(fields, name, ',') || !std::getline(fields, x, ',') || !std::getline(fields, y, ',')) continue;
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

void printRow(const std::string& name, const TTally& tally) {
  std::printf("%-44s %7d %8.2f %8.2f %8d %8d\n", name.c_str(), tally.columns, tally.nearPercent(),
              tally.meanError(), tally.absent, tally.extra);
}

void scoreStill(const fs::path& folder, const std::string& stem) {
  const cv::Mat grey = cv::imread((folder / (stem + ".png")).string(), cv::IMREAD_GRAYSCALE);
  const cv::Mat overlay = cv::imread((folder / (stem + "_centreline_weak.jpg")).string(), cv::IMREAD_GRAYSCALE);
  if (grey.empty() || overlay.empty()) {
    std::printf("%-44s missing, skipped\n", stem.c_str());
    return;
  }
  const TCentreLine line = traceRuns(overlay, [&](int x, int y) { return overlay.at<uchar>(y, x) > kLineGrey; });
  TTally tally;
  addFrame(weld::extractRidgeCentres(grey, kMaxSigmaPx, kMinContrast), line, grey.cols, tally);
  printRow(stem, tally);
}

void scoreRun(const fs::path& folder, bool perFrame) {
  TTally total;
  for (const auto& [name, line] : readCentreLines(folder / "centreline_weak.csv")) {
    const cv::Mat grey = cv::imread((folder / name).string(), cv::IMREAD_GRAYSCALE);
    if (grey.empty()) continue;
    const auto found = weld::extractRidgeCentres(grey, kMaxSigmaPx, kMinContrast);
    TTally frame;
    addFrame(found, line, grey.cols, frame);
    addFrame(found, line, grey.cols, total);
    if (perFrame) printRow("  " + name, frame);
  }
  printRow(folder.filename().string(), total);
}

void scoreMask(const fs::path& folder) {
  const cv::Mat colour = cv::imread((folder / "line0.jpg").string(), cv::IMREAD_COLOR);
  const cv::Mat mask = cv::imread((folder / "line0_mask.png").string(), cv::IMREAD_COLOR);
  if (colour.empty() || mask.empty()) {
    std::printf("%-44s missing, skipped\n", folder.filename().string().c_str());
    return;
  }
  cv::Mat red;
  cv::extractChannel(colour, red, 2);
  const TCentreLine line = traceRuns(mask, [&](int x, int y) {
    const cv::Vec3b& pixel = mask.at<cv::Vec3b>(y, x);
    return pixel[2] - std::max(pixel[0], pixel[1]) > kMaskDominance;
  });
  TTally tally;
  addFrame(weld::extractRidgeCentres(red, kMaxSigmaPx, kMinContrast), line, red.cols, tally);
  printRow(folder.filename().string() + " (red channel, middle of mask)", tally);
}

}  // namespace

void printFrameTable(const std::string& framesFolder) {
  const fs::path root(framesFolder);
  if (!fs::is_directory(root)) {
    std::printf("\nReal frames: no folder %s, skipped\n", framesFolder.c_str());
    return;
  }
  std::printf("\n%-44s %7s %8s %8s %8s %8s\n", "real frames", "columns", "near %", "mean px", "absent", "extra");
  const fs::path groove = root / "hanhiver-groove";
  for (const char* stem : {"v_rough_big", "v_rough_small", "v_smooth_big"}) scoreStill(groove, stem);
  for (const char* run : {"run1_v_multipass", "run2_v_small_root", "run5_bevel_step", "run7_filled_bead"}) {
    scoreRun(groove / run, true);
  }
  scoreMask(root / "lsdnn-corner");
}

}  // namespace ridge_accuracy
