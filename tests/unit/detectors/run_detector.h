// One detector on one frame, as the entry point runs it; and the pieces that detectors choose from.
#pragma once

#include "geometry/piece_fit.h"
#include "support/painted_frame.h"
#include "zelWeldDetect.h"

namespace run_detector {

template <typename TObject>
using TDetect = TWeldLineRes (*)(TObject&, const cv::Mat&, const TWeldLineRes&, const cv::Mat&);

template <typename TObject>
TWeldLineRes run(TDetect<TObject> detect, const cv::Mat& image, const TWeldParams& params,
                 const TWeldLineRes& prevRes) {
  TObject object;
  object.setWeldParameters(params);
  return detect(object, image, prevRes, cv::Mat());
}

inline TWeldLineRes foundWith(const std::vector<cv::Point2f>& stripe) {
  TWeldLineRes prevRes;
  prevRes.isFound = true;
  prevRes.stripePts = stripe;
  return prevRes;
}

// A fitted piece over the columns fromX .. toX at the given start row and slope.
inline TStripePiece piece(int fromX, int toX, double y, double k = 0.0) {
  return weld::fitPiece(painted::linePoints(fromX, toX + 1, y, k), weld::kPieceFitTolPx);
}

}  // namespace run_detector
