#include "support/circle_fit.h"

#include "support/normal_equations.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace {

constexpr double kOnALine = 1e-6;  // sine of the angle between the chords

bool isFinite(const cv::Point2d& p) {
  return std::isfinite(p.x) && std::isfinite(p.y);
}

}  // namespace

namespace zel {

bool threePoints2circle(const cv::Point2d& a, const cv::Point2d& b, const cv::Point2d& c, cv::Point2d& centre,
                        double& radiusPx) {
  centre = {0.0, 0.0};
  radiusPx = 0.0;
  if (!isFinite(a) || !isFinite(b) || !isFinite(c)) return false;
  const cv::Point2d u = b - a;
  const cv::Point2d v = c - a;
  const double cross = u.x * v.y - u.y * v.x;
  const double uu = u.x * u.x + u.y * u.y;
  const double vv = v.x * v.x + v.y * v.y;
  const cv::Point2d w = c - b;
  const double ww = w.x * w.x + w.y * w.y;
  if (!(cross * cross > kOnALine * kOnALine * uu * vv) || !(ww > 0.0)) return false;
  const cv::Point2d fromA((v.y * uu - u.y * vv) / (2.0 * cross), (u.x * vv - v.x * uu) / (2.0 * cross));
  if (!isFinite(fromA)) return false;
  centre = a + fromA;
  radiusPx = std::sqrt(fromA.x * fromA.x + fromA.y * fromA.y);
  return true;
}

}  // namespace zel

namespace zelFit {

namespace {

constexpr double kFarthestPx = 65536.0;
constexpr std::size_t kSample = 26;       // points, all triples of which are tried
constexpr std::size_t kMostScored = 101;  // points that rate a triple
constexpr double kLeastShare = 0.25;
constexpr int kSteps = 6;
constexpr double kFirstCutOff = 2.0;  // of Tukey's weights, in tolerances
constexpr double kLastCutOff = 1.2;
constexpr double kSmallestTolPx = 0.01;
constexpr double kLargestTolPx = 1e6;

struct TCandidate {
  cv::Point2d centre;
  double radius = 0.0;
};

struct TRange {
  double least, most;
  bool contains(double radius) const { return radius >= least && radius <= most; }
};

double distanceFrom(const TCandidate& circle, const cv::Point2d& p) {
  const double dx = p.x - circle.centre.x;
  const double dy = p.y - circle.centre.y;
  return std::sqrt(dx * dx + dy * dy) - circle.radius;
}

// Evenly picked, at most so many; returns how many.
template <std::size_t N>
std::size_t pick(const std::vector<cv::Point2f>& points, std::array<cv::Point2d, N>& picked) {
  std::size_t usable = 0;
  const auto isUsable = [](const cv::Point2f& p) {
    return std::abs(static_cast<double>(p.x)) <= kFarthestPx && std::abs(static_cast<double>(p.y)) <= kFarthestPx;
  };
  for (const cv::Point2f& p : points) usable += isUsable(p) ? 1 : 0;
  const std::size_t wanted = std::min(usable, N);
  std::size_t seen = 0;
  std::size_t count = 0;
  for (const cv::Point2f& p : points) {
    if (!isUsable(p)) continue;
    if (count < wanted && seen * wanted >= count * usable) picked[count++] = p;
    ++seen;
  }
  return count;
}

class TConsensus {
public:
  TConsensus(const std::vector<cv::Point2f>& points, double tolerancePx, TRange r)
      : invTol2(1.0 / (tolerancePx * tolerancePx)), range(r) {
    sampled = pick(points, sample);
    rated = pick(points, rating);
  }

  // Ties go to the earlier triple.
  TCandidate best() const {
    TCandidate chosen;
    double most = 0.0;
    for (std::size_t i = 0; i < sampled; ++i) {
      for (std::size_t j = i + 1; j < sampled; ++j) {
        for (std::size_t k = j + 1; k < sampled; ++k) {
          TCandidate circle;
          if (!zel::threePoints2circle(sample[i], sample[j], sample[k], circle.centre, circle.radius)) continue;
          if (!range.contains(circle.radius)) continue;
          const double support = supportOf(circle);
          if (support > most) {
            most = support;
            chosen = circle;
          }
        }
      }
    }
    return chosen;
  }

private:
  double supportOf(const TCandidate& circle) const {
    double support = 0.0;
    for (std::size_t i = 0; i < rated; ++i) {
      const double d = distanceFrom(circle, rating[i]);
      support += std::max(0.0, 1.0 - d * d * invTol2);
    }
    return support;
  }

  double invTol2;
  TRange range;
  std::array<cv::Point2d, kSample> sample;
  std::array<cv::Point2d, kMostScored> rating;
  std::size_t sampled = 0;
  std::size_t rated = 0;
};

bool stepTo(const std::vector<cv::Point2f>& points, double cutOffPx, TCandidate& circle) {
  weld::TNormalEquations equations(3);
  for (const cv::Point2f& point : points) {
    const cv::Point2d p(point);
    const double offset = distanceFrom(circle, p);
    const double u = 1.0 - offset * offset / (cutOffPx * cutOffPx);
    const double distance = offset + circle.radius;
    if (!(u > 0.0) || !(distance > 0.0)) continue;
    equations.add({(p.x - circle.centre.x) / distance, (p.y - circle.centre.y) / distance, 1.0}, offset, u * u);
  }
  if (equations.weight() < 3.0 || !equations.factor()) return false;
  const weld::TTriple change = equations.solution();
  circle.centre += cv::Point2d(change[0], change[1]);
  circle.radius += change[2];
  return true;
}

// Shrinks the cut-off from step to step: the start is only as good as three points.
TCandidate refine(const std::vector<cv::Point2f>& points, double tolPx, const TRange& range, TCandidate circle) {
  for (int step = 0; step < kSteps; ++step) {
    const double progress = static_cast<double>(step) / (kSteps - 1);
    TCandidate next = circle;
    if (!stepTo(points, (kFirstCutOff + progress * (kLastCutOff - kFirstCutOff)) * tolPx, next)) break;
    if (!isFinite(next.centre) || !range.contains(next.radius)) break;
    circle = next;
  }
  return circle;
}

}  // namespace

bool TCircleFitFactory::createFitType_ransacCircle(const std::vector<cv::Point2f>& points, double distTolerancePx,
                                                   double minRadiusPx, double maxRadiusPx) {
  fit = {};
  if (!(distTolerancePx > 0.0) || !(minRadiusPx >= 0.0) || !(maxRadiusPx >= minRadiusPx)) return false;
  const double tolPx = std::clamp(distTolerancePx, kSmallestTolPx, kLargestTolPx);
  const TRange range{minRadiusPx, maxRadiusPx};
  const TCandidate start = TConsensus(points, tolPx, range).best();
  if (!(start.radius > 0.0)) return false;
  const TCandidate circle = refine(points, tolPx, range, start);
  int near = 0;
  for (const cv::Point2f& p : points) near += std::abs(distanceFrom(circle, cv::Point2d(p))) < tolPx ? 1 : 0;
  if (near < 3 || near < kLeastShare * static_cast<double>(points.size())) return false;
  fit = {circle.centre, circle.radius, near, true};
  return true;
}

}  // namespace zelFit
