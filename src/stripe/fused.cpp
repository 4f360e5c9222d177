#include "stripe/fused.h"

#include "support/column_status.h"

#include <algorithm>
#include <utility>

namespace weld {
namespace {

constexpr int kMaxDroppedColumns = 8;  // columns with a pair but no centre that need no explanation
constexpr double kClearlyMore = 1.2;

int columnsWithPair(const TStripe& stripe) {
  return static_cast<int>(std::count_if(stripe.status.begin(), stripe.status.end(),
                                        [](const TWeldPointStatus& s) { return s.status == kCentreFound; }));
}

void add(const TStripe& from, std::size_t i, TStripe& to) {
  to.points.push_back(from.points[i]);
  to.sources.push_back(from.sources[i]);
}

// Columns ascend in all three lists. One pass: the next centre, ridge and status of the column at hand.
TStripe fillDroppedColumns(const TStripe& edgePairs, const TStripe& ridges, TMemory* memory) {
  TStripe filled(memory);
  filled.points.reserve(edgePairs.status.size());
  filled.sources.reserve(edgePairs.status.size());
  std::size_t ridge = 0;
  std::size_t centre = 0;
  for (const TWeldPointStatus& column : edgePairs.status) {
    const auto x = static_cast<float>(column.pos);
    while (ridge < ridges.points.size() && ridges.points[ridge].x < x) ++ridge;
    const bool hasCentre = centre < edgePairs.points.size() && edgePairs.points[centre].x == x;
    const bool hasRidge = ridge < ridges.points.size() && ridges.points[ridge].x == x;
    if (hasCentre) {
      add(edgePairs, centre++, filled);
    } else if (hasRidge && column.status == kCentreFound) {
      add(ridges, ridge, filled);
    }
  }
  return filled;
}

}  // namespace

bool leavesStripeUnexplained(const TStripe& edgePairs, int minColumns) {
  const int centres = static_cast<int>(edgePairs.points.size());
  return columnsWithPair(edgePairs) - centres > kMaxDroppedColumns || centres < minColumns;
}

TStripe fuse(const TFrame& frame, TStripe edgePairs, TStripe ridges) {
  TStripe filled = fillDroppedColumns(edgePairs, ridges, frame.memory);
  const bool takesRidges =
      static_cast<double>(ridges.points.size()) > kClearlyMore * static_cast<double>(filled.points.size());
  if (takesRidges) {
    frame.trace.addFilter("replaced by ridges", edgePairs.points.size(), ridges.points.size());
    return ridges;
  }
  frame.trace.addFilter("filled up with ridges", edgePairs.points.size(), filled.points.size());
  filled.status = std::move(edgePairs.status);
  filled.widthPx = edgePairs.widthPx;
  return filled;
}

}  // namespace weld
