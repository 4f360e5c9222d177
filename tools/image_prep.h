// From the stored image to the one that is searched: cut, turn, choose a channel; and points back again.
#pragma once

#include <opencv2/core.hpp>

#include <optional>
#include <string>

namespace tool {

enum class TChannel { grey, red, green, blue, redExcess };

// Applied in this order.
struct TPreparation {
  std::optional<cv::Rect> region;  // in the stored image
  int rotationDeg = 0;             // clockwise: 0, 90, 180, 270
  TChannel channel = TChannel::grey;
};

// "grey", "red", "green", "blue", "red-excess". Throws a usage error for anything else.
TChannel parseChannel(const std::string& text);

// "90", "180" or "270". Throws a usage error for anything else.
int parseRotation(const std::string& text);

// "x,y,w,h" with w and h at least 1. Throws a usage error for anything else.
cv::Rect parseRegion(const std::string& text);

// The image to be searched. `name` is the image's in messages. Throws a usage error when the region reaches
// outside the image, or red excess is asked of a grey image.
cv::Mat prepareImage(const cv::Mat& stored, const TPreparation& preparation, const std::string& name);

// Where a point of the prepared image lies in the stored one.
cv::Point2d toStored(cv::Point2d point, const TPreparation& preparation, cv::Size storedSize);

}  // namespace tool
