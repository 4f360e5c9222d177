// The stripe as straight atoms: a coarser cut than the segmentation, merged by how flat the lines meet.
#pragma once

#include "trace/frame.h"
#include "zelWeldToolkit.h"

#include <opencv2/core.hpp>

#include <vector>

namespace weld {

// See the members of TBaseWeld with the same names. tolPx is the scale of the robust line fits.
std::vector<TSplitAtom> splitWeldLine(const TFrame& frame, TPointView stripePts, double tolPx);

// Atoms between the polygon vertices that are more than 10 columns from the one before; none when the stripe is
// one straight line.
std::vector<TSplitAtom> cutIntoSplitAtoms(const TFrame& frame, TPointView stripePts);

void fuseSplitAtoms(std::vector<TSplitAtom>& atoms, double tolPx);

TLinePara combineLines(const TLinePara& first, const TLinePara& second, const std::vector<cv::Point2f>& firstPts,
                       const std::vector<cv::Point2f>& secondPts, double tolPx);

std::vector<cv::Point2f> dropDiscontinuousPts(const std::vector<cv::Point2f>& points, int maxJumpPx);

}  // namespace weld
