// One record per frame, as a table, JSON lines or CSV.
#pragma once

#include "tools/detection.h"
#include "tools/measures.h"

#include "zelWeldDetect.h"

#include <opencv2/core.hpp>

#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace tool {

enum class TFormat { table, jsonl, csv };

// "table", "jsonl", "csv". Throws a usage error for anything else.
TFormat parseFormat(const std::string& text);

struct TFrameRecord {
  int frame = 0;
  std::string file;
  bool startsSequence = false;
  TTrackedSeam tracked;                      // in the prepared image
  std::optional<cv::Point2d> seam;           // the seam point there; none when lost or the joint has none
  std::optional<cv::Point2d> storedSeam;     // the same in the stored image
  std::vector<cv::Point2d> storedStripePts;  // tracked.line.stripePts in the stored image
  double ms = 0.0;                           // time of the detection alone
  const TFrameTrace* trace = nullptr;        // what happened; good until the tracker's next frame
  std::string fault;                         // by its label; empty: none that is known

  // Of this frame itself, not one that is held.
  std::optional<cv::Point2d> foundSeam() const {
    return tracked.state == TSeamState::found ? storedSeam : std::nullopt;
  }
};

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
