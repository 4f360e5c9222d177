// One record per frame, as a table, JSON lines or CSV.
#pragma once

#include "tools/detection.h"
#include "tools/frame_record.h"
#include "tools/measures.h"

#include "zelWeldDetect.h"

#include <ostream>
#include <string>
#include <vector>

namespace tool {

enum class TFormat { table, jsonl, csv };

// "table", "jsonl", "csv". Throws a usage error for anything else.
TFormat parseFormat(const std::string& text);

class TRecordWriter {
public:
  // Writes the heading that the format has. `withPoints` adds the stripe points to JSON lines, `keepTrace` tests,
  // reason and trace to JSON lines, tests, reason, sentence and advice to CSV, and why frames are not found to the
  // table.
  //   type  the joint, whose measures are written
  TRecordWriter(std::ostream& stream, TFormat recordFormat, TWeldType type, bool withPoints, bool keepTrace);

  // Writes and flushes one record. Throws when the stream takes no more.
  void write(const TFrameRecord& record);

private:
  void writeLine(const std::string& line);
  std::string jsonLine(const TFrameRecord& record) const;
  std::string csvHeading() const;
  std::string csvLine(const TFrameRecord& record) const;

  std::ostream& out;
  TFormat format;
  std::vector<TMeasure> measures;
  bool hasPoints;
  bool hasTrace;
};

}  // namespace tool
