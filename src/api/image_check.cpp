#include "api/image_check.h"

#include "support/image_test.h"

#include <opencv2/imgproc.hpp>

namespace weld {

bool prepareGreyImage(cv::Mat& image) {
  if (!hasPixels(image)) return false;
  const int channels = image.channels();
  // cv::cvtColor takes more dimensions than two without complaint and reads the wrong pixels.
  CV_Assert(image.dims == 2 || (channels != 3 && channels != 4));
  if (channels == 3) cv::cvtColor(image, image, cv::COLOR_BGR2GRAY);
  if (channels == 4) cv::cvtColor(image, image, cv::COLOR_BGRA2GRAY);
  return true;
}

}  // namespace weld
