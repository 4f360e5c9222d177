#include "stripe/ridge/ridge_stripe.h"

#include "support/arena.h"
#include "support/column_status.h"
#include "support/grey_image.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace weld {
namespace {

constexpr TRidgeSettings kRidges{6.0, 30.0};
constexpr int kWidths = 256;  // whole pixels that are told apart

// The smallest of equally frequent ones.
double mostFrequentWidth(const TRidgePoints& ridge) {
  std::array<int, kWidths> counts{};
  for (const TRidgePoint& r : ridge)
    ++counts[std::clamp(static_cast<int>(std::lround(r.widthPx)), 0, kWidths - 1)];
  return static_cast<double>(std::max_element(counts.begin(), counts.end()) - counts.begin());
}

cv::Rect boundsOf(TView<cv::Rect> regions, cv::Size imageSize) {
  cv::Rect bounds;
  for (const cv::Rect& region : regions) bounds |= region;
  return bounds & cv::Rect({0, 0}, imageSize);
}

// The columns of a region from the first ridge point that is not left of it on; returns the first one behind it.
std::size_t takeColumns(const cv::Rect& region, const TRidgePoints& ridge, std::size_t next, TStripe& stripe) {
  const auto top = static_cast<float>(region.y);
  const auto bottom = static_cast<float>(region.br().y);
  while (next < ridge.size() && ridge[next].point.x < static_cast<float>(region.x)) ++next;
  for (int x = region.x; x < region.br().x; ++x) {
    const bool hasRidge = next < ridge.size() && ridge[next].point.x == static_cast<float>(x);
    const bool isInside = hasRidge && ridge[next].point.y >= top && ridge[next].point.y < bottom;
    if (isInside) {
      stripe.points.push_back(ridge[next].point);
      stripe.sources.push_back({TCentreOrigin::ridge, ridge[next].confidence});
    }
    stripe.status.push_back({x, isInside ? kCentreFound : kEdgeMissing});
    next += hasRidge ? 1 : 0;
  }
  return next;
}

// Ridge points in image coordinates.
void findIn(const TFrame& frame, const cv::Rect& part, TKnownRows known, TRidgePoints& points) {
  const cv::Mat image = frame.image(part);
  points.reserve(static_cast<std::size_t>(part.width));  // below the working memory, which goes again
  const TBuffer<unsigned char> pixels(frame.memory, greyBytes(image));
  extractRidgeCentres(toGrey(image, pixels), kRidges, known, points);
  const cv::Point2f origin(part.tl());
  for (TRidgePoint& r : points) r.point += origin;
}

// Of the centres in the columns of a part, from its first row on.
TList<float> rowsIn(const cv::Rect& part, TPointView centres, TMemory* memory) {
  TList<float> rows(static_cast<std::size_t>(part.width), std::numeric_limits<float>::quiet_NaN(), memory);
  const auto isBefore = [](cv::Point2f p, int x) { return p.x < static_cast<float>(x); };
  const auto* const first = std::lower_bound(centres.begin(), centres.end(), part.x, isBefore);
  const auto* const last = std::lower_bound(first, centres.end(), part.br().x, isBefore);
  for (const auto* centre = first; centre != last; ++centre)
    rows[static_cast<std::size_t>(centre->x) - static_cast<std::size_t>(part.x)] =
        centre->y - static_cast<float>(part.y);
  return rows;
}

TStripe stripeOf(const TFrame& frame, TView<cv::Rect> regions, const TRidgePoints& ridge) {
  TStripe stripe(frame.memory);
  stripe.points.reserve(ridge.size());
  stripe.sources.reserve(ridge.size());
  stripe.status.reserve(static_cast<std::size_t>(boundsOf(regions, frame.image.size()).width));
  stripe.widthPx = mostFrequentWidth(ridge);
  std::size_t next = 0;
  for (const cv::Rect& region : regions) next = takeColumns(region, ridge, next, stripe);
  return stripe;
}

}  // namespace

const TRidgePoints& TRidgeSearch::in(const TFrame& frame, const cv::Rect& part) {
  if (searched == part) return points;
  findIn(frame, part, {}, points);
  searched = part;
  return points;
}

TStripe extractRidges(const TFrame& frame, TView<cv::Rect> regions, TRidgeSearch& ridges) {
  const TStageTimer timer(frame.trace, "ridge");
  const cv::Rect bounds = boundsOf(regions, frame.image.size());
  if (bounds.empty()) return TStripe(frame.memory);
  return stripeOf(frame, regions, ridges.in(frame, bounds));
}

TStripe extractRidgesBeside(const TFrame& frame, TView<cv::Rect> regions, TView<cv::Rect> parts,
                            TPointView known) {
  const TStageTimer timer(frame.trace, "ridge");
  TRidgePoints all(frame.memory);
  all.reserve(static_cast<std::size_t>(boundsOf(parts, frame.image.size()).width));
  for (const cv::Rect& part : parts) {
    const TList<float> rows = rowsIn(part, known, frame.memory);
    TRidgePoints found(frame.memory);
    findIn(frame, part, rows, found);
    all.insert(all.end(), found.begin(), found.end());
  }
  return stripeOf(frame, regions, all);
}

}  // namespace weld
