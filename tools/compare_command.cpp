// zelweld compare: the same frames under two jobs.
#include "tools/cli_error.h"
#include "tools/commands.h"
#include "tools/compare.h"
#include "tools/compare_page.h"
#include "tools/output.h"
#include "tools/output_file.h"
#include "tools/stats.h"
#include "tools/text.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cmath>
#include <memory>

namespace tool {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kMaxStretches = 12;  // of frames lost on one side that are listed

// As typed.
struct TOptions {
  TSeamRunOptions run;  // its inputs begin with one or two files of jobs
  std::string page;
};

// "3-7, 12, 30-31"
std::string stretchesOf(const std::vector<int>& frames) {
  std::vector<std::string> stretches;
  for (std::size_t first = 0; first < frames.size();) {
    std::size_t last = first;
    while (last + 1 < frames.size() && frames[last + 1] == frames[last] + 1) {
      ++last;
    }
    if (stretches.size() == kMaxStretches) {
      stretches.emplace_back("...");
      break;
    }
    const std::string from = std::to_string(frames[first]);
    stretches.push_back(first == last ? from : from + "-" + std::to_string(frames[last]));
    first = last + 1;
  }
  return join(stretches, ", ");
}

std::string row(const std::string& name, const std::string& a, const std::string& b) {
  return padded(name, 22) + padded(a, 22) + b;
}

std::string foundText(const TSeamRun& run) {
  return std::to_string(run.found()) + " (" + fixed(100.0 * run.foundShare(), 1) + " %)";
}

std::string jitterText(const TSeamRun& run) {
  const auto jitter = run.jitter().medianPx();
  return jitter ? fixed(*jitter, 3) + " px" : "-";
}

// Medians of what either side measured.
void printMeasures(const TSeamRun& a, const TSeamRun& b) {
  for (const TMeasure& measure : measuresOf(a.type())) {
    const double ofA = a.medianOf(measure.name);
    const double ofB = b.medianOf(measure.name);
    const auto text = [&](double value) { return std::isfinite(value) ? fixed(value, measure.digits) : "-"; };
    if (!measure.isOfPoint && (std::isfinite(ofA) || std::isfinite(ofB))) {
      printLine(row(measure.name, text(ofA), text(ofB)));
    }
  }
}

void printFigures(const TComparison& both) {
  const TSeamRun& a = both.a.run;
  const TSeamRun& b = both.b.run;
  const std::string frames = std::to_string(both.distancesPx.size()) + " frames with a seam in both";
  printLine("A  " + onOneLine(both.a.name) + "\nB  " + onOneLine(both.b.name) + "\n\n" + row("", "A", "B"));
  printLine(row("frames", std::to_string(a.frames()), std::to_string(b.frames())));
  printLine(row("found", foundText(a), foundText(b)));
  printLine(row("losses", std::to_string(a.losses()), std::to_string(b.losses())));
  printLine(row("longest loss, frames", std::to_string(a.longestLoss()), std::to_string(b.longestLoss())));
  printLine(row("jitter", jitterText(a), jitterText(b)));
  if (both.a.truth.judged > 0) {
    printLine(row("wrong", both.a.truth.text(), both.b.truth.text()));
  }
  printMeasures(a, b);
  if (!both.distancesPx.empty()) {
    printLine("\nMedian distance between the seams of A and B: " + fixed(percentile(both.distancesPx, 0.5), 2) +
              " px, " + frames);
  }
}

void printDifference(const TDifference& only, const std::string& lost, const std::string& found) {
  printLine("\nLost under " + lost + ", found under " + found + ": " + std::to_string(only.frames.size()) +
            " frames");
  if (!only.frames.empty()) {
    printLine("  frames " + stretchesOf(only.frames));
  }
  for (const TReasonTally::TRow& reason : only.reasons.rows()) {
    printLine("  " + padded(std::to_string(reason.frames) + " x", 8) + reason.reason + ", frame " +
              std::to_string(reason.firstFrame) + ": " + reason.sentence);
  }
}

// Every reason for which either side lost frames.
void printReasons(const TComparison& both) {
  const std::vector<TReasonRow> rows = reasonsOf(both);
  if (rows.empty()) {
    return;
  }
  printLine("\nReasons for all frames not found\n" + padded("A", 8) + padded("B", 8) + "reason");
  for (const TReasonRow& row : rows) {
    printLine(padded(std::to_string(row.a), 8) + padded(std::to_string(row.b), 8) + row.reason);
  }
}

// Parts the files of jobs, one or two, from the inputs.
std::vector<std::string> takeJobFiles(std::vector<std::string>& inputs) {
  const auto isJob = [](const std::string& word) { return fs::path(word).extension() == ".json"; };
  const auto end = std::find_if_not(inputs.begin(), inputs.end(), isJob);
  std::vector<std::string> files(inputs.begin(), end);
  inputs.erase(inputs.begin(), end);
  if (files.empty() || files.size() > 2 || inputs.empty()) {
    throw usageError("write A.json B.json FRAMES, or A.json FRAMES with options that change B, as in --set");
  }
  return files;
}

TComparedSide sideOf(const std::string& file, TTrackingOptions options, const std::string& change) {
  options.source.file = file;
  return {file + change, TSeamRun(trackingOf(options))};
}

// How the frames are prepared goes for both sides.
TTrackingOptions withoutChanges(const TTrackingOptions& options) {
  TTrackingOptions plain;
  plain.frames = options.frames;
  return plain;
}

// With one file the options make the difference; with two they go for both.
TComparison comparisonOf(const std::vector<std::string>& files, const TTrackingOptions& options) {
  if (files.size() == 2) {
    return {sideOf(files[0], options, ""), sideOf(files[1], options, ""), {}, {}, {}};
  }
  const std::string change = options.source.values.empty() ? "" : " " + join(options.source.values, " ");
  TComparison both{sideOf(files[0], withoutChanges(options), ""),
                   sideOf(files[0], options, " with" + (change.empty() ? " other options" : change)),
                   {},
                   {},
                   {}};
  const TTracking& a = both.a.run.tracking();
  const TTracking& b = both.b.run.tracking();
  if (writeWeldJob(a) == writeWeldJob(b) && a.isFirstOnly == b.isFirstOnly) {
    throw usageError("A and B are the same: name a second file, or change something, as in --set minGapPx=20");
  }
  return both;
}

void checkPage(const std::string& page, const std::vector<std::string>& jobs, const TTrackingOptions& tracking) {
  std::vector<fs::path> inputs = filesOf(tracking);
  inputs.insert(inputs.end(), jobs.begin(), jobs.end());
  checkPagePlace(page, inputs);
}

void run(const TOptions& options) {
  if (!options.run.tracking.source.file.empty()) {
    throw usageError("--job: compare takes its jobs as A.json B.json before the frames");
  }
  TTrackingOptions tracking = options.run.tracking;
  const std::vector<std::string> jobs = takeJobFiles(tracking.frames.inputs);
  TComparison both = comparisonOf(jobs, tracking);
  both.truth = truthOf(options.run);
  const bool hasPage = !options.page.empty();
  if (hasPage) {
    checkPage(options.page, jobs, tracking);
  }
  TComparedPictures pictures;
  const TReading reading = followFrames(tracking.frames, [&](const TFrame& frame) {
    const TComparedFrame compared = compareFrame(both, frame);
    if (hasPage) {
      pictures.add(both, compared);
    }
  });
  printFigures(both);
  printDifference(both.onlyA, "B", "A");
  printDifference(both.onlyB, "A", "B");
  printReasons(both);
  if (hasPage) {
    writeWholeFile(options.page, comparePage(both, pictures));
  }
  reading.check();
}

}  // namespace

void addCompareCommand(CLI::App& program) {
  CLI::App* const command = program.add_subcommand("compare", "Track the same frames under two jobs");
  const auto options = std::make_shared<TOptions>();
  addSeamRunOptions(*command, options->run);
  command->get_option("INPUT")->description("A.json, B.json (job or parameter files), then frames as for track");
  command->add_option("--out", options->page, "HTML page with pictures of the frames that differ");
  command->footer(
      "With A.json alone B is the same with the options given; with both files the options go for both.\n"
      "--roi, --rotate and --channel always go for both.\n"
      "found   frames whose seam was found; repeats of an earlier seam do not count\n"
      "losses  stretches of frames not found\n"
      "jitter  median of |p[n-1] - 2 p[n] + p[n+1]| over the seam points p of consecutive found frames: what\n"
      "        is left when the even motion of the seam is taken away\n"
      "wrong   with --truth: labelled frames with a seam more than 5 px (or tol_px) off, and the median error\n"
      "Below stand the medians of what is measured of the joint.\n"
      "Examples:\n"
      "  zelweld compare a.json b.json frames/\n"
      "  zelweld compare a.json --set minGapPx=20 frames/ --out compare.html\n"
      "  zelweld compare a.json b.json clip.avi --rotate 90 --exact");
  command->callback([options] { run(*options); });
}

}  // namespace tool
