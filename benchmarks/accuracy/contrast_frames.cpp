#include "contrast_cells.h"
#include "frame_folder.h"
#include "zelWeldDetect.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>

namespace accuracy {

namespace {

namespace fs = std::filesystem;

constexpr double kReachBeyondPx = 16.0;  // a line is carried on so far to meet a label

// A folder of frames and how their seam is asked for.
struct TPlainRow {
  const char* folder;
  TContrastSearch search;
  cv::Point2f roughOffPx;  // from the label; the search has a band
  int leastRight;
};

// Distance of a point from the line through the nearest piece, within its reach; infinite beyond.
double offLine(const TContourCenterLine& line, cv::Point2d p) {
  double least = HUGE_VAL;
  for (std::size_t i = 0; i + 1 < line.pts.size(); ++i) {
    const cv::Point2d from = line.pts[i];
    const cv::Point2d step = cv::Point2d(line.pts[i + 1]) - from;
    const double length = cv::norm(step);
    const double along = (p - from).dot(step) / length;
    const double before = i == 0 ? kReachBeyondPx : 0.0;
    const double after = i + 2 == line.pts.size() ? kReachBeyondPx : 0.0;
    if (along < -before || along > length + after) continue;
    least = std::min(least, std::abs((p - from).cross(step)) / length);
  }
  return least;
}

std::vector<TPlainRow> plainRows() {
  TContrastSearch dark;
  dark.polarity = TSeamPolarity::dark;
  TContrastSearch near = dark;
  near.directionTolDeg = 25.0F;
  near.bandPx = 40.0F;
  near.reachPx = 250.0F;
  return {{"weldseam-plainlight", dark, {}, 8},
          {"demelere-plainlight", dark, {}, 0},
          {"nghia-butt/run_c", near, {12.0F, -10.0F}, 11},
          {"nghia-butt/run_a", near, {12.0F, -10.0F}, 9}};
}

struct TPlainScore {
  int right = 0;  // every label within its tolerance
  int wrong = 0;
  int refused = 0;
  int empty = 0;  // without a label, and nothing reported
  std::vector<double> errorsPx;
};

void scoreFrame(const cv::Mat& image, const TPlainRow& row, const std::vector<TLabel>& labels,
                TPlainScore& score) {
  TContrastSearch search = row.search;
  if (search.bandPx > 0.0F) search.roughPos = cv::Point2f(labels.front().point) + row.roughOffPx;
  const TContourCenterLine line = findSeamByContrast(image, search);
  if (line.pts.empty()) {
    ++(labels.empty() ? score.empty : score.refused);
    return;
  }
  int met = 0;
  int near = 0;
  for (const TLabel& label : labels) {
    const double error = offLine(line, label.point);
    met += std::isfinite(error) ? 1 : 0;
    near += error <= label.tolerancePx ? 1 : 0;
    if (std::isfinite(error)) score.errorsPx.push_back(error);
  }
  if (near > 0 && near == met) {
    ++(near == static_cast<int>(labels.size()) ? score.right : score.refused);
  } else {
    ++(met == 0 && !labels.empty() ? score.refused : score.wrong);
  }
}

// A run with a laser stripe whose break is 2 px, while the seam shows faintly above and below it.
struct TTrackedRow {
  const char* folder;
  TSeamSource source;
  const char* sourceName;
  float lookAtPx;  // where the labels lie
  int leastRight;
};
constexpr TTrackedRow kTrackedRows[] = {{"nghia-butt/run_c", TSeamSource::stripe, "stripe", 264.0F, 12},
                                        {"nghia-butt/run_c", TSeamSource::contrast, "contrast", 264.0F, 11},
                                        {"nghia-butt/run_c", TSeamSource::both, "both", 264.0F, 12},
                                        {"nghia-butt/run_a", TSeamSource::stripe, "stripe", 253.0F, 10},
                                        {"nghia-butt/run_a", TSeamSource::contrast, "contrast", 253.0F, 6},
                                        {"nghia-butt/run_a", TSeamSource::both, "both", 253.0F, 10}};
const TPreparation kTurned{{500, 300, 500, 500}, 90};

TPlainScore scoreTracked(const fs::path& folder, const TTrackedRow& row) {
  TGapSettings gap;
  gap.minGapPx = 2.0;
  gap.lineTolerancePx = 3.0;
  TTrackerOptions options;
  options.source = row.source;
  options.holdFrames = 0;
  options.contrast.polarity = TSeamPolarity::dark;
  options.contrast.directionDeg = 90.0F;
  options.contrast.directionTolDeg = 30.0F;
  options.lookAtPx = row.lookAtPx;
  TWeldTracker tracker(gap.params(), options);
  TPlainScore score;
  const std::vector<TLabel> labels = readLabels(folder);
  for (const fs::path& file : listFrames(folder)) {
    const cv::Mat image = readFrame(file, kTurned);
    const TTrackedSeam seam = tracker.track(image);
    const auto label =
        std::find_if(labels.begin(), labels.end(), [&](const TLabel& l) { return l.file == file.filename(); });
    if (label == labels.end()) continue;
    if (seam.state != TSeamState::found) {
      ++score.refused;
      continue;
    }
    score.errorsPx.push_back(cv::norm(cv::Point2d(seam.weldPos) - toPrepared(label->point, image, kTurned)));
    ++(score.errorsPx.back() <= label->tolerancePx ? score.right : score.wrong);
  }
  return score;
}

double medianOf(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values.empty() ? 0.0 : values[values.size() / 2];
}

bool printTracked(const fs::path& root) {
  std::printf("\nThe same runs tracked as zelweld does, by each source\n\n");
  std::printf("| run | source | right | wrong | refused | px |\n|---|---|---|---|---|---|\n");
  bool isHeld = true;
  for (const TTrackedRow& row : kTrackedRows) {
    const TPlainScore score = scoreTracked(root / row.folder, row);
    const bool isRowHeld = score.right >= row.leastRight && score.wrong == 0;
    std::printf("| %s | %s | %d%s | %d | %d | %.2f |\n", row.folder, row.sourceName, score.right,
                isRowHeld ? "" : "!", score.wrong, score.refused, medianOf(score.errorsPx));
    isHeld = isHeld && isRowHeld;
  }
  return isHeld;
}

}  // namespace

bool printContrastFrames(const std::string& framesFolder) {
  const fs::path root = framesFolder;
  if (!fs::is_directory(root)) {
    std::printf("\nReal frames: no folder %s, skipped\n", root.c_str());
    return true;
  }
  std::printf(
      "\nReal frames in room or lamp light: all labels met, a label missed, refused or not reaching them, "
      "rightly left without an answer, median error px\n\n");
  std::printf("| folder | right | wrong | refused | empty | px |\n|---|---|---|---|---|---|\n");
  bool isHeld = true;
  for (const TPlainRow& row : plainRows()) {
    const std::vector<TLabel> labels = readLabels(root / row.folder);
    TPlainScore score;
    for (const fs::path& file : listFrames(root / row.folder)) {
      std::vector<TLabel> own;
      std::copy_if(labels.begin(), labels.end(), std::back_inserter(own),
                   [&](const TLabel& label) { return label.file == file.filename(); });
      if (own.empty() && row.search.bandPx > 0.0F) continue;
      scoreFrame(readFrame(file, {}), row, own, score);
    }
    const bool isRowHeld = score.right >= row.leastRight && score.wrong == 0;
    std::printf("| %s | %d%s | %d | %d | %d | %.2f |\n", row.folder, score.right, isRowHeld ? "" : "!",
                score.wrong, score.refused, score.empty, medianOf(score.errorsPx));
    isHeld = isHeld && isRowHeld;
  }
  return printTracked(root) && isHeld;
}

}  // namespace accuracy
