#include "contrast/candidates.h"

#include "contrast/line_record.h"

#include <algorithm>

namespace weld {

namespace {

constexpr int kLeastStrips = 6;  // of a path
constexpr int kPathsPerFamily = 2;

cv::Point2f pointOf(const TCandidate& candidate, std::size_t i) {
  const int row = (candidate.path.firstStrip + static_cast<int>(i)) * kStripStep + kStripRows / 2;
  const TLogField& field = candidate.where->field;
  return toImage(field.begin + 2 * row, 2 * (field.starts[row] + candidate.path.columns[i]),
                 candidate.where->family.isFlat);
}

bool liesOn(const TCandidate& a, const TCandidate& b) {
  const cv::Point2f middle = pointOf(a, a.path.columns.size() / 2);
  for (std::size_t i = 0; i < b.path.columns.size(); ++i) {
    if (cv::norm(middle - pointOf(b, i)) < kSameLinePx) return true;
  }
  return false;
}

bool isBetter(const TCandidate& a, const TCandidate& b) {
  return a.path.score > b.path.score;
}

}  // namespace

TList<TCandidate> findPaths(const TList<TSearched>& searched, TTrait trait, TMemory* memory) {
  TList<TCandidate> found(memory);
  found.reserve(searched.size() * kPathsPerFamily);
  for (const TSearched& where : searched) {
    TEvidence evidence(where.strips, memory);
    weighEvidence(where.strips, trait, memory, evidence);
    TPathSearch search(where.strips, evidence, memory);
    for (int n = 0; n < kPathsPerFamily; ++n) {
      TCandidate next{&where, search.findBest()};
      if (static_cast<int>(next.path.columns.size()) < kLeastStrips) break;
      search.erase(next.path);
      const auto place = std::upper_bound(found.begin(), found.end(), next, isBetter);
      found.insert(place, std::move(next));
    }
  }
  return found;
}

bool isSameLine(const TCandidate& a, const TCandidate& b) {
  return liesOn(a, b) || liesOn(b, a);
}

}  // namespace weld
