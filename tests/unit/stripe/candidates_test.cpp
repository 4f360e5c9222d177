#include "stripe/candidates.h"
#include "stripe/stripe_runs.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <limits>
#include <random>
#include <utility>
#include <vector>

namespace weld {
namespace {

using TCandidates = std::vector<TStripeCandidate>;

TStripeCandidate candidate(int x, int y, int width = 8) {
  return {x, y, width};
}

void addLine(TCandidates& candidates, int firstX, int lastX, const std::function<int(int)>& row, int width = 8) {
  for (int x = firstX; x <= lastX; ++x) candidates.push_back(candidate(x, row(x), width));
}

std::function<int(int)> level(int y) {
  return [y](int) { return y; };
}

TStripeScratch scratch;

TReducedStripe reduce(TCandidates candidates) {
  return reduceStripeCandidates(candidates, scratch);
}

std::vector<cv::Point2f> centresOf(const TCandidates& candidates) {
  return reduce(candidates).centres;
}

// How many of the centres lie on the line.
long countOn(const std::vector<cv::Point2f>& centres, const std::function<int(int)>& row) {
  return std::count_if(centres.begin(), centres.end(),
                       [&](cv::Point2f c) { return c.y == static_cast<float>(row(static_cast<int>(c.x))); });
}

TEST(ReduceStripeCandidates, NeedsTenColumns) {
  for (const int columns : {9, 10}) {
    TCandidates candidates;
    addLine(candidates, 1, columns, level(100));
    EXPECT_EQ(reduce(candidates).modalWidthPx, columns == 10 ? 8.0 : 0.0);
  }
  TCandidates twiceNine;
  addLine(twiceNine, 1, 9, level(100));
  addLine(twiceNine, 1, 9, level(200));
  EXPECT_EQ(reduce(twiceNine).modalWidthPx, 0.0);
  EXPECT_TRUE(centresOf({}).empty());
}

TEST(ReduceStripeCandidates, ModalWidthCountsColumnsWithOneCandidate) {
  TCandidates candidates;
  addLine(candidates, 0, 9, level(100), 6);
  addLine(candidates, 10, 19, level(100), 5);
  EXPECT_EQ(reduce(candidates).modalWidthPx, 5.0) << "the smallest of equally frequent widths";

  addLine(candidates, 20, 60, level(100), 7);
  addLine(candidates, 20, 60, level(300), 7);
  EXPECT_EQ(reduce(candidates).modalWidthPx, 5.0) << "columns with two do not count";

  TCandidates allDouble;
  addLine(allDouble, 0, 40, level(100), 7);
  addLine(allDouble, 0, 39, level(300), 9);
  addLine(allDouble, 40, 40, level(300), 7);
  EXPECT_EQ(reduce(allDouble).modalWidthPx, 7.0) << "all count when no column has just one";
}

TEST(ReduceStripeCandidates, WidthBandFollowsTheMode) {
  struct TCase {
    int mode, width;
    bool isKept;
  };
  for (const TCase& c : std::vector<TCase>{{4, 3, true},
                                           {4, 14, true},
                                           {4, 15, false},
                                           {12, 3, true},
                                           {12, 22, true},
                                           {12, 23, false},
                                           {16, 5, false},
                                           {16, 6, true},
                                           {40, 19, false},
                                           {40, 20, true},
                                           {40, 60, true},
                                           {40, 61, false},
                                           {80, 39, false},
                                           {80, 40, true},
                                           {80, 99, true}}) {
    TCandidates candidates;
    addLine(candidates, 0, 50, level(100), c.mode);
    candidates.push_back(candidate(51, 100, c.width));
    EXPECT_EQ(centresOf(candidates).size(), c.isKept ? 52U : 51U) << c.mode << " " << c.width;
  }
}

TEST(ReduceStripeCandidates, FewerThanTenColumnsOfFittingWidthGiveOnlyTheWidth) {
  TCandidates candidates;
  addLine(candidates, 0, 8, level(100), 4);
  for (int x = 9; x < 60; ++x) candidates.push_back(candidate(x, 100, 20 + x));
  const TReducedStripe stripe = reduce(candidates);
  EXPECT_TRUE(stripe.centres.empty());
  EXPECT_EQ(stripe.modalWidthPx, 4.0);
}

TEST(ReduceStripeCandidates, KeepsRunsOfMoreThan30Columns) {
  for (const int columns : {30, 31}) {
    TCandidates candidates;
    addLine(candidates, 0, columns - 1, level(100));
    EXPECT_EQ(centresOf(candidates).size(), columns == 31 ? 31U : 0U);
  }
}

TEST(ReduceStripeCandidates, OnlyAStepOf50PxBreaksARun) {
  // Two pieces too short to stand alone: they stay only as one run. A missing stretch does not part them,
  // and puts the step of 49 px beyond the jump filter.
  for (const int step : {49, -49, 50, -50}) {
    TCandidates candidates;
    addLine(candidates, 0, 19, level(200));
    addLine(candidates, 60, 79, level(200 + step));
    EXPECT_EQ(centresOf(candidates).size(), std::abs(step) < 50 ? 40U : 0U) << step;
  }
}

TEST(ReduceStripeCandidates, AColumnWithCandidatesCannotBeSkipped) {
  TCandidates candidates;
  addLine(candidates, 0, 30, level(200));
  candidates.push_back(candidate(31, 600));
  addLine(candidates, 32, 61, level(200));
  EXPECT_EQ(centresOf(candidates).size(), 31U);
}

TEST(ReduceStripeCandidates, OverlappingAndUnorderedRegionsComeOutLeftToRight) {
  TCandidates candidates;
  addLine(candidates, 50, 120, level(100));
  addLine(candidates, 0, 70, level(100));
  const std::vector<cv::Point2f> centres = centresOf(candidates);
  ASSERT_EQ(centres.size(), 121U);
  for (std::size_t i = 0; i < centres.size(); ++i) EXPECT_EQ(centres[i].x, static_cast<float>(i));
}

TEST(ReduceStripeCandidates, ParallelGhostDoesNotCaptureTheStripe) {
  const auto stripe = [](int x) { return 400 + x / 20; };
  for (const int offset : {-70, -40, 40, 70}) {
    const auto ghost = [&](int x) { return stripe(x) + offset; };
    TCandidates candidates;
    addLine(candidates, 0, 999, stripe);
    addLine(candidates, 0, 700, ghost);
    const std::vector<cv::Point2f> centres = centresOf(candidates);
    EXPECT_EQ(centres.size(), 1000U);
    // From a ghost nearer than 50 px a run as long as the stripe needs one step, which is rougher.
    EXPECT_EQ(countOn(centres, stripe), 1000) << offset;
  }
}

TEST(ReduceStripeCandidates, CrossingGhostsDoNotCaptureTheStripe) {
  const auto stripe = level(400);
  const auto steep = [](int x) { return 2 * x - 400; };  // crosses at 400
  const auto falling = [](int x) { return 1000 - x; };   // crosses at 600
  TCandidates candidates;
  addLine(candidates, 0, 999, stripe);
  addLine(candidates, 250, 550, steep);
  addLine(candidates, 300, 900, falling);
  const std::vector<cv::Point2f> centres = centresOf(candidates);
  EXPECT_EQ(centres.size(), 1000U);
  EXPECT_EQ(countOn(centres, stripe), 1000);
}

TEST(ReduceStripeCandidates, LongestRunCountsNotTheFirstOne) {
  // A choice from the left would follow the upper line, which ends, and lose the stripe's left half.
  TCandidates candidates;
  addLine(candidates, 0, 500, level(300));
  addLine(candidates, 0, 999, level(500));
  EXPECT_EQ(countOn(centresOf(candidates), level(500)), 1000);
}

TEST(ReduceStripeCandidates, SpatterBesideTheStripeDoesNotCaptureIt) {
  std::mt19937 random(7);
  TCandidates candidates;
  const auto stripe = [](int x) { return 500 + (x % 3); };
  addLine(candidates, 0, 999, stripe);
  for (int blob = 0; blob < 60; ++blob) {
    const int x = static_cast<int>(random() % 970);
    const int y = 420 + static_cast<int>(random() % 160);
    if (std::abs(y - 501) > 4) addLine(candidates, x, x + 9, level(y));
  }
  const std::vector<cv::Point2f> centres = centresOf(candidates);
  EXPECT_EQ(centres.size(), 1000U);
  EXPECT_EQ(countOn(centres, stripe), 1000);
}

TEST(ReduceStripeCandidates, PiecesOnBothSidesOfTheLongestRunAreFound) {
  TCandidates candidates;
  addLine(candidates, 0, 99, level(100));
  addLine(candidates, 0, 60, level(700));  // ghost beside the left piece
  addLine(candidates, 100, 399, level(400));
  addLine(candidates, 400, 431, level(100));
  addLine(candidates, 432, 460, level(700));  // 29 columns are too few
  const std::vector<cv::Point2f> centres = centresOf(candidates);
  ASSERT_EQ(centres.size(), 432U);
  EXPECT_EQ(countOn(centres, level(100)), 132);
  EXPECT_EQ(countOn(centres, level(400)), 300);
}

// Against trying all runs, on tables small enough for that.
TEST(SelectStripeRuns, RunIsTheSmoothestOfAll) {
  std::mt19937 random(3);
  for (int round = 0; round < 50; ++round) {
    // 31 columns, some of them with two or three candidates, all of which connect.
    std::vector<std::vector<int>> rows(31, {200});
    for (int column = 10; column < 18; ++column) {
      rows[column] = {180 + static_cast<int>(random() % 10), 195 + static_cast<int>(random() % 10)};
      if (random() % 2 == 0) rows[column].push_back(210 + static_cast<int>(random() % 10));
    }
    TCandidates candidates;
    for (int column = 0; column < 31; ++column) {
      for (const int row : rows[column]) candidates.push_back(candidate(column, row));
    }
    int least = std::numeric_limits<int>::max();
    const std::function<void(int, int, int)> tryAll = [&](int column, int previous, int roughness) {
      if (column == 31) {
        least = std::min(least, roughness);
        return;
      }
      for (const int row : rows[column]) tryAll(column + 1, row, roughness + (row - previous) * (row - previous));
    };
    tryAll(1, 200, 0);

    const std::vector<cv::Point2f> centres = selectStripeRuns(candidates, scratch);
    ASSERT_EQ(centres.size(), 31U);
    int roughness = 0;
    for (std::size_t i = 1; i < centres.size(); ++i) {
      const int step = static_cast<int>(centres[i].y - centres[i - 1].y);
      roughness += step * step;
    }
    EXPECT_EQ(roughness, least);
  }
}

std::vector<cv::Point2f> makeCentres(const std::vector<std::pair<int, int>>& pieces) {
  // Pieces of (columns, row), one behind the other.
  std::vector<cv::Point2f> centres;
  for (const auto& [columns, row] : pieces) {
    for (int i = 0; i < columns; ++i) {
      centres.emplace_back(static_cast<float>(centres.size()), static_cast<float>(row));
    }
  }
  return centres;
}

TEST(DropShortPieces, DropsPiecesOfTenPxOrLessBetweenJumps) {
  struct TCase {
    std::vector<std::pair<int, int>> pieces, expected;
  };
  for (const TCase& c :
       std::vector<TCase>{{{{40, 100}}, {{40, 100}}},
                          {{{40, 100}, {40, 104}}, {{40, 100}, {40, 104}}},  // 4 px in one column is no jump
                          {{{40, 100}, {10, 105}, {40, 100}}, {{40, 100}, {0, 105}, {40, 100}}},
                          {{{40, 100}, {11, 105}, {40, 100}}, {{40, 100}, {11, 105}, {40, 100}}},
                          {{{10, 100}, {40, 200}}, {{0, 100}, {40, 200}}},
                          {{{11, 100}, {40, 200}}, {{11, 100}, {40, 200}}},
                          // The last piece ends at its own last point, so that it needs one point more.
                          {{{40, 100}, {11, 200}}, {{40, 100}, {0, 200}}},
                          {{{40, 100}, {12, 200}}, {{40, 100}, {12, 200}}},
                          {{{40, 100}, {1, 200}}, {{40, 100}, {0, 200}}},
                          {{{5, 100}, {4, 200}}, {{5, 100}, {4, 200}}},  // fewer than 10 centres stay as they are
                          {{{5, 100}, {5, 200}}, {}}}) {
    std::vector<float> expectedRows;
    for (const auto& [columns, row] : c.expected)
      expectedRows.insert(expectedRows.end(), columns, static_cast<float>(row));
    std::vector<float> rows;
    for (const cv::Point2f centre : dropShortPieces(makeCentres(c.pieces))) rows.push_back(centre.y);
    EXPECT_EQ(rows, expectedRows) << testing::PrintToString(c.pieces);
  }
}

TEST(DropShortPieces, JumpIsMeasuredAgainstTheStepInX) {
  // 160 px over 40 columns is no jump, 161 px is one.
  for (const int step : {160, 161}) {
    std::vector<cv::Point2f> centres;
    for (int x = 0; x < 8; ++x) centres.emplace_back(static_cast<float>(x), 100.0F);
    for (int x = 47; x < 55; ++x) centres.emplace_back(static_cast<float>(x), static_cast<float>(100 + step));
    // Both pieces reach over no more than 10 px once they are parted, but the first is measured across the gap.
    EXPECT_EQ(dropShortPieces(centres).size(), step == 160 ? 16U : 8U);
  }
}

}  // namespace
}  // namespace weld
