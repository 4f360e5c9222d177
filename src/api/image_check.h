// What an image must be before any detector sees it.
#pragma once

#include <opencv2/core.hpp>

namespace weld {

// Makes the image grey: 3 channels are read as BGR, 4 as BGRA, any other count is left alone. The pixels of
// the matrix handed in are not written; a conversion puts new ones in its place. False when the image has no
// data, no elements or no dimensions. A depth that cannot be converted, and colour in more than two dimensions,
// raise cv::Exception.
bool prepareGreyImage(cv::Mat& image);

}  // namespace weld
