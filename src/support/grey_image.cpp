#include "support/grey_image.h"

#include <opencv2/imgproc.hpp>

namespace weld {

namespace {

void convertToGrey(const cv::Mat& image, cv::Mat& grey) {
  // cv::cvtColor takes more dimensions than two without complaint and reads the wrong pixels.
  CV_Assert(image.dims == 2);
  cv::cvtColor(image, grey, image.channels() == 3 ? cv::COLOR_BGR2GRAY : cv::COLOR_BGRA2GRAY);
}

}  // namespace

bool isColour(const cv::Mat& image) {
  return image.channels() == 3 || image.channels() == 4;
}

cv::Mat toGrey(const cv::Mat& image) {
  if (!isColour(image)) return image;
  cv::Mat grey;
  convertToGrey(image, grey);
  return grey;
}

std::size_t greyBytes(const cv::Mat& image) {
  return isColour(image) ? image.total() * image.elemSize1() : 0;
}

cv::Mat toGrey(const cv::Mat& image, const TBuffer<unsigned char>& pixels) {
  if (!isColour(image)) return image;
  cv::Mat grey(image.rows, image.cols, image.depth(), pixels.data());
  convertToGrey(image, grey);
  return grey;
}

void requireReadable(const cv::Mat& image) {
  const int type = image.type();
  CV_Assert(image.dims == 2 && (type == CV_8UC1 || type == CV_8UC3 || type == CV_8UC4));
}

}  // namespace weld
