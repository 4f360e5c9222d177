#include "tools/record_writer.h"

#include "tools/cli_error.h"
#include "tools/record_columns.h"
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
const char* const kCsvTraceHeading = ",tests,reason,sentence,advice";

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

// What is not a number becomes null.
ordered_json valueOf(const TColumn& column, const TFrameRecord& record) {
  const double value = column.get(record);
  return column.digits == 0 ? ordered_json(static_cast<std::int64_t>(value))
                            : ordered_json(rounded(value, std::pow(10.0, column.digits)));
}

template <typename TPoint>
ordered_json pointList(const std::vector<TPoint>& points) {
  ordered_json list = ordered_json::array();
  for (const TPoint& point : points) {
    list.push_back({rounded(point.x), rounded(point.y)});
  }
  return list;
}

std::string csvNumber(double value, int digits) {
  return std::isfinite(value) ? fixed(value, digits) : "";
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
  for (const TColumn& column : recordColumns()) {
    line[column.name] = valueOf(column, record);
  }
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
  std::vector<std::string> names = {"frame", "file", "found", "held"};
  for (const TColumn& column : recordColumns()) {
    names.push_back(column.name);
  }
  names.insert(names.end(), {"ms", "state"});
  for (const TMeasure& measure : measures) {
    names.push_back(measure.name);
  }
  return join(names, ",") + (hasTrace ? kCsvTraceHeading : "");
}

std::string TRecordWriter::csvLine(const TFrameRecord& record) const {
  const auto flag = [&](TSeamState state) { return record.tracked.state == state ? "1" : "0"; };
  std::vector<std::string> cells = {std::to_string(record.frame), csvText(record.file), flag(TSeamState::found),
                                    flag(TSeamState::held)};
  for (const TColumn& column : recordColumns()) {
    cells.push_back(csvNumber(column.get(record), column.digits));
  }
  cells.insert(cells.end(), {fixed(record.ms, 3), nameOf(record.tracked.state)});
  for (const TMeasure& measure : measures) {
    cells.push_back(csvNumber(measure.get(record.tracked.measurement), measure.digits));
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
