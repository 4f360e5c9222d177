// zelweld sweep: one parameter over a range, on the same frames.
#include "tools/cli_error.h"
#include "tools/commands.h"
#include "tools/output.h"
#include "tools/output_file.h"
#include "tools/seam_run.h"
#include "tools/sweep_page.h"
#include "tools/sweep_table.h"
#include "tools/text.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cmath>
#include <memory>

namespace tool {
namespace {

constexpr int kBarWidth = 20;  // characters for a found share of 100 %

// As typed.
struct TOptions {
  TSeamRunOptions run;
  std::string page;
  std::string objective;  // empty: the seam point
};

// As understood.
struct TSweep {
  TPreparation preparation;
  std::vector<TSeamRun> runs;  // one a value
  TSweepTable table;
};

// Parts the range from the single values of --set.
TSweepRange takeRange(TParamSource& source) {
  const auto firstRange = std::stable_partition(source.values.begin(), source.values.end(),
                                                [](const std::string& value) { return !isRange(value); });
  const std::vector<std::string> ranges(firstRange, source.values.end());
  if (ranges.size() != 1) {
    throw usageError(
        "--set: " + (ranges.empty() ? "no range is given" : "more than one range: " + join(ranges, ", ")) +
        "; write one as name=from:to:step, for example minStepPx=5:40:5");
  }
  source.values.erase(firstRange, source.values.end());
  return parseRange(ranges.front());
}

TSweep sweepOf(const TOptions& options) {
  TTrackingOptions typed = options.run.tracking;
  const TSweepRange range = takeRange(typed.source);
  const TTracking tracking = trackingOf(typed);
  return {tracking.preparation, sweptRuns(tracking, range, options.objective),
          TSweepTable(tracking.params.weldType, range)};
}

// Tracks the frame under every value.
void addFrame(TSweep& sweep, const TFrame& frame, const TTruth& truth) {
  std::vector<TSeamFrame> seen;
  for (TSeamRun& run : sweep.runs) {
    seen.push_back(run.next(frame));
  }
  sweep.table.add(frame, seen, truth);
}

std::string barOf(double share) {
  const int filled = static_cast<int>(std::lround(share * kBarWidth));
  return std::string(filled, '#') + std::string(kBarWidth - filled, '.');
}

std::string truthCells(const TSweepPoint& point) {
  const auto errorPx = point.truth ? point.truth->medianErrorPx() : std::nullopt;
  return point.truth
             ? padded(std::to_string(point.truth->wrong) + " of " + std::to_string(point.truth->judged), 12) +
                   padded(errorPx ? fixed(*errorPx, 2) : "-", 11)
             : "";
}

void printTable(const TSweepResult& result) {
  const bool isJudged = std::any_of(result.rows.begin(), result.rows.end(),
                                    [](const TSweepRow& row) { return row.point.truth.has_value(); });
  printLine("   " + padded(result.parameter, 17) + padded("found", 30) + padded("jitter, px", 12) +
            padded("confidence", 12) + (isJudged ? padded("wrong", 12) + padded("error, px", 11) : "") +
            padded("longest loss", 14) + "most frequent reason for losses");
  for (const TSweepRow& row : result.rows) {
    const TSweepPoint& point = row.point;
    printLine((row.isGood ? " * " : "   ") + padded(plain(point.value), 17) +
              padded(barOf(point.foundShare) + " " + fixed(100.0 * point.foundShare, 1) + " %", 30) +
              padded(point.jitterPx ? fixed(*point.jitterPx, 3) : "-", 12) +
              padded(fixed(point.confidence, 2), 12) + truthCells(point) +
              padded(std::to_string(row.longestLoss), 14) + row.reason);
  }
}

// Where a good range that reaches an end of the sweep may go on.
std::string openEndsOf(const TGoodRange& good, std::size_t count) {
  std::vector<std::string> ends;
  if (good.first == 0) {
    ends.emplace_back("below");
  }
  if (good.last + 1 == count) {
    ends.emplace_back("above");
  }
  return ends.empty() ? "" : "\nThe good range may go on " + join(ends, " and ") + " the sweep.";
}

void printSuggestion(const TSweepResult& result) {
  if (!result.objection.empty()) {
    printLine("\nNo suggestion: " + result.objection + ".");
    return;
  }
  const TGoodRange& good = *result.good;
  const auto valueAt = [&](std::size_t i) { return plain(result.rows[i].point.value); };
  printLine("\nSuggestion: " + result.parameter + "=" + valueAt(good.middle) +
            ", the middle of the widest good range " + valueAt(good.first) + " to " + valueAt(good.last) + "." +
            openEndsOf(good, result.rows.size()));
}

void run(const TOptions& options) {
  TSweep sweep = sweepOf(options);
  const TTruth truth = truthOf(options.run);
  if (!options.page.empty()) {
    checkPagePlace(options.page, filesOf(options.run.tracking));
  }
  const TReading reading = followFrames(options.run.tracking.frames, [&](const TFrame& stored) {
    addFrame(sweep, prepared(stored, sweep.preparation), truth);
  });
  const TSweepResult result = sweep.table.result();
  if (!truth.isEmpty() && !result.rows.front().point.truth) {
    throw inputError("--truth: " + options.run.truthFile + " labels none of the frames");
  }
  printTable(result);
  printSuggestion(result);
  if (!options.page.empty()) {
    writeWholeFile(options.page, sweepPage(result));
  }
  reading.check();
}

}  // namespace

void addSweepCommand(CLI::App& program) {
  CLI::App* const command =
      program.add_subcommand("sweep", "Track the same frames with one parameter over a range");
  const auto options = std::make_shared<TOptions>();
  addSeamRunOptions(*command, options->run);
  command->add_option("--objective", options->objective,
                      "A measure that is to be steady, in place of the seam point: gapPx");
  command->add_option("--out", options->page, "HTML page with charts of found share and jitter");
  command->footer(
      "Exactly one --set gives a range, name=from:to:step; others fix further parameters.\n"
      "found       share of frames whose seam was found; repeats of an earlier seam do not count\n"
      "jitter      median of |p[n-1] - 2 p[n] + p[n+1]| over the seam points p of consecutive found frames, or "
      "over\n"
      "            the values of the --objective\n"
      "confidence  median of the measurements of the joint, 0 to 1\n"
      "wrong       with --truth: labelled frames with a seam more than 5 px (or tol_px) off\n"
      "*           good: found at most 1 % below the best, jitter at most 20 % (or 0.05 px) above the least of\n"
      "            these, and nothing wrong; without --truth neither unsure, nor at the ends of the stripe, nor "
      "at\n"
      "            the loosest value of the parameter's range\n"
      "The suggestion is the middle of the widest run of good values. There is none below 90 % found, above 5 px "
      "of\n"
      "jitter, for one value at an edge, or where neighbouring values find different seams.\n"
      "Examples:\n"
      "  zelweld sweep frames/ --type lap --set minStepPx=5:40:5 --out sweep.html\n"
      "  zelweld sweep frames/ --params gap.json --set minGapPx=2:30:2 --rotate 90 --truth labels.csv");
  command->callback([options] { run(*options); });
}

}  // namespace tool
