// One tracker over the frames of a run, and the figures of what it found.
#pragma once

#include "tools/frame_source.h"
#include "tools/frame_tracker.h"
#include "tools/measures.h"
#include "tools/overlay.h"
#include "tools/stats.h"
#include "tools/truth.h"

#include "zelWeldDetect.h"

#include <opencv2/core.hpp>

#include <array>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace tool {

// How steady a seam point is: the median length of the second difference |p[n-1] - 2 p[n] + p[n+1]| over all three
// consecutive frames of a sequence that found it, px. A seam that moves evenly has none.
class TJitter {
public:
  // The next frame of the sequence; nothing where no seam was found.
  void add(const std::optional<cv::Point2d>& seam);
  void startSequence();

  // Nothing where the seam was never found three times in a row.
  std::optional<double> medianPx() const;

private:
  std::array<std::optional<cv::Point2d>, 2> before;  // the last two frames, the older one first
  std::vector<double> lengthsPx;
};

// What a frame gave.
struct TSeamFrame {
  bool isFound = false;             // in this very frame; a repeated seam does not count
  std::optional<cv::Point2d> seam;  // none when not found or the joint has no seam point
  std::string reason;
  std::string sentence;        // with the advice
  double confidence = 0.0;     // of the measurement, 0..1
  bool isAtStripeEnd = false;  // the seam lies where the stripe ends
};

// Reasons with the number of frames that ended with them, and the first of these as an example.
class TReasonTally {
public:
  struct TRow {
    std::string reason;
    int frames = 0;
    int firstFrame = 0;
    std::string sentence;  // of the first frame
  };

  void add(int frame, const TSeamFrame& seen);

  // The most frequent first; of equally frequent ones the one that came first.
  std::vector<TRow> rows() const;

private:
  std::vector<TRow> counts;
};

class TSeamRun {
public:
  //   steadied  the measure whose jitter is taken; none: the seam point's
  explicit TSeamRun(const TTracking& tracking, std::optional<TMeasure> steadied = {});

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
  int frames() const { return frameCount; }
  int found() const { return foundCount; }
  int losses() const { return lossCount; }               // stretches of frames not found
  int longestLoss() const { return longestLossFrames; }  // frames
  double foundShare() const;                             // 0 without frames
  const TJitter& jitter() const { return seamJitter; }
  // Median of each measure of the joint over the frames found; not a number where it is never measured.
  double medianOf(const std::string& measure) const;
  double confidence() const { return percentile(confidences, 0.5); }  // median of the frames found; 0 without
  double stripeEndShare() const;                                      // of the frames found; 0 without
  // The limit that a parameter sets, where the last frame tested it.
  std::optional<TLimitKind> limitOf(const std::string& parameter) const;
  const TReasonTally& reasons() const { return lostReasons; }  // of the frames not found

private:
  void count(const TSeamFrame& seen);
  void measure(const TTrackedSeam& seam);

  TTracking how;
  TWeldTracker tracker;
  TTrackedSeam lastSeam;
  std::optional<TMeasure> objective;
  std::vector<TMeasure> measures;
  std::vector<std::vector<double>> measured;  // of each measure
  TJitter seamJitter;
  TReasonTally lostReasons;
  int frameCount = 0;
  int foundCount = 0;
  int lossCount = 0;
  int lossRun = 0;
  int longestLossFrames = 0;
  int stripeEndCount = 0;
  std::vector<double> confidences;
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

// Where the seam of a frame lies in the stored image; none where it has none.
std::optional<cv::Point2d> storedSeam(const TSeamFrame& seen, const TFrame& frame,
                                      const TPreparation& preparation);

// Hands every frame on, its image as stored, or none. Throws the error of a stop signal: figures need all frames.
TReading followFrames(const TFrameOptions& options, const std::function<void(const TFrame&)>& follow);

}  // namespace tool
