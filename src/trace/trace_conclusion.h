// How attempts and frames ended, from the tests that they passed and failed.
#pragma once

#include "zelWeldSettings.h"
#include "zelWeldTrace.h"

#include <opencv2/core.hpp>

#include <string>

namespace weld {

// Ends the last attempt with a seam.
void concludeFoundAttempt(TFrameTrace& trace, const std::string& sentence);

// Ends the last attempt with outcome, reason and sentence. It speaks of the first test that failed, of too few edges
// only where ridges gave no stripe either. Where the detector had several ways to find the seam, that of the way that
// got furthest, the later one of equals; where it had several pieces to choose from, that of the piece with most
// points.
void concludeFailedAttempt(TFrameTrace& trace, const TWeldJoint& joint);

struct TFrameEnd {
  bool hasImage = false;
  bool isHeld = false;
  cv::Point2f heldPos;       // of the earlier seam that is repeated
  const char* problem = "";  // of the joint's template, which cannot be looked for; empty: none
};

// Ends the frame: with the gate's test that failed, else like its decisive attempt. A frame without attempts had
// no detector or no image.
//   joint  null: none of the table.
void concludeFrame(TFrameTrace& trace, const TFrameEnd& end, const TWeldJoint* joint);

// The sentence of a test that failed: "step 14.2 px is below the minimum step 20 px, set by minStepPx (dPara7)".
//   joint  whose settings the tests name; null: none.
std::string describeFailure(const TTraceCheck& check, const TWeldJoint* joint);

// "x 12.5, y 300.0".
std::string positionText(cv::Point2f p);

}  // namespace weld
