#include "tools/report.h"

#include "tools/html_page.h"
#include "tools/names.h"
#include "tools/output_file.h"
#include "tools/overlay.h"
#include "tools/parameter.h"
#include "tools/picture_code.h"
#include "tools/report_assets.h"
#include "tools/text.h"
#include "tools/trace_json.h"
#include "tools/tracker_options.h"

#include <nlohmann/json.hpp>

#include <algorithm>

namespace tool {
namespace {

using nlohmann::ordered_json;

constexpr std::size_t kMaxPictureBytes = 26'000'000;  // of the page; the rest of it takes well under 4 MB
constexpr int kPictureWidthPx = 1024;                 // larger frames are shown smaller
constexpr int kThumbnailWidthPx = 200;
constexpr int kPictureQuality = 60;  // JPEG, 0 to 100
constexpr int kThumbnailQuality = 70;

std::string dump(const ordered_json& json) {
  return json.dump(-1, ' ', false, ordered_json::error_handler_t::replace);
}

std::string detailJson(const TFrameRecord& record, const cv::Mat& image, const TWeldParams& params) {
  const TOverlay overlay = overlayOf(params, record.tracked, *record.trace, image.cols);
  return dump({{"picture", pictureAddress(image, overlay, kPictureWidthPx, kPictureQuality)},
               {"thumbnail", pictureAddress(image, overlay, kThumbnailWidthPx, kThumbnailQuality)},
               {"trace", traceJson(*record.trace, false)}});
}

ordered_json parametersJson(const TWeldParams& params) {
  TWeldParams usual;
  initWeldParameters(params.weldType, usual, params.weldPosType);
  ordered_json rows = ordered_json::array();
  for (const TWeldParameter& parameter : parametersOf(params.weldType)) {
    rows.push_back({{"name", parameter.name},
                    {"field", parameter.field},
                    {"value", valueOf(params, parameter)},
                    {"default", valueOf(usual, parameter)},
                    {"unit", parameter.unit},
                    {"range", weldParameterRange(parameter)},
                    {"meaning", parameter.meaning}});
  }
  return rows;
}

constexpr const char* kWrong = "wrong by its label";

ordered_json summaryJson(const TRunStats& stats, int wrong) {
  return {{"frames", stats.frames()},
          {"found", stats.found()},
          {"held", stats.held()},
          {"lost", stats.lost()},
          {"wrong", wrong},
          {"longestLoss", stats.longestLoss()},
          {"medianMs", rounded(stats.medianMs())},
          {"p95Ms", rounded(stats.p95Ms())}};
}

ordered_json keyJson() {
  ordered_json key = ordered_json::array();
  for (const auto& [name, colour] : overlayKey()) {
    key.push_back({{"name", name}, {"colour", colour}});
  }
  return key;
}

ordered_json measuresJson(const std::vector<TMeasure>& measures) {
  ordered_json list = ordered_json::array();
  for (const TMeasure& measure : measures) {
    list.push_back({{"name", measure.name}, {"unit", measure.unit}, {"digits", measure.digits}});
  }
  return list;
}

ordered_json knownTestsJson(const std::vector<TTraceCheck>& tests) {
  ordered_json list = ordered_json::array();
  for (const TTraceCheck& test : tests) {
    list.push_back({{"name", test.name},
                    {"way", test.way},
                    {"unit", test.unit},
                    {"kind", nameOf(test.kind)},
                    {"parameter", test.parameter}});
  }
  return list;
}

// Points have charts of their own only through the seam.
std::vector<TMeasure> chartedMeasures(TWeldType type) {
  std::vector<TMeasure> measures = measuresOf(type);
  measures.erase(std::remove_if(measures.begin(), measures.end(), [](const TMeasure& m) { return m.isOfPoint; }),
                 measures.end());
  return measures;
}

std::string everyText(int step) {
  return step == 1 ? "all" : "one in " + std::to_string(step);
}

}  // namespace

TReport::TReport(const TWeldJob& weldJob)
    : job(weldJob), measures(chartedMeasures(job.params.weldType)), shelf(kMaxPictureBytes) {}

// Number of the test in the list of all, measured value, limit.
ordered_json TReport::testsJson(const TFrameTrace& trace) {
  ordered_json tests = ordered_json::array();
  for (const TTraceCheck& test : testsOf(trace)) {
    const auto known = std::find_if(knownTests.begin(), knownTests.end(), [&](const TTraceCheck& k) {
      return std::string(k.name) == test.name && k.kind == test.kind && std::string(k.way) == test.way;
    });
    tests.push_back({known - knownTests.begin(), rounded(test.measured), rounded(test.limit)});
    if (known == knownTests.end()) {
      knownTests.push_back(test);
    }
  }
  return tests;
}

ordered_json TReport::frameJson(const TFrameRecord& record) {
  const auto coordinate = [&](double cv::Point2d::*axis) {
    return record.seam ? ordered_json(rounded((*record.seam).*axis)) : ordered_json(nullptr);
  };
  const TFrameTrace& trace = *record.trace;
  const TTraceAttempt* const attempt = decisiveAttempt(trace);
  ordered_json values = ordered_json::array();
  for (const TMeasure& measure : measures) {
    values.push_back(rounded(measure.get(record.tracked.measurement)));
  }
  return {{"file", record.file},
          {"state", nameOf(record.tracked.state)},
          {"x", coordinate(&cv::Point2d::x)},
          {"y", coordinate(&cv::Point2d::y)},
          {"points", attempt == nullptr ? 0 : attempt->centres.size()},
          {"ms", rounded(record.ms)},
          {"reason", record.fault.empty() ? trace.reason : kWrong},
          {"sentence", record.fault.empty() ? trace.sentence : trace.sentence + "; " + record.fault},
          {"advice", trace.advice},
          {"measured", values},
          {"tests", testsJson(trace)},
          {"startsSequence", record.startsSequence}};
}

void TReport::add(const TFrameRecord& record, const cv::Mat& image) {
  counts.add(record.tracked.state, record.ms);
  wrong += record.fault.empty() ? 0 : 1;
  firstFrame = firstFrame.value_or(record.frame);
  frameLines += (frameLines.empty() ? "" : ",\n") + dump(frameJson(record));
  if (!image.empty() && shelf.wantsNext(record.tracked.state != TSeamState::found || !record.fault.empty())) {
    shelf.put(counts.frames() - 1, detailJson(record, image, job.params));
  }
}

std::string TReport::dataJson() const {
  const ordered_json head = {
      {"version", ZELWELD_VERSION},
      {"joint", nameOf(job)},
      {"position", weldPosText(job.params.weldPosType)},
      {"summary", summaryJson(counts, wrong)},
      {"firstFrame", firstFrame.value_or(0)},
      {"measures", measuresJson(measures)},
      {"tests", knownTestsJson(knownTests)},
      {"selection", everyText(shelf.notableStep()) + " of the frames that were not found or are wrong, " +
                        everyText(shelf.ordinaryStep()) + " of the others"},
      {"key", keyJson()},
      {"parameters", parametersJson(job.params)},
      {"tracker", describeTracker(job.tracker)}};
  std::string details;
  for (const auto& [frame, text] : shelf.texts()) {
    details += (details.empty() ? "\"" : ",\n\"") + std::to_string(frame) + "\":" + text;
  }
  std::string json = dump(head);
  json.pop_back();  // the closing brace
  return json + ",\n\"frames\":[" + frameLines + "],\n\"details\":{" + details + "}}";
}

void TReport::write(const std::filesystem::path& path) const {
  writeWholeFile(path, htmlPage({"Seam report", asset::reportBody, asset::reportScript}, dataJson()));
}

}  // namespace tool
