#include "stripe/guide_breaks.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <random>
#include <utility>
#include <vector>

namespace weld {
namespace {

constexpr int kColumns = 1280;
constexpr int kMaxStretchPx = 150;

void sortByExchanges(std::vector<cv::Point>& points) {
  for (std::size_t i = 0; i < points.size(); ++i) {
    for (std::size_t j = i + 1; j < points.size(); ++j) {
      if (points[i].x > points[j].x) std::swap(points[i], points[j]);
    }
  }
}

std::vector<TGuideBreak> findBreaksByExchanges(std::vector<cv::Point> guide) {
  sortByExchanges(guide);
  std::vector<TGuideBreak> breaks{{guide.front(), 0}};
  for (std::size_t i = 1; i < guide.size(); ++i) {
    if (guide[i].x - breaks.back().point.x > kMaxStretchPx) breaks.push_back({guide[i], static_cast<int>(i)});
  }
  return breaks;
}

struct TGuideKind {
  const char* name;
  int columns;  // drawn from so many,
  int stepPx;   // so far apart
  int points;
};

// From many points per break to one.
constexpr TGuideKind kKinds[] = {{"one column", 1, 1, 30},       {"two columns", 2, 700, 60},
                                 {"a break each", 8, 160, 40},   {"few per column", 40, 30, 200},
                                 {"all columns", 1280, 1, 1500}, {"crowded", 9, 151, 700},
                                 {"neighbours", 300, 1, 300}};

std::vector<cv::Point> drawGuide(const TGuideKind& kind, std::mt19937& random) {
  std::vector<cv::Point> guide;
  for (int i = 0; i < kind.points; ++i) {
    const int column = static_cast<int>(random() % static_cast<unsigned>(kind.columns));
    guide.emplace_back(column * kind.stepPx, i);  // every point a row of its own
  }
  return guide;
}

bool isLeftOf(cv::Point a, cv::Point b) {
  return a.x < b.x;
}

// In any order, backwards, and out of order in one place only.
void arrange(std::vector<cv::Point>& guide, int round, std::mt19937& random) {
  if (round % 3 == 0) return;
  std::stable_sort(guide.begin(), guide.end(), isLeftOf);
  if (round % 3 == 1) {
    std::reverse(guide.begin(), guide.end());
  } else {
    std::swap(guide[random() % guide.size()], guide[random() % guide.size()]);
  }
}

TEST(FindGuideBreaks, AreThoseOfPlainExchanges) {
  std::mt19937 random(20);
  std::vector<TGuideBreak> breaks;
  for (const TGuideKind& kind : kKinds) {
    for (int round = 0; round < 30; ++round) {
      std::vector<cv::Point> guide = drawGuide(kind, random);
      arrange(guide, round, random);
      const std::vector<TGuideBreak> expected = findBreaksByExchanges(guide);
      findGuideBreaks(guide, kColumns, kMaxStretchPx, breaks);
      ASSERT_EQ(breaks.size(), expected.size()) << kind.name << ", round " << round;
      for (std::size_t i = 0; i < breaks.size(); ++i) {
        EXPECT_EQ(breaks[i].point, expected[i].point) << kind.name << ", round " << round << ", break " << i;
        EXPECT_EQ(breaks[i].index, expected[i].index) << kind.name << ", round " << round << ", break " << i;
      }
    }
  }
}

// 3, 2a, 2b, 1 comes out as 1, 2b, 2a, 3.
TEST(FindGuideBreaks, ExchangesTurnTheOrderInAColumn) {
  const std::vector<cv::Point> guide{{600, 0}, {400, 300}, {400, 700}, {100, 0}};
  std::vector<TGuideBreak> breaks;
  findGuideBreaks(guide, kColumns, kMaxStretchPx, breaks);
  EXPECT_EQ(breaks.at(1).point, cv::Point(400, 700));
}

}  // namespace
}  // namespace weld
