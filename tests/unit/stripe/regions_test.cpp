#include "stripe/regions.h"

#include "stripe/guide_breaks.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <random>
#include <utility>
#include <vector>

namespace weld {
namespace {

std::vector<cv::Rect> regionsOf(cv::Size imageSize, const std::vector<cv::Point>& guide, int bandPx) {
  return toVector(buildStripeRegions(imageSize, guide, bandPx, heapMemory()));
}

using TGuide = std::vector<cv::Point>;
using TRegions = std::vector<cv::Rect>;

// A horizontal guide with a point every `step` columns, and points behind it.
TGuide makeGuide(int firstX, int lastX, int y, int step = 1, const TGuide& more = {}) {
  TGuide guide;
  for (int x = firstX; x <= lastX; x += step) guide.emplace_back(x, y);
  guide.insert(guide.end(), more.begin(), more.end());
  return guide;
}

TEST(BuildStripeRegions, FollowTheGuideInStretches) {
  constexpr int kMin = std::numeric_limits<int>::min();
  constexpr int kMax = std::numeric_limits<int>::max();
  const TRegions whole{{0, 0, 1280, 1024}};
  TGuide sparse = makeGuide(0, 59, 500, 1, {{200, 500}});
  const TGuide atDensity = sparse;  // 60 steps over 200 px: exactly 0.3 points per px
  sparse.erase(sparse.begin() + 30);
  const struct {
    const char* name;
    TGuide guide;
    TRegions expected;
    int bandPx = 60;
  } rows[] = {
      {"no guide", {}, whole},
      {"nine points", makeGuide(100, 900, 500, 100), whole},
      {"ten points",
       makeGuide(100, 1000, 500, 100),
       {{100, 410, 200, 180}, {300, 410, 200, 180}, {500, 410, 200, 180}, {700, 410, 579, 180}}},
      {"point right of image", makeGuide(100, 500, 500, 1, {{1280, 500}}), whole},
      {"point in last column and row", makeGuide(1000, 1010, 1023, 1, {{1279, 1023}}), {{1000, 933, 279, 90}}},
      {"point below image", makeGuide(100, 500, 500, 1, {{500, 1024}}), whole},
      {"point left of image", makeGuide(100, 500, 500, 1, {{-1, 500}}), whole},
      {"point above image", makeGuide(100, 500, 500, 1, {{500, -1}}), whole},
      {"wildest points", makeGuide(100, 500, 500, 1, {{kMin, kMin}, {kMax, kMax}}), whole},
      {"spans 150 px", makeGuide(100, 250, 500), {}},
      // Two breaks end at the second one's column, and the rest of the guide is covered by nothing.
      {"spans 151 px", makeGuide(100, 251, 500), {{100, 440, 151, 120}}},
      {"two breaks with a rest", makeGuide(100, 400, 500), {{100, 440, 151, 120}}},
      // The last of three breaks moves to the last column; its stretch gets sparse by that.
      {"three breaks", makeGuide(100, 402, 500), {{100, 440, 151, 120}, {251, 410, 1028, 180}}},
      {"density at the limit", atDensity, {{0, 440, 200, 120}}},
      {"density below it", sparse, {{0, 410, 200, 180}}},
      {"unordered", makeGuide(0, 44, 500, 1, {{200, 500}, {150, 500}}), {{0, 410, 200, 180}}},
      {"band cut at the upper border", makeGuide(0, 151, 20), {{0, 0, 151, 80}}},
      {"band cut before the last row", makeGuide(0, 151, 1000), {{0, 940, 151, 83}}},
      {"band covers both ends", makeGuide(0, 150, 500, 1, {{151, 700}}), {{0, 440, 151, 320}}},
      {"no rows", makeGuide(0, 151, 0), {{}}, 0},
      {"largest band", makeGuide(0, 151, 500), {{0, 0, 151, 1023}}, kMax},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(regionsOf({1280, 1024}, row.guide, row.bandPx), row.expected) << row.name;
  }
  for (const int bandPx : {kMin, -100}) {
    const cv::Rect region = regionsOf({1280, 1024}, makeGuide(0, 151, 500), bandPx).at(0);
    EXPECT_EQ(region, region & whole[0]) << bandPx;
  }
  for (const cv::Size empty : {cv::Size(), cv::Size(0, 100)}) {
    EXPECT_TRUE(regionsOf(empty, makeGuide(0, 500, 0), 60).empty());
  }
}

constexpr int kMaxStretchPx = 150;

// The plain form: the guide is sorted by exchanges, which do not keep the order inside a column.
std::vector<TGuideBreak> findBreaksByExchanges(std::vector<cv::Point> guide) {
  for (std::size_t i = 0; i < guide.size(); ++i) {
    for (std::size_t j = i + 1; j < guide.size(); ++j) {
      if (guide[i].x > guide[j].x) std::swap(guide[i], guide[j]);
    }
  }
  std::vector<TGuideBreak> breaks{{guide.front(), 0}};
  for (std::size_t i = 1; i < guide.size(); ++i) {
    if (guide[i].x - breaks.back().point.x > kMaxStretchPx) breaks.push_back({guide[i], static_cast<int>(i)});
  }
  return breaks;
}

TEST(FindGuideBreaks, AreThoseOfPlainExchanges) {
  const struct {
    int columns, stepPx, points;  // drawn from so many columns, so far apart
  } kinds[] = {{1, 1, 30},      {2, 700, 60},  {8, 160, 40}, {40, 30, 200},
               {1280, 1, 1500}, {9, 151, 700}, {300, 1, 300}};
  std::mt19937 random(20);
  const auto below = [&](std::size_t n) { return static_cast<int>(random() % n); };
  for (const auto& kind : kinds) {
    for (int round = 0; round < 30; ++round) {
      std::vector<cv::Point> guide;  // every point in a row of its own
      for (int i = 0; i < kind.points; ++i) guide.emplace_back(below(kind.columns) * kind.stepPx, i);
      // In any order, backwards, and out of order in one place only.
      const auto isLeftOf = [](cv::Point a, cv::Point b) { return a.x < b.x; };
      if (round % 3 != 0) std::stable_sort(guide.begin(), guide.end(), isLeftOf);
      if (round % 3 == 1) std::reverse(guide.begin(), guide.end());
      if (round % 3 == 2) std::swap(guide[below(guide.size())], guide[below(guide.size())]);
      const std::vector<TGuideBreak> expected = findBreaksByExchanges(guide);
      const TList<TGuideBreak> breaks = findGuideBreaks(guide, 1280, kMaxStretchPx, heapMemory());
      ASSERT_EQ(breaks.size(), expected.size()) << kind.points << " points, round " << round;
      for (std::size_t i = 0; i < breaks.size(); ++i) {
        EXPECT_EQ(breaks[i].point, expected[i].point) << kind.points << " points, round " << round;
        EXPECT_EQ(breaks[i].index, expected[i].index) << kind.points << " points, round " << round;
      }
    }
  }
}

}  // namespace
}  // namespace weld
