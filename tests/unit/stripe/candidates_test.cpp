#include "stripe/edge_pairs/candidates.h"

#include "plain_extraction.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

namespace weld {
namespace {

using TCandidates = std::vector<TStripeCandidate>;

TReducedStripe reduce(TCandidates candidates) {
  const cv::Mat image;
  const TWeldParams params;
  TList<TStripeCandidate> list(candidates.begin(), candidates.end());
  return reduceStripeCandidates(heapFrame(image, params), list);
}

// Up to four lines that wander, stop and start elsewhere, at times together; some columns are empty. Steps and
// widths lie at the borders of the rules again and again, and so do the lengths of short frames.
TCandidates drawLines(std::mt19937& random) {
  const auto below = [&](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); };
  const auto oneOf = [&](std::initializer_list<int> list) {
    return list.begin()[below(static_cast<int>(list.size()))];
  };
  std::vector<int> rows(1 + random() % 4);
  const int columns = oneOf({400, 400, 12, 35, 90});
  const int lifetime = oneOf({20, 60, 120, 1000});
  const int emptiness = oneOf({5, 40, 1000});
  const int stretch = oneOf({3, 11, 30, 1000});  // columns without a jump
  const int widthPx = 3 + below(90);
  const int widths = 1 + below(40);
  TCandidates candidates;
  for (int x = 0; x < columns; ++x) {
    const bool isBreak = below(60) == 0;
    const bool isEmpty = below(emptiness) == 0;
    for (int& row : rows) {
      row = isBreak || below(lifetime) == 0 ? below(900) : row + below(3) - 1;
      if (x % stretch == 0) row += oneOf({4, -4, 5, -5, 8, -8, 49, -49, 50, -50});
      if (!isEmpty) candidates.push_back({x, row, std::min(widthPx + below(widths), 99)});
    }
  }
  return candidates;
}

TEST(ReduceStripeCandidates, AgreesWithThePlainFormOnDrawnLines) {
  std::mt19937 random(5);
  int framesWithCentres = 0;
  for (int round = 0; round < 1500; ++round) {
    plain::TExtraction expected;
    expected.candidates = drawLines(random);
    const TReducedStripe stripe = reduce(expected.candidates);
    plain::reduceStripeCandidates(expected);
    EXPECT_EQ(toVector(stripe.centres), expected.centres) << "round " << round;
    EXPECT_EQ(stripe.modalWidthPx, expected.modalWidthPx) << "round " << round;
    framesWithCentres += expected.centres.empty() ? 0 : 1;
  }
  EXPECT_GT(framesWithCentres, 500);
}

}  // namespace
}  // namespace weld
