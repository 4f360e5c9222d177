#include "tools/image_prep.h"

#include "tools/cli_error.h"
#include "tools/text.h"

#include <opencv2/imgproc.hpp>

#include <cmath>

namespace tool {
namespace {

cv::Mat cutRegion(const cv::Mat& stored, const std::optional<cv::Rect>& region, const std::string& name) {
  if (!region) {
    return stored;
  }
  const cv::Rect whole(cv::Point(0, 0), stored.size());
  if ((*region & whole) != *region) {
    throw usageError("--roi reaches outside " + name + ", which is " + std::to_string(stored.cols) + "x" +
                     std::to_string(stored.rows) + " pixels");
  }
  return stored(*region);
}

cv::Mat turn(const cv::Mat& image, int rotationDeg) {
  cv::Mat turned = image;
  switch (rotationDeg) {
    case 90:
      cv::rotate(image, turned, cv::ROTATE_90_CLOCKWISE);
      break;
    case 180:
      cv::rotate(image, turned, cv::ROTATE_180);
      break;
    case 270:
      cv::rotate(image, turned, cv::ROTATE_90_COUNTERCLOCKWISE);
      break;
    default:
      break;
  }
  return turned;
}

constexpr int kBlue = 0;
constexpr int kGreen = 1;
constexpr int kRed = 2;

// Red minus the mean of green and blue: the stripe of a red laser in daylight.
cv::Mat redExcess(const cv::Mat& image) {
  const cv::Matx13f weights(-0.5F, -0.5F, 1.0F);
  cv::Mat excess;
  cv::transform(image, excess, weights);
  return excess;
}

cv::Mat chooseChannel(const cv::Mat& image, TChannel channel, const std::string& name) {
  if (image.channels() == 1) {
    if (channel == TChannel::redExcess) {
      throw usageError("--channel red-excess needs colour, and " + name + " is grey; use grey");
    }
    return image;
  }
  cv::Mat chosen;
  switch (channel) {
    case TChannel::grey:
      cv::cvtColor(image, chosen, cv::COLOR_BGR2GRAY);
      break;
    case TChannel::red:
      cv::extractChannel(image, chosen, kRed);
      break;
    case TChannel::green:
      cv::extractChannel(image, chosen, kGreen);
      break;
    case TChannel::blue:
      cv::extractChannel(image, chosen, kBlue);
      break;
    case TChannel::redExcess:
      chosen = redExcess(image);
      break;
  }
  return chosen;
}

}  // namespace

TChannel parseChannel(const std::string& text) {
  if (text == "grey" || text == "gray") return TChannel::grey;
  if (text == "red") return TChannel::red;
  if (text == "green") return TChannel::green;
  if (text == "blue") return TChannel::blue;
  if (text == "red-excess") return TChannel::redExcess;
  throw usageError("--channel: unknown channel '" + text + "': use grey, red, green, blue, red-excess");
}

int parseRotation(const std::string& text) {
  if (text == "90") return 90;
  if (text == "180") return 180;
  if (text == "270") return 270;
  throw usageError("--rotate: '" + text + "' is no quarter turn: use 90, 180, 270 (degrees clockwise)");
}

cv::Rect parseRegion(const std::string& text) {
  constexpr double kMaxPx = 1e6;
  const std::vector<double> values = parseNumbers(text, ',', 4);
  bool isRegion = !values.empty() && values[2] >= 1.0 && values[3] >= 1.0;
  for (const double value : values) {
    isRegion = isRegion && value == std::trunc(value) && value >= 0.0 && value <= kMaxPx;
  }
  if (!isRegion) {
    throw usageError("--roi: '" + text +
                     "' is no region; write x,y,width,height in whole pixels of the stored image");
  }
  return {static_cast<int>(values[0]), static_cast<int>(values[1]), static_cast<int>(values[2]),
          static_cast<int>(values[3])};
}

cv::Mat prepareImage(const cv::Mat& stored, const TPreparation& preparation, const std::string& name) {
  const cv::Mat region = cutRegion(stored, preparation.region, name);
  const cv::Mat turned = turn(region, preparation.rotationDeg);
  return chooseChannel(turned, preparation.channel, name);
}

cv::Point2d toStored(cv::Point2d point, const TPreparation& preparation, cv::Size storedSize) {
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

}  // namespace tool
