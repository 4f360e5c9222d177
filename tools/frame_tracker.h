// From a stored frame to its record: prepare, track, map back.
#pragma once

#include "tools/frame_source.h"
#include "tools/image_prep.h"
#include "tools/record_writer.h"
#include "tools/shared_options.h"
#include "tools/tracker_options.h"

#include "zelWeldDetect.h"

namespace tool {

// As typed.
struct TTrackingOptions {
  TFrameOptions frames;
  TParamSource source;
  TTrackerChoice tracker;
};

// Declares all options of these three.
void addTrackingOptions(CLI::App& command, TTrackingOptions& options);

struct TTracking {
  TWeldParams params;
  TTrackerOptions tracker;
  bool isFirstOnly = false;  // every frame anew
  TPreparation preparation;
};

// As understood from what was typed. Throws a usage error that names the option.
TTracking trackingOf(const TTrackingOptions& options);

struct TTrackedFrame {
  cv::Mat image;  // as searched
  TFrameRecord record;
};

class TFrameTracker {
public:
  explicit TFrameTracker(const TTracking& tracking);

  // Follows the seam from the frame before, where that belongs to the same sequence. Throws a usage error when the
  // preparation does not fit the image.
  TTrackedFrame track(const TFrame& frame);

private:
  TTracking how;
  TWeldTracker tracker;
};

}  // namespace tool
