// Plate: the highest straight piece of the stripe and its two ends.
#pragma once

#include "detectors/detector_object.h"

#include <opencv2/core.hpp>

namespace weld {

// Lives over several frames when its owner does, so that the counter can count them.
class TPlateDetector : public TDetectorObject {
public:
  int plateInfoFrameCounter = 0;  // successful frames since the last diagnostic message
};

// The seam between the two ends, with the line through them. Not found: the empty result.
TWeldLineRes detectPlateSeam(TPlateDetector& object, const cv::Mat& image, const TWeldLineRes& prevRes,
                             const cv::Mat& searchMask);

// Counts a successful frame. With the application switch "NeedPrintPlateWeldInfo" on, every 21st one shows a
// message.
//   stripeWidthPx  most frequent stripe width of the frame.
void showPlateInfo(TPlateDetector& object, const TWeldLineRes& result, double stripeWidthPx);

// The seam of one piece: corners at its ends, width, line through the corners.
TWeldLineRes computePlateSeam(const TStripePiece& piece, const cv::Mat& image, const TWeldParams& params,
                              const TTrace& trace = {}, TScratch* scratch = nullptr);

}  // namespace weld
