#include "stripe/regions.h"

#include "stripe/guide_breaks.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>

namespace weld {
namespace {

constexpr std::size_t kMinGuidePoints = 10;
constexpr int kMaxStretchPx = 150;         // a guide point farther than this from the last break starts a stretch
constexpr double kMinGuideDensity = 0.3;   // guide points per px of stretch below which the guide is sparse
constexpr double kSparseBandFactor = 1.5;  // the band is this much higher where the guide is sparse

bool canGuide(TIntPointView guide, cv::Size imageSize) {
  return guide.size() >= kMinGuidePoints && std::all_of(guide.begin(), guide.end(), [&](cv::Point p) {
           return p.x >= 0 && p.y >= 0 && p.x < imageSize.width && p.y < imageSize.height;
         });
}

// The band's half height over a stretch. Its ends are more than kMaxStretchPx apart.
std::int64_t halfBand(const TGuideBreak& a, const TGuideBreak& b, int bandPx) {
  const double dx = b.point.x - a.point.x;
  const double dy = b.point.y - a.point.y;
  const double density = (b.index - a.index) / std::sqrt(dx * dx + dy * dy);
  return density < kMinGuideDensity ? static_cast<std::int64_t>(bandPx * kSparseBandFactor) : bandPx;
}

// Deliberate: the region ends before column b.x and before the image's last row.
cv::Rect stretchRegion(const TGuideBreak& a, const TGuideBreak& b, cv::Size imageSize, int bandPx) {
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

TList<cv::Rect> buildStripeRegions(cv::Size imageSize, TIntPointView guide, int bandPx, TMemory* memory) {
  TList<cv::Rect> regions(memory);
  if (imageSize.empty()) return regions;
  regions.reserve(static_cast<std::size_t>(imageSize.width / kMaxStretchPx + 1));
  if (!canGuide(guide, imageSize)) {
    regions.push_back(cv::Rect({0, 0}, imageSize));
    return regions;
  }

  // Deliberate: one break alone gives no regions, so a very short previous stripe finds nothing.
  TList<TGuideBreak> breaks = findGuideBreaks(guide, imageSize.width, kMaxStretchPx, memory);
  // Deliberate: a single region ends at its break's own column, the last of several at the right border.
  if (breaks.size() > 2) breaks.back().point.x = imageSize.width - 1;
  for (std::size_t i = 1; i < breaks.size(); ++i) {
    regions.push_back(stretchRegion(breaks[i - 1], breaks[i], imageSize, bandPx));
  }
  return regions;
}

}  // namespace weld
