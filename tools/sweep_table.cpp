#include "tools/sweep_table.h"

#include "tools/cli_error.h"
#include "tools/parameter.h"

#include <nlohmann/json.hpp>

namespace tool {

std::vector<TSeamRun> sweptRuns(TTracking tracking, const TSweepRange& range, const std::string& objective) {
  TWeldParams& params = tracking.params;
  const TWeldParameter& parameter = findParameter(params.weldType, range.name);
  if (isFlag(parameter)) {
    throw usageError("--set: " + weldParameterLabel(parameter) +
                     " is true or false and has no range; use zelweld compare");
  }
  const auto measure =
      objective.empty() ? std::nullopt : std::make_optional(findMeasure(params.weldType, objective));
  std::vector<TSeamRun> runs;
  for (const double value : range.values) {
    setValue(params, parameter, value);
    runs.emplace_back(tracking, measure, parameter.name);
  }
  return runs;
}

TSweepTable::TSweepTable(TWeldType joint, const TSweepRange& swept)
    : type(joint), parameter(findParameter(joint, swept.name).name) {
  for (const double value : swept.values) {
    columns.push_back({value});
  }
}

void TSweepTable::add(const TFrame& frame, const std::vector<TSeamFrame>& seen, const TTruth& truth) {
  std::optional<cv::Point2d> before;
  for (std::size_t i = 0; i < columns.size(); ++i) {
    columns[i].figures.add(frame.index, frame.startsSequence, seen[i]);
    truth.judge(frame.name, seen[i].storedSeam, columns[i].truth);
    if (seen[i].seam && before) {
      columns[i].apartPx.push_back(cv::norm(*seen[i].seam - *before));
    }
    before = seen[i].seam;
    limit = limit ? limit : seen[i].limit;
  }
}

// At the loosest value of its range a test refuses nothing any more.
bool TSweepTable::canFail(double value) const {
  const TParameterLimits& limits = findParameter(type, parameter).limits;
  return !limit || (isLowerLimit(*limit) ? value > limits.min : value < limits.max);
}

TSweepRow TSweepTable::rowOf(const TValue& swept) const {
  const TSeamFigures& figures = swept.figures;
  const auto reasons = figures.reasons().rows();
  const bool isJudged = swept.truth.judged > 0;
  return {{swept.value, figures.foundShare(), figures.jitter().medianPx(), figures.confidence(),
           figures.stripeEndShare(), percentile(swept.apartPx, 0.5), canFail(swept.value),
           isJudged ? std::make_optional(swept.truth) : std::nullopt},
          false,
          figures.longestLoss(),
          reasons.empty() ? "-" : reasons.front().reason};
}

TSweepResult TSweepTable::result() const {
  TSweepResult result;
  result.type = type;
  result.parameter = parameter;
  result.frames = columns.front().figures.frames();
  std::vector<TSweepPoint> points;
  for (const TValue& column : columns) {
    result.rows.push_back(rowOf(column));
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

}  // namespace tool
