#include "geometry/point_boxes.h"

#include <algorithm>

namespace weld {

struct TPointBoxes::TSearch {
  const TChord& chord;
  std::size_t first;
  std::size_t last;
  double most;         // of the points looked at in their order
  double least = 0.0;  // that the farthest point has
  std::optional<std::size_t> found;

  bool mayHold(double area) const { return area > most && area >= least; }
};

void TPointBoxes::TBox::add(cv::Point2f p) {
  low = {std::min(low.x, p.x), std::min(low.y, p.y)};
  high = {std::max(high.x, p.x), std::max(high.y, p.y)};
}

TPointBoxes::TPointBoxes(TPointView stripePoints, TMemory* memory)
    : points(stripePoints), boxes(memory), levelBegins(memory) {}

void TPointBoxes::drawBoxes() {
  levelBegins.reserve(32);
  boxes.reserve(2 * points.size() / kLeafPoints + 32);
  levelBegins.push_back(0);
  for (std::size_t i = 0; i < points.size(); ++i) {
    if (i % kLeafPoints == 0) boxes.push_back({points[i], points[i]});
    boxes.back().add(points[i]);
  }
  for (std::size_t begin = 0; boxes.size() - begin > 1;) {
    const std::size_t end = boxes.size();
    levelBegins.push_back(end);
    for (std::size_t i = begin; i < end; ++i) {
      const TBox child = boxes[i];
      if ((i - begin) % kFanOut == 0) boxes.push_back(child);
      boxes.back().add(child.low);
      boxes.back().add(child.high);
    }
    begin = end;
  }
}

std::size_t TPointBoxes::boxPoints(std::size_t level) const {
  std::size_t count = kLeafPoints;
  for (; level > 0; --level) count *= kFanOut;
  return count;
}

double TPointBoxes::mostOf(const TChord& chord, const TBox& box) {
  return std::max({chord.doubleArea(box.low), chord.doubleArea(box.high),
                   chord.doubleArea({box.low.x, box.high.y}), chord.doubleArea({box.high.x, box.low.y})});
}

// A leaf that is likely to hold the farthest point: down from the top, always into the box with the most.
std::size_t TPointBoxes::leafNear(const TSearch& search) {
  std::size_t chosen = 0;
  for (std::size_t level = levelBegins.size() - 1; level-- > 0;) {
    const std::size_t size = boxPoints(level);
    const std::size_t begin = std::max(chosen * kFanOut, search.first / size);
    const std::size_t end = std::min((chosen + 1) * kFanOut, (search.last - 1) / size + 1);
    double most = -1.0;
    for (std::size_t i = begin; i < end; ++i, ++looked) {
      const double area = mostOf(search.chord, box(level, i));
      if (area <= most) continue;
      most = area;
      chosen = i;
    }
  }
  return chosen;
}

void TPointBoxes::visit(TSearch& search, std::size_t level, std::size_t i) {
  ++looked;
  if (!search.mayHold(mostOf(search.chord, box(level, i)))) return;
  const std::size_t size = level > 0 ? boxPoints(level - 1) : 1;
  const std::size_t fan = level > 0 ? kFanOut : kLeafPoints;
  const std::size_t begin = std::max(i * fan, search.first / size);
  const std::size_t end = std::min((i + 1) * fan, (search.last - 1) / size + 1);
  for (std::size_t child = begin; child < end; ++child) {
    if (level > 0) {
      visit(search, level - 1, child);
      continue;
    }
    ++looked;
    const double area = search.chord.doubleArea(points[child]);
    if (area <= search.most) continue;
    search.most = area;
    search.found = child;
  }
}

void TPointBoxes::lookAtAll(TSearch& search) {
  looked += search.last - search.first;
  for (std::size_t i = search.first; i < search.last; ++i) {
    const double area = search.chord.doubleArea(points[i]);
    if (area <= search.most) continue;
    search.most = area;
    search.found = i;
  }
}

std::optional<std::size_t> TPointBoxes::farthest(const TChord& chord, std::size_t first, std::size_t last,
                                                 double most) {
  if (first >= last) return std::nullopt;
  TSearch search{chord, first, last, most, 0.0, std::nullopt};
  const bool isShort = last - first <= 2 * kLeafPoints;
  if (isShort || looked <= kLooksWithoutBoxes * points.size()) {
    lookAtAll(search);
    return search.found;
  }
  if (boxes.empty()) drawBoxes();
  const std::size_t leaf = leafNear(search) * kLeafPoints;
  for (std::size_t i = std::max(leaf, first); i < std::min(leaf + kLeafPoints, last); ++i)
    search.least = std::max(search.least, chord.doubleArea(points[i]));
  visit(search, levelBegins.size() - 1, 0);
  return search.found;
}

}  // namespace weld
