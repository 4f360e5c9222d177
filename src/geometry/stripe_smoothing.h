// Cleaning of the ordered stripe points before they are cut into pieces.
#pragma once

#include "support/trace.h"

#include <opencv2/core.hpp>

#include <vector>

namespace weld {

// Keeps the first point and every point whose rise against its predecessor in the input is below
// slopeFactor * its step in x. Fewer than 2 points stay as they are.
std::vector<cv::Point2f> dropSteepJumps(const std::vector<cv::Point2f>& points, float slopeFactor);

// Averages x and y over the six points i - 3 .. i + 2; the first 3 and the last 2 points stay. Fewer than 4 points
// stay as they are, 4 to 6 points come out empty.
std::vector<cv::Point2f> smoothStripe(const std::vector<cv::Point2f>& points);

// The stripe as it gets cut: without steep jumps, smoothed. Empty when a point is not finite or absurdly far away.
std::vector<cv::Point2f> cleanStripe(const std::vector<cv::Point2f>& points, const TTrace& trace = {});

// Vertices of an open polygon within epsilonPx of the points (Douglas and Peucker 1973), rounded to the nearest
// pixel. The points must be finite: the approximation would not end on others. Empty when there is no point or
// epsilonPx is outside 0 .. 1e9.
std::vector<cv::Point> approximatePolygon(const std::vector<cv::Point2f>& points, double epsilonPx);

// The points with fromX < x < toX, in order.
std::vector<cv::Point2f> pointsBetween(const std::vector<cv::Point2f>& points, int fromX, int toX);

}  // namespace weld
