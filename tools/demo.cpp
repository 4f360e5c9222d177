// Demonstration: simulates sequences of every joint that has a detector and of seams without a stripe, tracks them
// frame to frame and compares each result with the truth. Leaves annotated frames and a contact sheet, and fails
// when the seam is not found in 99 % of the frames or lies more than a pixel away from the truth in the median.
#include "tools/cli_error.h"
#include "tools/demo_cases.h"
#include "tools/demo_report.h"
#include "tools/detection.h"
#include "tools/image_file.h"
#include "tools/output_file.h"
#include "tools/overlay.h"
#include "tools/progress.h"
#include "tools/stats.h"
#include "tools/text.h"

#include "scenes/score.h"

#include <CLI/CLI.hpp>
#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <exception>
#include <filesystem>
#include <iomanip>
#include <iostream>

namespace {

using tool::TDemoCase;
using tool::TDemoFrame;
using tool::TOverlay;
namespace fs = std::filesystem;

constexpr int kSequences = 4;             // per case; the last frame of each is annotated
constexpr float kThumbnailScale = 0.25F;  // of a frame's side
constexpr double kMinFoundShare = 0.99;
constexpr double kMaxMedianErrorPx = 1.0;

struct TRow {
  std::string name;
  std::string level;
  tool::TRunStats stats;
  scenes::TScore score;
  std::vector<cv::Mat> thumbnails;
};

cv::Mat annotated(const cv::Mat& image, const TOverlay& overlay, const std::string& title) {
  cv::Mat drawn = drawOverlay(image, overlay);
  tool::drawLabel(drawn, {title + ": " + tool::nameOf(overlay.state)}, overlay.state);
  return drawn;
}

// Writes the annotated frame and puts a small one on the row's line of the contact sheet.
void keepPicture(const cv::Mat& image, const TOverlay& overlay, const fs::path& path, TRow& row) {
  const std::string title = row.name + " " + row.level;
  tool::writeImage(path, annotated(image, overlay, title));
  cv::Mat small;
  cv::resize(image, small, cv::Size(), kThumbnailScale, kThumbnailScale, cv::INTER_AREA);
  row.thumbnails.push_back(annotated(small, tool::scaled(overlay, kThumbnailScale), title));
}

std::string pictureName(const TRow& row, int sequence, int frame) {
  return row.name + "_" + row.level + "_" + std::to_string(sequence) + "_" + std::to_string(frame) + ".png";
}

void addScore(const TDemoFrame& frame, const TWeldLineRes& result, scenes::TScore& score) {
  if (result.isFound) {
    score.addFound(frame.errorOfPx(result));
  } else {
    score.addMiss();
  }
}

void runSequence(const TDemoCase& demo, int sequence, TRow& row, const fs::path& folder) {
  TTrackerOptions options = demo.options;
  options.keepTrace = true;
  TWeldTracker tracker(demo.params, options);
  for (int n = 0; n < demo.frames; ++n) {
    const TDemoFrame frame = demo.draw(sequence, n);
    const tool::TTimedSeam timed = tool::trackTimed(tracker, frame.image);
    if (n > 0 || !demo.skipsFirst) {
      row.stats.add(timed.seam.state, timed.ms);
      addScore(frame, timed.seam.line, row.score);
    }
    if (n == demo.frames - 1) {
      TOverlay overlay = tool::overlayOf(demo.params, timed.seam, tracker.lastTrace(), frame.image.cols);
      overlay.trueSeam = overlay.seam ? frame.trueSeam : std::nullopt;
      keepPicture(frame.image, overlay, folder / pictureName(row, sequence, n), row);
    }
  }
}

bool isGood(const TRow& row) {
  return row.score.foundShare() >= kMinFoundShare && row.score.errorAt(0.5) <= kMaxMedianErrorPx;
}

void printHeading() {
  std::cout << std::left << std::setw(18) << "joint" << std::setw(8) << "level" << std::right << std::setw(7)
            << "frames" << std::setw(7) << "found" << std::setw(9) << "share" << std::setw(11) << "error"
            << std::setw(9) << "p95" << std::setw(11) << "time" << std::setw(9) << "p95" << '\n'
            << std::setw(60) << "median px" << std::setw(9) << "px" << std::setw(11) << "median ms" << std::setw(9)
            << "ms" << '\n';
}

void printRow(const TRow& row) {
  std::cout << std::left << std::setw(18) << row.name << std::setw(8) << row.level << std::right << std::setw(7)
            << row.score.frames << std::setw(7) << row.score.found << std::setw(7)
            << tool::fixed(100.0 * row.score.foundShare(), 1) << " %" << std::setw(11)
            << tool::fixed(row.score.errorAt(0.5), 2) << std::setw(9) << tool::fixed(row.score.errorAt(0.95), 2)
            << std::setw(11) << tool::fixed(row.stats.medianMs(), 2) << std::setw(9)
            << tool::fixed(row.stats.p95Ms(), 2) << (isGood(row) ? "" : "  FAILED") << std::endl;
}

// One line of thumbnails per joint and level.
cv::Mat contactSheet(const std::vector<TRow>& rows) {
  std::vector<cv::Mat> lines;
  for (const TRow& row : rows) {
    cv::Mat line;
    cv::hconcat(row.thumbnails, line);
    lines.push_back(line);
  }
  cv::Mat sheet;
  cv::vconcat(lines, sheet);
  return sheet;
}

bool runDemo(const fs::path& folder) {
  tool::makeFolder(folder);
  const std::vector<TDemoCase> cases = tool::demoCases();
  tool::TProgress progress(static_cast<int>(cases.size()) * kSequences);
  printHeading();
  std::vector<TRow> rows;
  int done = 0;
  for (const TDemoCase& demo : cases) {
    TRow row;
    row.name = demo.name;
    row.level = demo.level;
    for (int sequence = 0; sequence < kSequences; ++sequence) {
      runSequence(demo, sequence, row, folder);
      progress.draw(++done);
    }
    progress.clear();
    printRow(row);
    rows.push_back(row);
  }
  tool::writeImage(folder / "contact_sheet.png", contactSheet(rows));
  tool::writeDemoReport(folder);
  std::cout << "Error: distance of the seam point to the truth; for presence, of the stripe centres; on plates,\n"
            << "to the seam's line.\n"
            << "Time: of a tracked frame, with the recording of its trace.\n"
            << "Frames to look at: " << (folder / "contact_sheet.png").string() << " and beside it.\n"
            << "A lap seam with losses, for a browser: " << (folder / "report.html").string()
            << "; frames of it as a camera gives them: " << (folder / "frames").string() << std::endl;
  return std::all_of(rows.begin(), rows.end(), isGood);
}

}  // namespace

int main(int argc, char** argv) {
  try {
    CLI::App program("Simulates sequences of every joint, tracks them and compares with the truth.",
                     "zelweld_demo");
    std::string folder = "demo-out";
    program.add_option("--out", folder, "Folder for annotated frames and the contact sheet")
        ->capture_default_str();
    CLI11_PARSE(program, argc, argv);
    return runDemo(folder) ? 0 : 1;
  } catch (const tool::TCliError& error) {
    std::cerr << "zelweld_demo: " << error.what() << std::endl;
    return static_cast<int>(error.exitCode);
  } catch (const std::exception& error) {
    std::cerr << "zelweld_demo: " << error.what() << std::endl;
    return static_cast<int>(tool::TExit::failure);
  }
}
