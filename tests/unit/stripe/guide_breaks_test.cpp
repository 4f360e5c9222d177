#include "stripe/guide_breaks.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <utility>
#include <vector>

namespace weld {
namespace {

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
