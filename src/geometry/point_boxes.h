// Boxes around stretches of a stripe, that tell where no point can be far from a chord.
#pragma once

#include "support/list.h"

#include <cmath>
#include <cstddef>
#include <optional>

namespace weld {

struct TChord {
  cv::Point2f from;
  double dx;
  double dy;

  TChord(cv::Point2f begin, cv::Point2f end)
      : from(begin), dx(static_cast<double>((end - begin).x)), dy(static_cast<double>((end - begin).y)) {}

  double squaredLength() const { return dx * dx + dy * dy; }

  // Twice the area of the triangle with the chord, which over the chord's length tells how far the point is off.
  // It never falls as the point moves on along an axis, or never rises, roundings included: of a box, a corner has
  // the most.
  double doubleArea(cv::Point2f p) const {
    return std::abs(static_cast<double>(p.y - from.y) * dx - static_cast<double>(p.x - from.x) * dy);
  }
};

class TPointBoxes {
public:
  // The points must be finite and outlive the boxes.
  TPointBoxes(TPointView stripePoints, TMemory* memory);

  // Of the points first .. last - 1 the one with the greatest area over the chord, the first of equal ones; none
  // where no area is above `most`.
  std::optional<std::size_t> farthest(const TChord& chord, std::size_t first, std::size_t last, double most);

  // Points and boxes looked at so far.
  std::size_t looks() const { return looked; }

private:
  struct TBox {
    cv::Point2f low;
    cv::Point2f high;

    void add(cv::Point2f p);
  };
  struct TSearch;
  static constexpr std::size_t kLeafPoints = 16;
  static constexpr std::size_t kFanOut = 4;
  static constexpr std::size_t kLooksWithoutBoxes = 16;  // at every point: a usual stripe asks for fewer

  void drawBoxes();
  void lookAtAll(TSearch& search);
  TBox& box(std::size_t level, std::size_t i) { return boxes[levelBegins[level] + i]; }
  std::size_t boxPoints(std::size_t level) const;
  static double mostOf(const TChord& chord, const TBox& box);
  std::size_t leafNear(const TSearch& search);
  void visit(TSearch& search, std::size_t level, std::size_t i);

  TPointView points;
  TList<TBox> boxes;  // of the leaves, then of four of them each, and so on
  TList<std::size_t> levelBegins;
  std::size_t looked = 0;
};

}  // namespace weld
