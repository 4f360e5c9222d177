#include "stripe/stripe_runs.h"

#include <cstdint>
#include <cstdlib>

namespace weld {
namespace {

constexpr int kMaxStepPx = 50;      // exclusive
constexpr int kMinRunColumns = 30;  // exclusive

// The best run that ends at a candidate.
struct TRun {
  int firstColumn = 0;
  int columns = 0;
  std::int64_t roughness = 0;  // sum of squared steps
  int previous = -1;           // candidate in the column before, -1 where the run begins
};

bool isBetter(const TRun& a, const TRun& b) {
  return a.columns != b.columns ? a.columns > b.columns : a.roughness < b.roughness;
}

class TRunSelector {
public:
  explicit TRunSelector(const TCandidateTable& candidateTable)
      : table(candidateTable), runs(candidateTable.candidates.size()) {}

  // Appends the runs inside the columns first .. end - 1, left to right.
  void select(int first, int end, std::vector<cv::Point2f>& centres) {
    if (end - first <= kMinRunColumns) return;
    const int last = longestRunEnd(first, end);
    const TRun longest = runs[last];
    if (longest.columns <= kMinRunColumns) return;

    std::vector<cv::Point2f> stripe(longest.columns);
    int candidate = last;
    for (auto centre = stripe.rbegin(); centre != stripe.rend(); ++centre) {
      *centre = {table.candidates[candidate].x, table.candidates[candidate].y};
      candidate = runs[candidate].previous;
    }
    select(first, longest.firstColumn, centres);
    centres.insert(centres.end(), stripe.begin(), stripe.end());
    select(longest.firstColumn + longest.columns, end, centres);
  }

private:
  // The candidate at which the best run inside the columns ends.
  int longestRunEnd(int first, int end) {
    int best = table.begin[first];
    for (int column = first; column < end; ++column) {
      for (int c = table.begin[column]; c < table.begin[column + 1]; ++c) {
        runs[c] = bestRunTo(c, column, first);
        if (isBetter(runs[c], runs[best])) best = c;
      }
    }
    return best;
  }

  // The best run that ends at a candidate of this column and begins at firstColumn or behind it.
  TRun bestRunTo(int candidate, int column, int firstColumn) const {
    TRun best{column, 1};
    if (column == firstColumn) return best;
    for (int p = table.begin[column - 1]; p < table.begin[column]; ++p) {
      const std::int64_t step = rowOf(candidate) - rowOf(p);
      if (std::abs(step) >= kMaxStepPx) continue;
      const TRun run{runs[p].firstColumn, runs[p].columns + 1, runs[p].roughness + step * step, p};
      if (isBetter(run, best)) best = run;
    }
    return best;
  }

  int rowOf(int candidate) const { return static_cast<int>(table.candidates[candidate].y); }

  const TCandidateTable& table;
  std::vector<TRun> runs;  // one per candidate
};

}  // namespace

std::vector<cv::Point2f> selectStripeRuns(const TCandidateTable& table) {
  std::vector<cv::Point2f> centres;
  TRunSelector(table).select(0, table.columns(), centres);
  return centres;
}

}  // namespace weld
