#include "api/image_check.h"

#include "support/grey_image.h"
#include "support/image_test.h"

namespace weld {

bool prepareGreyImage(cv::Mat& image) {
  if (!hasPixels(image)) return false;
  image = toGrey(image);
  return true;
}

}  // namespace weld
