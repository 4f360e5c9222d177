#include "tools/record_writer.h"

#include "tools/cli_error.h"
#include "tools/text.h"
#include "tools/trace_json.h"

#include <nlohmann/json.hpp>

#include <cmath>
#include <iomanip>
#include <sstream>

namespace tool {
namespace {

using nlohmann::ordered_json;

constexpr int kFileWidth = 32;  // characters of the file column of a table
const char* const kCsvHeading =
    "frame,file,found,held,x,y,storedX,storedY,points,auxVal1,auxVal2,auxVal3,auxVal4,trackVal,ms,state";

const char* const kCsvTraceHeading = ",tests,reason,sentence,advice";

// Slopes keep six decimals.
double roundedAux(double value) {
  return rounded(value, 1e6);
}

std::string tableHeading() {
  std::ostringstream line;
  line << std::right << std::setw(6) << "frame"
       << "  " << std::left << std::setw(kFileWidth) << "file" << std::right << std::setw(7) << "found"
       << std::setw(10) << "x" << std::setw(10) << "y" << std::setw(8) << "points" << std::setw(10) << "trackVal"
       << std::setw(9) << "ms";
  return line.str();
}

std::string foundWord(TSeamState state) {
  return state == TSeamState::held ? "held" : (state == TSeamState::found ? "yes" : "no");
}

std::string tableLine(const TFrameRecord& record, bool hasTrace) {
  const std::string x = record.seam ? fixed(record.seam->x, 2) : "-";
  const std::string y = record.seam ? fixed(record.seam->y, 2) : "-";
  std::ostringstream line;
  line << std::right << std::setw(6) << record.frame << "  " << std::left << std::setw(kFileWidth)
       << shortened(record.file, kFileWidth) << std::right << std::setw(7) << foundWord(record.tracked.state)
       << std::setw(10) << x << std::setw(10) << y << std::setw(8) << record.tracked.line.stripePts.size()
       << std::setw(10) << fixed(record.tracked.line.trackVal, 2) << std::setw(9) << fixed(record.ms, 2);
  if (hasTrace && record.tracked.state != TSeamState::found) {
    line << "  " << explanationOf(*record.trace);
  }
  return line.str();
}

ordered_json numberOrNull(const std::optional<cv::Point2d>& point, double cv::Point2d::*coordinate) {
  return point ? ordered_json(rounded((*point).*coordinate)) : ordered_json(nullptr);
}

template <typename TPoint>
ordered_json pointList(const std::vector<TPoint>& points) {
  ordered_json list = ordered_json::array();
  for (const TPoint& point : points) {
    list.push_back({rounded(point.x), rounded(point.y)});
  }
  return list;
}

std::string csvNumber(const std::optional<cv::Point2d>& point, double cv::Point2d::*coordinate) {
  return point ? fixed((*point).*coordinate, 3) : "";
}

// "gap:2.5;jump of the seam:39.2": every test with its margin.
std::string csvTests(const TFrameTrace& trace) {
  std::vector<std::string> words;
  for (const TTraceCheck& test : testsOf(trace)) {
    words.push_back(std::string(test.name) + ":" + plain(rounded(marginOf(test))));
  }
  return join(words, ";");
}

std::string csvTrace(const TFrameTrace& trace) {
  return "," +
         join({csvText(csvTests(trace)), csvText(trace.reason), csvText(trace.sentence), csvText(trace.advice)},
              ",");
}

ordered_json testsJson(const TFrameTrace& trace) {
  ordered_json tests = ordered_json::array();
  for (const TTraceCheck& test : testsOf(trace)) {
    tests.push_back({{"name", test.name},
                     {"measured", rounded(test.measured)},
                     {"limit", rounded(test.limit)},
                     {"margin", rounded(marginOf(test))},
                     {"unit", test.unit},
                     {"parameter", test.parameter}});
  }
  return tests;
}

}  // namespace

TFormat parseFormat(const std::string& text) {
  if (text == "table") return TFormat::table;
  if (text == "jsonl") return TFormat::jsonl;
  if (text == "csv") return TFormat::csv;
  throw usageError("--format: unknown format '" + text + "': use table, jsonl, csv");
}

TRecordWriter::TRecordWriter(std::ostream& stream, TFormat recordFormat, TWeldType type, bool withPoints,
                             bool keepTrace)
    : out(stream), format(recordFormat), measures(measuresOf(type)), hasPoints(withPoints), hasTrace(keepTrace) {
  if (format == TFormat::table) {
    writeLine(tableHeading());
  } else if (format == TFormat::csv) {
    writeLine(csvHeading());
  }
}

void TRecordWriter::write(const TFrameRecord& record) {
  switch (format) {
    case TFormat::table:
      writeLine(tableLine(record, hasTrace));
      break;
    case TFormat::jsonl:
      writeLine(jsonLine(record));
      break;
    case TFormat::csv:
      writeLine(csvLine(record));
      break;
  }
}

std::string TRecordWriter::jsonLine(const TFrameRecord& record) const {
  const TWeldLineRes& result = record.tracked.line;
  ordered_json line;
  line["frame"] = record.frame;
  line["file"] = record.file;
  line["state"] = nameOf(record.tracked.state);
  line["found"] = record.tracked.state == TSeamState::found;
  line["held"] = record.tracked.state == TSeamState::held;
  line["x"] = numberOrNull(record.seam, &cv::Point2d::x);
  line["y"] = numberOrNull(record.seam, &cv::Point2d::y);
  line["storedX"] = numberOrNull(record.storedSeam, &cv::Point2d::x);
  line["storedY"] = numberOrNull(record.storedSeam, &cv::Point2d::y);
  line["points"] = result.stripePts.size();
  line["auxVal1"] = roundedAux(result.auxVal1);
  line["auxVal2"] = roundedAux(result.auxVal2);
  line["auxVal3"] = roundedAux(result.auxVal3);
  line["auxVal4"] = roundedAux(result.auxVal4);
  line["trackVal"] = roundedAux(result.trackVal);
  line["measured"] = ordered_json::object();
  for (const TMeasure& measure : measures) {
    line["measured"][measure.name] = rounded(measure.get(record.tracked.measurement));
  }
  line["ms"] = rounded(record.ms);
  if (hasPoints) {
    line["stripePts"] = pointList(result.stripePts);
    line["storedStripePts"] = pointList(record.storedStripePts);
  }
  if (hasTrace) {
    line["tests"] = testsJson(*record.trace);
    line["reason"] = record.trace->reason;
    line["trace"] = traceJson(*record.trace, hasPoints);
  }
  return line.dump(-1, ' ', false, ordered_json::error_handler_t::replace);
}

std::string TRecordWriter::csvHeading() const {
  std::string heading = kCsvHeading;
  for (const TMeasure& measure : measures) {
    heading += "," + measure.name;
  }
  return heading + (hasTrace ? kCsvTraceHeading : "");
}

std::string TRecordWriter::csvLine(const TFrameRecord& record) const {
  const TWeldLineRes& result = record.tracked.line;
  const auto flag = [&](TSeamState state) { return record.tracked.state == state ? "1" : "0"; };
  std::vector<std::string> cells = {std::to_string(record.frame),
                                    csvText(record.file),
                                    flag(TSeamState::found),
                                    flag(TSeamState::held),
                                    csvNumber(record.seam, &cv::Point2d::x),
                                    csvNumber(record.seam, &cv::Point2d::y),
                                    csvNumber(record.storedSeam, &cv::Point2d::x),
                                    csvNumber(record.storedSeam, &cv::Point2d::y),
                                    std::to_string(result.stripePts.size()),
                                    fixed(result.auxVal1, 6),
                                    fixed(result.auxVal2, 6),
                                    fixed(result.auxVal3, 6),
                                    fixed(result.auxVal4, 6),
                                    fixed(result.trackVal, 6),
                                    fixed(record.ms, 3),
                                    nameOf(record.tracked.state)};
  for (const TMeasure& measure : measures) {
    const double value = measure.get(record.tracked.measurement);
    cells.push_back(std::isfinite(value) ? fixed(value, measure.digits) : "");
  }
  return join(cells, ",") + (hasTrace ? csvTrace(*record.trace) : "");
}

void TRecordWriter::writeLine(const std::string& line) {
  out << line << '\n' << std::flush;
  if (!out) {
    throw TCliError(TExit::failure, "standard output takes no more records (closed pipe or full disk)");
  }
}

}  // namespace tool
