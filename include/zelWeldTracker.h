// Tracking with memory: a tracker keeps the previous result and all working memory from frame to frame, repairs
// what the plain rules lose, and tells what happened in a frame. Include zelWeldDetect.h rather than this.
#pragma once

#include "zelWeldDetectExport.h"
#include "zelWeldTypes.h"

#include <opencv2/core.hpp>

#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <vector>

// How the stripe is extracted from the image.
enum class TStripeExtraction : std::int32_t {
  edgePairs = 0,  // pairs of rising and falling edges: fast, for crisp stripes 3 to 100 px thick
  ridge = 1,      // ridge of the grey-level surface: for thin, thick, soft or dim stripes; slower
  automatic = 2   // edge pairs; ridges where those explain too little of the stripe or the detector fails on them
};

// Which detection ran.
enum class TSearchPath : std::int32_t {
  first = 0,     // in the whole image, without regard to the frame before
  tracking = 1,  // near the previous stripe
  fallback = 2   // the corner's second chance on ridges after either of the others
};

// How a frame or an attempt ended. The checks of a detector each have an enumerator of their own, in the order in
// which they run.
enum class TWeldOutcome : std::int32_t {
  found = 0,
  // before the detector
  noImage,
  noDetector,
  // stripe
  noSearchRegion,    // the previous stripe spans too few columns
  tooFewCandidates,  // columns with an edge pair
  tooFewWidths,      // columns with a pair about as wide as most
  tooFewCentres,     // stripe points for the next stage
  tooFewRidgePoints,
  // lines and pieces
  noLine,           // no line through the stripe points
  lineShareTooLow,  // too few points on it
  tooFewPieces,
  pieceNotFitted,
  endNotRefitted,     // no line through the points near the end of a piece
  endWithoutSupport,  // too little stripe near the end of a piece
  // gap
  noGap,
  gapTooNarrow,
  seamOnBorder,
  // lap
  stepTooLow,
  overlapTooLarge,
  pieceTooShort,
  piecesTooShort,  // together
  // plate
  pieceAngleTooSmall,
  pieceAngleTooLarge,
  pieceTooLowInImage,
  plateTooNarrow,
  // corner
  noLeftFlank,
  noRightFlank,
  flankPointsTooFew,
  cornerOutside,
  leftFlankOnWrongSide,
  rightFlankOnWrongSide,
  flanksTooSparse,
  flanksTooFewPoints,
  leftAngleTooSmall,
  leftAngleTooLarge,
  rightAngleTooSmall,
  rightAngleTooLarge,
  includedAngleTooSmall,
  includedAngleTooLarge,
  bandRatioInvalid,
  bandBroken,
  columnsMissing,
  leftFlankEndsEarly,
  rightFlankEndsEarly,
  includedAngleChanged,
  // stripe presence
  noStripe,
  stripeChanged,
  // the tracker
  markerPoint,     // found, but a corner without support: no point of the image
  pointNotFinite,  // found, but not a number
  pointOutside,    // found, but outside the image
  jumpHeldBack,    // found, but too far from the last seam; waits for confirmation
  held             // not found; the last good seam is repeated
};

// What a measured value must be to pass.
enum class TLimitKind : std::int32_t { atLeast = 0, above = 1, atMost = 2, below = 3 };

// A few words for an outcome, as a heading over all frames that ended so: "step too low". Never null.
ZELWELDDETECT_EXPORT const char* weldOutcomeText(TWeldOutcome outcome);

// One plausibility test. Texts are static and never null. A test without a number, such as whether there is a
// line, has NaN as measured value and limit.
struct TTraceCheck {
  const char* name = "";       // "step"
  const char* unit = "";       // "px", "deg"; empty for ratios and counts
  const char* parameter = "";  // field of TWeldParams or TTrackerOptions that sets the limit; empty: a fixed limit
  TLimitKind kind = TLimitKind::atLeast;
  double measured = 0.0;
  double limit = 0.0;
  bool isCount = false;  // a number of things: the name is a plural
  bool passed = false;
  TWeldOutcome failure = TWeldOutcome::found;  // how a frame ends that fails here
  const char* way = "";     // which of the detector's ways to find the seam; empty where there is one
  std::int32_t piece = -1;  // the one of the attempt's pieces that was tested; -1: none in particular
};

// What one filter left of the stripe.
struct TTraceFilter {
  const char* name = "";
  std::int32_t before = 0;  // points
  std::int32_t after = 0;
};

// One straight piece of the stripe.
struct TTracePiece {
  cv::Point startPt;
  cv::Point endPt;
  double slope = 0.0;
  double intercept = 0.0;  // px
  std::int32_t points = 0;
  std::int32_t inliers = 0;
  double meanDistPx = 0.0;  // of the points from the line
  double maxDistPx = 0.0;
  bool isFitted = false;
};

// One line that a detector tried.
struct TTraceLine {
  const char* name = "";  // "stripe", "left flank"
  double slope = 0.0;
  double intercept = 0.0;    // px
  double inlierShare = 0.0;  // 0..1
  TAngleRange allowedDeg{-90.0, 90.0};
  bool isValid = false;
};

// Time of one stage.
struct TTraceStage {
  const char* name = "";
  double us = 0.0;
};

// One run of a detector over the frame.
struct TTraceAttempt {
  TSearchPath path = TSearchPath::first;
  TStripeExtraction extraction = TStripeExtraction::edgePairs;  // never automatic
  std::vector<cv::Rect> regions;                                // searched
  std::int32_t columnsScanned = 0;
  std::int32_t columnsWithCentre = 0;   // status 0
  std::int32_t columnsWithoutEdge = 0;  // status 1
  std::int32_t columnsWithoutPair = 0;  // status 2
  double modalWidthPx = 0.0;            // most frequent stripe width
  double minWidthPx = 0.0;              // the band of widths that are kept
  double maxWidthPx = 0.0;
  std::vector<cv::Point> rejected;    // centres of the pairs that the width band or the choice of runs dropped
  std::vector<TTraceFilter> filters;  // in the order in which they ran
  std::vector<cv::Point2f> centres;   // what the detector worked on
  std::vector<TTracePiece> pieces;
  std::vector<TTraceLine> lines;
  std::vector<TTraceCheck> checks;        // in the order in which they ran
  std::vector<cv::Point2f> testedPoints;  // seam points that were put to the test
  TWeldOutcome outcome = TWeldOutcome::found;
  std::int32_t decisive = -1;  // the check that the outcome speaks of; -1 when found
  std::string sentence;        // "step 14.2 px is below the minimum step 20 px, set by dPara7"
};

// What happened in one frame.
struct TFrameTrace {
  TWeldOutcome outcome = TWeldOutcome::found;
  std::string sentence;                 // the outcome for people
  std::vector<TTraceAttempt> attempts;  // in the order in which they ran
  std::int32_t decisive = -1;     // the attempt that the outcome speaks of: the successful one, else the one that
                                  // got furthest by the order of TWeldOutcome; -1 without attempts
  std::vector<TTraceCheck> gate;  // the tracker's own tests of the seam point
  std::vector<TTraceStage> stages;  // in the order in which they ran
  double totalUs = 0.0;
};

// What a tracker does beyond the plain rules; docs/tracker.md tells how. Values out of range count as the nearest
// valid one, a maxJumpPx of NaN as infinity. Stripe presence has no seam point and takes the extraction alone.
struct TTrackerOptions {
  // The guide of the search is the previous stripe, extended by this along its end pieces, so that it can grow
  // back at both ends and short stripes are not lost; px, >= 0. 0 hands over the previous stripe as it is. With
  // automatic extraction a corner found along an extended guide is fitted as on a first detection.
  std::int32_t guideMarginPx = 40;
  TStripeExtraction extraction = TStripeExtraction::automatic;
  // true: marker corners, points that are not finite and points outside the image count as not found.
  bool rejectsImpossiblePoints = true;
  // A seam farther than this from the last one is held back until it repeats; px, > 0, infinity: never.
  double maxJumpPx = 40.0;
  // Frames in a row that must show the seam at its new place, the first one included; >= 1.
  std::int32_t acceptAfterFrames = 3;
  // Frames in a row without a seam, held-back ones included, for which the last good result is repeated; >= 0.
  std::int32_t holdFrames = 3;
  // true: a frame in which tracking fails is searched as a whole at once; with automatic extraction on edge pairs,
  // and from the next frame on on ridges as well.
  bool searchesWholeOnLoss = true;
  // true: fills lastTrace().
  bool withTrace = false;

  // Nothing beyond the rules: frame for frame what detectWeldLineViaTracking gives when it is fed its own results.
  static TTrackerOptions exact() {
    TTrackerOptions options;
    options.guideMarginPx = 0;
    options.extraction = TStripeExtraction::edgePairs;
    options.rejectsImpossiblePoints = false;
    options.maxJumpPx = std::numeric_limits<double>::infinity();
    options.acceptAfterFrames = 1;
    options.holdFrames = 0;
    options.searchesWholeOnLoss = false;
    return options;
  }
};

// Follows one seam from frame to frame. One tracker per thread; many trackers at once do not interfere. In the
// steady state a frame allocates nothing beyond the stripe points of its result.
class ZELWELDDETECT_EXPORT TWeldTracker {
public:
  explicit TWeldTracker(const TWeldParams& params, const TTrackerOptions& options = TTrackerOptions());
  TWeldTracker(TWeldTracker&& other) noexcept;  // leaves the source good for assignment and destruction only
  TWeldTracker& operator=(TWeldTracker&& other) noexcept;
  ~TWeldTracker();

  // The seam in the next frame. Image and result as in detectWeldLineViaTracking. An exception (an image type that
  // cannot be read, no memory) leaves the tracker as it was before the frame.
  TWeldLineRes track(const cv::Mat& image);

  // True when the last result repeats an earlier seam.
  bool isHeld() const;

  // Forgets the frames so far: the next one is a first detection.
  void reset();

  // Takes effect with the next frame. The previous result is kept; reset() as well when the joint is another one.
  void setParams(const TWeldParams& params);

  // What happened in the last frame; empty unless the options ask for it and before the first frame.
  const TFrameTrace& lastTrace() const;

private:
  struct ZELWELDDETECT_NO_EXPORT TState;
  std::unique_ptr<TState> state;
};
