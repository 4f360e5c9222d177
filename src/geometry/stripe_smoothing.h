// Cleaning of the ordered stripe points before they are cut into pieces.
#pragma once

#include "support/scratch.h"
#include "support/trace.h"

#include <opencv2/core.hpp>

#include <vector>

namespace weld {

// Keeps the first point and every point whose rise against its predecessor in the input is below
// slopeFactor * its step in x. Fewer than 2 points stay as they are.
TLentList<cv::Point2f> dropSteepJumps(const std::vector<cv::Point2f>& points, float slopeFactor,
                                      TScratch* scratch = nullptr);

// Averages x and y over the six points i - 3 .. i + 2; the first 3 and the last 2 points stay. Fewer than 4 points
// stay as they are, 4 to 6 points come out empty.
TLentList<cv::Point2f> smoothStripe(const std::vector<cv::Point2f>& points, TScratch* scratch = nullptr);

// The stripe as it gets cut: without steep jumps, smoothed. Empty when a point is not finite or absurdly far away.
TLentList<cv::Point2f> cleanStripe(const std::vector<cv::Point2f>& points, const TTrace& trace = {},
                                   TScratch* scratch = nullptr);

// The points with fromX < x < toX, in order. Faster with points that are known to be sorted by column.
TLentList<cv::Point2f> pointsBetween(const std::vector<cv::Point2f>& points, int fromX, int toX,
                                     TScratch* scratch = nullptr, bool doColumnsAscend = false);

}  // namespace weld
