#include "stripe/stripe_curve.h"

#include "support/median.h"
#include "support/normal_equations.h"

#include <algorithm>
#include <cmath>

namespace weld {

namespace {

constexpr int kPasses = 4;
constexpr double kFirstOffPx = 6.0;   // from the rough line
constexpr double kLeastOffPx = 0.75;  // that a centre may lie off
constexpr double kOffScatters = 2.5;
constexpr double kLeastCentres = 10.0;
constexpr double kUnitPx = 100.0;      // of dx in the equations
constexpr double kAlike = 3.0;         // neighbours that scatter as one
constexpr double kBowSigmas = 4.0;     // that show a bow
constexpr double kLeastBowed = 100.0;  // px that tell a bow,
constexpr double kMostBeyond = 0.25;   // which goes on so far, in lengths
constexpr double kBowSpread = 3.354;   // of a bow of pure scatter, over that of a mean

struct TExtent {
  double first = HUGE_VAL;
  double last = -HUGE_VAL;
};

// As a template argument the number of parameters unrolls the sums.
template <std::size_t parameters>
bool fitOnce(TPointView points, double mostOffPx, TStripeCurve& curve) {
  TNormalEquations equations(parameters);
  TExtent extent;
  double squares = 0.0;
  for (const cv::Point2f p : points) {
    const auto x = static_cast<double>(p.x);
    const double off = static_cast<double>(p.y) - curve.rowAt(x);
    if (std::abs(off) > mostOffPx) continue;
    const double u = (x - curve.originX) / kUnitPx;
    equations.add({1.0, u, u * u}, static_cast<double>(p.y), 1.0);
    squares += off * off;
    extent = {std::min(extent.first, x), std::max(extent.last, x)};
  }
  if (equations.weight() < kLeastCentres || !equations.factor()) return false;
  const TTriple solution = equations.solution();
  curve.a = solution[0];
  curve.k = solution[1] / kUnitPx;
  curve.c = parameters > 2 ? solution[2] / (kUnitPx * kUnitPx) : 0.0;
  curve.count = equations.weight();
  curve.noisePx = std::sqrt(squares / curve.count);
  curve.lengthPx = extent.last - extent.first;
  curve.beyondPx = std::max({extent.first - curve.originX, curve.originX - extent.last, 0.0});
  return true;
}

// Medians of the slopes between the halves and of what is left: a blob beside the stripe does not move it.
TStripeCurve roughLine(TPointView points, double originX, TMemory* memory) {
  TStripeCurve line;
  line.originX = originX;
  const std::size_t half = points.size() / 2;
  TList<double> values(memory);
  values.reserve(points.size());
  for (std::size_t i = 0; i + half < points.size(); ++i) {
    const cv::Point2f step = points[i + half] - points[i];
    if (step.x > 0.0F) values.push_back(static_cast<double>(step.y / step.x));
  }
  if (values.empty()) return line;
  line.k = medianOf(values);
  values.clear();
  for (const cv::Point2f p : points)
    values.push_back(static_cast<double>(p.y) - line.rowAt(static_cast<double>(p.x)));
  line.a = medianOf(values);
  return line;
}

template <std::size_t parameters>
std::optional<TStripeCurve> fit(TPointView points, double originX, TMemory* memory) {
  TStripeCurve curve = roughLine(points, originX, memory);
  double mostOffPx = kFirstOffPx;
  for (int pass = 0; pass < kPasses; ++pass) {
    if (!fitOnce<parameters>(points, mostOffPx, curve)) return std::nullopt;
    mostOffPx = std::max(kOffScatters * curve.noisePx, kLeastOffPx);
  }
  return curve;
}

}  // namespace

double TStripeCurve::sigmaAtOrigin() const {
  const double mean = noisePx * std::sqrt(kAlike / count);
  const double lengths = 0.5 + beyondPx / std::max(lengthPx, 1.0);  // from the middle
  const double bow = c == 0.0 ? 0.0 : 4.0 * kBowSpread * (lengths * lengths - 1.0 / 12.0);
  return mean * std::sqrt(1.0 + 12.0 * lengths * lengths + bow * bow);
}

std::optional<TStripeCurve> fitStripeLine(TPointView points, double originX, TMemory* memory) {
  return fit<2>(points, originX, memory);
}

std::optional<TStripeCurve> fitStripeCurve(TPointView points, double originX, TMemory* memory) {
  const std::optional<TStripeCurve> bent = fit<3>(points, originX, memory);
  if (!bent) return std::nullopt;
  const double bowPx = 0.25 * std::abs(bent->c) * bent->lengthPx * bent->lengthPx;
  const double sigmaPx = kBowSpread * bent->noisePx * std::sqrt(kAlike / bent->count);
  const bool isBowed = bowPx > kBowSigmas * sigmaPx && bent->lengthPx > kLeastBowed &&
                       bent->beyondPx < kMostBeyond * bent->lengthPx;
  return isBowed ? bent : fit<2>(points, originX, memory);
}

}  // namespace weld
