#include "geometry/groove.h"

#include "geometry/line_fitting.h"
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

int anchorIndex(const std::vector<cv::Point2f>& support, float roughX) {
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
TProfileRange profileRange(const std::vector<cv::Point2f>& support, float roughX, int cols) {
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

// Pixels along the line, in one row whose memory is the list.
cv::Mat sampleProfile(const cv::Mat& image, const TProfileRange& range, float k, float b,
                      std::vector<unsigned char>& memory) {
  memory.resize(static_cast<std::size_t>(range.count) * image.elemSize());
  cv::Mat pixels(1, range.count, image.type(), memory.data());
  for (int i = 0; i < range.count; ++i) {
    const int x = range.firstX + i * range.step;
    const int row = std::clamp(truncToInt(lineRow(k, b, x)), 0, image.rows - 1);
    std::memcpy(pixels.ptr(0, i), image.ptr(row, x), image.elemSize());
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

cv::Point2f refineGroovePos(const std::vector<cv::Point2f>& stripePts, cv::Point2f roughPos, float k, float b,
                            const cv::Mat& image, double supportDistPx, double minDrop, TScratch* scratch) {
  const TLentList<cv::Point2f> support =
      selectLineInliers(static_cast<double>(k), static_cast<double>(b), supportDistPx, stripePts, scratch);
  if (support.size() < kMinSupport || !hasPixels(image)) return kNoGroovePos;
  requireReadable(image);
  const TProfileRange range = profileRange(support, roughPos.x, image.cols);
  if (range.count < kMinSamples) return kNoGroovePos;
  TLentList<unsigned char> pixelMemory(scratch, 0);
  TLentList<unsigned char> greyMemory(scratch, 0);
  const TDrop drop = steepestDrop(toGrey(sampleProfile(image, range, k, b, pixelMemory), greyMemory));
  if (!(static_cast<double>(drop.grey) > minDrop)) return roughPos;
  const int x = range.firstX + drop.index * range.step;
  return {static_cast<float>(x), lineRow(k, b, x)};
}

}  // namespace weld
