#include "api/image_check.h"

#include "support/image_test.h"

#include <opencv2/imgproc.hpp>

namespace weld {

bool prepareGreyImage(cv::Mat& image) {
  if (!hasPixels(image)) return false;
  if (image.channels() == 3) cv::cvtColor(image, image, cv::COLOR_BGR2GRAY);
  if (image.channels() == 4) cv::cvtColor(image, image, cv::COLOR_BGRA2GRAY);
  return true;
}

}  // namespace weld
