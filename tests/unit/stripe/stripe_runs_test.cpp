#include "stripe/stripe_runs.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <random>
#include <vector>

namespace weld {
namespace {

using TColumns = std::vector<std::vector<int>>;  // rows of the candidates of every column

// The rules in their plain form: the runs of every rest are worked out anew.
class TPlainSelector {
public:
  explicit TPlainSelector(const TColumns& tableColumns) : columns(tableColumns) {}

  std::vector<cv::Point2f> run() {
    choose(0, static_cast<int>(columns.size()));
    std::sort(chosen.begin(), chosen.end(), [](cv::Point2f a, cv::Point2f b) { return a.x < b.x; });
    return chosen;
  }

private:
  struct TRun {
    int columns = 1;
    std::int64_t roughness = 0;
    int previous = -1;

    bool isBetterThan(const TRun& other) const {
      return columns != other.columns ? columns > other.columns : roughness < other.roughness;
    }
  };

  void choose(int first, int end) {
    if (first >= end) return;
    std::vector<std::vector<TRun>> runs(columns.size());
    int bestColumn = first;
    int best = -1;
    for (int c = first; c < end; ++c) {
      for (int i = 0; i < static_cast<int>(columns[c].size()); ++i) {
        runs[c].push_back(c > first ? bestTo(columns[c][i], columns[c - 1], runs[c - 1]) : TRun());
        if (best >= 0 && !runs[c][i].isBetterThan(runs[bestColumn][best])) continue;
        bestColumn = c;
        best = i;
      }
    }
    const int length = runs[bestColumn][best].columns;
    if (length <= 30) return;
    for (int c = bestColumn, i = best; i >= 0; i = runs[c--][i].previous) {
      chosen.emplace_back(static_cast<float>(c), static_cast<float>(columns[c][i]));
    }
    choose(first, bestColumn + 1 - length);
    choose(bestColumn + 1, end);
  }

  static TRun bestTo(int row, const std::vector<int>& rowsBefore, const std::vector<TRun>& runsBefore) {
    TRun best;
    for (int p = 0; p < static_cast<int>(rowsBefore.size()); ++p) {
      const std::int64_t step = row - rowsBefore[p];
      const TRun longer{runsBefore[p].columns + 1, runsBefore[p].roughness + step * step, p};
      if (std::abs(step) < 50 && longer.isBetterThan(best)) best = longer;
    }
    return best;
  }

  const TColumns& columns;
  std::vector<cv::Point2f> chosen;
};

// Up to four lines that wander, stop and start elsewhere, at times together.
TColumns drawLines(std::mt19937& random) {
  const auto below = [&](unsigned n) { return static_cast<int>(random() % n); };
  TColumns columns(400);
  std::vector<int> rows(1 + random() % 4);
  const int lifetime = 20 + below(100);
  for (std::vector<int>& column : columns) {
    const bool isBreak = below(60) == 0;
    for (int& row : rows) row = isBreak || below(lifetime) == 0 ? below(900) : row + below(7) - 3;
    column = rows;
    std::sort(column.begin(), column.end());
  }
  return columns;
}

TEST(SelectStripeRuns, areThoseOfThePlainRules) {
  std::mt19937 random(5);
  TStripeScratch scratch;
  for (int round = 0; round < 200; ++round) {
    const TColumns columns = drawLines(random);
    std::vector<TStripeCandidate> candidates;
    for (int c = 0; c < static_cast<int>(columns.size()); ++c) {
      for (const int row : columns[c]) candidates.push_back({c, row, 10});
    }
    const std::vector<cv::Point2f>& centres = selectStripeRuns(candidates, scratch);
    EXPECT_EQ(centres, TPlainSelector(columns).run()) << "round " << round;
  }
}

}  // namespace
}  // namespace weld
