// Demonstration: simulates sequences of every joint that has a detector, tracks them frame to frame and compares
// each result with the truth. Leaves annotated frames and a contact sheet, and fails when the seam is not found
// in 99 % of the frames or lies more than a pixel away from the truth in the median.
#include "tools/cli_error.h"
#include "tools/demo_report.h"
#include "tools/detection.h"
#include "tools/image_file.h"
#include "tools/output_file.h"
#include "tools/overlay.h"
#include "tools/progress.h"
#include "tools/stats.h"
#include "tools/text.h"

#include "scenes/groove.h"
#include "scenes/score.h"

#include <CLI/CLI.hpp>
#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cmath>
#include <exception>
#include <filesystem>
#include <iomanip>
#include <iostream>

namespace {

using scenes::TLevel;
using scenes::TSeamCase;
using tool::TOverlay;
namespace fs = std::filesystem;

struct TLevelRow {
  TLevel level;
  std::string name;
};
const std::vector<TLevelRow> kLevels = {{TLevel::clean, "clean"}, {TLevel::noisy, "noisy"}};

constexpr int kSequences = 4;             // per joint and level
constexpr int kFrames = 30;               // per sequence
constexpr int kAnnotateEvery = 30;        // frames
constexpr float kThumbnailScale = 0.25F;  // of a frame's side
constexpr double kMinFoundShare = 0.99;
constexpr double kMaxMedianErrorPx = 1.0;

struct TRow {
  scenes::TJoint joint = scenes::TJoint::plain;
  std::string name;
  std::string level;
  tool::TRunStats stats;
  scenes::TScore score;
  std::vector<cv::Mat> thumbnails;
};

scenes::TMotion motionOf(int sequence) {
  scenes::TMotion motion;
  motion.driftPx = {sequence % 2 == 0 ? 0.8 : -0.8, 0.2};
  motion.jitterPx = 0.5;
  return motion;
}

// Median distance of the stripe's centres to the true ones.
double stripeErrorPx(const scenes::TTruth& truth, const TWeldLineRes& result) {
  std::vector<double> distances;
  for (const cv::Point2f& point : result.stripePts) {
    const double trueY = truth.centreY[static_cast<std::size_t>(point.x)];
    if (!std::isnan(trueY)) {
      distances.push_back(std::abs(point.y - trueY));
    }
  }
  return scenes::quantile(distances, 0.5);
}

void addScore(const TSeamCase& seamCase, const scenes::TTruth& truth, const TWeldLineRes& result,
              scenes::TScore& score) {
  if (hasSeamPoint(seamCase.joint) || !result.isFound) {
    score.add(seamCase, truth, result);
  } else {
    score.addFound(stripeErrorPx(truth, result));
  }
}

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

void runSequence(const TSeamCase& seamCase, TLevel level, int sequence, TRow& row, const fs::path& folder) {
  const scenes::TSceneParams first =
      scenes::randomScene(seamCase.joint, level, static_cast<std::uint64_t>(sequence) + 1);
  const TWeldParams params = scenes::weldParamsFor(seamCase.joint, seamCase.pos);
  TTrackerOptions options;
  options.keepTrace = true;
  TWeldTracker tracker(params, options);
  for (int n = 0; n < kFrames; ++n) {
    const scenes::TScene scene = scenes::renderScene(scenes::frameOf(first, motionOf(sequence), n));
    const tool::TTimedSeam timed = tool::trackTimed(tracker, scene.image);
    if (n == 0 && !hasSeamPoint(seamCase.joint)) {
      continue;  // presence compares with the frame before, so the first frame never counts as found
    }
    row.stats.add(timed.seam.state, timed.ms);
    addScore(seamCase, scene.truth, timed.seam.line, row.score);
    if (n % kAnnotateEvery == kAnnotateEvery - 1) {
      TOverlay overlay = tool::overlayOf(params, timed.seam, tracker.lastTrace(), scene.image.cols);
      if (overlay.seam) {
        overlay.trueSeam = scenes::seamPoint(seamCase.joint, scene.truth, seamCase.pos);
      }
      keepPicture(scene.image, overlay, folder / pictureName(row, sequence, n), row);
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
  std::vector<TSeamCase> cases = scenes::detectedCases();
  // A groove's other points come from the same profile as its root and its left shoulder.
  const auto isRepeated = [](const TSeamCase& c) {
    return scenes::isGroove(c.joint) && c.pos > TWeldPosType::left;
  };
  cases.erase(std::remove_if(cases.begin(), cases.end(), isRepeated), cases.end());
  tool::TProgress progress(static_cast<int>(cases.size() * kLevels.size()) * kSequences);
  printHeading();
  std::vector<TRow> rows;
  int done = 0;
  for (const TSeamCase& seamCase : cases) {
    for (const TLevelRow& level : kLevels) {
      TRow row;
      row.joint = seamCase.joint;
      row.name = scenes::nameOf(seamCase);
      row.level = level.name;
      for (int sequence = 0; sequence < kSequences; ++sequence) {
        runSequence(seamCase, level.level, sequence, row, folder);
        progress.draw(++done);
      }
      progress.clear();
      printRow(row);
      rows.push_back(row);
    }
  }
  tool::writeImage(folder / "contact_sheet.png", contactSheet(rows));
  tool::writeDemoReport(folder);
  std::cout << "Error: distance of the seam point to the truth; for presence, of the stripe centres.\n"
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
