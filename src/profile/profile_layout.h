// A template on the stripe: where its elements lie, finer than the atoms.
#pragma once

#include "profile/circle_refine.h"
#include "profile/local_fit.h"
#include "profile/profile_search.h"

#include <array>
#include <cmath>

namespace weld {

struct TFittedElement {
  TSpan span;             // its centres
  TSpan searched;         // the same before the refinement
  double noise2 = 0;      // variance of the centres about a smooth course, px^2
  TLocalLines lines;      // of a line
  TCircleFit arc;         // of an arc
  double hiddenPx = 0.0;  // standard deviation of an end that a flare hides
  cv::Point2d left;       // ends: corners, tangent points, or the last stripe seen
  cv::Point2d right;
};

// Everything in the sense of the template.
struct TProfileLayout {
  const TProfileTemplate* profile = nullptr;
  int sense = 1;
  std::array<TFittedElement, kMostElements> elements{};
  std::array<TCircleFit, kMostElements - 1> fillets{};  // of rounded corners; radius 0: sharp
  double cost = 0.0;

  const TElementRange& range(std::size_t e) const { return profile->elements[e]; }
  std::size_t count() const { return profile->elementCount; }
};

// Where an element lies: a line between its local lines, an arc on its circle.
class TSurface {
public:
  TSurface(const TFittedElement& element, const TElementRange& range)
      : circle(element.arc.circle),
        blend(element.lines, element.left.x, element.right.x),
        isLine(range.kind == TElementKind::line) {}

  // Distance of a centre, px; without a meaning to its sign.
  double offsetOf(cv::Point2d p) const {
    if (isLine) return blend.offsetOf(p.x, p.y);
    const double dx = p.x - circle.x;
    const double dy = p.y - circle.y;
    return std::sqrt(dx * dx + dy * dy) - circle.r;
  }

private:
  const TCircle& circle;
  TBlend blend;
  bool isLine;
};

// The arc of a rounded corner.
struct TFillet {
  TCircle circle;
  bool isCentreBelow;

  // Distance of a centre, px; measured over the middle where it lies beside the far half.
  double offsetOf(cv::Point2d p) const {
    const double dx = p.x - circle.x;
    const double dy = p.y - circle.y;
    const double reach = std::sqrt(dx * dx + dy * dy);
    return (dy < 0.0) == isCentreBelow ? reach - circle.r : reach + circle.r;
  }
};

struct TRefineSettings {
  double noisePx = 1.0;
  double stripeWidthPx = 0.0;  // 0: not known
  int rounds = 3;
};

// Start of a refinement: the layout of a search.
TProfileLayout layoutOf(const TProfileCut& cut, TFitTable& table);

// Moves corners, tangent points and ends to where the centres have them. False where the elements do not meet as
// the template says.
bool refineLayout(const TOrientedCentres& centres, const TRefineSettings& settings, TProfileLayout& layout);

// Places corners between lines that have moved since; ends at holes and walls keep their columns.
void meetAnew(const TOrientedCentres& centres, TProfileLayout& layout);

// Parts of the refinement, in files of their own.
std::optional<cv::Point2d> crossingOf(const TLine& a, const TLine& b);
// Of a line and a circle, the one nearer to a guess; where they just miss one another, where they come closest.
std::optional<cv::Point2d> meetingOf(const TLine& line, const TCircle& circle, cv::Point2d guess);

struct TWalk {
  int from;    // a centre of the element
  int limit;   // the last one looked at
  int step;    // 1: to the right, -1: to the left
  double bow;  // by which the surface may deviate, over its columns
};

// The last centre of an element on a walk from one of its own.
// A hole of more than five columns is crossed only where seven centres in a row follow, or where the search did.
int walkToEnd(const TOrientedCentres& centres, const TFittedElement& element, const TElementRange& range,
              const TWalk& walk);

// Radius of the arc between two lines that meet at a corner; not found where the corner is sharp. The
// radius is sought anew each time: one found while the lines still held a part of the arc is too small.
TCircleFit findFillet(const TOrientedCentres& centres, const TFittedElement& left, const TFittedElement& right,
                      double noise2);

}  // namespace weld
