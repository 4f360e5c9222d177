// How attempts and frames ended, from the tests that they passed and failed.
#pragma once

#include "zelWeldDetect.h"

#include <opencv2/core.hpp>

#include <optional>
#include <string>

namespace weld {

// Ends the attempts of one run of a detector with outcome and sentence. The last one gave the result; those before
// it failed.
//
// An attempt speaks of the first test that failed. Where the detector had several ways to find the seam, that of
// the way that got furthest by the order of TWeldOutcome, the later one of equals; where it had several pieces to
// choose from, that of the piece with most points.
void concludeAttempts(TFrameTrace& trace, const TWeldLineRes& result, TWeldType type);

// The last attempt, ended as found, once more: its seam has failed a test since.
void concludeRefusedAttempt(TFrameTrace& trace);

// Ends the frame: with the gate's test that failed, else like its decisive attempt. A frame without attempts had
// no detector or no image. heldSeam: the earlier seam that is repeated, where one is.
void concludeFrame(TFrameTrace& trace, bool hasImage, std::optional<cv::Point2f> heldSeam = std::nullopt);

// The sentence of a test that failed: "step 14.2 px is below the minimum step 20 px, set by dPara7".
std::string describeFailure(const TTraceCheck& check);

}  // namespace weld
