#include "tools/trace_json.h"

#include "tools/text.h"
#include "tools/tracker_options.h"

#include <nlohmann/json.hpp>

#include <algorithm>

namespace tool {

const char* nameOf(TLimitKind kind) {
  switch (kind) {
    case TLimitKind::atLeast:
      return "atLeast";
    case TLimitKind::above:
      return "above";
    case TLimitKind::atMost:
      return "atMost";
    case TLimitKind::below:
      break;
  }
  return "below";
}

namespace {

using nlohmann::ordered_json;

constexpr double kSlopeSteps = 1e6;  // six decimals

const char* nameOf(TSearchPath path) {
  switch (path) {
    case TSearchPath::first:
      return "first";
    case TSearchPath::tracking:
      return "tracking";
    case TSearchPath::fallback:
      break;
  }
  return "fallback";
}

template <typename TItems, typename TMake>
ordered_json listOf(const TItems& items, TMake make) {
  ordered_json list = ordered_json::array();
  for (const auto& item : items) {
    list.push_back(make(item));
  }
  return list;
}

template <typename TPoint>
ordered_json pointJson(const TPoint& point) {
  return ordered_json::array({rounded(point.x), rounded(point.y)});
}

ordered_json checkJson(const TTraceCheck& check) {
  ordered_json json = {{"name", check.name},           {"element", check.element},
                       {"measured", check.measured},   {"kind", tool::nameOf(check.kind)},
                       {"limit", check.limit},         {"unit", check.unit},
                       {"parameter", check.parameter}, {"passed", check.passed},
                       {"stage", check.stage}};
  if (*check.way != '\0') {
    json["way"] = check.way;
  }
  if (check.piece >= 0) {
    json["piece"] = check.piece;
  }
  return json;
}

ordered_json needJson(const TTraceNeed& need) {
  return {{"parameter", need.parameter}, {"kind", tool::nameOf(need.kind)}, {"enough", need.enough}};
}

ordered_json filterJson(const TTraceFilter& filter) {
  return {{"name", filter.name}, {"before", filter.before}, {"after", filter.after}};
}

ordered_json pieceJson(const TTracePiece& piece) {
  ordered_json json = {{"start", pointJson(piece.startPt)},
                       {"end", pointJson(piece.endPt)},
                       {"slope", rounded(piece.slope, kSlopeSteps)},
                       {"intercept", rounded(piece.intercept)},
                       {"points", piece.points},
                       {"inliers", piece.inliers},
                       {"meanDistPx", rounded(piece.meanDistPx)},
                       {"maxDistPx", rounded(piece.maxDistPx)},
                       {"isFitted", piece.isFitted}};
  if (*piece.name != '\0') {
    json["name"] = piece.name;
  }
  if (piece.radiusPx > 0.0) {
    json["centre"] = pointJson(piece.centre);
    json["radiusPx"] = rounded(piece.radiusPx);
  }
  return json;
}

ordered_json featureJson(const TFeaturePoint& point) {
  return {{"name", featureText(point.feature)},
          {"pos", pointJson(point.pos)},
          {"sigmaPx", rounded(static_cast<double>(point.sigmaPx))}};
}

ordered_json lineJson(const TTraceLine& line) {
  return {{"name", line.name},
          {"slope", rounded(line.slope, kSlopeSteps)},
          {"intercept", rounded(line.intercept)},
          {"inlierShare", rounded(line.inlierShare)},
          {"allowedDeg", {rounded(line.allowedDeg.min), rounded(line.allowedDeg.max)}},
          {"isValid", line.isValid}};
}

ordered_json regionJson(const cv::Rect& region) {
  return ordered_json::array({region.x, region.y, region.width, region.height});
}

ordered_json attemptJson(const TTraceAttempt& attempt, bool withPoints) {
  ordered_json json = {
      {"path", nameOf(attempt.path)},
      {"extraction", extractionText(attempt.extraction)},
      {"outcome", weldOutcomeText(attempt.outcome)},
      {"reason", attempt.reason},
      {"sentence", attempt.sentence},
      {"decisive", attempt.decisive},
      {"needs", listOf(attempt.needs, needJson)},
      {"needsSuffice", attempt.needsSuffice},
      {"regions", listOf(attempt.regions, regionJson)},
      {"columns",
       {{"scanned", attempt.columnsScanned},
        {"withCentre", attempt.columnsWithCentre},
        {"withoutEdge", attempt.columnsWithoutEdge},
        {"withoutPair", attempt.columnsWithoutPair}}},
      {"widthPx", {{"modal", attempt.modalWidthPx}, {"min", attempt.minWidthPx}, {"max", attempt.maxWidthPx}}},
      {"rejected", attempt.rejected.size()},
      {"centres", attempt.centres.size()},
      {"filters", listOf(attempt.filters, filterJson)},
      {"pieces", listOf(attempt.pieces, pieceJson)},
      {"features", listOf(attempt.features, featureJson)},
      {"lines", listOf(attempt.lines, lineJson)},
      {"checks", listOf(attempt.checks, checkJson)},
      {"testedPts", listOf(attempt.testedPoints, pointJson<cv::Point2f>)}};
  if (withPoints) {
    json["rejectedPts"] = listOf(attempt.rejected, pointJson<cv::Point>);
    json["centrePts"] = listOf(attempt.centres, pointJson<cv::Point2f>);
  }
  return json;
}

ordered_json stageJson(const TTraceStage& stage) {
  return {{"name", stage.name}, {"us", rounded(stage.us)}};
}

}  // namespace

std::string searchWords(const TFrameTrace& trace) {
  const TTraceAttempt* const attempt = decisiveAttempt(trace);
  return attempt == nullptr ? ""
                            : std::to_string(attempt->centres.size()) + " stripe points, " +
                                  nameOf(attempt->path) + " search, " + extractionText(attempt->extraction);
}

std::string explanationOf(const TFrameTrace& trace) {
  return trace.sentence + (trace.advice.empty() ? "" : "; " + trace.advice);
}

const TTraceAttempt* decisiveAttempt(const TFrameTrace& trace) {
  return trace.decisive < 0 ? nullptr : &trace.attempts[static_cast<std::size_t>(trace.decisive)];
}

ordered_json traceJson(const TFrameTrace& trace, bool withPoints) {
  return {{"outcome", weldOutcomeText(trace.outcome)},
          {"reason", trace.reason},
          {"sentence", trace.sentence},
          {"advice", trace.advice},
          {"decisive", trace.decisive},
          {"attempts",
           listOf(trace.attempts, [&](const TTraceAttempt& attempt) { return attemptJson(attempt, withPoints); })},
          {"gate", listOf(trace.gate, checkJson)},
          {"stages", listOf(trace.stages, stageJson)},
          {"totalUs", rounded(trace.totalUs)}};
}

}  // namespace tool
