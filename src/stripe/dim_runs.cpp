#include "stripe/dim_runs.h"

#include "support/grey_image.h"
#include "support/line_math.h"

#include <algorithm>
#include <cmath>

namespace weld {

namespace {

constexpr double kDimShare = 0.4;   // of the light beside
constexpr double kEdgeShare = 0.6;  // the same of the single centres at the ends of a run
constexpr int kHalfWindow = 4;      // centres on either side of one that tell its light
constexpr int kNearest = 60;        // centres from one to those that tell the stripe beside it,
constexpr int kBeside = 30;         // so many of them
constexpr int kLeastRun = 8;
constexpr int kSampled = 4;  // every so many centres show whether there may be a run
constexpr double kSampledShare = 0.6;
constexpr double kMostOffPx = 15.0;  // from the straight course between both sides
constexpr int kRows = 2;             // on either side of a centre
constexpr int kClearPx = 12;         // beyond the width of the stripe, where its surroundings begin

// Sums of the values before each one.
TList<double> runningSums(const TList<double>& values, TMemory* memory) {
  TList<double> sums(1, 0.0, memory);
  sums.reserve(values.size() + 1);
  for (const double value : values) sums.push_back(sums.back() + value);
  return sums;
}

// The rows of the image that hold the stripe and its surroundings.
cv::Rect rowsAbout(const TFrame& frame, TPointView points, int farPx) {
  const auto isHigher = [](cv::Point2f a, cv::Point2f b) { return a.y < b.y; };
  const auto [top, bottom] = std::minmax_element(points.begin(), points.end(), isHigher);
  const int first = truncToInt(top->y) - farPx;
  const cv::Rect rows(0, first, frame.image.cols, truncToInt(bottom->y) + farPx + 1 - first);
  return rows & cv::Rect({0, 0}, frame.image.size());
}

// Of every so many centres.
TList<double> lightOf(const TFrame& frame, const TStripe& stripe, std::size_t step) {
  TList<double> light(frame.memory);
  if (stripe.points.empty()) return light;
  light.reserve(stripe.points.size());
  const int far = roundToInt(stripe.widthPx) + kClearPx;
  const cv::Rect all({0, 0}, frame.image.size());
  // Colour is converted in these alone.
  const cv::Rect rows = isColour(frame.image) ? rowsAbout(frame, stripe.points, far) : all;
  const cv::Mat seen = frame.image(rows);
  const TBuffer<unsigned char> pixels(frame.memory, greyBytes(seen));
  const cv::Mat grey = toGrey(seen, pixels);
  const auto pitch = static_cast<std::ptrdiff_t>(grey.step[0]);
  const int lastRow = grey.rows - 1;
  for (std::size_t i = 0; i < stripe.points.size(); i += step) {
    const cv::Point2f p = stripe.points[i];
    const unsigned char* const column = grey.data + truncToInt(p.x);
    const int row = roundToInt(static_cast<double>(p.y)) - rows.y;
    const bool isInside = row >= far && row + far <= lastRow;
    const auto level = [&](int y) {
      return static_cast<int>(column[(isInside ? y : std::clamp(y, 0, lastRow)) * pitch]);
    };
    int sum = 0;
    for (int d = -kRows; d <= kRows; ++d) sum += level(row + d);
    light.push_back(static_cast<double>(sum) / (2 * kRows + 1) - 0.5 * (level(row - far) + level(row + far)));
  }
  return light;
}

// By some of the centres: whether two in a row, as every run has them, are dark against those on either side.
bool mayHaveDimRun(const TList<double>& light) {
  constexpr std::size_t kFar = kNearest / kSampled;
  const auto pair = [&](std::size_t first) { return light[first] + light[first + 1]; };
  for (std::size_t i = kFar; i + kFar + 1 < light.size(); ++i) {
    if (pair(i) < kSampledShare * std::min(pair(i - kFar), pair(i + kFar))) return true;
  }
  return false;
}

TList<double> rowsOf(const TFrame& frame, const TStripe& stripe) {
  TList<double> rows(frame.memory);
  rows.reserve(stripe.points.size());
  for (const cv::Point2f p : stripe.points) rows.push_back(static_cast<double>(p.y));
  return rows;
}

// Light and course of the stripe about its centres.
class TCourse {
public:
  TCourse(const TFrame& frame, const TStripe& stripe)
      : count(static_cast<int>(stripe.points.size())),
        light(runningSums(lightOf(frame, stripe, 1), frame.memory)),
        row(runningSums(rowsOf(frame, stripe), frame.memory)) {}

  bool isDim(int i) const { return isBelow(i, kHalfWindow, kDimShare); }
  bool isEdgeOfDim(int i) const { return isBelow(i, 0, kEdgeShare); }

private:
  // Whether the mean light about a centre is less than a share of that of the stripe beside.
  bool isBelow(int i, int half, double share) const {
    const int left = i - kNearest - kBeside;
    const int right = i + kNearest + 1;
    if (left < 0 || right + kBeside > count) return false;
    const double beside = std::min(mean(light, left, left + kBeside), mean(light, right, right + kBeside));
    if (!(mean(light, i - half, i + half + 1) < share * beside)) return false;
    const double course = 0.5 * (mean(row, left, left + kBeside) + mean(row, right, right + kBeside));
    return std::abs(mean(row, i, i + 1) - course) <= kMostOffPx;
  }

  static double mean(const TList<double>& sums, int first, int last) {
    return (sums[static_cast<std::size_t>(last)] - sums[static_cast<std::size_t>(first)]) / (last - first);
  }

  int count;
  TList<double> light;
  TList<double> row;
};

}  // namespace

std::optional<TStripe> withoutDimRuns(const TFrame& frame, const TStripe& stripe) {
  if (!mayHaveDimRun(lightOf(frame, stripe, kSampled))) return std::nullopt;
  const TCourse course(frame, stripe);
  const int count = static_cast<int>(stripe.points.size());
  TList<char> isDim(stripe.points.size(), 0, frame.memory);
  bool hasRun = false;
  for (int i = 0; i < count;) {
    int end = i;
    while (end < count && course.isDim(end)) ++end;
    const int next = std::max(end, i + 1);
    if (end - i >= kLeastRun) {
      hasRun = true;
      int first = i;
      while (i - first < kHalfWindow && course.isEdgeOfDim(first - 1)) --first;
      while (end - next < kHalfWindow && course.isEdgeOfDim(end)) ++end;
      std::fill(isDim.begin() + first, isDim.begin() + end, 1);
    }
    i = next;
  }
  if (!hasRun) return std::nullopt;
  TStripe rest(frame.memory);
  rest.status.assign(stripe.status.begin(), stripe.status.end());
  rest.widthPx = stripe.widthPx;
  for (std::size_t i = 0; i < stripe.points.size(); ++i) {
    if (isDim[i] != 0) continue;
    rest.points.push_back(stripe.points[i]);
    rest.sources.push_back(stripe.sources[i]);
  }
  return rest;
}

}  // namespace weld
