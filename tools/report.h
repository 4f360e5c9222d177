// One page about a tracked sequence: summary, timeline, reasons, annotated frames, parameters.
#pragma once

#include "tools/frame_tracker.h"
#include "tools/measures.h"
#include "tools/picture_shelf.h"
#include "tools/stats.h"

#include <nlohmann/json_fwd.hpp>
#include <opencv2/core.hpp>

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace tool {

class TReport {
public:
  // The job, as the page shows it.
  explicit TReport(const TWeldJob& weldJob);

  // Adds the next frame with the image that was searched. Its record carries a trace;
  // the image is empty where the frame cannot be read.
  void add(const TFrameRecord& record, const cv::Mat& image);

  // Writes the page, a file that needs no other and no network. Throws when the disk refuses it.
  void write(const std::filesystem::path& path) const;

  const TRunStats& stats() const { return counts; }

private:
  std::string dataJson() const;
  nlohmann::ordered_json frameJson(const TFrameRecord& record);
  nlohmann::ordered_json testsJson(const TFrameTrace& trace);

  TWeldJob job;
  TRunStats counts;
  int wrong = 0;                        // by their labels
  std::vector<TMeasure> measures;       // with a chart each
  std::vector<TTraceCheck> knownTests;  // every test that decided about a frame
  std::optional<int> firstFrame;
  std::string frameLines;  // JSON, one object per frame
  TPictureShelf shelf;
};

}  // namespace tool
