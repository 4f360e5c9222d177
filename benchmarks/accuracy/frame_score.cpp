#include "frame_score.h"

#include <algorithm>
#include <cmath>

namespace accuracy {

namespace fs = std::filesystem;

namespace {

constexpr double kColumnPx = 3.0;  // a centre so near the weak line follows the stripe
constexpr double kQuietPx = 2.0;   // shift of a weak line that stays where it is, in most of its columns
constexpr std::size_t kQuietPercent = 95;
constexpr double kMostToeStepPx = 5.0;

std::optional<cv::Point2d> pointOf(const TTrackedSeam& seam, const std::optional<TFeature>& feature) {
  if (seam.state != TSeamState::found) return std::nullopt;
  if (!feature) return cv::Point2d(seam.weldPos);
  for (const TFeaturePoint& point : seam.measurement.points) {
    if (point.feature == *feature) return cv::Point2d(point.pos);
  }
  return std::nullopt;
}

std::vector<TLabel> labelsOf(const std::vector<TLabel>& labels, const fs::path& file, const TPointRow& row) {
  std::vector<TLabel> own;
  std::copy_if(labels.begin(), labels.end(), std::back_inserter(own), [&](const TLabel& label) {
    const auto isNamed = [&](const char* name) { return label.name == name; };
    return label.file == file.filename() && std::any_of(row.labels.begin(), row.labels.end(), isNamed);
  });
  return own;
}

void addFound(const cv::Point2d& point, const std::vector<TLabel>& labels, double factor, TPointScore& score) {
  double nearestPx = HUGE_VAL;
  bool isRight = false;
  for (const TLabel& label : labels) {
    const double px = std::hypot(point.x - label.point.x, point.y - label.point.y);
    nearestPx = std::min(nearestPx, px);
    isRight = isRight || px <= factor * label.tolerancePx;
  }
  score.errorsPx.push_back(nearestPx);
  ++(isRight ? score.right : score.wrong);
}

// Of the weak line's columns the share in which a centre lies near it, in percent.
double columnPercent(const TWeakLine& line, const std::vector<cv::Point2f>& centres) {
  int columns = 0;
  int near = 0;
  auto centre = centres.begin();
  for (std::size_t i = 0; i < line.size();) {
    const double x = line[i].x;
    while (centre != centres.end() && centre->x < x) ++centre;
    const bool hasCentre = centre != centres.end() && centre->x == static_cast<float>(x);
    bool isNear = false;
    for (; i < line.size() && line[i].x == x; ++i)
      isNear = isNear || (hasCentre && std::abs(centre->y - line[i].y) <= kColumnPx);
    ++columns;
    near += isNear ? 1 : 0;
  }
  return columns > 0 ? 100.0 * near / columns : std::nan("");
}

// Plates stay where they are when a part moves sideways; its flanks do not.
bool isQuiet(const TWeakLine& before, const TWeakLine& line) {
  std::vector<double> shifts;
  auto other = before.begin();
  for (const cv::Point2d p : line) {
    while (other != before.end() && other->x < p.x) ++other;
    if (other != before.end() && other->x == p.x) shifts.push_back(std::abs(other->y - p.y));
  }
  std::sort(shifts.begin(), shifts.end());
  return !shifts.empty() && shifts[shifts.size() * kQuietPercent / 100] <= kQuietPx;
}

struct TRunFrame {
  TWeakLine line;
  TTrackedSeam seam;
};

bool hasJumpedToe(const TTrackedSeam& before, const TTrackedSeam& seam) {
  for (const TFeature toe : {TFeature::leftShoulder, TFeature::rightShoulder}) {
    const auto a = pointOf(before, toe);
    const auto b = pointOf(seam, toe);
    if (a && b && std::hypot(a->x - b->x, a->y - b->y) > kMostToeStepPx) return true;
  }
  return false;
}

void addStep(const TRunFrame& before, const TRunFrame& frame, TRunScore& score) {
  const bool areFound = before.seam.state == TSeamState::found && frame.seam.state == TSeamState::found;
  if (!areFound || !isQuiet(before.line, frame.line)) return;
  ++score.quietSteps;
  score.jumpedToes += hasJumpedToe(before.seam, frame.seam) ? 1 : 0;
}

}  // namespace

double medianOf(std::vector<double> values) {
  if (values.empty()) return std::nan("");
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

TPointScore scorePoints(const fs::path& root, const TPointRow& row, const TTrackerOptions& options) {
  const fs::path folder = root / row.folder;
  const std::vector<TLabel> all = readLabels(folder);
  TPointScore score;
  TWeldTracker tracker(paramsOf(row.asked), options);
  for (const fs::path& file : listFrames(folder)) {
    if (!row.files.empty() && std::find(row.files.begin(), row.files.end(), file.filename()) == row.files.end())
      continue;
    std::vector<TLabel> labels = labelsOf(all, file, row);
    const bool isScored = !labels.empty() || row.knowsAllJoints;
    if (!isScored && !row.isSequence) continue;
    const cv::Mat frame = readFrame(file, row.asked.preparation);
    if (!row.isSequence) tracker.reset();
    const auto point = pointOf(tracker.track(frame), row.feature);
    if (!isScored) continue;
    for (TLabel& label : labels) label.point = toPrepared(label.point, frame, row.asked.preparation);
    if (point && !labels.empty()) {
      addFound(*point, labels, row.toleranceFactor, score);
    } else {
      ++(point ? score.wrong : labels.empty() ? score.empty : score.refused);
    }
  }
  return score;
}

TRunScore scoreRun(const fs::path& root, const TRunRow& row, const TTrackerOptions& options) {
  TTrackerOptions traced = options;
  traced.keepTrace = true;
  TRunScore score;
  TWeldTracker tracker(paramsOf(row.asked), traced);
  std::optional<TRunFrame> before;
  for (const fs::path& file : listFrames(root / row.folder)) {
    const int number = std::stoi(file.stem().string().substr(6));
    if (number < row.frames[0] || number > row.frames[1]) continue;
    const TTrackedSeam seam = tracker.track(readFrame(file, row.asked.preparation));
    TRunFrame frame{readWeakLine(file), seam};
    ++score.frames;
    score.found += seam.state == TSeamState::found ? 1 : 0;
    const bool isNamed = tracker.lastTrace().sentence.find("groove") != std::string::npos;
    score.named += seam.state != TSeamState::found && isNamed ? 1 : 0;
    score.columnPercents.push_back(columnPercent(frame.line, seam.line.stripePts));
    if (before) addStep(*before, frame, score);
    before = std::move(frame);
  }
  return score;
}

}  // namespace accuracy
