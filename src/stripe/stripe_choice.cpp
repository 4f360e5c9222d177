#include "stripe/stripe_choice.h"

#include "stripe/region_scan.h"

#include <algorithm>
#include <utility>

namespace weld {
namespace {

constexpr int kMaxDroppedColumns = 8;  // columns with a pair but no centre that need no explanation
constexpr double kClearlyMore = 1.2;

int columnsWithPair(const TStripeCentres& stripe) {
  return static_cast<int>(std::count_if(stripe.status.begin(), stripe.status.end(),
                                        [](const TWeldPointStatus& s) { return s.status == kCentreFound; }));
}

// Columns ascend in all three lists. One pass: the next centre, ridge and status of the column at hand.
TLentList<cv::Point2f> fillDroppedColumns(const TStripeCentres& edgePairs, const std::vector<cv::Point2f>& ridges,
                                          TScratch* scratch) {
  TLentList<cv::Point2f> points(scratch, edgePairs.status.size());
  auto ridge = ridges.begin();
  auto centre = edgePairs.points.begin();
  for (const TWeldPointStatus& column : edgePairs.status) {
    const auto x = static_cast<float>(column.pos);
    ridge = std::find_if(ridge, ridges.end(), [x](cv::Point2f p) { return p.x >= x; });
    const bool hasCentre = centre != edgePairs.points.end() && centre->x == x;
    const bool hasRidge = ridge != ridges.end() && ridge->x == x;
    if (hasCentre) {
      points.push_back(*centre++);
    } else if (hasRidge && column.status == kCentreFound) {
      points.push_back(*ridge);
    }
  }
  return points;
}

}  // namespace

bool leavesStripeUnexplained(const TStripeCentres& edgePairs, int minColumns) {
  const int centres = static_cast<int>(edgePairs.points.size());
  return columnsWithPair(edgePairs) - centres > kMaxDroppedColumns || centres < minColumns;
}

TStripeCentres chooseStripe(TStripeCentres edgePairs, TStripeCentres ridges, const TTrace& trace,
                            TScratch* scratch) {
  TLentList<cv::Point2f> filled = fillDroppedColumns(edgePairs, ridges.points, scratch);
  const bool takesRidges =
      static_cast<double>(ridges.points.size()) > kClearlyMore * static_cast<double>(filled.size());
  if (takesRidges) {
    trace.addFilter("replaced by ridges", edgePairs.points.size(), ridges.points.size());
    return ridges;
  }
  trace.addFilter("filled up with ridges", edgePairs.points.size(), filled.size());
  edgePairs.points = std::move(filled);
  return edgePairs;
}

}  // namespace weld
