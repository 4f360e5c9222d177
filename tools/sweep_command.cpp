// zelweld sweep: one parameter over a range, on the same frames.
#include "tools/cli_error.h"
#include "tools/commands.h"
#include "tools/output.h"
#include "tools/output_file.h"
#include "tools/parameter.h"
#include "tools/seam_run.h"
#include "tools/stats.h"
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
  std::string page;
  std::string objective;  // empty: the seam point
};

// A value, and what it has found so far.
struct TTrial {
  double value = 0.0;
  TSeamRun run;
  TTruthFigures truth = {};
  std::vector<double> apartPx = {};  // from the seams of the value before
};

struct TSweep {
  TWeldType type = TWeldType::none;
  TPreparation preparation;
  std::string parameter;
  std::vector<TTrial> trials;
  std::optional<TLimitKind> limit = {};  // of the test that the parameter sets, once it has run
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
  TTracking tracking = trackingOf(typed);
  TWeldParams& params = tracking.params;
  const TWeldParameter& parameter = findParameter(params.weldType, range.name);
  if (isFlag(parameter)) {
    throw usageError("--set: " + weldParameterLabel(parameter) +
                     " is true or false and has no range; use zelweld compare");
  }
  TSweep sweep{params.weldType, tracking.preparation, parameter.name, {}};
  const auto objective = options.objective.empty()
                             ? std::nullopt
                             : std::make_optional(findMeasure(params.weldType, options.objective));
  for (const double value : range.values) {
    setValue(params, parameter, value);
    sweep.trials.push_back({value, TSeamRun(tracking, objective)});
  }
  return sweep;
}

// Tracks the frame under every value.
void addFrame(TSweep& sweep, const TFrame& frame, const TTruth& truth) {
  std::optional<cv::Point2d> before;
  for (TTrial& trial : sweep.trials) {
    const TSeamFrame seen = trial.run.next(frame);
    truth.judge(frame.name, storedSeam(seen, frame, sweep.preparation), trial.truth);
    if (seen.seam && before) {
      trial.apartPx.push_back(cv::norm(*seen.seam - *before));
    }
    before = seen.seam;
    if (!sweep.limit) {
      sweep.limit = trial.run.limitOf(sweep.parameter);
    }
  }
}

// At the loosest value of its range a test refuses nothing any more.
bool canFail(const TSweep& sweep, double value) {
  const TParameterLimits& limits = findParameter(sweep.type, sweep.parameter).limits;
  return !sweep.limit || (isLowerLimit(*sweep.limit) ? value > limits.min : value < limits.max);
}

TSweepRow rowOf(const TSweep& sweep, const TTrial& trial) {
  const TSeamRun& run = trial.run;
  const auto reasons = run.reasons().rows();
  const bool isJudged = trial.truth.judged > 0;
  return {{trial.value, run.foundShare(), run.jitter().medianPx(), run.confidence(), run.stripeEndShare(),
           percentile(trial.apartPx, 0.5), canFail(sweep, trial.value),
           isJudged ? std::make_optional(trial.truth) : std::nullopt},
          false,
          run.longestLoss(),
          reasons.empty() ? "-" : reasons.front().reason};
}

TSweepResult judge(const TSweep& sweep) {
  TSweepResult result;
  result.type = sweep.type;
  result.parameter = sweep.parameter;
  result.frames = sweep.trials.front().run.frames();
  std::vector<TSweepPoint> points;
  for (const TTrial& trial : sweep.trials) {
    result.rows.push_back(rowOf(sweep, trial));
    points.push_back(result.rows.back().point);
  }
  const std::vector<bool> isGood = goodPoints(points);
  for (std::size_t i = 0; i < isGood.size(); ++i) {
    result.rows[i].isGood = isGood[i];
  }
  result.good = widestGoodRange(isGood);
  result.objection = objectionTo(points, result.good);
  return result;
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
  if (!truth.isEmpty() && sweep.trials.front().truth.judged == 0) {
    throw inputError("--truth: " + options.run.truthFile + " labels none of the frames");
  }
  const TSweepResult result = judge(sweep);
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
