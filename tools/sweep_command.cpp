// zelweld sweep: one parameter over a range, on the same frames.
#include "tools/cli_error.h"
#include "tools/commands.h"
#include "tools/frame_source.h"
#include "tools/output.h"
#include "tools/progress.h"
#include "tools/seam_run.h"
#include "tools/shared_options.h"
#include "tools/stop_signal.h"
#include "tools/sweep.h"
#include "tools/text.h"

#include <algorithm>
#include <memory>

namespace tool {
namespace {

constexpr int kBarWidth = 20;  // characters for a found share of 100 %

// As typed.
struct TOptions {
  TFrameOptions frames;
  TParamSource source;
  bool isExact = false;
};

struct TSweep {
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
        "; write one as name=from:to:step, for example dPara7=5:40:5");
  }
  source.values.erase(firstRange, source.values.end());
  return parseRange(ranges.front());
}

TSweep sweepOf(const TOptions& options) {
  TParamSource source = options.source;
  TSweep sweep{takeRange(source), {}};
  TWeldParams params = loadParams(source);
  const TParamSpec& spec = findParam(params.weldType, sweep.range.name);
  if (isSwitch(spec)) {
    throw usageError("--set: " + spec.name + " is a switch and has no range; use zelweld compare");
  }
  const TTrackerOptions tracker = options.isExact ? TTrackerOptions::exact() : TTrackerOptions();
  for (const double value : sweep.range.values) {
    setParam(params, spec, value);
    sweep.runs.emplace_back(params, tracker);
  }
  return sweep;
}

void followFrames(TSweep& sweep, const TOptions& options) {
  const TPreparation preparation = preparationOf(options.frames);
  TFrameSource source(listInputs(options.frames.inputs));
  TProgress progress(source.frameCount());
  while (const auto frame = source.next()) {
    const cv::Mat image = prepareImage(frame->image, preparation, frame->name);
    for (TSeamRun& run : sweep.runs) {
      run.next(image, frame->index, frame->startsSequence);
    }
    progress.draw(sweep.runs.front().frames());
  }
}

std::vector<TSweepPoint> pointsOf(const TSweep& sweep) {
  std::vector<TSweepPoint> points;
  for (std::size_t i = 0; i < sweep.runs.size(); ++i) {
    points.push_back({sweep.range.values[i], sweep.runs[i].foundShare(), sweep.runs[i].jitter().medianPx()});
  }
  return points;
}

std::string barOf(double share) {
  const int filled = static_cast<int>(share * kBarWidth + 0.5);
  return std::string(filled, '#') + std::string(kBarWidth - filled, '.');
}

void printTable(const TSweep& sweep, const std::vector<TSweepPoint>& points, const std::vector<bool>& isGood) {
  printLine("   " + padded(sweep.range.name, 17) + padded("found", 30) + padded("jitter, px", 12) +
            padded("longest loss", 14) + "most frequent reason for losses");
  for (std::size_t i = 0; i < points.size(); ++i) {
    const TSeamRun& run = sweep.runs[i];
    const auto reasons = run.reasons().rows();
    printLine((isGood[i] ? " * " : "   ") + padded(plain(points[i].value), 17) +
              padded(barOf(points[i].foundShare) + " " + fixed(100.0 * points[i].foundShare, 1) + " %", 30) +
              padded(points[i].jitterPx ? fixed(*points[i].jitterPx, 3) : "-", 12) +
              padded(std::to_string(run.longestLoss()), 14) +
              (reasons.empty() ? "-" : weldOutcomeText(reasons.front().reason)));
  }
}

// The values of the good range that are ends of the sweep, where a wider sweep may find more.
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

void printSuggestion(const TSweep& sweep, const std::vector<bool>& isGood) {
  const auto good = widestGoodRange(isGood);
  if (!good) {
    printLine("\nNo suggestion: no value found a seam.");
    return;
  }
  const auto& values = sweep.range.values;
  printLine("\nSuggestion: " + sweep.range.name + "=" + plain(values[good->middle]) +
            ", the middle of the widest good range " + plain(values[good->first]) + " to " +
            plain(values[good->last]) + "." + openEndsOf(*good, values.size()));
}

void run(const TOptions& options) {
  TSweep sweep = sweepOf(options);
  followFrames(sweep, options);
  throwIfStopRequested();
  const std::vector<TSweepPoint> points = pointsOf(sweep);
  const std::vector<bool> isGood = goodPoints(points);
  printTable(sweep, points, isGood);
  printSuggestion(sweep, isGood);
}

}  // namespace

void addSweepCommand(CLI::App& program) {
  CLI::App* const command =
      program.add_subcommand("sweep", "Track the same frames with one parameter over a range");
  const auto options = std::make_shared<TOptions>();
  addFrameOptions(*command, options->frames);
  addParamOptions(*command, options->source);
  command->add_flag("--exact", options->isExact, "The plain rules of the detectors, without the tracker's help");
  command->footer(
      "Exactly one --set gives a range, name=from:to:step; others fix further parameters.\n"
      "found   share of frames whose seam was found; repeats of an earlier seam do not count\n"
      "jitter  median of |p[n-1] - 2 p[n] + p[n+1]| over the seam points p of consecutive found frames\n"
      "*       good: found at most 1 % below the best, and jitter at most 20 % (or 0.05 px) above the least of "
      "these\n"
      "The suggestion is the middle of the widest run of good values.\n"
      "Examples:\n"
      "  zelweld sweep frames/ --type lap --set dPara7=5:40:5\n"
      "  zelweld sweep clip.avi --params gap.json --set dPara8=2:30:2 --set dPara2=4 --rotate 90");
  command->callback([options] { run(*options); });
}

}  // namespace tool
