#include "tools/seam_figures.h"

#include <algorithm>

namespace tool {

void TJitter::add(const std::optional<cv::Point2d>& seam) {
  if (seam && before[0] && before[1]) {
    lengthsPx.push_back(cv::norm(*before[0] - 2.0 * *before[1] + *seam));
  }
  before = {before[1], seam};
}

void TJitter::startSequence() {
  before = {};
}

std::optional<double> TJitter::medianPx() const {
  return lengthsPx.empty() ? std::nullopt : std::make_optional(percentile(lengthsPx, 0.5));
}

void TReasonTally::add(int frame, const TSeamFrame& seen) {
  auto row = std::find_if(counts.begin(), counts.end(), [&](const TRow& r) { return r.reason == seen.reason; });
  if (row == counts.end()) {
    row = counts.insert(row, {seen.reason, 0, frame, seen.sentence});
  }
  ++row->frames;
}

std::vector<TReasonTally::TRow> TReasonTally::rows() const {
  std::vector<TRow> sorted = counts;
  std::stable_sort(sorted.begin(), sorted.end(), [](const TRow& a, const TRow& b) { return a.frames > b.frames; });
  return sorted;
}

void TSeamFigures::add(int frame, bool startsSequence, const TSeamFrame& seen) {
  if (startsSequence) {
    seamJitter.startSequence();
    lossRun = 0;
  }
  seamJitter.add(seen.steady);
  ++frameCount;
  foundCount += seen.isFound ? 1 : 0;
  stripeEndCount += seen.isAtStripeEnd ? 1 : 0;
  lossRun = seen.isFound ? 0 : lossRun + 1;
  lossCount += lossRun == 1 ? 1 : 0;
  longestLossFrames = std::max(longestLossFrames, lossRun);
  if (seen.isFound) {
    confidences.push_back(seen.confidence);
  } else {
    lostReasons.add(frame, seen);
  }
}

double TSeamFigures::foundShare() const {
  return frameCount == 0 ? 0.0 : static_cast<double>(foundCount) / frameCount;
}

double TSeamFigures::stripeEndShare() const {
  return foundCount == 0 ? 0.0 : static_cast<double>(stripeEndCount) / foundCount;
}

}  // namespace tool
