// Grey values of frames that may be in colour. Detectors hand the frame on as it is, and whoever reads pixels
// converts those and no others.
#pragma once

#include "support/arena.h"

#include <opencv2/core.hpp>

namespace weld {

// 3 channels are read as BGR, 4 as BGRA; any other count comes back as it is, without a copy. A depth that cannot
// be converted, and colour in more than two dimensions, raise cv::Exception.
cv::Mat toGrey(const cv::Mat& image);

// True when toGrey converts.
bool isColour(const cv::Mat& image);

// The same; converted pixels lie in the buffer, which must outlive the result and hold at least greyBytes of it.
cv::Mat toGrey(const cv::Mat& image, const TBuffer<unsigned char>& pixels);
std::size_t greyBytes(const cv::Mat& image);  // 0 where nothing is converted

// Of one pixel, within a grey level of what toGrey gives.
inline int greyOf(const unsigned char* pixel, int channels) {
  return channels < 3 ? pixel[0] : (1868 * pixel[0] + 9617 * pixel[1] + 4899 * pixel[2] + 8192) >> 14;
}

// Raises cv::Exception unless the image has two dimensions, 8 bits, and one, 3 or 4 channels.
void requireReadable(const cv::Mat& image);

}  // namespace weld
