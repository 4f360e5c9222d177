// zelweld sweep: one parameter over a range, on the same frames.
#include "tools/cli_error.h"
#include "tools/commands.h"
#include "tools/output.h"
#include "tools/output_file.h"
#include "tools/parameter.h"
#include "tools/seam_run.h"
#include "tools/sweep.h"
#include "tools/sweep_page.h"
#include "tools/text.h"

#include <algorithm>
#include <cmath>
#include <memory>

namespace tool {
namespace {

constexpr int kBarWidth = 20;  // characters for a found share of 100 %

// As typed.
struct TOptions {
  TSeamRunOptions run;
  TParamSource source;
  std::string page;
};

struct TSweep {
  TWeldType type = TWeldType::none;
  TSweepRange range;
  std::vector<TSeamRun> runs;  // one per value
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
  TParamSource source = options.source;
  const TSweepRange range = takeRange(source);
  TWeldParams params = loadParams(source);
  const TWeldParameter& parameter = findParameter(params.weldType, range.name);
  if (isFlag(parameter)) {
    throw usageError("--set: " + labelOf(parameter) + " is true or false and has no range; use zelweld compare");
  }
  TSweep sweep{params.weldType, range, {}};
  for (const double value : range.values) {
    setValue(params, parameter, value);
    sweep.runs.emplace_back(params, trackerOf(options.run));
  }
  return sweep;
}

TSweepRow rowOf(double value, const TSeamRun& run) {
  const auto reasons = run.reasons().rows();
  return {{value, run.foundShare(), run.jitter().medianPx()},
          false,
          run.longestLoss(),
          reasons.empty() ? "-" : reasons.front().reason};
}

TSweepResult judge(const TSweep& sweep) {
  TSweepResult result{
      sweep.type, findParameter(sweep.type, sweep.range.name).name, sweep.runs.front().frames(), {}, {}};
  std::vector<TSweepPoint> points;
  for (std::size_t i = 0; i < sweep.runs.size(); ++i) {
    result.rows.push_back(rowOf(sweep.range.values[i], sweep.runs[i]));
    points.push_back(result.rows.back().point);
  }
  const std::vector<bool> isGood = goodPoints(points);
  for (std::size_t i = 0; i < isGood.size(); ++i) {
    result.rows[i].isGood = isGood[i];
  }
  result.good = widestGoodRange(isGood);
  return result;
}

std::string barOf(double share) {
  const int filled = static_cast<int>(std::lround(share * kBarWidth));
  return std::string(filled, '#') + std::string(kBarWidth - filled, '.');
}

void printTable(const TSweepResult& result) {
  printLine("   " + padded(result.parameter, 17) + padded("found", 30) + padded("jitter, px", 12) +
            padded("longest loss", 14) + "most frequent reason for losses");
  for (const TSweepRow& row : result.rows) {
    const TSweepPoint& point = row.point;
    printLine((row.isGood ? " * " : "   ") + padded(plain(point.value), 17) +
              padded(barOf(point.foundShare) + " " + fixed(100.0 * point.foundShare, 1) + " %", 30) +
              padded(point.jitterPx ? fixed(*point.jitterPx, 3) : "-", 12) +
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
  if (!result.good) {
    printLine("\nNo suggestion: no value found a seam.");
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
  followFrames(options.run.frames, [&](const TFrame& frame) {
    for (TSeamRun& run : sweep.runs) {
      run.next(frame);
    }
  });
  const TSweepResult result = judge(sweep);
  printTable(result);
  printSuggestion(result);
  if (!options.page.empty()) {
    writeWholeFile(options.page, sweepPage(result));
  }
}

}  // namespace

void addSweepCommand(CLI::App& program) {
  CLI::App* const command =
      program.add_subcommand("sweep", "Track the same frames with one parameter over a range");
  const auto options = std::make_shared<TOptions>();
  addSeamRunOptions(*command, options->run);
  addParamOptions(*command, options->source);
  command->add_option("--out", options->page, "HTML page with charts of found share and jitter");
  command->footer(
      "Exactly one --set gives a range, name=from:to:step; others fix further parameters.\n"
      "found   share of frames whose seam was found; repeats of an earlier seam do not count\n"
      "jitter  median of |p[n-1] - 2 p[n] + p[n+1]| over the seam points p of consecutive found frames\n"
      "*       good: found at most 1 % below the best, and jitter at most 20 % (or 0.05 px) above the least of "
      "these\n"
      "The suggestion is the middle of the widest run of good values.\n"
      "Examples:\n"
      "  zelweld sweep frames/ --type lap --set minStepPx=5:40:5 --out sweep.html\n"
      "  zelweld sweep clip.avi --params gap.json --set minGapPx=2:30:2 --set lineTolerancePx=4 --rotate 90");
  command->callback([options] { run(*options); });
}

}  // namespace tool
