// How images are prepared, as typed; and the image with errors that name the option.
#pragma once

#include "zelWeldJob.h"

#include <opencv2/core.hpp>

#include <string>

namespace tool {

using TPreparation = TImagePreparation;
using TChannel = TImageChannel;

// "grey", "red", "green", "blue", "red-excess". Throws a usage error for anything else.
TChannel parseChannel(const std::string& text);

// "0", "90", "180" or "270". Throws a usage error for anything else.
int parseRotation(const std::string& text);

// "x,y,w,h" with w and h at least 1. Throws a usage error for anything else.
cv::Rect parseRegion(const std::string& text);

// The image to be searched. `name` is the image's in messages. Throws a usage error when the region reaches
// outside the image, or red excess is asked of a grey image.
cv::Mat prepareImage(const cv::Mat& stored, const TPreparation& preparation, const std::string& name);

}  // namespace tool
