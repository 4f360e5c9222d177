// A way to look at frames, tried on them.
#pragma once

#include "tools/seam_run.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace tool {

struct TSetting {
  TWeldParams params;
  TTrackerOptions tracker;
  int turnDeg = 0;                   // on top of the preparation of the frames: 0 or 90
  std::vector<std::string> changes;  // against what was given, as typed: "--set minGapPx=12"
  bool isLoosest = false;            // one of them lets a test pass everything
};

// The frames of a run as prepared, how they were prepared, and what is known about them. Where they are tried
// elsewhere, by name alone.
struct TScene {
  std::vector<TFrame> frames;
  TPreparation preparation;
  TTruth truth;
};

// A stretch of frames, both ends included.
struct TStretch {
  int first = 0;
  int last = 0;
};

struct TTrial {
  TSetting setting;
  TSeamFigures figures;
  std::vector<int> frames;                        // places in the scene
  std::vector<std::optional<cv::Point2d>> seams;  // in the stored image, one per frame; none: not found, or wrong
  std::vector<std::vector<TTraceNeed>> needs;     // of lost frames that they would suffice
  TTruthFigures truth;
};

// A frame's place in the scene, and what the setting of the trial saw there.
void addSeen(TTrial& trial, const TScene& scene, int place, bool startsStretch, const TSeamFrame& seen);

// Where the setting looks, in the stored image.
TPreparation preparationOf(const TScene& scene, const TSetting& setting);

// The trials of settings on stretches, one each.
using TTryAll = std::function<std::vector<TTrial>(const std::vector<TStretch>&, const std::vector<TSetting>&)>;

// Tracks the stretches, each from its beginning. Ends early once a stop is requested. The needs of lost frames
// only where the tracker of the setting gives advice.
TTrial tryOn(const TScene& scene, const std::vector<TStretch>& stretches, const TSetting& setting);

// The same for many settings, on all cores; `done` is told on the calling thread how many are through.
std::vector<TTrial> tryAll(const TScene& scene, const std::vector<TStretch>& stretches,
                           const std::vector<TSetting>& settings, const std::function<void(int)>& done);

}  // namespace tool
