// One tracker over the frames of a run, and the figures of what it found.
#pragma once

#include "tools/frame_source.h"
#include "tools/shared_options.h"

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
  std::string sentence;
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
  TSeamRun(const TWeldParams& weldParams, TTrackerOptions options);

  // The next frame, its image as searched.
  TSeamFrame next(const TFrame& frame);

  int frames() const { return frameCount; }
  int found() const { return foundCount; }
  int losses() const { return lossCount; }               // stretches of frames not found
  int longestLoss() const { return longestLossFrames; }  // frames
  double foundShare() const;                             // 0 without frames
  const TJitter& jitter() const { return seamJitter; }
  const TReasonTally& reasons() const { return lostReasons; }  // of the frames not found

private:
  void count(bool isFound);

  TWeldParams params;
  TWeldTracker tracker;
  TJitter seamJitter;
  TReasonTally lostReasons;
  int frameCount = 0;
  int foundCount = 0;
  int lossCount = 0;
  int lossRun = 0;
  int longestLossFrames = 0;
};

// As typed: which frames, and how they are followed.
struct TSeamRunOptions {
  TFrameOptions frames;
  bool isExact = false;
};

// Declares the options of the frames, and --exact.
void addSeamRunOptions(CLI::App& command, TSeamRunOptions& options);

// As understood.
TTrackerOptions trackerOf(const TSeamRunOptions& options);

// Hands every frame on, its image as searched. Throws the error of a stop signal: figures need all frames.
void followFrames(const TFrameOptions& options, const std::function<void(const TFrame&)>& follow);

}  // namespace tool
