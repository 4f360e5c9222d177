// From the stored image to the one that is searched, and points back again.
#include "zelWeldJob.h"

#include <opencv2/imgproc.hpp>

namespace weld {

namespace {

constexpr int kBlue = 0;
constexpr int kGreen = 1;
constexpr int kRed = 2;

std::string sizeText(const cv::Mat& image) {
  return "which is " + std::to_string(image.cols) + "x" + std::to_string(image.rows) + " pixels";
}

cv::Mat turn(const cv::Mat& image, std::int32_t rotationDeg) {
  if (rotationDeg == 0) return image;
  cv::Mat turned;  // of its own: the stored image is the caller's
  cv::rotate(image, turned,
             rotationDeg == 90    ? cv::ROTATE_90_CLOCKWISE
             : rotationDeg == 180 ? cv::ROTATE_180
                                  : cv::ROTATE_90_COUNTERCLOCKWISE);
  return turned;
}

cv::Mat greyOf(const cv::Mat& image) {
  cv::Mat grey;
  cv::cvtColor(image, grey, image.channels() == 4 ? cv::COLOR_BGRA2GRAY : cv::COLOR_BGR2GRAY);
  return grey;
}

cv::Mat channelOf(const cv::Mat& image, int index) {
  cv::Mat channel;
  cv::extractChannel(image, channel, index);
  return channel;
}

cv::Mat redExcessOf(const cv::Mat& image) {
  cv::Mat colour = image;
  if (image.channels() == 4) cv::cvtColor(image, colour, cv::COLOR_BGRA2BGR);
  const cv::Matx13f weights(-0.5F, -0.5F, 1.0F);
  cv::Mat excess;
  cv::transform(colour, excess, weights);
  return excess;
}

// A grey image has one channel to take.
cv::Mat takeChannel(const cv::Mat& image, TImageChannel channel) {
  if (image.channels() == 1) return image;
  switch (channel) {
    case TImageChannel::red:
      return channelOf(image, kRed);
    case TImageChannel::green:
      return channelOf(image, kGreen);
    case TImageChannel::blue:
      return channelOf(image, kBlue);
    case TImageChannel::redExcess:
      return redExcessOf(image);
    default:
      return greyOf(image);
  }
}

}  // namespace

}  // namespace weld

using namespace weld;

std::string findPreparationProblem(const TImagePreparation& preparation, const cv::Mat& stored) {
  const bool isKnownType = stored.depth() == CV_8U && (stored.channels() == 1 || stored.channels() >= 3) &&
                           stored.channels() <= 4 && stored.dims <= 2;
  if (!isKnownType) return "the image is none of 8 bits with 1, 3 or 4 channels";
  if (preparation.rotationDeg % 90 != 0 || preparation.rotationDeg < 0 || preparation.rotationDeg > 270)
    return "the rotation is none of 0, 90, 180 and 270 degrees";
  const cv::Rect whole(cv::Point(0, 0), stored.size());
  const cv::Rect region = preparation.region.value_or(whole);
  const bool isInside = region.x >= 0 && region.y >= 0 && region.width <= stored.cols - region.x &&
                        region.height <= stored.rows - region.y;
  if (!isInside || (preparation.region && region.empty()))
    return "the region reaches outside the image, " + sizeText(stored);
  if (preparation.channel == TImageChannel::redExcess && stored.channels() == 1)
    return "the channel red-excess needs colour, and the image is grey";
  return "";
}

cv::Mat prepareImage(const cv::Mat& stored, const TImagePreparation& preparation) {
  if (!findPreparationProblem(preparation, stored).empty() || stored.empty()) return {};
  const cv::Mat region = preparation.region ? stored(*preparation.region) : stored;
  return takeChannel(turn(region, preparation.rotationDeg), preparation.channel);
}

cv::Point2d toStored(cv::Point2d point, const TImagePreparation& preparation, cv::Size storedSize) {
  const cv::Rect region = preparation.region.value_or(cv::Rect(cv::Point(0, 0), storedSize));
  const double right = region.width - 1;
  const double bottom = region.height - 1;
  cv::Point2d inRegion = point;
  switch (preparation.rotationDeg) {
    case 90:
      inRegion = {point.y, bottom - point.x};
      break;
    case 180:
      inRegion = {right - point.x, bottom - point.y};
      break;
    case 270:
      inRegion = {right - point.y, point.x};
      break;
    default:
      break;
  }
  return inRegion + cv::Point2d(region.tl());
}
