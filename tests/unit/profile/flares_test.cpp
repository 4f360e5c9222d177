#include "profile/flare_end.h"

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

// A plate at row 100 that ends at column 300, and its table beside it.
TEST(FlareEnd, liesNextToWhereTheStripeBesideItBegins) {
  const struct {
    const char* name;
    int tableY;
    cv::Point flare;
    bool isHidden;
    bool isTold;
  } rows[] = {{"table in sight", 170, {292, 104}, true, true},
              {"table under the flare", 118, {292, 108}, true, false},
              {"flare beside the line", 170, {292, 30}, false, false}};
  for (const auto& row : rows) {
    cv::Mat image(260, 600, CV_8UC1, cv::Scalar(10));
    cv::rectangle(image, {50, 96, 251, 9}, 150, cv::FILLED);
    cv::rectangle(image, {301, row.tableY - 4, 250, 9}, 150, cv::FILLED);
    cv::Mat light(image.size(), CV_32FC1, cv::Scalar(0));
    cv::circle(light, row.flare, 27, 600.0, cv::FILLED);
    cv::GaussianBlur(light, light, {}, 8.0);
    light.convertTo(light, CV_8U);
    image = cv::max(image, light);
    TPoints plate(heapMemory());
    for (int x = 50; x < 262; ++x) plate.emplace_back(static_cast<float>(x), 100.0F);
    TPoints all = plate;
    for (int x = 322; x < 550; ++x) all.emplace_back(static_cast<float>(x), static_cast<float>(row.tableY));
    const TWeldParams params;
    const TFrame frame = heapFrame(image, params);
    const TEndOfPiece end{plate, true, 9.0};
    const std::optional<TFlare> flare = flareBeyond(frame, end, lineAtEnd(frame, end));
    ASSERT_EQ(flare.has_value(), row.isHidden) << row.name;
    if (!flare) continue;
    EXPECT_NEAR(flare->middleX, 292.0, 3.0) << row.name;
    const std::optional<double> told = endUnderFlare(frame, *flare, all, end);
    ASSERT_EQ(told.has_value(), row.isTold) << row.name;
    EXPECT_NEAR(told.value_or(300.0), 300.0, 0.6) << row.name;
  }
}

}  // namespace
}  // namespace weld
