#include "stripe/dark_break.h"

#include "stripe/break_lines.h"
#include "stripe/longest_piece.h"
#include "support/grey_image.h"
#include "support/line_math.h"
#include "support/median.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace weld {

namespace {

constexpr int kLeastColumns = 40;
constexpr int kCourseReach = 7;     // columns to either side whose median is the course of the stripe
constexpr int kStripeReach = 2;     // rows about the course that tell the brightness
constexpr int kMostDark = 3;        // columns
constexpr int kBesideColumns = 10;  // that a dark column is held against, on either side,
constexpr int kLeastBeside = 5;     // and at an end of the piece
constexpr int kStepColumns = 20;    // on either side of a step
constexpr int kStepSkipped = 2;
constexpr int kStepMargin = kStepColumns + kStepSkipped;  // columns at either end without a step
constexpr int kRivalPx = 14;                              // nearer places are the same break
constexpr int kSamePlacePx = 2;

// Scatters below these come of images without noise.
constexpr double kLeastDipScatter = 0.06;
constexpr double kLeastStepScatter = 0.05;  // px

constexpr double kMostOfDip = 8.0;
constexpr double kMostOfStep = 4.0;
constexpr double kStepWeight = 0.7;
constexpr double kLineFloor = 2.0;
constexpr double kMostOfLine = 8.0;

constexpr std::size_t kMostPlaces = 6;

constexpr double kLeastScore = 5.0;
constexpr double kLeastMargin = 1.5;  // of a single frame
constexpr double kLeastLine = 2.5;

constexpr TFailure kNoBreak{17, TWeldOutcome::elementMissing, "gap", "no dark break in the stripe"};
constexpr TFailure kNoCertain{18, TWeldOutcome::elementMissing, "gap", "several breaks in the stripe"};
constexpr TCheck kColumns = countCheck(kNoBreak, "columns of the stripe in one piece", TRule::atLeast);
constexpr TCheck kScore{kNoBreak, "score of the darkest break", TRule::atLeast};
constexpr TCheck kLine{kNoBreak, "dark line beside the stripe, in scatters", TRule::atLeast};
constexpr TCheck kMarginCheck{kNoCertain, "score over that of the next break", TRule::atLeast};

using TValues = TList<double>;

double meanOf(const TValues& values, int first, int count) {
  double sum = 0.0;
  for (int i = first; i < first + count; ++i) sum += values[static_cast<std::size_t>(i)];
  return sum / count;
}

double highestNear(const TValues& values, int i) {
  const auto begin = values.begin() + std::max(i - kSamePlacePx, 0);
  const auto end = values.begin() + std::min(i + kSamePlacePx + 1, static_cast<int>(values.size()));
  return *std::max_element(begin, end);
}

// The piece of the stripe column by column, from its first centre to its last.
struct TCourse {
  int firstColumn = 0;
  TValues centres;  // rows; of a column without one that of the column before
  TValues rows;     // smoothed

  int columns() const { return static_cast<int>(centres.size()); }
};

TCourse courseOf(TPointView piece, TMemory* memory) {
  TCourse course{truncToInt(piece.front().x), TValues(memory), TValues(memory)};
  const int columns = truncToInt(piece.back().x) - course.firstColumn + 1;
  course.centres.reserve(static_cast<std::size_t>(columns));
  const cv::Point2f* p = piece.begin();
  for (int i = 0; i < columns; ++i) {
    if (p + 1 != piece.end() && truncToInt((p + 1)->x) <= course.firstColumn + i) ++p;
    course.centres.push_back(static_cast<double>(p->y));
  }
  course.rows.reserve(course.centres.size());
  TValues window(memory);
  for (int i = 0; i < columns; ++i) {
    const int first = std::max(i - kCourseReach, 0);
    const int last = std::min(i + kCourseReach, columns - 1);
    window.assign(course.centres.begin() + first, course.centres.begin() + last + 1);
    course.rows.push_back(medianOf(window));
  }
  return course;
}

// Mean of the brightest pixel and of all about the course, grey levels.
TValues brightnessAlong(const cv::Mat& grey, const TCourse& course, TMemory* memory) {
  TValues brightness(memory);
  brightness.reserve(course.centres.size());
  for (int i = 0; i < course.columns(); ++i) {
    const int row = roundToInt(course.rows[static_cast<std::size_t>(i)]);
    int brightest = 0;
    double sum = 0.0;
    for (int y = row - kStripeReach; y <= row + kStripeReach; ++y) {
      const int level = grey.at<unsigned char>(std::clamp(y, 0, grey.rows - 1), course.firstColumn + i);
      brightest = std::max(brightest, level);
      sum += level;
    }
    brightness.push_back(0.5 * (brightest + sum / (2 * kStripeReach + 1)));
  }
  return brightness;
}

struct TDips {
  TValues depth;      // in scatters, of the best width about a column
  TList<int> widths;  // columns
};

// How much darker some columns are than the darker one of their surroundings.
TDips findDips(const TValues& brightness, TMemory* memory) {
  const int columns = static_cast<int>(brightness.size());
  TDips dips{TValues(brightness.size(), 0.0, memory), TList<int>(brightness.size(), 1, memory)};
  TValues depth(memory);
  TValues work(memory);
  for (int width = 1; width <= kMostDark; ++width) {
    depth.assign(brightness.size(), 0.0);
    for (int i = kLeastBeside; i + width + kLeastBeside <= columns; ++i) {
      const int left = std::min(i, kBesideColumns);
      const int right = std::min(columns - i - width, kBesideColumns);
      const double beside = std::min(meanOf(brightness, i - left, left), meanOf(brightness, i + width, right));
      const double drop = beside - meanOf(brightness, i, width);
      depth[static_cast<std::size_t>(i + (width - 1) / 2)] = drop / std::max(beside, 1.0);
    }
    const double scatter = std::max(scatterOf(depth, work), kLeastDipScatter);
    for (std::size_t i = 0; i < depth.size(); ++i) {
      if (depth[i] / scatter <= dips.depth[i]) continue;
      dips.depth[i] = depth[i] / scatter;
      dips.widths[i] = width;
    }
  }
  return dips;
}

// Row of the least squares line through so many columns from the first one on, at a column.
double extrapolate(const TValues& rows, int first, int count, int column) {
  const double middle = first + 0.5 * (count - 1);
  double xy = 0.0;
  double xx = 0.0;
  for (int i = first; i < first + count; ++i) {
    xy += (i - middle) * rows[static_cast<std::size_t>(i)];
    xx += (i - middle) * (i - middle);
  }
  return meanOf(rows, first, count) + xy / xx * (column - middle);
}

// The step of the centres across each column, in scatters.
TValues findSteps(const TValues& centres, TMemory* memory) {
  TValues steps(centres.size(), 0.0, memory);
  for (int i = kStepMargin; i + kStepMargin < static_cast<int>(centres.size()); ++i) {
    steps[static_cast<std::size_t>(i)] =
        extrapolate(centres, i + kStepSkipped, kStepColumns, i) -
        extrapolate(centres, i - kStepSkipped - kStepColumns + 1, kStepColumns, i);
  }
  TValues work(memory);
  const double scatter = std::max(scatterOf(steps, work), kLeastStepScatter);
  for (double& step : steps) step = std::abs(step) / scatter;
  return steps;
}

struct TScores {
  TDips dips;
  TValues lines;
  TValues all;
};

TScores scoreColumns(const cv::Mat& grey, const TCourse& course, double widthPx, TMemory* memory) {
  TScores scores{findDips(brightnessAlong(grey, course, memory), memory),
                 findLines(grey, course.firstColumn, course.rows, widthPx, memory),
                 TValues(course.centres.size(), 0.0, memory)};
  const TValues steps = findSteps(course.centres, memory);
  for (int i = 0; i < course.columns(); ++i) {
    if (!(scores.dips.depth[static_cast<std::size_t>(i)] > 0.0)) continue;
    const double dip = std::min(scores.dips.depth[static_cast<std::size_t>(i)], kMostOfDip);
    const double step = std::min(highestNear(steps, i), kMostOfStep);
    const double line = std::clamp(highestNear(scores.lines, i) - kLineFloor, 0.0, kMostOfLine);
    scores.all[static_cast<std::size_t>(i)] = dip + kStepWeight * step + line;
  }
  return scores;
}

// The dip, and the line near it, each by its strength.
TDarkBreak breakAt(const TScores& scores, int place, int firstColumn) {
  const auto begin = scores.lines.begin() + std::max(place - kSamePlacePx, 0);
  const auto end =
      scores.lines.begin() + std::min(place + kSamePlacePx + 1, static_cast<int>(scores.lines.size()));
  const auto line = std::max_element(begin, end);
  const auto i = static_cast<std::size_t>(place);
  const int width = scores.dips.widths[i];
  const double dip = scores.dips.depth[i];
  const double dipX = place + 0.5 * ((width - 1) % 2);
  const double lineX = static_cast<double>(line - scores.lines.begin());
  return {firstColumn + (dip * dipX + *line * lineX) / (dip + *line), firstColumn + place - (width - 1) / 2, width,
          scores.all[i], *line};
}

int columnsOf(TPointView piece) {
  return piece.empty() ? 0 : truncToInt(piece.back().x) - truncToInt(piece.front().x) + 1;
}

// Of a piece, the highest score first.
void addPlaces(const TFrame& frame, const cv::Mat& grey, TPointView piece, double widthPx,
               TList<TDarkBreak>& places) {
  const TCourse course = courseOf(piece, frame.memory);
  TScores scores = scoreColumns(grey, course, widthPx, frame.memory);
  for (std::size_t i = 0; i < kMostPlaces; ++i) {
    const auto highest = std::max_element(scores.all.begin(), scores.all.end());
    if (!(*highest > 0.0)) return;
    const int place = static_cast<int>(highest - scores.all.begin());
    places.push_back(breakAt(scores, place, course.firstColumn));
    std::fill(scores.all.begin() + std::max(place - kRivalPx, 0),
              scores.all.begin() + std::min(place + kRivalPx + 1, course.columns()), 0.0);
  }
}

double marginOf(TView<TDarkBreak> places) {
  return places[0].score / std::max(places.size() > 1 ? places[1].score : 0.0, 1.0);
}

}  // namespace

TList<TDarkBreak> findDarkBreaks(const TFrame& frame, const TStripe& stripe) {
  const TTrace& trace = frame.trace;
  const TStageTimer timer(trace, "dark break");
  TList<TDarkBreak> places(frame.memory);
  if (!trace.passes(kColumns, columnsOf(longestPiece(stripe.points)), kLeastColumns)) return places;
  const TBuffer<unsigned char> pixels(frame.memory, greyBytes(frame.image));
  const cv::Mat grey = toGrey(frame.image, pixels);
  const TPointView points = stripe.points;
  places.reserve(points.size() / kLeastColumns * kMostPlaces + kMostPlaces);
  for (std::size_t i = 0; i < points.size();) {
    const TPointView piece = firstPiece(points.part(i, points.size() - i));
    if (columnsOf(piece) >= kLeastColumns) addPlaces(frame, grey, piece, stripe.widthPx, places);
    i += piece.size();
  }
  const auto isHigher = [](const TDarkBreak& a, const TDarkBreak& b) { return a.score > b.score; };
  std::stable_sort(places.begin(), places.end(), isHigher);
  if (places.size() > kMostPlaces) places.resize(kMostPlaces);
  return places;
}

bool isDarkBreak(const TTrace& trace, TView<TDarkBreak> places) {
  return !places.empty() && trace.passes(kScore, places[0].score, kLeastScore) &&
         trace.passes(kLine, places[0].line, kLeastLine) &&
         trace.passes(kMarginCheck, marginOf(places), kLeastMargin);
}

}  // namespace weld
