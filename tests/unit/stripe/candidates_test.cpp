#include "stripe/edge_pairs/candidates.h"

#include "plain_extraction.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

namespace weld {
namespace {

using TCandidates = std::vector<TStripeCandidate>;

// A candidate in each of the columns, both included.
struct TLine {
  int firstX, lastX, y;
  int widthPx = 8;
};

TCandidates candidatesOf(const std::vector<TLine>& lines) {
  TCandidates candidates;
  for (const TLine& line : lines) {
    for (int x = line.firstX; x <= line.lastX; ++x) candidates.push_back({x, line.y, line.widthPx});
  }
  return candidates;
}

TReducedStripe reduce(TCandidates candidates) {
  const cv::Mat image;
  const TWeldParams params;
  TList<TStripeCandidate> list(candidates.begin(), candidates.end());
  return reduceStripeCandidates(heapFrame(image, params), list);
}

TEST(ReduceStripeCandidates, RulesHoldOnBothSidesOfTheirBorders) {
  const struct {
    const char* name;
    std::vector<TLine> lines;
    std::size_t centres;
    double modalWidthPx = 8.0;
  } rows[] = {
      {"no candidates", {}, 0, 0},
      {"9 columns, each twice", {{1, 9, 100}, {1, 9, 200}}, 0, 0},
      {"10 columns", {{1, 10, 100}}, 0},
      {"9 columns of the usual width",
       {{0, 8, 100, 4}, {9, 16, 100, 20}, {17, 24, 100, 30}, {25, 32, 100, 40}},
       0,
       4},
      {"smallest of equally frequent widths", {{0, 19, 100, 6}, {20, 39, 100, 5}}, 40, 5},
      {"columns with two candidates do not tell the width",
       {{0, 9, 100, 5}, {10, 60, 100, 7}, {10, 60, 300, 7}},
       61,
       5},
      {"unless all have two", {{0, 40, 100, 7}, {0, 39, 300, 9}, {40, 40, 300, 7}}, 41, 7},
      {"run of 30 columns", {{0, 29, 100}}, 0},
      {"run of 31 columns", {{0, 30, 100}}, 31},
      {"step of 49 px over a gap", {{0, 19, 200}, {60, 79, 249}}, 40},
      {"step of -49 px over a gap", {{0, 19, 200}, {60, 79, 151}}, 40},
      {"step of 50 px over a gap", {{0, 19, 200}, {60, 79, 250}}, 0},
      {"column with another candidate is not skipped", {{0, 30, 200}, {31, 31, 600}, {32, 61, 200}}, 31},
      {"regions out of order", {{50, 120, 100}, {0, 70, 100}}, 121},
      {"pieces beside the longest run, 29 columns are too few",
       {{0, 99, 100}, {0, 60, 700}, {100, 399, 400}, {400, 431, 100}, {432, 460, 700}},
       432},
      // A jump is steeper than 4; the pieces between jumps must be longer than 10 px.
      {"slope 4 is no jump", {{0, 39, 100}, {40, 49, 104}}, 50},
      {"slope 4 over a gap is no jump", {{0, 39, 100}, {51, 60, 148}}, 50},
      {"steeper than 4 over a gap", {{0, 39, 100}, {51, 60, 149}}, 40},
      {"inner piece of 10 px", {{0, 39, 100}, {40, 49, 105}, {50, 89, 100}}, 80},
      {"inner piece of 11 px", {{0, 39, 100}, {40, 50, 105}, {51, 90, 100}}, 91},
      {"first piece of 10 px", {{0, 9, 100}, {10, 49, 140}}, 40},
      {"first piece of 11 px", {{0, 10, 100}, {11, 50, 140}}, 51},
      {"last piece ends at its own end: 10 px", {{0, 39, 100}, {40, 50, 140}}, 40},
      {"last piece of 11 px", {{0, 39, 100}, {40, 51, 140}}, 52},
  };
  for (const auto& row : rows) {
    const TReducedStripe stripe = reduce(candidatesOf(row.lines));
    EXPECT_EQ(stripe.centres.size(), row.centres) << row.name;
    EXPECT_EQ(stripe.modalWidthPx, row.modalWidthPx) << row.name;
  }
}

TEST(ReduceStripeCandidates, WidthBandFollowsTheMode) {
  const struct {
    int mode, widthPx;
    bool isKept;
  } rows[] = {{4, 3, true},    {4, 14, true},   {4, 15, false},  {12, 22, true}, {12, 23, false},
              {16, 5, false},  {16, 6, true},   {40, 19, false}, {40, 20, true}, {40, 60, true},
              {40, 61, false}, {80, 39, false}, {80, 40, true},  {80, 99, true}};
  for (const auto& row : rows) {
    const auto centres = reduce(candidatesOf({{0, 50, 100, row.mode}, {51, 51, 100, row.widthPx}})).centres;
    EXPECT_EQ(centres.size(), row.isKept ? 52U : 51U) << row.mode << " " << row.widthPx;
  }
}

// Up to four lines that wander, stop and start elsewhere, at times together; some columns are empty.
TCandidates drawLines(std::mt19937& random) {
  const auto below = [&](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); };
  std::vector<int> rows(1 + random() % 4);
  const int lifetime = 20 + below(100);
  const int widthPx = 3 + below(90);
  const int widths = 1 + below(40);
  TCandidates candidates;
  for (int x = 0; x < 400; ++x) {
    const bool isBreak = below(60) == 0;
    const bool isEmpty = below(40) == 0;
    for (int& row : rows) {
      row = isBreak || below(lifetime) == 0 ? below(900) : row + below(7) - 3;
      if (!isEmpty) candidates.push_back({x, row, std::min(widthPx + below(widths), 99)});
    }
  }
  return candidates;
}

TEST(ReduceStripeCandidates, AgreesWithThePlainFormOnDrawnLines) {
  std::mt19937 random(5);
  int framesWithCentres = 0;
  for (int round = 0; round < 400; ++round) {
    plain::TExtraction expected;
    expected.candidates = drawLines(random);
    const TReducedStripe stripe = reduce(expected.candidates);
    plain::reduceStripeCandidates(expected);
    EXPECT_EQ(toVector(stripe.centres), expected.centres) << "round " << round;
    EXPECT_EQ(stripe.modalWidthPx, expected.modalWidthPx) << "round " << round;
    framesWithCentres += expected.centres.empty() ? 0 : 1;
  }
  EXPECT_GT(framesWithCentres, 200);
}

}  // namespace
}  // namespace weld
