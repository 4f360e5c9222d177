// One tracker over the frames of a run, and the figures of what it found.
#pragma once

#include "tools/frame_source.h"
#include "tools/frame_tracker.h"
#include "tools/measures.h"
#include "tools/overlay.h"
#include "tools/seam_figures.h"
#include "tools/truth.h"

#include "zelWeldDetect.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace tool {

// A tracker whose figures grow with every frame.
class TSeamRun : public TSeamFigures {
public:
  //   steadied  the measure whose jitter is taken; none: the seam point's
  //   swept     the parameter whose limit the frames are asked for; empty: none
  explicit TSeamRun(const TTracking& tracking, std::optional<TMeasure> steadied = {}, std::string swept = {});

  // The next frame, its image as searched, or none.
  TSeamFrame next(const TFrame& frame);

  // What the last frame showed, for a picture; its state and its trace.
  TOverlay overlay(int imageWidth) const {
    return overlayOf(how.params, lastSeam, tracker.lastTrace(), imageWidth);
  }
  TSeamState state() const { return lastSeam.state; }
  const TFrameTrace& trace() const { return tracker.lastTrace(); }

  const TTracking& tracking() const { return how; }
  TWeldType type() const { return how.params.weldType; }
  // Median of each measure of the joint over the frames found; not a number where it is never measured.
  double medianOf(const std::string& measure) const;
  // As those of TWeldTracker; the figures begin anew all the same.
  std::string memory() const { return tracker.memory(); }
  bool setMemory(const std::string& bytes) { return tracker.setMemory(bytes); }

private:
  TSeamFrame seenIn(const TFrame& frame) const;
  std::optional<TLimitKind> limitOf(const std::string& name) const;
  void measure(const TTrackedSeam& seam);

  TTracking how;
  TWeldTracker tracker;
  TTrackedSeam lastSeam;
  std::optional<TMeasure> objective;
  std::string parameter;
  std::vector<TMeasure> measures;
  std::vector<std::vector<double>> measured;  // of each measure
};

// As typed: which frames, how they are followed, and what is known about them.
struct TSeamRunOptions {
  TTrackingOptions tracking;
  std::string truthFile;
  std::string truthPoint;
};

// Declares the options of tracking, --truth and --point.
void addSeamRunOptions(CLI::App& command, TSeamRunOptions& options);

// As understood.
TTruth truthOf(const TSeamRunOptions& options);

// The frame with its image as searched.
TFrame prepared(TFrame frame, const TPreparation& preparation);

// Hands every frame on, its image as stored, or none. Throws the error of a stop signal: figures need all frames.
TReading followFrames(const TFrameOptions& options, const std::function<void(const TFrame&)>& follow);

}  // namespace tool
