#include "tools/picture_code.h"

#include "tools/cli_error.h"

#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include <algorithm>

namespace tool {

std::string base64(const std::vector<std::uint8_t>& bytes) {
  static const char* const kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  text.reserve((bytes.size() + 2) / 3 * 4);
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    const std::size_t count = std::min<std::size_t>(3, bytes.size() - i);
    std::uint32_t group = 0;
    for (std::size_t k = 0; k < 3; ++k) {
      group = group << 8 | (k < count ? bytes[i + k] : 0U);
    }
    for (std::size_t k = 0; k < 4; ++k) {
      text += k <= count ? kDigits[group >> (18 - 6 * k) & 63U] : '=';
    }
  }
  return text;
}

std::string jpegAddress(const cv::Mat& image, int quality) {
  std::vector<std::uint8_t> bytes;
  if (!cv::imencode(".jpg", image, bytes, {cv::IMWRITE_JPEG_QUALITY, quality})) {
    throw TCliError(TExit::failure, "a picture of the report cannot be encoded as JPEG");
  }
  return "data:image/jpeg;base64," + base64(bytes);
}

std::string pictureAddress(const cv::Mat& image, const TOverlay& overlay, int width, int quality) {
  if (image.cols <= width) {
    return jpegAddress(drawOverlay(image, overlay), quality);
  }
  const float factor = static_cast<float>(width) / static_cast<float>(image.cols);
  cv::Mat small;
  cv::resize(image, small, cv::Size(), static_cast<double>(factor), static_cast<double>(factor), cv::INTER_AREA);
  return jpegAddress(drawOverlay(small, scaled(overlay, factor)), quality);
}

}  // namespace tool
