// Lap: two straight pieces displaced in height.
#pragma once

#include "zelWeldDetect.h"

#include "detectors/detector_object.h"

#include <opencv2/core.hpp>

#include <optional>
#include <utility>
#include <vector>

namespace weld {

// The step between the facing ends of two pieces. Not found: the empty result.
TWeldLineRes detectLapSeam(TDetectorObject& object, const cv::Mat& image, const TWeldLineRes& prevRes,
                           const cv::Mat& searchMask);

// The two pieces of a lap: nearly collinear touching neighbours are joined first; of more than two the ones with
// the most inliers. Nothing when fewer than two are left. The order is not yet left to right.
using TLapPieces = std::pair<TLent<TStripePiece>, TLent<TStripePiece>>;
std::optional<TLapPieces> selectLapLinePair(std::vector<TStripePiece> pieces, const TTrace& trace = {},
                                            TScratch* scratch = nullptr);

// The seam of a left and a right piece, with every acceptance test.
TWeldLineRes computeLapSeam(const TStripePiece& left, const TStripePiece& right,
                            const std::vector<cv::Point2f>& stripePts, const cv::Mat& image,
                            const TWeldParams& params, const TTrace& trace = {}, TScratch* scratch = nullptr);

}  // namespace weld
