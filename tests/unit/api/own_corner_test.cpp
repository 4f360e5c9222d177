#include "api/own_rules.h"
#include "support/column_status.h"
#include "zelWeldDetect.h"

#include <gtest/gtest.h>

namespace weld {
namespace {

// A corner at column 200, row 100, and a table's stripe that begins so many columns on.
TEST(OwnCorner, isFoundBesideALongerStripeOfTheTable) {
  const struct {
    const char* name;
    int tableColumns;
    int flankColumns;  // on either side
    bool isFound;
  } rows[] = {{"no table", 0, 80, true},
              {"a short one", 60, 80, true},
              {"a longer one", 250, 80, true},
              {"a scrap of a corner", 250, 55, false}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    TStripe stripe(heapMemory());
    const cv::Mat image(400, 640, CV_8UC1, cv::Scalar(0));
    const auto add = [&](int x, double y) {
      stripe.points.emplace_back(static_cast<float>(x), static_cast<float>(y));
      stripe.sources.emplace_back();
    };
    for (int x = -row.flankColumns; x <= row.flankColumns; ++x) add(200 + x, 100.0 - 0.5 * std::abs(x));
    for (int x = 0; x < row.tableColumns; ++x) add(220 + row.flankColumns + x, 140.0);
    stripe.status.assign(640, TWeldPointStatus{kCentreFound});
    TWeldParams params;
    initWeldParameters(TWeldType::corner, params, TWeldPosType::centre);
    const TSeam seam = findOwnCorner(heapFrame(image, params), stripe, {});
    ASSERT_EQ(seam.isFound, row.isFound);
    if (!seam.isFound) continue;
    EXPECT_NEAR(seam.pos.x, 200.0, 0.5);
    EXPECT_NEAR(seam.pos.y, 100.0, 0.5);
  }
}

}  // namespace
}  // namespace weld
