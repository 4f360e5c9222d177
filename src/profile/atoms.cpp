#include "profile/atoms.h"

#include <algorithm>
#include <limits>

namespace weld {

namespace {

constexpr double kBlockPx = 8.0;
constexpr double kMostBlocks = 160.0;
constexpr double kWideHolePx = 8.0;         // ends a block
constexpr double kMergeCost = 9.0;          // a merge below it needs no reason
constexpr double kBreakCost = 4.0;          // of a merge across a break
constexpr double kHoleCostPerColumn = 0.2;  // and for the columns without centres there
constexpr std::size_t kManyBlocks = 40;
constexpr int kFarthestShift = 8;  // centres by which a border may move in the end
constexpr double kNever = std::numeric_limits<double>::infinity();

struct TBlock {
  TSpan span;
  double residual;  // squared distances from the line of its own, px^2
  // cppcheck-suppress unusedStructMember ; read in loops over blocks
  double rise;  // cost of the merge with its right neighbour
  double breakCost;
};

class TMerger {
public:
  TMerger(const TCentres& c, const TMoments& m, double noisePx, std::pmr::memory_resource* memory)
      : centres(c), moments(m), invVariance(1.0 / (noisePx * noisePx)), blocks(memory) {}

  TList<int> run(std::pmr::memory_resource* memory) {
    cutBlocks();
    for (std::size_t b = 0; b < blocks.size(); ++b) rate(b);
    mergeBlocks();
    TList<int> borders(memory);
    borders.reserve(blocks.size() + 1);
    for (const TBlock& block : blocks) borders.push_back(block.span.first);
    if (!blocks.empty()) borders.push_back(blocks.back().span.last);
    for (std::size_t b = 1; b + 1 < borders.size(); ++b) {
      if (centres.isBreak[static_cast<std::size_t>(borders[b])] == 0) shift(borders, b);
    }
    return borders;
  }

private:
  void cutBlocks() {
    const int count = centres.count();
    if (count < 2) return;
    const double widthPx = std::max(kBlockPx, (centres.at(count - 1) - centres.at(0)) / kMostBlocks);
    blocks.reserve(static_cast<std::size_t>(kMostBlocks) * 2);
    int first = 0;
    for (int i = 1; i <= count; ++i) {
      const bool ends = i == count || centres.at(i) - centres.at(first) >= widthPx ||
                        centres.isBreak[static_cast<std::size_t>(i)] != 0 || centres.holeBefore(i) >= kWideHolePx;
      if (!ends) continue;
      const TSpan span{first, i};
      const double hole = centres.holeBefore(first);
      const bool isBroken = centres.isBreak[static_cast<std::size_t>(first)] != 0 || hole >= kWideHolePx;
      blocks.push_back(
          {span, moments.residualOf(span), kNever, isBroken ? kBreakCost + kHoleCostPerColumn * hole : 0.0});
      first = i;
    }
  }

  void rate(std::size_t b) {
    if (b + 1 >= blocks.size()) {
      blocks[b].rise = kNever;
      return;
    }
    const TBlock& right = blocks[b + 1];
    const double joined = moments.residualOf({blocks[b].span.first, right.span.last});
    blocks[b].rise = (joined - blocks[b].residual - right.residual) * invVariance + right.breakCost;
  }

  // Whatever is cheaper to merge than both its neighbours is merged at once as long as there are many blocks, and
  // then the cheapest alone. Ties go to the left.
  void mergeBlocks() {
    while (blocks.size() > kManyBlocks && mergeCheapOnes()) {
    }
    while (blocks.size() > 1) {
      std::size_t best = 0;
      for (std::size_t b = 1; b + 1 < blocks.size(); ++b) {
        if (blocks[b].rise < blocks[best].rise) best = b;
      }
      if (blocks.size() <= static_cast<std::size_t>(kMostAtoms) && !(blocks[best].rise < kMergeCost)) return;
      join(blocks[best], blocks[best + 1]);
      blocks.erase(blocks.begin() + static_cast<std::ptrdiff_t>(best) + 1);
      rate(best);
      if (best > 0) rate(best - 1);
    }
  }

  void join(TBlock& left, const TBlock& right) const {
    left.span.last = right.span.last;
    left.residual = moments.residualOf(left.span);
  }

  // False where none is below the cost of a merge that needs no reason.
  bool mergeCheapOnes() {
    std::size_t kept = 0;
    bool hasMerged = false;
    double before = kNever;  // rise of the block to the left
    for (std::size_t b = 0; b < blocks.size(); ++b, ++kept) {
      const double rise = blocks[b].rise;
      const bool isLeast =
          rise < kMergeCost && rise <= before && (b + 1 >= blocks.size() || rise < blocks[b + 1].rise);
      before = rise;
      blocks[kept] = blocks[b];
      if (!isLeast) continue;
      join(blocks[kept], blocks[++b]);
      before = blocks[b].rise;
      hasMerged = true;
    }
    blocks.erase(blocks.begin() + static_cast<std::ptrdiff_t>(kept), blocks.end());
    for (std::size_t b = 0; b < blocks.size(); ++b) rate(b);
    return hasMerged;
  }

  double split(int first, int border, int last) const {
    return moments.residualOf({first, border}) + moments.residualOf({border, last});
  }

  // Moves a border to where the two atoms are straightest, in halving steps.
  void shift(TList<int>& borders, std::size_t b) const {
    const int first = borders[b - 1];
    const int last = borders[b + 1];
    double best = split(first, borders[b], last);
    for (int step = kFarthestShift / 2; step >= 1; step /= 2) {
      for (const int border : {borders[b] - step, borders[b] + step}) {
        if (border <= first + 1 || border >= last - 1) continue;
        const double residual = split(first, border, last);
        if (residual < best) {
          best = residual;
          borders[b] = border;
        }
      }
    }
  }

  const TCentres& centres;
  const TMoments& moments;
  double invVariance;
  TList<TBlock> blocks;
};

}  // namespace

TList<int> cutAtoms(const TCentres& centres, const TMoments& moments, double noisePx,
                    std::pmr::memory_resource* memory) {
  return TMerger(centres, moments, noisePx, memory).run(memory);
}

}  // namespace weld
