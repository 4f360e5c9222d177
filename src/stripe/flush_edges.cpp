#include "stripe/flush_edges.h"

#include "support/exact_log.h"
#include "support/grey_image.h"
#include "support/line_math.h"
#include "support/median.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>
#include <optional>

namespace weld {

namespace {

constexpr int kLeastColumns = 100;
constexpr double kMostOffPx = 5.0;  // of a centre on the straight stripe
constexpr double kLeastStraightShare = 0.9;
constexpr int kRefits = 2;
constexpr int kReach = 12;       // rows about the stripe that hold its light
constexpr int kBesideNear = 16;  // rows that hold the light around it
constexpr int kBesideFar = 24;
constexpr double kDark = 30.0;                         // grey levels of a column, below which it counts as dark
constexpr int kLongWindow = 80;                        // columns on either side of a step,
constexpr int kShortWindow = 15;                       // at least
constexpr int kEdgeReach = 40;                         // on either side of where the medians differ most
constexpr int kApart = 60;                             // columns between steps
constexpr double kLeastStep = 0.5877866649021191;      // logarithm of 1.8
constexpr double kLeastHint = 0.26236426446749106;     // of 1.3: enough where the room light steps as well,
constexpr double kLeastRoomStep = 0.3364722366212129;  // by 1.4 on both sides of the stripe
constexpr int kRoomNear = 60;  // columns from the step, within which the plate's edge may lie aslant
constexpr int kRoomFar = 90;
constexpr int kRoomWindow = 12;     // columns on either side of that edge
constexpr double kDarkRoom = 10.0;  // grey levels

using TValues = TList<double>;

// The values of a window that moves on, in order.
class TSortedWindow {
public:
  explicit TSortedWindow(TMemory* memory) : values(memory) { values.reserve(kLongWindow + 1); }

  void add(double value) { values.insert(std::upper_bound(values.begin(), values.end(), value), value); }
  void drop(double value) { values.erase(std::lower_bound(values.begin(), values.end(), value)); }
  // Of an even number the upper one of the middle two.
  double median() const { return values[values.size() / 2]; }

private:
  TValues values;
};

double offLine(const TSlopeLine& line, cv::Point2f p) {
  return std::abs(static_cast<double>(p.y) - line.k * static_cast<double>(p.x) - line.b);
}

// Least squares, twice without what lies farther off than that.
TSlopeLine fitStraight(TPointView points) {
  TSlopeLine line;
  for (int pass = 0; pass <= kRefits; ++pass) {
    double n = 0.0;
    double x = 0.0;
    double y = 0.0;
    double xx = 0.0;
    double xy = 0.0;
    const double originX = static_cast<double>(points.front().x);
    for (const cv::Point2f p : points) {
      if (pass > 0 && offLine(line, p) > 2.0 * kMostOffPx) continue;
      const double dx = static_cast<double>(p.x) - originX;
      n += 1.0;
      x += dx;
      y += static_cast<double>(p.y);
      xx += dx * dx;
      xy += dx * static_cast<double>(p.y);
    }
    const double k = (n * xy - x * y) / guardDivisor(n * xx - x * x);
    line = {k, (y - k * x) / std::max(n, 1.0) - k * originX};
  }
  return line;
}

bool isStraight(TPointView points, const TSlopeLine& line) {
  const auto near =
      std::count_if(points.begin(), points.end(), [&](cv::Point2f p) { return offLine(line, p) <= kMostOffPx; });
  return static_cast<double>(near) >= kLeastStraightShare * static_cast<double>(points.size());
}

// Logarithm of the stripe's light over its surroundings, column by column from the first point to the last. A lost
// stretch is no step: it has the light of the column before.
TValues lightAlong(const cv::Mat& grey, TPointView points, const TSlopeLine& line, TMemory* memory) {
  const int first = truncToInt(points.front().x);
  const int last = truncToInt(points.back().x);
  TValues light(memory);
  light.reserve(static_cast<std::size_t>(last - first + 1));
  const cv::Point2f* next = points.begin();
  for (int x = first; x <= last; ++x) {
    while (truncToInt(next->x) < x) ++next;
    const bool isOn = truncToInt(next->x) == x && offLine(line, *next) <= kMostOffPx;
    if (!isOn && !light.empty()) {
      light.push_back(light.back());
      continue;
    }
    const int row = roundToInt(isOn ? static_cast<double>(next->y) : line.k * x + line.b);
    const auto level = [&](int y) {
      return static_cast<int>(grey.at<unsigned char>(std::clamp(y, 0, grey.rows - 1), x));
    };
    int beside = 0;
    for (int d = kBesideNear; d <= kBesideFar; ++d) beside += level(row - d) + level(row + d);
    const double around = beside / (2.0 * (kBesideFar - kBesideNear + 1));
    double sum = 0.0;
    for (int d = -kReach; d <= kReach; ++d) sum += std::max(0.0, level(row + d) - around);
    light.push_back(exactLog(sum + kDark));
  }
  return light;
}

// Median right of each column less that left of it. A window is on the left of the column behind it and on the
// right of its first one.
TValues stepsOf(const TValues& light, TMemory* memory) {
  const int columns = static_cast<int>(light.size());
  TValues steps(light.size(), 0.0, memory);
  TSortedWindow window(memory);
  const auto at = [&](int i) { return light[static_cast<std::size_t>(i)]; };
  const auto step = [&](int i) -> double& { return steps[static_cast<std::size_t>(i)]; };
  const auto hasRoom = [&](int i) { return i >= kShortWindow && i + kShortWindow < columns; };
  for (int end = 1; end <= columns; ++end) {
    window.add(at(end - 1));
    if (end > kLongWindow) window.drop(at(end - 1 - kLongWindow));
    if (hasRoom(end)) step(end) -= window.median();
    if (end >= kLongWindow && hasRoom(end - kLongWindow)) step(end - kLongWindow) += window.median();
  }
  for (int first = std::max(columns - kLongWindow, 0) + 1; first < columns; ++first) {
    window.drop(at(first - 1));
    if (hasRoom(first)) step(first) += window.median();
  }
  return steps;
}

double medianOfPart(const TValues& light, int first, int last) {
  TValues part(light.begin() + first, light.begin() + last, light.get_allocator());
  return medianOf(part);
}

// Between the two columns that part best those with the light left of a step from those with the light right of
// it.
double edgeNear(const TValues& light, int place) {
  const int columns = static_cast<int>(light.size());
  const double left = medianOfPart(light, std::max(place - kLongWindow, 0), place);
  const double right = medianOfPart(light, place, std::min(place + kLongWindow, columns));
  int best = std::max(place - kEdgeReach, 0);
  double least = 0.0;
  double cost = 0.0;
  for (int i = best; i < std::min(place + kEdgeReach, columns); ++i) {
    const double value = light[static_cast<std::size_t>(i)];
    cost += std::abs(value - left) - std::abs(value - right);
    if (cost >= least) continue;
    least = cost;
    best = i + 1;
  }
  return best - 0.5;
}

// Grey levels of the room light in a column above or below the stripe, clear of its own light.
int roomLight(const cv::Mat& grey, const TSlopeLine& line, int column, bool isBelow) {
  const int row = roundToInt(line.k * column + line.b) + (isBelow ? kBesideNear : -kBesideFar);
  int sum = 0;
  for (int y = row; y <= row + kBesideFar - kBesideNear; ++y)
    sum += static_cast<int>(grey.at<unsigned char>(std::clamp(y, 0, grey.rows - 1), column));
  return sum;
}

// Where the room light on one side of the stripe steps, as the stripe's own does near there, and whether by
// enough.
struct TRoomEdge {
  double x = 0.0;
  bool isClear = false;
};

TRoomEdge roomEdge(const cv::Mat& grey, const TSlopeLine& line, double column, double sign, bool isBelow) {
  const int first = roundToInt(column) - kRoomFar;
  std::array<int, std::size_t{2} * kRoomFar> sums{};
  if (first < 0 || first + 2 * kRoomFar > grey.cols) return {};
  for (int i = 0; i < 2 * kRoomFar; ++i)
    sums[static_cast<std::size_t>(i)] = roomLight(grey, line, first + i, isBelow);
  const auto sum = [&](int from, int to) { return std::accumulate(sums.begin() + from, sums.begin() + to, 0); };
  TRoomEdge edge;
  double most = 0.0;
  for (int i = kRoomFar - kRoomNear; i <= kRoomFar + kRoomNear; ++i) {
    const double rise = sign * (sum(i, i + kRoomWindow) - sum(i - kRoomWindow, i));
    if (rise > most) edge.x = first + i - 0.5;
    most = std::max(most, rise);
  }
  constexpr int kPixels = (kRoomFar - kRoomNear) * (kBesideFar - kBesideNear + 1);
  const double left = sum(0, kRoomFar - kRoomNear) + kDarkRoom * kPixels;
  const double right = sum(kRoomFar + kRoomNear, 2 * kRoomFar) + kDarkRoom * kPixels;
  edge.isClear = most > 0.0 && sign * exactLog(right / left) >= kLeastRoomStep;
  return edge;
}

// A small step of the stripe's light is an end where the room light steps with it on both sides: its column is
// where the line through both edges, which may lie aslant, meets the stripe.
std::optional<double> edgeInRoomLight(const cv::Mat& grey, const TSlopeLine& line, double column, double step) {
  const double sign = step > 0.0 ? 1.0 : -1.0;
  const TRoomEdge above = roomEdge(grey, line, column, sign, false);
  if (!above.isClear) return std::nullopt;
  const TRoomEdge below = roomEdge(grey, line, column, sign, true);
  if (!below.isClear) return std::nullopt;
  return 0.5 * (above.x + below.x);
}

// A straight stripe and its light from its first column on.
struct TStraightStripe {
  const cv::Mat& grey;
  const TSlopeLine& line;
  const TValues& light;
  int firstColumn;
};

// Of a step; none where it is too small for one.
std::optional<double> columnOf(const TStraightStripe& on, int place, double step) {
  const double edge = on.firstColumn + edgeNear(on.light, place);
  return std::abs(step) < kLeastStep ? edgeInRoomLight(on.grey, on.line, edge, step) : edge;
}

// The steps one by one, the largest first.
void takeSteps(const TStraightStripe& on, TValues& steps, TList<TLightStep>& found) {
  const auto isSmaller = [](double a, double b) { return std::abs(a) < std::abs(b); };
  for (auto largest = std::max_element(steps.begin(), steps.end(), isSmaller); std::abs(*largest) >= kLeastHint;
       largest = std::max_element(steps.begin(), steps.end(), isSmaller)) {
    const int place = static_cast<int>(largest - steps.begin());
    const double step = *largest;
    const std::optional<double> x = columnOf(on, place, step);
    const bool isNew = x && std::none_of(found.begin(), found.end(),
                                         [&](const TLightStep& other) { return std::abs(other.x - *x) < kApart; });
    if (isNew) found.push_back({*x, step});
    const auto columns = static_cast<int>(steps.size());
    std::fill(steps.begin() + std::max(place - kApart, 0), steps.begin() + std::min(place + kApart, columns), 0.0);
  }
}

}  // namespace

TList<TLightStep> findLightSteps(const TFrame& frame, const TStripe& stripe) {
  const TStageTimer timer(frame.trace, "light steps");
  TList<TLightStep> found(frame.memory);
  const TPointView points = stripe.points;
  if (points.size() < static_cast<std::size_t>(kLeastColumns)) return found;
  const TSlopeLine line = fitStraight(points);
  if (!isStraight(points, line)) return found;
  found.reserve(16);
  const TBuffer<unsigned char> pixels(frame.memory, greyBytes(frame.image));
  const cv::Mat grey = toGrey(frame.image, pixels);
  const TValues light = lightAlong(grey, points, line, frame.memory);
  TValues steps = stepsOf(light, frame.memory);
  takeSteps({grey, line, light, truncToInt(points.front().x)}, steps, found);
  std::sort(found.begin(), found.end(), [](const TLightStep& a, const TLightStep& b) { return a.x < b.x; });
  return found;
}

TPoints onStraightLine(TPointView points, TMemory* memory) {
  const TSlopeLine line = fitStraight(points);
  TPoints on(memory);
  on.reserve(points.size());
  std::copy_if(points.begin(), points.end(), std::back_inserter(on),
               [&](cv::Point2f p) { return offLine(line, p) <= kMostOffPx; });
  return on;
}

}  // namespace weld
