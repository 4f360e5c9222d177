#include "support/grey_image.h"

#include <opencv2/imgproc.hpp>

namespace weld {

namespace {

bool isColour(const cv::Mat& image) {
  return image.channels() == 3 || image.channels() == 4;
}

void convertToGrey(const cv::Mat& image, cv::Mat& grey) {
  // cv::cvtColor takes more dimensions than two without complaint and reads the wrong pixels.
  CV_Assert(image.dims == 2);
  cv::cvtColor(image, grey, image.channels() == 3 ? cv::COLOR_BGR2GRAY : cv::COLOR_BGRA2GRAY);
}

}  // namespace

cv::Mat toGrey(const cv::Mat& image) {
  if (!isColour(image)) return image;
  cv::Mat grey;
  convertToGrey(image, grey);
  return grey;
}

cv::Mat toGrey(const cv::Mat& image, std::vector<unsigned char>& memory) {
  if (!isColour(image)) return image;
  const std::size_t bytes = image.total() * image.elemSize1();
  if (memory.size() < bytes) memory.resize(bytes);
  cv::Mat grey(image.rows, image.cols, image.depth(), memory.data());
  convertToGrey(image, grey);
  return grey;
}

void requireReadable(const cv::Mat& image) {
  const int type = image.type();
  CV_Assert(image.dims == 2 && (type == CV_8UC1 || type == CV_8UC3 || type == CV_8UC4));
}

}  // namespace weld
