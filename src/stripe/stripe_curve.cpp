#include "stripe/stripe_curve.h"

#include "support/median.h"
#include "support/normal_equations.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace weld {

namespace {

constexpr std::size_t kRoughCentres = 25;  // of either half, about, that tell the rough line
constexpr int kPasses = 3;
constexpr double kFirstOffPx = 6.0;   // from the rough line
constexpr double kLeastOffPx = 0.75;  // that a centre may lie off
constexpr double kOffScatters = 2.5;
constexpr double kLeastCentres = 10.0;
constexpr double kUnitPx = 100.0;      // of dx in the equations
constexpr double kAlikePx = 3.0;       // columns whose centres scatter as one
constexpr double kBowSigmas = 4.0;     // that show a bow
constexpr double kLeastBowed = 100.0;  // px that tell a bow,
constexpr double kMostBeyond = 0.25;   // which goes on so far, in lengths
constexpr double kBowSpread = 3.354;   // of a bow of pure scatter, over that of a mean

struct TExtent {
  double first = HUGE_VAL;
  double last = -HUGE_VAL;
};

// Centres, and which of them the last pass chose.
struct TChoice {
  TChoice(TPointView centres, TMemory* memory) : points(centres), isIn(centres.size(), 0, memory) {}

  // Those that do not lie off the curve; whether they are others than before.
  bool choose(const TStripeCurve& of, double mostOffPx) {
    const TStripeCurve curve = of;  // stays in registers
    bool isOther = false;
    double sum = 0.0;
    for (std::size_t i = 0; i < points.size(); ++i) {
      const double off = static_cast<double>(points[i].y) - curve.rowAt(static_cast<double>(points[i].x));
      const unsigned char isNear = std::abs(off) > mostOffPx ? 0 : 1;
      isOther |= isNear != isIn[i];
      isIn[i] = isNear;
      sum += isNear != 0 ? off * off : 0.0;
    }
    squares = sum;
    return isOther;
  }

  TPointView points;
  TList<unsigned char> isIn;
  double squares = 0.0;  // of their distances
};

// Of the powers of u, and of rows by them. Single numbers stay in registers, which an array does not.
struct TPowerSums {
  void add(double u, double y) {
    const double u2 = u * u;
    n += 1.0;
    s1 += u;
    s2 += u2;
    s3 += u2 * u;
    s4 += u2 * u2;
    y0 += y;
    y1 += u * y;
    y2 += u2 * y;
  }

  double n = 0.0;
  double s1 = 0.0;
  double s2 = 0.0;
  double s3 = 0.0;
  double s4 = 0.0;
  double y0 = 0.0;
  double y1 = 0.0;
  double y2 = 0.0;
};

// As a template argument the number of parameters leaves out sums that nobody asks for.
template <std::size_t parameters>
bool solveFor(const TChoice& choice, TStripeCurve& curve) {
  const double originX = curve.originX;
  TPowerSums sums;
  TExtent extent;
  for (std::size_t i = 0; i < choice.points.size(); ++i) {
    if (choice.isIn[i] == 0) continue;
    const auto x = static_cast<double>(choice.points[i].x);
    sums.add((x - originX) / kUnitPx, static_cast<double>(choice.points[i].y));
    extent = {std::min(extent.first, x), std::max(extent.last, x)};
  }
  TNormalEquations equations(parameters);
  equations.addSums({{{sums.n}, {sums.s1, sums.s2}, {sums.s2, sums.s3, sums.s4}}}, {sums.y0, sums.y1, sums.y2},
                    sums.n);
  if (equations.weight() < kLeastCentres || !equations.factor()) return false;
  const TTriple solution = equations.solution();
  curve.a = solution[0];
  curve.k = solution[1] / kUnitPx;
  curve.c = parameters > 2 ? solution[2] / (kUnitPx * kUnitPx) : 0.0;
  curve.count = equations.weight();
  curve.lengthPx = extent.last - extent.first;
  curve.beyondPx = std::max({extent.first - curve.originX, curve.originX - extent.last, 0.0});
  return true;
}

// Columns from one centre to the next where none is missing.
double leastStep(TPointView points) {
  float least = std::numeric_limits<float>::infinity();
  for (std::size_t i = 1; i < points.size(); ++i) least = std::min(least, points[i].x - points[i - 1].x);
  return static_cast<double>(std::max(least, 1.0F));
}

// Medians of the slopes between the halves and of what is left: a blob beside the stripe does not move it.
TStripeCurve roughLine(TPointView points, double originX, TMemory* memory) {
  TStripeCurve line;
  line.originX = originX;
  line.stepPx = leastStep(points);
  const std::size_t half = points.size() / 2;
  const std::size_t every = std::max<std::size_t>(half / kRoughCentres, 1);
  TList<double> values(memory);
  values.reserve(points.size());
  for (std::size_t i = 0; i + half < points.size(); i += every) {
    const cv::Point2f step = points[i + half] - points[i];
    if (step.x > 0.0F) values.push_back(static_cast<double>(step.y / step.x));
  }
  if (values.empty()) return line;
  line.k = medianOf(values);
  values.clear();
  for (std::size_t i = 0; i < points.size(); i += every)
    values.push_back(static_cast<double>(points[i].y) - line.rowAt(static_cast<double>(points[i].x)));
  line.a = medianOf(values);
  return line;
}

// The same centres have the same curve.
template <std::size_t parameters>
std::optional<TStripeCurve> fit(TPointView points, const TStripeCurve& rough, TMemory* memory) {
  TStripeCurve curve = rough;
  TChoice choice(points, memory);
  double mostOffPx = kFirstOffPx;
  for (int pass = 0; pass < kPasses; ++pass) {
    const bool isOther = choice.choose(curve, mostOffPx);
    if ((isOther || pass == 0) && !solveFor<parameters>(choice, curve)) return std::nullopt;
    curve.noisePx = std::sqrt(choice.squares / curve.count);
    const double before = mostOffPx;
    mostOffPx = std::max(kOffScatters * curve.noisePx, kLeastOffPx);
    if (!isOther && mostOffPx == before) break;  // every further pass would be this one
  }
  return curve;
}

// Scatter of the mean of all centres.
double sigmaOfMean(const TStripeCurve& curve) {
  return curve.noisePx * std::sqrt(std::max(kAlikePx / curve.stepPx, 1.0) / curve.count);
}

}  // namespace

double TStripeCurve::sigmaAtOrigin() const {
  const double mean = sigmaOfMean(*this);
  const double lengths = 0.5 + beyondPx / std::max(lengthPx, 1.0);  // from the middle
  const double bow = c == 0.0 ? 0.0 : 4.0 * kBowSpread * (lengths * lengths - 1.0 / 12.0);
  return mean * std::sqrt(1.0 + 12.0 * lengths * lengths + bow * bow);
}

std::optional<TStripeCurve> fitStripeLine(TPointView points, double originX, TMemory* memory) {
  return fit<2>(points, roughLine(points, originX, memory), memory);
}

std::optional<TStripeCurve> fitStripeCurve(TPointView points, double originX, TMemory* memory) {
  const TStripeCurve rough = roughLine(points, originX, memory);
  const std::optional<TStripeCurve> bent = fit<3>(points, rough, memory);
  if (!bent) return std::nullopt;
  const double bowPx = 0.25 * std::abs(bent->c) * bent->lengthPx * bent->lengthPx;
  const double sigmaPx = kBowSpread * sigmaOfMean(*bent);
  const bool isBowed = bowPx > kBowSigmas * sigmaPx && bent->lengthPx > kLeastBowed &&
                       bent->beyondPx < kMostBeyond * bent->lengthPx;
  return isBowed ? bent : fit<2>(points, rough, memory);
}

}  // namespace weld
