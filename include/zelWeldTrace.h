// What happened in a frame, and why it gave no seam. Include zelWeldDetect.h rather than this.
#pragma once

#include "zelWeldDetectExport.h"
#include "zelWeldJoint.h"
#include "zelWeldTypes.h"

#include <opencv2/core.hpp>

#include <cstdint>
#include <string>
#include <vector>

// How the stripe is extracted from the image.
enum class TStripeExtraction : std::int32_t {
  edgePairs = 0,  // pairs of rising and falling edges: fast, for crisp stripes 3 to 100 px thick
  ridge = 1,      // ridge of the grey-level surface: for thin, thick, soft or dim stripes; slower
  automatic = 2,  // edge pairs; ridges where those explain too little of the stripe or the detector fails on them
  none = 3        // in a trace: a seam found by its contrast, without a stripe
};

// Which detection ran.
enum class TSearchPath : std::int32_t {
  first = 0,     // in the whole image, without regard to the frame before
  tracking = 1,  // near the previous stripe
  fallback = 2   // the corner's second chance on ridges after either of the others
};

// How a frame or an attempt ended, in general; the reason beside it tells the case.
enum class TWeldOutcome : std::int32_t {
  found = 0,        // the seam
  held,             // not found; the last good seam is repeated
  noImage,          // an empty one
  noDetector,       // for this kind of joint
  noStripe,         // too little of the stripe in the image
  elementMissing,   // a line, a piece, a flank or a gap that the joint is made of
  elementTooShort,  // to be measured, or for a setting
  fitTooWeak,       // too few stripe points on an element or beside it
  angleOutOfRange,  // of an element, or between two
  sizeOutOfRange,   // a step, a width, an overlap
  gapOutOfRange,    // too narrow, too wide, or not allowed
  stripeBroken,     // where the joint needs it whole
  seamOutside,      // of the image, or no point at all
  settingInvalid,   // a parameter outside its range
  changedTooMuch,   // since the last frame
  jumpHeldBack,     // found, but too far from the last seam; waits for confirmation
  noLine,           // that looks like a seam, in a search by contrast
  lineUncertain,    // to be a seam, or elsewhere than the stripe says
  lineTooShort      // or not where the seam point is looked for
};

// What a measured value must be to pass.
enum class TLimitKind : std::int32_t {
  atLeast = 0,  // the limit or more
  above = 1,    // more than the limit
  atMost = 2,   // the limit or less
  below = 3     // less than the limit
};

// Whether it is a minimum; false for values outside the enumeration.
inline bool isLowerLimit(TLimitKind kind) {
  return kind == TLimitKind::atLeast || kind == TLimitKind::above;
}

// A few words for an outcome: "element too short". Never null.
ZELWELDDETECT_EXPORT const char* weldOutcomeText(TWeldOutcome outcome);

// One plausibility test. Texts are static and never null. A test without a number, such as whether there is a
// line, has NaN as measured value and limit.
struct TTraceCheck {
  const char* name = "";                       // what is measured: "step"
  const char* element = "";                    // what it is measured of: "step", "left flank"
  const char* reason = "";                     // a heading over all frames that fail here: "step too low"
  const char* unit = "";                       // "px", "deg"; empty for ratios and counts
  const char* parameter = "";                  // what sets the limit: "minStepPx"; empty: a fixed limit
  TLimitKind kind = TLimitKind::atLeast;       // of the limit
  double measured = 0.0;                       // in `unit`
  double limit = 0.0;                          // in `unit`
  bool isCount = false;                        // a number of things: the name is a plural
  bool passed = false;                         // the frame went on
  TWeldOutcome failure = TWeldOutcome::found;  // how a frame ends that fails here
  std::int32_t stage = 0;   // count: how far a frame comes that fails here; grows along a detector
  const char* way = "";     // which of the detector's ways to find the seam; empty where there is one
  std::int32_t piece = -1;  // index of the attempt's piece that was tested; -1: none in particular
};

// What one filter left of the stripe.
struct TTraceFilter {
  const char* name = "";    // "width band"
  std::int32_t before = 0;  // points
  std::int32_t after = 0;   // points
};

// One piece of the stripe, straight or an arc.
struct TTracePiece {
  cv::Point startPt;             // first end, px
  cv::Point endPt;               // last end, px
  double slope = 0.0;            // dy / dx
  double intercept = 0.0;        // px
  std::int32_t points = 0;       // of the stripe, count
  std::int32_t inliers = 0;      // of them, count
  double meanDistPx = 0.0;       // of the points from the line
  double maxDistPx = 0.0;        // of the farthest one
  bool isFitted = false;         // the robust fit succeeded
  const char* name = "";         // of a groove's: "left flank"; empty for the others
  cv::Point2d centre{0.0, 0.0};  // of an arc, px
  double radiusPx = 0.0;         // 0: straight
};

// One line that a detector tried.
struct TTraceLine {
  const char* name = "";                // "stripe", "left flank"
  double slope = 0.0;                   // dy / dx
  double intercept = 0.0;               // px
  double inlierShare = 0.0;             // 0..1
  TAngleRange allowedDeg{-90.0, 90.0};  // angles that it was looked for in
  bool isValid = false;                 // it was found
};

// Time of one stage.
struct TTraceStage {
  const char* name = "";  // of the stage
  double us = 0.0;        // microseconds
};

// A setting that refused the frame, and the value with which it would have let it pass.
struct TTraceNeed {
  std::string parameter;                  // "minStepPx"
  TLimitKind kind = TLimitKind::atLeast;  // of the limit: a lower one needs `enough` or less
  double enough = 0.0;                    // in the unit of the parameter
};

// One run of a detector over the frame.
struct TTraceAttempt {
  TSearchPath path = TSearchPath::first;                        // where it looked
  TStripeExtraction extraction = TStripeExtraction::edgePairs;  // never automatic
  std::vector<cv::Rect> regions;                                // searched, px
  std::int32_t columnsScanned = 0;                              // count, of the regions
  std::int32_t columnsWithCentre = 0;                           // status 0
  std::int32_t columnsWithoutEdge = 0;                          // status 1
  std::int32_t columnsWithoutPair = 0;                          // status 2
  double modalWidthPx = 0.0;                                    // most frequent stripe width
  double minWidthPx = 0.0;                                      // the band of widths that are kept
  double maxWidthPx = 0.0;                                      // px
  std::vector<cv::Point> rejected;    // px: centres of the pairs that the width band or the choice of runs dropped
  std::vector<TTraceFilter> filters;  // in the order in which they ran
  std::vector<cv::Point2f> centres;   // what the detector worked on, px
  std::vector<TTracePiece> pieces;    // of the stripe
  std::vector<TFeaturePoint> features;         // of a groove that was laid over the stripe, found or refused
  std::vector<TTraceLine> lines;               // that were tried
  std::vector<TTraceCheck> checks;             // in the order in which they ran
  std::vector<cv::Point2f> testedPoints;       // seam points that were put to the test
  TWeldOutcome outcome = TWeldOutcome::found;  // how it ended
  const char* reason = "";                     // of the decisive check; "found"
  std::int32_t decisive = -1;                  // index of the check that the outcome speaks of; -1 when found
  std::string sentence;           // "step 14.2 px is below the minimum step 20 px, set by minStepPx (dPara7)"
  std::vector<TTraceNeed> needs;  // every setting that refuses this stripe, one after the other
  bool needsSuffice = false;      // with all of them a seam is found, though it may be a wrong one
  std::string advice;  // of a failed one, where the options ask for advice: the needs in words, or what a fixed
                       // limit leaves to be done
};

// What happened in one frame.
struct TFrameTrace {
  TWeldOutcome outcome = TWeldOutcome::found;  // how the frame ended
  const char* reason = "";  // a heading over all frames that ended so: "step too low", "found"; of a held
                            // frame why it found no seam of its own
  std::string sentence;     // the outcome for people
  std::string advice;       // of a frame without a seam of its own: what may be done, as far as it can be told:
                            // "needs minGapPx 6 or less", "the stripe runs upright: --rotate 90"
  std::vector<TTraceAttempt> attempts;  // in the order in which they ran
  std::int32_t decisive = -1;  // index of the attempt that the outcome speaks of: the successful one, else the one
                               // that got furthest; -1 without attempts
  std::vector<TTraceCheck> gate;    // the tracker's own tests of the seam point
  std::vector<TTraceStage> stages;  // in the order in which they ran
  double totalUs = 0.0;             // of the whole frame
};
