// Pictures as text.
#pragma once

#include "tools/overlay.h"

#include <opencv2/core.hpp>

#include <cstdint>
#include <string>
#include <vector>

namespace tool {

// Base64 of RFC 4648, section 4, with padding.
std::string base64(const std::vector<std::uint8_t>& bytes);

// The image as JPEG in a data address (RFC 2397), which an HTML page shows without another file.
//   quality  0 to 100.
std::string jpegAddress(const cv::Mat& image, int quality);

// The same of the annotated image, not wider than `width`.
std::string pictureAddress(const cv::Mat& image, const TOverlay& overlay, int width, int quality);

}  // namespace tool
