#include "stripe/stripe_scratch.h"

#include <algorithm>

namespace weld {

void TStripeScratch::reserveFor(const cv::Mat& frame, bool withRidges) {
  if (frame.channels() > 1) grey.resize(std::max(grey.size(), frame.total()));
  if (withRidges) ridge.reserveFor(frame.size());
}

}  // namespace weld
