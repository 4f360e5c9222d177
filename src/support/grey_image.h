// Grey values of frames that may be in colour. Detectors hand the frame on as it is, and whoever reads pixels
// converts those and no others.
#pragma once

#include <opencv2/core.hpp>

#include <vector>

namespace weld {

// 3 channels are read as BGR, 4 as BGRA; any other count comes back as it is, without a copy. A depth that cannot
// be converted, and colour in more than two dimensions, raise cv::Exception.
cv::Mat toGrey(const cv::Mat& image);

// The same; converted pixels lie in `memory`, which must outlive the result.
cv::Mat toGrey(const cv::Mat& image, std::vector<unsigned char>& memory);

// Raises cv::Exception unless the image has two dimensions, 8 bits, and one, 3 or 4 channels.
void requireReadable(const cv::Mat& image);

}  // namespace weld
