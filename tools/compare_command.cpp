// zelweld compare: the same frames under two parameter files.
#include "tools/commands.h"
#include "tools/output.h"
#include "tools/seam_run.h"
#include "tools/stats.h"
#include "tools/text.h"

#include <algorithm>
#include <cmath>
#include <memory>

namespace tool {
namespace {

constexpr std::size_t kMaxStretches = 12;  // of frames lost on one side that are listed

// As typed.
struct TOptions {
  std::string fileA;
  std::string fileB;
  TSeamRunOptions run;
};

// Frames found on one side only, and why the other side lost them.
struct TDifference {
  std::vector<int> frames;
  TReasonTally reasons;

  void add(int frame, const TSeamFrame& lost) {
    frames.push_back(frame);
    reasons.add(frame, lost);
  }
};

struct TComparison {
  TSeamRun a;
  TSeamRun b;
  TDifference onlyA;
  TDifference onlyB;
  std::vector<double> distancesPx = {};  // between the seams, frames found on both sides
  TTruthFigures truthA = {};
  TTruthFigures truthB = {};
};

void compareFrame(TComparison& both, const TFrame& frame, const TTruth& truth, const TPreparation& preparation) {
  const TSeamFrame a = both.a.next(frame);
  const TSeamFrame b = both.b.next(frame);
  truth.judge(frame.name, storedSeam(a, frame, preparation), both.truthA);
  truth.judge(frame.name, storedSeam(b, frame, preparation), both.truthB);
  if (a.isFound && !b.isFound) {
    both.onlyA.add(frame.index, b);
  }
  if (b.isFound && !a.isFound) {
    both.onlyB.add(frame.index, a);
  }
  if (a.seam && b.seam) {
    both.distancesPx.push_back(cv::norm(*a.seam - *b.seam));
  }
}

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

std::string truthText(const TTruthFigures& truth) {
  const auto errorPx = truth.medianErrorPx();
  return std::to_string(truth.wrong) + " of " + std::to_string(truth.judged) + ", error " +
         (errorPx ? fixed(*errorPx, 2) + " px" : "-");
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

void printFigures(const TComparison& both, const TOptions& options) {
  const TSeamRun& a = both.a;
  const TSeamRun& b = both.b;
  const std::string frames = std::to_string(both.distancesPx.size()) + " frames with a seam in both";
  printLine("A  " + options.fileA + "\nB  " + options.fileB + "\n\n" + row("", "A", "B"));
  printLine(row("frames", std::to_string(a.frames()), std::to_string(b.frames())));
  printLine(row("found", foundText(a), foundText(b)));
  printLine(row("losses", std::to_string(a.losses()), std::to_string(b.losses())));
  printLine(row("longest loss, frames", std::to_string(a.longestLoss()), std::to_string(b.longestLoss())));
  printLine(row("jitter", jitterText(a), jitterText(b)));
  if (both.truthA.judged > 0) {
    printLine(row("wrong", truthText(both.truthA), truthText(both.truthB)));
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
  const auto ofA = both.a.reasons().rows();
  auto ofB = both.b.reasons().rows();
  if (ofA.empty() && ofB.empty()) {
    return;
  }
  printLine("\nReasons for all frames not found\n" + padded("A", 8) + padded("B", 8) + "reason");
  const auto line = [](int countA, int countB, const std::string& reason) {
    printLine(padded(std::to_string(countA), 8) + padded(std::to_string(countB), 8) + reason);
  };
  for (const TReasonTally::TRow& rowA : ofA) {
    const auto rowB = std::find_if(ofB.begin(), ofB.end(), [&](const auto& r) { return r.reason == rowA.reason; });
    line(rowA.frames, rowB == ofB.end() ? 0 : rowB->frames, rowA.reason);
    if (rowB != ofB.end()) {
      ofB.erase(rowB);
    }
  }
  for (const TReasonTally::TRow& rowB : ofB) {
    line(0, rowB.frames, rowB.reason);
  }
}

TComparison comparisonOf(const TOptions& options) {
  const auto sideOf = [&](const std::string& file) {
    TParamSource source;
    source.file = file;
    return TSeamRun(loadParams(source), trackerOf(options.run));
  };
  return {sideOf(options.fileA), sideOf(options.fileB), {}, {}};
}

void run(const TOptions& options) {
  TComparison both = comparisonOf(options);
  const TTruth truth = truthOf(options.run);
  const TPreparation preparation = preparationOf(options.run.frames);
  followFrames(options.run.frames, [&](const TFrame& frame) { compareFrame(both, frame, truth, preparation); });
  printFigures(both, options);
  printDifference(both.onlyA, "B", "A");
  printDifference(both.onlyB, "A", "B");
  printReasons(both);
}

}  // namespace

void addCompareCommand(CLI::App& program) {
  CLI::App* const command = program.add_subcommand("compare", "Track the same frames under two parameter files");
  const auto options = std::make_shared<TOptions>();
  command->add_option("A.json", options->fileA, "Parameter file, as params --format json writes it")->required();
  command->add_option("B.json", options->fileB, "The parameter file to set beside it")->required();
  addSeamRunOptions(*command, options->run);
  command->footer(
      "found   frames whose seam was found; repeats of an earlier seam do not count\n"
      "losses  stretches of frames not found\n"
      "jitter  median of |p[n-1] - 2 p[n] + p[n+1]| over the seam points p of consecutive found frames: what\n"
      "        is left when the even motion of the seam is taken away\n"
      "wrong   with --truth: labelled frames with a seam more than 5 px (or tol_px) off, and the median error\n"
      "Below stand the medians of what is measured of the joint.\n"
      "Examples:\n"
      "  zelweld params --type lap --format json > a.json\n"
      "  zelweld compare a.json b.json frames/\n"
      "  zelweld compare a.json b.json clip.avi --rotate 90 --exact");
  command->callback([options] { run(*options); });
}

}  // namespace tool
