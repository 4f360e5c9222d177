#include "contrast/path.h"

#include "support/kernels/kernels.h"

#include <algorithm>

namespace weld {

namespace {

constexpr TPathPrices kPrices{11, 4, 8};  // 1.4, 0.5 and 1 times the noise
constexpr int kErased = 12;               // columns on either side of a course

// A place on a course.
struct TPlace {
  int shear = 0;
  int column = 0;
};

}  // namespace

TPathSearch::TPathSearch(const TStrips& allStrips, TEvidence& allEvidence, TMemory* workingMemory)
    : strips(allStrips), evidence(allEvidence), memory(workingMemory), scores(workingMemory, allStrips.size()) {
  // The margins are never written again: every course may begin there.
  std::fill(scores.data(), scores.data() + scores.size(), short{0});
}

// From one strip to the next a course moves by its slope in steps of a column.
void TPathSearch::fill() {
  const int shears = strips.shears.count();
  const auto advance = kernels().contrastRows.advance;
  for (int shear = 0; shear < shears; ++shear) {
    const short* const first = evidenceOf(shear, 0);
    short* const row = scoresOf(shear, 0);
    for (int x = 0; x < strips.columns; ++x) row[x] = static_cast<short>(first[x] - kPrices.least);
  }
  for (int strip = 1; strip < strips.count; ++strip) {
    for (int shear = 0; shear < shears; ++shear) {
      const int move = strips.shears.first + shear;
      const TPathRows before{scoresOf(shear, strip - 1) - move,
                             shear > 0 ? scoresOf(shear - 1, strip - 1) - move : nullptr,
                             shear + 1 < shears ? scoresOf(shear + 1, strip - 1) - move : nullptr};
      advance(before, evidenceOf(shear, strip), kPrices, strips.columns, scoresOf(shear, strip));
    }
  }
}

// The way that each score came is the one that gives it again.
TSeamPath TPathSearch::traceBack(int shear, int strip, int column) const {
  TSeamPath path(memory);
  path.columns.reserve(static_cast<std::size_t>(strip) + 1);
  path.score = scoresOf(shear, strip)[column];
  TPlace at{shear, column};
  for (; strip >= 0; --strip) {
    path.columns.push_back(at.column);
    const int gained = evidenceOf(at.shear, strip)[at.column] - kPrices.least;
    const int before = scoresOf(at.shear, strip)[at.column] - gained;
    if (before <= 0 || strip == 0) break;
    const int from = at.column - (strips.shears.first + at.shear);
    const auto isWay = [&](int s, int x, int price) {
      return s >= 0 && s < strips.shears.count() && scoresOf(s, strip - 1)[x] - price == before;
    };
    if (isWay(at.shear, from, 0))
      at = {at.shear, from};
    else if (isWay(at.shear, from - 1, kPrices.slip))
      at = {at.shear, from - 1};
    else if (isWay(at.shear, from + 1, kPrices.slip))
      at = {at.shear, from + 1};
    else if (isWay(at.shear - 1, from, kPrices.turn))
      at = {at.shear - 1, from};
    else
      at = {at.shear + 1, from};
    path.turns += at.shear != shear ? 1 : 0;
    shear = at.shear;
  }
  path.firstStrip = std::max(strip, 0);
  std::reverse(path.columns.begin(), path.columns.end());
  return path;
}

TSeamPath TPathSearch::findBest() {
  if (strips.count == 0) return TSeamPath(memory);
  fill();
  int best = 0;
  const short* bestRow = nullptr;
  int bestShear = 0;
  int bestStrip = 0;
  for (int strip = 0; strip < strips.count; ++strip) {
    for (int shear = 0; shear < strips.shears.count(); ++shear) {
      const int highest = kernels().contrastRows.highest(scoresOf(shear, strip), strips.columns);
      if (highest <= best) continue;
      best = highest;
      bestRow = scoresOf(shear, strip);
      bestShear = shear;
      bestStrip = strip;
    }
  }
  if (bestRow == nullptr) return TSeamPath(memory);
  const auto column = std::find(bestRow, bestRow + strips.columns, static_cast<short>(best)) - bestRow;
  return traceBack(bestShear, bestStrip, static_cast<int>(column));
}

void TPathSearch::erase(const TSeamPath& path) {
  for (std::size_t i = 0; i < path.columns.size(); ++i) {
    const int strip = path.firstStrip + static_cast<int>(i);
    const int begin = std::max(0, path.columns[i] - kErased);
    const int end = std::min(strips.columns, path.columns[i] + kErased + 1);
    for (int shear = 0; shear < strips.shears.count(); ++shear)
      std::fill(evidenceOf(shear, strip) + begin, evidenceOf(shear, strip) + end, short{0});
  }
}

}  // namespace weld
