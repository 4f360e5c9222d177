#include "api/own_rules.h"
#include "support/column_status.h"
#include "zelWeldDetect.h"

#include <gtest/gtest.h>

namespace weld {
namespace {

// A corner at column 200, row 100, and a table's stripe right of it, lower by its own height.
TEST(OwnCorner, isFoundBesideALongerStripeOfTheTable) {
  const struct {
    const char* name;
    int tableColumns;
    int rightColumns;  // of the flank
    bool isFound;
  } rows[] = {{"no table", 0, 45, true}, {"a long one", 200, 45, true}, {"no right flank", 200, 0, false}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    TStripe stripe(heapMemory());
    const cv::Mat image(400, 640, CV_8UC1, cv::Scalar(0));
    const auto add = [&](int x, double y) {
      stripe.points.emplace_back(static_cast<float>(x), static_cast<float>(y));
      stripe.sources.emplace_back();
    };
    for (int x = -100; x <= row.rightColumns; ++x) add(200 + x, 100.0 - 0.5 * std::abs(x));
    for (int x = 0; x < row.tableColumns; ++x) add(265 + x, 145.0);
    stripe.status.assign(640, TWeldPointStatus{kCentreFound});
    TWeldParams params;
    initWeldParameters(TWeldType::corner, params, TWeldPosType::centre);
    params.angleRange2Max = -10.0;
    const TSeam seam = findOwnCorner(heapFrame(image, params), stripe, {});
    ASSERT_EQ(seam.isFound, row.isFound);
    if (!seam.isFound) continue;
    EXPECT_NEAR(seam.pos.x, 200.0, 0.5);
    EXPECT_NEAR(seam.pos.y, 100.0, 0.5);
  }
}

}  // namespace
}  // namespace weld
