#include "api/image_check.h"

#include <opencv2/imgproc.hpp>

namespace weld {

bool prepareGreyImage(cv::Mat& image) {
  if (image.data == nullptr || image.dims == 0 || image.total() == 0) return false;
  if (image.channels() == 3) cv::cvtColor(image, image, cv::COLOR_BGR2GRAY);
  if (image.channels() == 4) cv::cvtColor(image, image, cv::COLOR_BGRA2GRAY);
  return true;
}

}  // namespace weld
