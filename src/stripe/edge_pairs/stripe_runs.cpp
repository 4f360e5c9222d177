#include "stripe/edge_pairs/stripe_runs.h"

#include <algorithm>
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

bool isSameColumn(const TStripeCandidate& a, const TStripeCandidate& b) {
  return a.x == b.x;
}

cv::Point2f centreOf(const TStripeCandidate& candidate) {
  return {static_cast<float>(candidate.x), static_cast<float>(candidate.y)};
}

// The best run of candidates that ends at a candidate.
struct TStripeRun {
  std::int64_t score = 0;
  int previous = -1;  // candidate in the column before, -1 where the run begins
  bool isChosen = false;
};

// The first candidate of every column that has any, and the end of the last one.
TList<int> columnBegins(TView<TStripeCandidate> candidates, TMemory* memory) {
  const int count = static_cast<int>(candidates.size());
  TList<int> begin(memory);
  begin.reserve(candidates.size() + 1);
  for (int i = 0; i < count; ++i) {
    if (i == 0 || !isSameColumn(candidates[i - 1], candidates[i])) begin.push_back(i);
  }
  begin.push_back(count);
  return begin;
}

// Column c, counted over the columns that have any, owns the candidates begin[c] .. begin[c + 1] - 1.
class TRunSelector {
public:
  TRunSelector(TView<TStripeCandidate> columnCandidates, TView<int> columnBegin, TMemory* memory)
      : candidates(columnCandidates.data()), begin(columnBegin.data()), runs(columnCandidates.size(), memory) {}

  // Chooses the candidates of the runs inside the columns 0 .. end - 1.
  void choose(int end) {
    for (int column = 0; column < end; ++column) extendRuns(0, column);
    chooseAmong(0, end);
  }

  TPoints centres() const {
    TPoints points(chosen, runs.get_allocator().resource());
    auto point = points.begin();
    const TStripeCandidate* candidate = candidates;
    for (const TStripeRun& run : runs) {
      if (run.isChosen) *point++ = centreOf(*candidate);
      ++candidate;
    }
    return points;
  }

private:
  // Chooses inside the columns first .. end - 1, whose runs are worked out. The shorter rest is left to recursion,
  // so that its depth is a logarithm.
  void chooseAmong(int first, int end) {
    while (end - first > kMinRunColumns) {
      const auto [last, lastColumn] = longestRunEnd(first, end);
      const int columns = columnsOf(runs[last].score);
      if (columns <= kMinRunColumns) return;

      for (int candidate = last; candidate >= 0; candidate = runs[candidate].previous)
        runs[candidate].isChosen = true;
      chosen += columns;
      const int leftEnd = lastColumn + 1 - columns;
      const int rightFirst = lastColumn + 1;
      restartRuns(rightFirst, end);
      const bool isLeftShorter = leftEnd - first < end - rightFirst;
      if (isLeftShorter) {
        chooseAmong(first, leftEnd);
        first = rightFirst;
      } else {
        chooseAmong(rightFirst, end);
        end = leftEnd;
      }
    }
  }

  // The candidate at which the best run inside the columns ends, and its column.
  std::pair<int, int> longestRunEnd(int first, int end) const {
    std::pair<int, int> best;
    std::int64_t bestScore = 0;
    for (int column = first; column < end; ++column) {
      for (int c = begin[column]; c < begin[column + 1]; ++c) {
        if (runs[c].score <= bestScore) continue;
        bestScore = runs[c].score;
        best = {c, column};
      }
    }
    return best;
  }

  // Cuts the runs that come from columns before `first`. Behind a column in which that changes no score it changes
  // nothing.
  void restartRuns(int first, int end) {
    for (int column = first; column < end && extendRuns(first, column); ++column) {
    }
  }

  // Works out the best runs from column `first` on that end in the column, from those of the column before. True
  // when that changes any score.
  bool extendRuns(int first, int column) {
    const int previousBegin = begin[column > first ? column - 1 : column];
    bool isChanged = false;
    for (int c = begin[column]; c < begin[column + 1]; ++c) {
      const std::int64_t before = runs[c].score;
      isChanged = extendBestRun(c, previousBegin, begin[column]) != before || isChanged;
    }
    return isChanged;
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
  TList<TStripeRun> runs;  // one per candidate
  std::size_t chosen = 0;
};

// The usual case of one candidate per column, in which runs end only at steps that are too large.
TPoints selectSingleRuns(TView<TStripeCandidate> candidates, TMemory* memory) {
  TPoints points(candidates.size(), memory);
  const auto isStep = [](const TStripeCandidate& a, const TStripeCandidate& b) {
    return std::abs(b.y - a.y) >= kMaxStepPx;
  };
  auto pointsEnd = points.begin();
  for (auto first = candidates.begin(); first != candidates.end();) {
    const auto lastOfRun = std::adjacent_find(first, candidates.end(), isStep);
    const auto end = lastOfRun == candidates.end() ? lastOfRun : lastOfRun + 1;
    if (end - first > kMinRunColumns) pointsEnd = std::transform(first, end, pointsEnd, centreOf);
    first = end;
  }
  points.erase(pointsEnd, points.end());
  return points;
}

}  // namespace

TPoints selectStripeRuns(TView<TStripeCandidate> candidates, TMemory* memory) {
  const bool isSingle = std::adjacent_find(candidates.begin(), candidates.end(), isSameColumn) == candidates.end();
  if (isSingle) return selectSingleRuns(candidates, memory);

  const TList<int> begin = columnBegins(candidates, memory);
  TRunSelector selector(candidates, begin, memory);
  selector.choose(static_cast<int>(begin.size()) - 1);
  return selector.centres();
}

}  // namespace weld
