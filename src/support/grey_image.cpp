#include "support/grey_image.h"

#include <opencv2/imgproc.hpp>

namespace weld {

cv::Mat toGrey(const cv::Mat& image) {
  const int channels = image.channels();
  if (channels != 3 && channels != 4) return image;
  // cv::cvtColor takes more dimensions than two without complaint and reads the wrong pixels.
  CV_Assert(image.dims == 2);
  cv::Mat grey;
  cv::cvtColor(image, grey, channels == 3 ? cv::COLOR_BGR2GRAY : cv::COLOR_BGRA2GRAY);
  return grey;
}

void requireReadable(const cv::Mat& image) {
  const int type = image.type();
  CV_Assert(image.dims == 2 && (type == CV_8UC1 || type == CV_8UC3 || type == CV_8UC4));
}

}  // namespace weld
