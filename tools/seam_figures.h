// What the frames of a run gave, and the figures of the run.
#pragma once

#include "tools/stats.h"

#include "zelWeldDetect.h"

#include <opencv2/core.hpp>

#include <array>
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
  bool isFound = false;                   // in this very frame; a repeated seam does not count
  std::optional<cv::Point2d> seam;        // none when not found or the joint has no seam point
  std::optional<cv::Point2d> storedSeam;  // the same in the stored image
  std::optional<cv::Point2d> steady;      // whose jitter is taken: the seam, or a measure as the place on a line
  std::string reason;
  std::string sentence;                  // with the advice
  double confidence = 0.0;               // of the measurement, 0..1
  bool isAtStripeEnd = false;            // the seam lies where the stripe ends
  std::optional<TLimitKind> limit = {};  // of the test that a parameter sets, where one is asked for and ran
  std::vector<TTraceNeed> needs = {};    // of a lost frame that they would suffice, where the tracker advises
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

class TSeamFigures {
public:
  // The next frame.
  void add(int frame, bool startsSequence, const TSeamFrame& seen);

  int frames() const { return frameCount; }
  int found() const { return foundCount; }
  int losses() const { return lossCount; }               // stretches of frames not found
  int longestLoss() const { return longestLossFrames; }  // frames
  double foundShare() const;                             // 0 without frames
  const TJitter& jitter() const { return seamJitter; }
  double confidence() const { return percentile(confidences, 0.5); }  // median of the frames found; 0 without
  double stripeEndShare() const;                                      // of the frames found; 0 without
  const TReasonTally& reasons() const { return lostReasons; }         // of the frames not found

private:
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

}  // namespace tool
