#include "stripe/region_scan.h"

#include "stripe/edge_pairs.h"

#include <algorithm>
#include <cstdlib>

namespace weld {
namespace {

constexpr int kBoxPx = 5;
constexpr std::size_t kMaxEdges = 99;  // of one kind in a column; later ones are not seen

struct TColumnEdges {
  std::vector<TStripeEdge> rising;
  std::vector<TStripeEdge> falling;
};

// The part of the region that can be scanned; empty when there is none.
cv::Rect scannedPart(const cv::Rect& region, cv::Size imageSize) {
  if (region.x < 0 || region.y < 0 || region.x >= imageSize.width || region.y >= imageSize.height) return {};
  const int width = std::min(region.width, imageSize.width - region.x);
  const int height = std::min(region.height, imageSize.height - region.y);
  if (width < 2 || height < 1) return {};
  return {region.x, region.y, width, height};
}

void appendEdge(std::vector<TStripeEdge>& edges, const TStripeEdge& edge) {
  if (edges.size() < kMaxEdges) edges.push_back(edge);
}

// An edge lies where the sums of the five grey values before and after a bright enough one differ.
void findEdges(const unsigned char* line, int length, int threshold, TColumnEdges& edges) {
  edges.rising.clear();
  edges.falling.clear();
  if (length <= 2 * kBoxPx) return;
  int before = 0;
  int after = 0;
  for (int p = 0; p < kBoxPx; ++p) {
    before += line[p];
    after += line[p + kBoxPx];
  }
  for (int p = kBoxPx; p < length - kBoxPx; ++p) {
    const int strength = std::abs(after - before);
    if (line[p] >= threshold && strength > kBoxPx * threshold) {
      if (before >= after) {
        appendEdge(edges.falling, {p, strength, TEdgeKind::falling});
      } else {
        appendEdge(edges.rising, {p, strength, TEdgeKind::rising});
      }
    }
    before += line[p] - line[p - kBoxPx];
    after += line[p + kBoxPx] - line[p];
  }
}

}  // namespace

void scanStripeRegion(const cv::Mat& image, const cv::Rect& region, int threshold,
                      std::vector<TStripeCandidate>& candidates, std::vector<TWeldPointStatus>& status) {
  const cv::Rect scanned = scannedPart(region, image.size());
  if (scanned.empty()) return;

  cv::Mat columns;  // one row per image column
  cv::transpose(image(scanned), columns);
  TColumnEdges edges;
  std::vector<TStripePair> pairs;
  for (int column = 0; column < columns.rows; ++column) {
    const unsigned char* line = columns.ptr(column);
    findEdges(line, columns.cols, threshold, edges);
    const int code = pairStripeEdges(line, columns.cols, edges.rising, edges.falling, pairs);
    status.push_back({scanned.x + column, code});
    for (const TStripePair& pair : pairs) {
      candidates.push_back({static_cast<float>(scanned.x + column), static_cast<float>(scanned.y + pair.centre),
                            scanned.y + pair.low, scanned.y + pair.high,
                            static_cast<float>(pair.high - pair.low)});
    }
  }
}

}  // namespace weld
