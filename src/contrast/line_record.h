// A line of a view as a record of the image.
#pragma once

#include "contrast/refinement.h"
#include "zelContrast.h"

namespace weld {

// A place in a view, px.
cv::Point2f toImage(double along, double across, bool isFlat);

// Without the confidence; from left to right, or from top to bottom where it is steeper than half a right angle.
TContourCenterLine toRecord(const TRefinedLine& line, bool isFlat, TTrait trait);

}  // namespace weld
