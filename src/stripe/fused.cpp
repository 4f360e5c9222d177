#include "stripe/fused.h"

#include "support/column_status.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numeric>
#include <utility>

namespace weld {
namespace {

constexpr int kMaxDroppedColumns = 8;      // columns with a pair but no centre that need no explanation
constexpr double kLeastAgreementPx = 3.0;  // or half of the stripe's width
constexpr int kMostOpenColumns = 2;        // without a ridge either, where one bridges a hole
constexpr double kLeastLight = 0.2;        // of a bridge over that of the stripe beside it: less is a reflection
constexpr int kLightColumns = 8;           // beside a hole
constexpr int kLeastTail = 60;             // columns by which ridges go on beyond the edge pairs' ends

// One scanned column as both see it.
struct TBoth {
  const cv::Point2f* pair = nullptr;
  const TCentreSource* pairSource = nullptr;
  const cv::Point2f* ridge = nullptr;
  const TCentreSource* ridgeSource = nullptr;
  bool wasDropped = false;  // a pair that is no centre
  bool takesRidge = false;
};

const cv::Point2f* chosen(const TBoth& c) {
  return c.takesRidge ? c.ridge : c.pair;
}

TList<TBoth> bringTogether(const TStripe& edgePairs, const TStripe& ridges, TMemory* memory) {
  TList<TBoth> columns(memory);
  columns.reserve(edgePairs.status.size());
  std::size_t ridge = 0;
  std::size_t centre = 0;
  for (const TWeldPointStatus& column : edgePairs.status) {
    const auto x = static_cast<float>(column.pos);
    while (ridge < ridges.points.size() && ridges.points[ridge].x < x) ++ridge;
    TBoth both;
    if (centre < edgePairs.points.size() && edgePairs.points[centre].x == x) {
      both.pair = &edgePairs.points[centre];
      both.pairSource = &edgePairs.sources[centre++];
    }
    if (ridge < ridges.points.size() && ridges.points[ridge].x == x) {
      both.ridge = &ridges.points[ridge];
      both.ridgeSource = &ridges.sources[ridge];
    }
    both.wasDropped = both.pair == nullptr && column.status == kCentreFound;
    columns.push_back(both);
  }
  return columns;
}

bool agree(const TBoth& c, double tolerancePx) {
  return c.pair != nullptr && c.ridge != nullptr &&
         std::abs(static_cast<double>(c.pair->y - c.ridge->y)) <= tolerancePx;
}

// Where both see the stripe elsewhere, the one that goes on from the columns beside.
void settle(TList<TBoth>& columns, std::size_t begin, std::size_t end) {
  const cv::Point2f* const left = begin > 0 ? chosen(columns[begin - 1]) : nullptr;
  const cv::Point2f* const right = end < columns.size() ? columns[end].pair : nullptr;
  double pairJump = 0.0;
  double ridgeJump = 0.0;
  if (left != nullptr) {
    pairJump += std::abs(static_cast<double>(columns[begin].pair->y - left->y));
    ridgeJump += std::abs(static_cast<double>(columns[begin].ridge->y - left->y));
  }
  if (right != nullptr) {
    pairJump += std::abs(static_cast<double>(columns[end - 1].pair->y - right->y));
    ridgeJump += std::abs(static_cast<double>(columns[end - 1].ridge->y - right->y));
  }
  for (std::size_t i = begin; i < end; ++i) columns[i].takesRidge = ridgeJump < pairJump;
}

// Mean of the brightest rows about the centres of some columns; 0 without one. All channels count alike.
double lightOf(const cv::Mat& image, const TList<TBoth>& columns, std::size_t begin, std::size_t end) {
  double sum = 0.0;
  int count = 0;
  for (std::size_t i = begin; i < end; ++i) {
    const cv::Point2f* const p = columns[i].pair != nullptr ? columns[i].pair : columns[i].ridge;
    if (p == nullptr) continue;
    const int channels = image.channels();
    const int y = std::clamp(static_cast<int>(std::lround(p->y)), 1, std::max(image.rows - 2, 1));
    int brightest = 0;
    for (int row = y - 1; row <= std::min(y + 1, image.rows - 1); ++row) {
      const unsigned char* const pixel = image.ptr(row) + static_cast<std::ptrdiff_t>(p->x) * channels;
      brightest = std::max(brightest, std::accumulate(pixel, pixel + std::min(channels, 3), 0));
    }
    sum += brightest;
    ++count;
  }
  return count > 0 ? sum / count : 0.0;
}

// A bridge much darker than both of its ends is what a gap reflects.
bool isReflection(const cv::Mat& image, const TList<TBoth>& columns, std::size_t begin, std::size_t end) {
  const std::size_t reach = kLightColumns;
  const double left = lightOf(image, columns, begin - std::min(begin, reach), begin);
  const double right = lightOf(image, columns, end, std::min(end + reach, columns.size()));
  return lightOf(image, columns, begin, end) < kLeastLight * std::min(left, right);
}

// A hole of the edge pairs is stripe where the ridge bridges it from side to side; else a ridge would run on into
// a gap. Beyond the ends it is where the ridge goes on for long.
void fill(const cv::Mat& image, TList<TBoth>& columns, std::size_t begin, std::size_t end) {
  int open = 0;
  for (std::size_t i = begin; i < end; ++i) open += columns[i].ridge == nullptr ? 1 : 0;
  const int count = static_cast<int>(end - begin);
  const bool isTail = begin == 0 || end == columns.size();
  const bool isBridged =
      isTail ? count - open >= kLeastTail : open <= kMostOpenColumns && !isReflection(image, columns, begin, end);
  for (std::size_t i = begin; i < end; ++i) {
    TBoth& c = columns[i];
    c.takesRidge = c.ridge != nullptr && (isBridged || c.wasDropped);
  }
}

template <typename TTest, typename TDo>
void forSpans(TList<TBoth>& columns, const TTest& belongs, const TDo& treat) {
  for (std::size_t i = 0; i < columns.size();) {
    std::size_t end = i;
    while (end < columns.size() && belongs(columns[end])) ++end;
    if (end > i) treat(columns, i, end);
    i = std::max(end, i + 1);
  }
}

TStripe stripeOf(const TList<TBoth>& columns, TMemory* memory) {
  TStripe stripe(memory);
  stripe.points.reserve(columns.size());
  stripe.sources.reserve(columns.size());
  for (const TBoth& c : columns) {
    if (chosen(c) == nullptr) continue;
    stripe.points.push_back(*chosen(c));
    stripe.sources.push_back(c.takesRidge ? *c.ridgeSource : *c.pairSource);
  }
  return stripe;
}

TStripe filledUp(const TFrame& frame, TStripe edgePairs, TList<TBoth>& columns) {
  const double tolerancePx = std::max(kLeastAgreementPx, 0.5 * edgePairs.widthPx);
  forSpans(
      columns, [&](const TBoth& c) { return c.pair != nullptr && c.ridge != nullptr && !agree(c, tolerancePx); },
      settle);
  forSpans(
      columns, [](const TBoth& c) { return c.pair == nullptr; },
      [&](TList<TBoth>& all, std::size_t begin, std::size_t end) { fill(frame.image, all, begin, end); });
  TStripe fused = stripeOf(columns, frame.memory);
  frame.trace.addFilter("filled up with ridges", edgePairs.points.size(), fused.points.size());
  fused.status = std::move(edgePairs.status);
  for (std::size_t i = 0; i < columns.size(); ++i) {
    if (columns[i].takesRidge) fused.status[i].status = kCentreFound;
  }
  fused.widthPx = edgePairs.widthPx;
  return fused;
}

}  // namespace

bool leavesStripeUnexplained(const TStripe& edgePairs, int minColumns, const TColumnSpan& span) {
  if (static_cast<int>(edgePairs.points.size()) < minColumns) return true;
  const auto hasPair = [&](const TWeldPointStatus& s) {
    return s.status == kCentreFound && span.holds(static_cast<float>(s.pos));
  };
  const auto pairs = std::count_if(edgePairs.status.begin(), edgePairs.status.end(), hasPair);
  const auto centres = static_cast<std::ptrdiff_t>(centresIn(edgePairs.points, span).size());
  return pairs - centres > kMaxDroppedColumns;
}

TStripe fillUp(const TFrame& frame, TStripe edgePairs, const TStripe& ridges) {
  TList<TBoth> columns = bringTogether(edgePairs, ridges, frame.memory);
  return filledUp(frame, std::move(edgePairs), columns);
}

TStripe fuse(const TFrame& frame, TStripe edgePairs, TStripe ridges) {
  TList<TBoth> columns = bringTogether(edgePairs, ridges, frame.memory);
  const auto isExplained = [](const TBoth& c) {
    return c.pair != nullptr || (c.wasDropped && c.ridge != nullptr);
  };
  const auto explained = std::count_if(columns.begin(), columns.end(), isExplained);
  const bool takesRidges =
      static_cast<double>(ridges.points.size()) > kClearlyMore * static_cast<double>(explained);
  if (!takesRidges) return filledUp(frame, std::move(edgePairs), columns);
  frame.trace.addFilter("replaced by ridges", edgePairs.points.size(), ridges.points.size());
  return ridges;
}

}  // namespace weld
