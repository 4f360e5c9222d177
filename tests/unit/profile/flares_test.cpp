#include "profile/flares.h"

#include <opencv2/imgproc.hpp>

#include <gtest/gtest.h>

namespace weld {
namespace {

// A stripe 9 rows thick along row 100, columns 50 to 449.
TEST(Flares, areRoundAndWhiteAndHideTheStripeUnderThem) {
  struct TRow {
    const char* name;
    cv::Rect body;  // an ellipse over the stripe
    int grey;
    bool isFlare;
  };
  const TRow rows[] = {{"round and white", {230, 80, 40, 40}, 255, true},
                       {"at the end", {430, 80, 40, 40}, 255, true},
                       {"dim", {230, 80, 40, 40}, 150, false},
                       {"hardly thicker", {230, 93, 14, 14}, 255, false},
                       {"flat", {200, 91, 90, 18}, 255, false},
                       {"wide", {150, 40, 140, 120}, 255, false}};
  for (const TRow& row : rows) {
    SCOPED_TRACE(row.name);
    cv::Mat image(200, 500, CV_8UC1, cv::Scalar(0));
    cv::rectangle(image, {50, 96, 400, 9}, 120, cv::FILLED);
    const cv::Point middle = (row.body.tl() + row.body.br()) / 2;
    cv::ellipse(image, middle, {row.body.width / 2, row.body.height / 2}, 0, 0, 360, row.grey, cv::FILLED);
    TStripe stripe(heapMemory());
    for (int x = 50; x < std::max(450, row.body.br().x); ++x) {
      stripe.points.emplace_back(static_cast<float>(x), 100.0F);
      stripe.sources.emplace_back();
    }
    const TWeldParams params;
    const TFrame frame = heapFrame(image, params);
    const TList<TFlare> flares = findFlares(frame, stripe.points);
    ASSERT_EQ(flares.size(), row.isFlare ? 1U : 0U);
    const std::optional<TStripe> rest = withoutFlares(frame, stripe, flares);
    ASSERT_EQ(rest.has_value(), row.isFlare);
    if (!row.isFlare) continue;
    EXPECT_NEAR(flares[0].middleX, middle.x, 2.0);
    EXPECT_NEAR(flares[0].radiusPx, 0.5 * row.body.width, 4.0);
    EXPECT_EQ(rest->points.size(), rest->sources.size());
    EXPECT_NEAR(static_cast<double>(stripe.points.size() - rest->points.size()), row.body.width, 8.0);
    EXPECT_NE(flareAt(flares, row.body.x - 7.0), nullptr);
    EXPECT_EQ(flareAt(flares, row.body.x - 18.0), nullptr);
  }
}

}  // namespace
}  // namespace weld
