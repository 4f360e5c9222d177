// The two flanks of a corner: three ways to find them in the stripe points.
#pragma once

#include "detectors/corner_case.h"

#include <opencv2/core.hpp>

#include <optional>

namespace weld {

// Consensus lines over all points: one flank, then the other from what the first leaves over.
std::optional<TFlankPair> findFlankPairRansac(const TCornerCase& corner, TPointView points);

// The longest straight piece in each flank's angle range; the first piece stands in where none qualifies.
std::optional<TFlankPair> findFlankPairByPolyline(const TCornerCase& corner, TPointView points);

struct TFlankSlopes {
  double left = 0.0;
  double right = 0.0;
};

// The longest two neighbouring pieces within 5 degrees of the previous flanks, refitted there.
std::optional<TFlankPair> findFlankPairNear(const TCornerCase& corner, TPointView points,
                                            const TFlankSlopes& previous);

// Cuts off the points of each flank that lie beyond the far end of the other, and refits both; leaves alone a
// pair with too few points or whose intersection lies outside the image.
void trimFlankOverlap(const TCornerCase& corner, TFlankPair& flanks);

// Whether both flanks have a line that counts.
bool areFlanksValid(const TCornerCase& corner, const TFlankPair& flanks);

// Whether both flanks have that many points, at least 1.
bool haveFlanksPoints(const TFlankPair& flanks, std::size_t least, const TTrace& trace);

// Intersection of the two lines.
cv::Point2f crossingOf(const TFlankPair& flanks);

// True strictly inside the image borders.
bool isStrictlyInside(cv::Size imageSize, cv::Point2f p);

}  // namespace weld
