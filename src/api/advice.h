// What may be done about a frame that gave no seam. Only where somebody reads along.
#pragma once

#include "api/attempt.h"

namespace weld {

// Looks once more at the stripe of the attempt that has just failed, with each setting that refuses it put to what
// would be enough, one after the other; then, of a corner, with the angles of every preset. Writes needs and
// advice into the attempt's trace.
//   find  the joint's rules that failed
void adviseAttempt(const TQuest& quest, const TStripe& stripe, const TFindSeam& find, const TPrevious& previous);

// Writes the advice of a frame that ended without a seam of its own.
//   image  not empty
//   joint  that was looked for
void adviseFrame(const cv::Mat& image, const TJoint& joint, TFrameTrace& trace);

}  // namespace weld
