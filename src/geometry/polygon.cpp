#include "geometry/polygon.h"

#include "geometry/point_boxes.h"
#include "support/line_math.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <optional>

namespace weld {

namespace {

constexpr std::size_t kUsualVertices = 64;
constexpr double kLargestEpsilonPx = 1e9;

constexpr std::size_t kMostLooks = std::size_t{1} << 27U;  // a fraction of a second

// The points of the stripe. Index n stands for the first point again, which closes a stripe that ends where it
// began.
class TRing {
public:
  explicit TRing(TPointView ringPoints) : points(ringPoints) {}

  int count() const { return static_cast<int>(points.size()); }
  cv::Point2f operator[](int i) const { return points[i < count() ? static_cast<std::size_t>(i) : 0]; }

private:
  TPointView points;
};

// The point between the two that is farthest from their chord, the first of equally far ones; none when it is
// within the tolerance.
std::optional<int> farthestFromChord(const TRing& ring, int first, int last, double squaredTol,
                                     TPointBoxes& boxes) {
  constexpr double kSurely = 1.0 - 1e-12;
  const TChord chord(ring[first], ring[last]);
  const double limit = squaredTol * chord.squaredLength();
  const auto farthest = boxes.farthest(chord, static_cast<std::size_t>(first) + 1, static_cast<std::size_t>(last),
                                       kSurely * std::sqrt(limit));
  if (!farthest) return std::nullopt;
  const int found = static_cast<int>(*farthest);
  const double most = chord.doubleArea(ring[found]);
  if (most * most <= limit) return std::nullopt;
  return found;
}

// The point farthest from the first one, the first of equally far ones; none when it is within the tolerance.
std::optional<int> farthestFromStart(const TRing& ring, double squaredTol) {
  double most = 0.0;
  int farthest = 0;
  for (int i = 1; i < ring.count(); ++i) {
    const cv::Point2f d = ring[i] - ring[0];
    const double squared =
        static_cast<double>(d.x) * static_cast<double>(d.x) + static_cast<double>(d.y) * static_cast<double>(d.y);
    if (squared <= most) continue;
    most = squared;
    farthest = i;
  }
  if (most <= squaredTol) return std::nullopt;
  return farthest;
}

// Splits stretches at their farthest points, left to right. Ends holds where the stretches to come end, the next
// one last. False where that takes too long.
bool splitStretches(const TRing& ring, double squaredTol, TList<int>& ends, TPointBoxes& boxes,
                    TPoints& vertices) {
  int first = 0;
  while (!ends.empty()) {
    const int last = ends.back();
    if (const std::optional<int> farthest = farthestFromChord(ring, first, last, squaredTol, boxes)) {
      if (boxes.looks() > kMostLooks) return false;
      ends.push_back(*farthest);
      continue;
    }
    vertices.push_back(ring[first]);
    first = last;
    ends.pop_back();
  }
  return true;
}

bool isNearlyStraight(cv::Point2f before, cv::Point2f p, cv::Point2f after, double squaredTol) {
  const TChord chord(before, after);
  const double area = chord.doubleArea(p);
  const cv::Point2f in = p - before;
  const cv::Point2f out = after - p;
  // Deliberate: level and upright chords keep their vertices.
  return area * area <= 0.5 * squaredTol * chord.squaredLength() && chord.dx != 0.0 && chord.dy != 0.0 &&
         in.x * out.x + in.y * out.y >= 0.0F;
}

// Of two flat vertices in a row the second one stays.
void dropFlatVertices(TPoints& vertices, double squaredTol) {
  const std::size_t count = vertices.size();
  std::size_t kept = 1;
  std::size_t i = 1;
  while (i + 1 < count) {
    if (isNearlyStraight(vertices[kept - 1], vertices[i], vertices[i + 1], squaredTol)) ++i;
    vertices[kept++] = vertices[i++];
  }
  if (i < count) vertices[kept++] = vertices[i];
  vertices.resize(std::min(kept, count));
}

}  // namespace

TList<cv::Point> approximatePolygon(TPointView points, double epsilonPx, TMemory* memory) {
  TList<cv::Point> rounded(memory);
  const bool isUsableEpsilon = epsilonPx >= 0.0 && epsilonPx < kLargestEpsilonPx;
  if (points.empty() || !isUsableEpsilon) return rounded;
  const TRing ring(points);
  const double squaredTol = epsilonPx * epsilonPx;
  TPointBoxes boxes(points, memory);
  TList<int> ends(memory);
  TPoints vertices(memory);
  ends.reserve(kUsualVertices);
  vertices.reserve(kUsualVertices);
  if (ring[0] != ring[ring.count() - 1]) {
    ends.push_back(ring.count() - 1);
    if (!splitStretches(ring, squaredTol, ends, boxes, vertices)) return rounded;
    vertices.push_back(points.back());
  } else if (const std::optional<int> farthest = farthestFromStart(ring, squaredTol)) {
    // Deliberate: the last point, which is the first again, is no vertex.
    ends.assign({ring.count(), *farthest});
    if (!splitStretches(ring, squaredTol, ends, boxes, vertices)) return rounded;
  } else {
    vertices.push_back(points.front());
  }
  dropFlatVertices(vertices, squaredTol);
  rounded.resize(vertices.size());
  std::transform(vertices.begin(), vertices.end(), rounded.begin(), roundPoint);
  return rounded;
}

}  // namespace weld
