// The two flanks of a corner: four ways to find them in the stripe points.
#pragma once

#include "zelWeldDetect.h"

#include "detectors/corner_params.h"
#include "support/scratch.h"
#include "support/trace.h"

#include <opencv2/core.hpp>

#include <optional>
#include <vector>

namespace weld {

// A left and a right flank. Each holds its stripe points in ascending column order.
struct TFlankPair {
  TLent<TLinePara> left;
  TLent<TLinePara> right;
};

// Consensus lines over all points: one flank, then the other from what the first leaves over.
std::optional<TFlankPair> findFlankPairRansac(const std::vector<cv::Point2f>& points, const TCornerParams& params,
                                              const TTrace& trace = {}, TScratch* scratch = nullptr);

// The longest straight piece in each flank's angle range; the first piece stands in where none qualifies.
std::optional<TFlankPair> findFlankPairByPolyline(const std::vector<cv::Point2f>& points,
                                                  const TCornerParams& params, const TTrace& trace = {},
                                                  TScratch* scratch = nullptr);

// The longest two neighbouring pieces within 5 degrees of the previous flanks (slopes given), refitted there.
std::optional<TFlankPair> findFlankPairNear(const std::vector<cv::Point2f>& points, double previousLeftK,
                                            double previousRightK, const TCornerParams& params,
                                            const TTrace& trace = {}, TScratch* scratch = nullptr);

// Cuts off the points of each flank that lie beyond the far end of the other, and refits both; leaves alone a
// pair with too few points or whose intersection lies outside the image.
void trimFlankOverlap(TFlankPair& flanks, cv::Size imageSize, const TCornerParams& params,
                      const TTrace& trace = {}, TScratch* scratch = nullptr);

// Whether both flanks have a line that counts.
bool areFlanksValid(const TFlankPair& flanks, const TCornerParams& params, const TTrace& trace);

// Whether both flanks have that many points, at least 1.
bool haveFlanksPoints(const TFlankPair& flanks, std::size_t least, const TTrace& trace);

// Intersection of the two lines.
cv::Point2f intersectionOf(const TFlankPair& flanks);

// True strictly inside the image borders.
bool isStrictlyInside(cv::Size imageSize, cv::Point2f p);

}  // namespace weld
