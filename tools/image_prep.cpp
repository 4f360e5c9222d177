#include "tools/image_prep.h"

#include "tools/cli_error.h"
#include "tools/text.h"

#include <cmath>

namespace tool {

TChannel parseChannel(const std::string& text) {
  std::vector<std::string> names;
  for (const TChannel channel :
       {TChannel::grey, TChannel::red, TChannel::green, TChannel::blue, TChannel::redExcess}) {
    names.emplace_back(imageChannelText(channel));
    if (text == names.back() || (channel == TChannel::grey && text == "gray")) {
      return channel;
    }
  }
  throw usageError("--channel: unknown channel '" + text + "': use " + join(names, ", "));
}

int parseRotation(const std::string& text) {
  if (text == "0") return 0;
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
  const std::string problem = findPreparationProblem(preparation, stored);
  if (!problem.empty()) {
    throw usageError(name + ": " + problem);
  }
  return ::prepareImage(stored, preparation);
}

}  // namespace tool
