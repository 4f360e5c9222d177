#include "stripe/regions.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <utility>

namespace weld {
namespace {

constexpr std::size_t kMinGuidePoints = 10;
constexpr int kMaxStretchPx = 150;         // a guide point farther than this from the last break starts a stretch
constexpr double kMinGuideDensity = 0.3;   // guide points per px of stretch below which the guide is sparse
constexpr double kSparseBandFactor = 1.5;  // the band is this much higher where the guide is sparse

// A guide point where a new stretch starts.
struct TRegionBreak {
  cv::Point point;
  int index = 0;  // in the sorted guide
};

bool canGuide(const std::vector<cv::Point>& guide, cv::Size imageSize) {
  return guide.size() >= kMinGuidePoints && std::all_of(guide.begin(), guide.end(), [&](cv::Point p) {
           return p.x >= 0 && p.y >= 0 && p.x < imageSize.width && p.y < imageSize.height;
         });
}

// The points that are out of column order: none before `first` has a smaller one behind it, none from `last` on a
// larger one before it. Exchanges move no others.
struct TUnsortedPart {
  std::size_t first = 0;
  std::size_t last = 0;
};

TUnsortedPart findUnsorted(const std::vector<cv::Point>& guide) {
  TUnsortedPart part{guide.size(), 0};
  int least = std::numeric_limits<int>::max();
  for (std::size_t i = guide.size(); i-- > 0;) {
    if (guide[i].x > least) part.first = i;
    least = std::min(least, guide[i].x);
  }
  int most = std::numeric_limits<int>::min();
  for (std::size_t i = 0; i < guide.size(); ++i) {
    if (guide[i].x < most) part.last = i + 1;
    most = std::max(most, guide[i].x);
  }
  return part;
}

// Deliberate: plain exchanges, whose order of points with equal x no library sort reproduces. A guide in column
// order, which is what a previous result holds as a rule, costs one pass.
void sortByColumn(std::vector<cv::Point>& guide) {
  if (std::is_sorted(guide.begin(), guide.end(), [](cv::Point a, cv::Point b) { return a.x < b.x; })) return;
  const TUnsortedPart part = findUnsorted(guide);
  for (std::size_t i = part.first; i < part.last; ++i) {
    for (std::size_t j = i + 1; j < part.last; ++j) {
      if (guide[i].x > guide[j].x) std::swap(guide[i], guide[j]);
    }
  }
}

// The band's half height over a stretch. Its ends are more than kMaxStretchPx apart.
std::int64_t halfBand(const TRegionBreak& a, const TRegionBreak& b, int bandPx) {
  const double dx = b.point.x - a.point.x;
  const double dy = b.point.y - a.point.y;
  const double density = (b.index - a.index) / std::sqrt(dx * dx + dy * dy);
  return density < kMinGuideDensity ? static_cast<std::int64_t>(bandPx * kSparseBandFactor) : bandPx;
}

// Deliberate: the region ends before column b.x and before the image's last row.
cv::Rect stretchRegion(const TRegionBreak& a, const TRegionBreak& b, cv::Size imageSize, int bandPx) {
  const std::int64_t half = halfBand(a, b, bandPx);
  const std::int64_t lastRow = imageSize.height - 1;
  const std::int64_t y0 = std::max<std::int64_t>(std::min(a.point.y, b.point.y) - half, 0);
  const std::int64_t y1 = std::min(lastRow, std::max(a.point.y, b.point.y) + half);
  const std::int64_t top = std::max<std::int64_t>(std::min(y0, y1), 0);
  const std::int64_t bottom = std::min<std::int64_t>(imageSize.height, std::max(y0, y1));
  if (bottom <= top) return {};
  return {a.point.x, static_cast<int>(top), b.point.x - a.point.x, static_cast<int>(bottom - top)};
}

}  // namespace

cv::Mat prepareSearchImage(const cv::Mat& grey, const cv::Mat& mask) {
  if (grey.empty() || mask.empty()) return grey;
  cv::Mat masked = cv::Mat::zeros(grey.size(), grey.type());
  grey.copyTo(masked, mask);
  return masked;
}

std::vector<cv::Rect> buildStripeRegions(cv::Size imageSize, std::vector<cv::Point> guide, int bandPx) {
  if (imageSize.empty()) return {};
  if (!canGuide(guide, imageSize)) return {cv::Rect({0, 0}, imageSize)};

  sortByColumn(guide);
  // Deliberate: one break alone gives no regions, so a very short previous stripe finds nothing.
  std::vector<cv::Rect> regions;
  regions.reserve(imageSize.width / kMaxStretchPx);
  TRegionBreak previous;
  TRegionBreak last{guide.front(), 0};
  for (std::size_t i = 1; i < guide.size(); ++i) {
    if (guide[i].x - last.point.x <= kMaxStretchPx) continue;
    previous = std::exchange(last, {guide[i], static_cast<int>(i)});
    regions.push_back(stretchRegion(previous, last, imageSize, bandPx));
  }
  // Deliberate: a single region ends at its break's own column, the last of several at the right border.
  if (regions.size() > 1) {
    last.point.x = imageSize.width - 1;
    regions.back() = stretchRegion(previous, last, imageSize, bandPx);
  }
  return regions;
}

}  // namespace weld
