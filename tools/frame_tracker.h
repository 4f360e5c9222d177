// From a stored frame to its record: prepare, track, map back.
#pragma once

#include "tools/frame_source.h"
#include "tools/image_prep.h"
#include "tools/record_writer.h"
#include "tools/shared_options.h"
#include "tools/tracker_options.h"

#include "zelWeldDetect.h"

#include <string>

namespace tool {

// As typed.
struct TTrackingOptions {
  TFrameOptions frames;
  TParamSource source;
  TTrackerChoice tracker;
};

// Declares all options of these three.
void addTrackingOptions(CLI::App& command, TTrackingOptions& options);

struct TTracking : TWeldJob {
  bool isFirstOnly = false;  // every frame anew
};

// As understood from what was typed. Throws a usage error that names the option.
TTracking trackingOf(const TTrackingOptions& options);

// The files that a run with these options reads.
std::vector<std::filesystem::path> filesOf(const TTrackingOptions& options);

struct TTrackedFrame {
  cv::Mat image;  // as searched
  TFrameRecord record;
};

class TFrameTracker {
public:
  explicit TFrameTracker(const TTracking& tracking);

  // Follows the seam from the frame before, where that belongs to the same sequence. A frame that cannot be read
  // shows no seam, with its problem as the sentence of the trace. Throws a usage error when the
  // preparation does not fit the image.
  TTrackedFrame track(const TFrame& frame);

  // As those of TWeldTracker, with what else the next record depends on.
  std::string memory() const;
  bool setMemory(const std::string& bytes);

private:
  TTracking how;
  TWeldTracker tracker;
  TFrameTrace unreadable;  // of the last frame that could not be read
  cv::Size storedSize;     // of the last one that could, px
};

}  // namespace tool
