#include "stripe/stripe_runs.h"

#include <cstdint>
#include <cstdlib>
#include <utility>

namespace weld {
namespace {

constexpr int kMaxStepPx = 50;      // exclusive
constexpr int kMinRunColumns = 30;  // exclusive

// A run scores this much for every column, less its squared steps, which never add up to as much.
constexpr std::int64_t kColumnScore = std::int64_t{1} << 40;

int columnsOf(std::int64_t score) {
  return static_cast<int>((score + kColumnScore - 1) / kColumnScore);
}

// The best run that ends at a candidate.
struct TRun {
  std::int64_t score = kColumnScore;
  int previous = -1;  // candidate in the column before, -1 where the run begins
  bool isChosen = false;
};

class TRunSelector {
public:
  explicit TRunSelector(const TCandidateTable& table)
      : candidates(table.candidates.data()), begin(table.begin.data()), runs(table.candidates.size()) {}

  // Chooses the candidates of the runs inside the columns first .. end - 1.
  void choose(int first, int end) {
    if (end - first <= kMinRunColumns) return;
    const auto [last, lastColumn] = longestRunEnd(first, end);
    const int columns = columnsOf(runs[last].score);
    if (columns <= kMinRunColumns) return;

    for (int candidate = last; candidate >= 0; candidate = runs[candidate].previous)
      runs[candidate].isChosen = true;
    chosen += columns;
    choose(first, lastColumn + 1 - columns);
    choose(lastColumn + 1, end);
  }

  std::vector<cv::Point2f> centres() const {
    std::vector<cv::Point2f> points(chosen);
    auto point = points.begin();
    const TStripeCandidate* candidate = candidates;
    for (const TRun& run : runs) {
      if (run.isChosen) *point++ = {static_cast<float>(candidate->x), static_cast<float>(candidate->y)};
      ++candidate;
    }
    return points;
  }

private:
  // The candidate at which the best run inside the columns ends, and its column.
  std::pair<int, int> longestRunEnd(int first, int end) {
    std::pair<int, int> best;
    std::int64_t bestScore = 0;
    for (int column = first; column < end; ++column) {
      const int previousBegin = begin[column > first ? column - 1 : column];
      const int columnBegin = begin[column];
      for (int c = columnBegin; c < begin[column + 1]; ++c) {
        const std::int64_t score = extendBestRun(c, previousBegin, columnBegin);
        if (score <= bestScore) continue;
        bestScore = score;
        best = {c, column};
      }
    }
    return best;
  }

  // Lets the candidate continue the best run that ends at one of the candidates first .. last - 1. Returns
  // its score.
  std::int64_t extendBestRun(int candidate, int first, int last) {
    std::int64_t best = kColumnScore;
    int previous = -1;
    for (int p = first; p < last; ++p) {
      const std::int64_t step = candidates[candidate].y - candidates[p].y;
      const std::int64_t score = runs[p].score + kColumnScore - step * step;
      if (std::abs(step) >= kMaxStepPx || score <= best) continue;
      best = score;
      previous = p;
    }
    runs[candidate].score = best;
    runs[candidate].previous = previous;
    return best;
  }

  const TStripeCandidate* candidates;
  const int* begin;
  std::vector<TRun> runs;  // one per candidate
  std::size_t chosen = 0;
};

}  // namespace

std::vector<cv::Point2f> selectStripeRuns(const TCandidateTable& table) {
  TRunSelector selector(table);
  selector.choose(0, table.columns());
  return selector.centres();
}

}  // namespace weld
