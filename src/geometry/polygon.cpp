#include "geometry/polygon.h"

#include "support/line_math.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <optional>

namespace weld {

namespace {

constexpr std::size_t kUsualVertices = 64;
constexpr double kLargestEpsilonPx = 1e9;

// Twice the area of the triangle with the chord over the chord's squared length tells how far the point is off.
double doubleArea(cv::Point2f from, cv::Point2f p, double dx, double dy) {
  return std::abs(static_cast<double>(p.y - from.y) * dx - static_cast<double>(p.x - from.x) * dy);
}

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
std::optional<int> farthestFromChord(const TRing& ring, int first, int last, double squaredTol) {
  const cv::Point2f from = ring[first];
  const cv::Point2f chord = ring[last] - from;
  const auto dx = static_cast<double>(chord.x);
  const auto dy = static_cast<double>(chord.y);
  double most = 0.0;
  int farthest = first;
  for (int i = first + 1; i < last; ++i) {
    const double area = doubleArea(from, ring[i], dx, dy);
    if (area <= most) continue;
    most = area;
    farthest = i;
  }
  if (most * most <= squaredTol * (dx * dx + dy * dy)) return std::nullopt;
  return farthest;
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
// one last.
void splitStretches(const TRing& ring, double squaredTol, TList<int>& ends, TPoints& vertices) {
  int first = 0;
  while (!ends.empty()) {
    const int last = ends.back();
    if (const std::optional<int> farthest = farthestFromChord(ring, first, last, squaredTol)) {
      ends.push_back(*farthest);
      continue;
    }
    vertices.push_back(ring[first]);
    first = last;
    ends.pop_back();
  }
}

bool isNearlyStraight(cv::Point2f before, cv::Point2f p, cv::Point2f after, double squaredTol) {
  const cv::Point2f chord = after - before;
  const auto dx = static_cast<double>(chord.x);
  const auto dy = static_cast<double>(chord.y);
  const double area = doubleArea(before, p, dx, dy);
  const cv::Point2f in = p - before;
  const cv::Point2f out = after - p;
  // Deliberate: level and upright chords keep their vertices.
  return area * area <= 0.5 * squaredTol * (dx * dx + dy * dy) && dx != 0.0 && dy != 0.0 &&
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
  TList<int> ends(memory);
  TPoints vertices(memory);
  ends.reserve(kUsualVertices);
  vertices.reserve(kUsualVertices);
  if (ring[0] != ring[ring.count() - 1]) {
    ends.push_back(ring.count() - 1);
    splitStretches(ring, squaredTol, ends, vertices);
    vertices.push_back(points.back());
  } else if (const std::optional<int> farthest = farthestFromStart(ring, squaredTol)) {
    // Deliberate: the last point, which is the first again, is no vertex.
    ends.assign({ring.count(), *farthest});
    splitStretches(ring, squaredTol, ends, vertices);
  } else {
    vertices.push_back(points.front());
  }
  dropFlatVertices(vertices, squaredTol);
  rounded.resize(vertices.size());
  std::transform(vertices.begin(), vertices.end(), rounded.begin(), roundPoint);
  return rounded;
}

}  // namespace weld
