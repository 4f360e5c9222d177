#include "geometry/groove.h"

#include "geometry/line_fitting.h"
#include "support/arena.h"
#include "support/grey_image.h"
#include "support/image_test.h"
#include "support/line_math.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace weld {

namespace {

constexpr std::size_t kMinSupport = 10;
constexpr float kMarginPx = 10.0F;  // the profile reaches this far beyond the position and the support
constexpr int kMinSamples = 6;
constexpr int kMeanSamples = 3;  // grey levels averaged on each side of a sample

// Columns at which the profile is sampled, in this order.
struct TProfileRange {
  int firstX = 0;
  int step = 1;
  int count = 0;
};

struct TDrop {
  int index = 0;
  int grey = 0;
};

int anchorIndex(TPointView support, float roughX) {
  const int last = static_cast<int>(support.size()) - 1;
  for (int i = 0; i < last; ++i) {
    if (support[i].x <= roughX && roughX <= support[i + 1].x) return i;
  }
  return std::abs(roughX - support[last].x) > std::abs(roughX - support[0].x) ? 0 : last;
}

int columnsBetween(int lo, int hi) {
  return hi < lo ? 0 : hi - lo + 1;
}

// From the position across the nearer end of the support.
TProfileRange profileRange(TPointView support, float roughX, int cols) {
  const int anchor = anchorIndex(support, roughX);
  const bool runsToFirst = anchor < static_cast<int>(support.size()) - anchor;
  if (runsToFirst) {
    const int hi = std::min(truncToInt(roughX + kMarginPx), cols - 1);
    const int lo = std::max(truncToInt(support.front().x - kMarginPx), 0);
    return {hi, -1, columnsBetween(lo, hi)};
  }
  const int lo = std::max(truncToInt(roughX - kMarginPx), 0);
  const int hi = std::min(truncToInt(support.back().x + kMarginPx), cols - 1);
  return {lo, 1, columnsBetween(lo, hi)};
}

float lineRow(float k, float b, int x) {
  return k * static_cast<float>(x) + b;
}

// Pixels along the line, in one row that lies in the buffer.
cv::Mat sampleProfile(const cv::Mat& image, const TProfileRange& range, const TRoughPos& line,
                      const TBuffer<unsigned char>& row) {
  cv::Mat pixels(1, range.count, image.type(), row.data());
  for (int i = 0; i < range.count; ++i) {
    const int x = range.firstX + i * range.step;
    const int y = std::clamp(truncToInt(lineRow(line.k, line.b, x)), 0, image.rows - 1);
    std::memcpy(pixels.ptr(0, i), image.ptr(y, x), image.elemSize());
  }
  return pixels;
}

// The first of the largest drops from the mean before a sample to the mean after it, in grey levels.
TDrop steepestDrop(const cv::Mat& profile) {
  TDrop best;
  const unsigned char* const greys = profile.ptr();
  for (int j = kMeanSamples; j < profile.cols - kMeanSamples; ++j) {
    const int before = (greys[j - 3] + greys[j - 2] + greys[j - 1]) / kMeanSamples;
    const int after = (greys[j + 1] + greys[j + 2] + greys[j + 3]) / kMeanSamples;
    if (before - after > best.grey) best = {j, before - after};
  }
  return best;
}

}  // namespace

cv::Point2f refineGroovePos(const TFrame& frame, TPointView stripePts, const TRoughPos& rough,
                            const TGrooveRule& rule) {
  const cv::Mat& image = frame.image;
  const TPoints support = selectLineInliers(static_cast<double>(rough.k), static_cast<double>(rough.b),
                                            rule.supportDistPx, stripePts, frame.memory);
  if (support.size() < kMinSupport || !hasPixels(image)) return kNoGroovePos;
  requireReadable(image);
  const TProfileRange range = profileRange(support, rough.pos.x, image.cols);
  if (range.count < kMinSamples) return kNoGroovePos;
  const auto samples = static_cast<std::size_t>(range.count);
  const TBuffer<unsigned char> pixels(frame.memory, samples * image.elemSize());
  const TBuffer<unsigned char> greys(frame.memory, samples);
  const TDrop drop = steepestDrop(toGrey(sampleProfile(image, range, rough, pixels), greys));
  if (!(static_cast<double>(drop.grey) > rule.minDrop)) return rough.pos;
  const int x = range.firstX + drop.index * range.step;
  return {static_cast<float>(x), lineRow(rough.k, rough.b, x)};
}

}  // namespace weld
