#include "stripe/edge_pairs.h"

#include "support/line_math.h"

#include <algorithm>
#include <cstdint>
#include <utility>

namespace weld {
namespace {

constexpr std::size_t kMaxPairedEdges = 5;
constexpr int kMinPairPx = 2;    // exclusive
constexpr int kMaxPairPx = 100;  // exclusive

void keepStrongest(std::vector<TStripeEdge>& edges) {
  if (edges.size() <= kMaxPairedEdges) return;
  std::stable_sort(edges.begin(), edges.end(),
                   [](const TStripeEdge& a, const TStripeEdge& b) { return a.strength > b.strength; });
  edges.resize(kMaxPairedEdges);
}

}  // namespace

double stripeCentroid(const unsigned char* line, int length, int lo, int hi) {
  std::int64_t moment = 0;
  std::int64_t sum = 0;
  for (int p = std::max(lo, 0); p < std::min(hi, length - 1); ++p) {
    moment += static_cast<std::int64_t>(p) * line[p];
    sum += line[p];
  }
  return sum == 0 ? -1.0 : static_cast<double>(moment) / static_cast<double>(sum);
}

TColumnStatus pairStripeEdges(const unsigned char* line, int length, std::vector<TStripeEdge> rising,
                              std::vector<TStripeEdge> falling, std::vector<TStripePair>& pairs) {
  pairs.clear();
  if (rising.empty() || falling.empty()) return kEdgeMissing;

  keepStrongest(rising);
  keepStrongest(falling);
  std::vector<TStripeEdge> edges = std::move(rising);
  edges.insert(edges.end(), falling.begin(), falling.end());
  std::sort(edges.begin(), edges.end(),
            [](const TStripeEdge& a, const TStripeEdge& b) { return a.position < b.position; });

  for (std::size_t i = 1; i < edges.size(); ++i) {
    if (edges[i - 1].kind != TEdgeKind::rising || edges[i].kind != TEdgeKind::falling) continue;
    const int low = edges[i - 1].position;
    const int high = edges[i].position;
    if (high - low <= kMinPairPx || high - low >= kMaxPairPx) continue;
    pairs.push_back({low, high, roundToInt(stripeCentroid(line, length, low, high))});
  }
  return pairs.empty() ? kNoPair : kCentreFound;
}

}  // namespace weld
