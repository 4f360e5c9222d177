#include "contrast_cells.h"

#include "scenes/exact_math.h"
#include "scenes/random.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <mutex>
#include <thread>

namespace accuracy {

namespace {

using scenes::TLevel;
using scenes::TPlateScene;
using scenes::TPlateSeam;

constexpr double kNearPx = 5.0;       // median distance of a right line
constexpr double kCoverPx = 10.0;     // from a line, a piece of the seam counts as covered
constexpr double kCovered = 0.7;      // share of the visible seam that is asked for
constexpr double kRoughOffPx = 20.0;  // farthest rough position from the seam
constexpr float kBandPx = 60.0F;
constexpr float kRoughTolDeg = 15.0F;
constexpr double kRoughOffDeg = 5.0;

const std::vector<TPlateSeam> kSeams{TPlateSeam::gap, TPlateSeam::tight, TPlateSeam::step, TPlateSeam::scribe};

TSeamPolarity polarityOf(TPlateSeam seam) {
  if (seam == TPlateSeam::step) return TSeamPolarity::edge;
  return seam == TPlateSeam::scribe ? TSeamPolarity::bright : TSeamPolarity::dark;
}

// A place near the seam; on a plate without one, anywhere.
void askNear(const TPlateScene& scene, std::uint64_t seed, TContrastSearch& search) {
  scenes::TRandom random(seed, scenes::TStream::layout, 77);
  search.bandPx = kBandPx;
  search.directionTolDeg = kRoughTolDeg;
  const std::vector<scenes::TSeamStation>& stations = scene.truth.stations;
  if (stations.empty()) {
    search.roughPos = {static_cast<float>(random.uniform(0.1, 0.9) * scene.image.cols),
                       static_cast<float>(random.uniform(0.1, 0.9) * scene.image.rows)};
    search.directionDeg = static_cast<float>(random.uniform(-90.0, 90.0));
    return;
  }
  const auto place = static_cast<std::size_t>(random.uniform(0.25, 0.75) * static_cast<double>(stations.size()));
  const cv::Point2d off{random.uniform(-1.0, 1.0), random.uniform(-1.0, 1.0)};  // in this order
  search.roughPos = cv::Point2f(stations[place].point + off * (kRoughOffPx / std::sqrt(2.0)));
  cv::Point2d chord = stations.back().point - stations.front().point;
  if (chord.x < 0.0) chord = -chord;
  const double direction = scenes::directionDeg(std::max(chord.x, 1e-9), chord.y);
  search.directionDeg = static_cast<float>(direction + random.uniform(-kRoughOffDeg, kRoughOffDeg));
}

double distanceToLine(const TContourCenterLine& line, cv::Point2d p) {
  double least = HUGE_VAL;
  for (const cv::Point2f& q : line.pts) least = std::min(least, cv::norm(p - cv::Point2d(q)));
  return least;
}

// Whether a search looks there.
bool isAskedFor(const TContrastSearch& search, cv::Point2d p) {
  if (search.bandPx <= 0.0F) return true;
  const scenes::TSinCos along = scenes::sinCosDeg(static_cast<double>(search.directionDeg));
  const cv::Point2d off = p - cv::Point2d(search.roughPos);
  return std::abs(off.x * along.sin - off.y * along.cos) <= static_cast<double>(search.bandPx);
}

double coveredShare(const TContourCenterLine& line, const TContrastSearch& search,
                    const scenes::TPlateTruth& truth) {
  constexpr std::size_t kEvery = 4;
  int visible = 0;
  int covered = 0;
  for (std::size_t i = 0; i < truth.stations.size(); i += kEvery) {
    if (!truth.stations[i].isVisible || !isAskedFor(search, truth.stations[i].point)) continue;
    ++visible;
    covered += distanceToLine(line, truth.stations[i].point) < kCoverPx ? 1 : 0;
  }
  return covered / static_cast<double>(std::max(visible, 1));
}

double medianDistance(const TContourCenterLine& line, const scenes::TPlateTruth& truth) {
  std::vector<double> distances;
  for (const cv::Point2f& p : line.pts) distances.push_back(distanceToSeam(truth, p));
  const auto middle = distances.begin() + static_cast<std::ptrdiff_t>(distances.size() / 2);
  std::nth_element(distances.begin(), middle, distances.end());
  return *middle;
}

void score(const TContourCenterLine& line, const TContrastSearch& search, const scenes::TPlateTruth& truth,
           TContrastFigures& figures) {
  ++figures.plates;
  if (line.pts.empty()) return;
  const double error = medianDistance(line, truth);
  const bool isRight = error < kNearPx;
  const int bin = std::min(static_cast<int>(line.confidence * 10.0F), 9);
  ++figures.lines[bin];
  figures.right[bin] += isRight ? 1 : 0;
  figures.confidence[bin] += static_cast<double>(line.confidence);
  if (line.confidence < TContrastSearch().minConfidence) return;
  if (!isRight) {
    ++figures.wrong;
  } else if (coveredShare(line, search, truth) < kCovered) {
    ++figures.part;
  } else {
    ++figures.found;
    figures.errorsPx.push_back(error);
  }
}

void add(const TContrastFigures& from, TContrastFigures& to) {
  to.plates += from.plates;
  to.found += from.found;
  to.part += from.part;
  to.wrong += from.wrong;
  to.errorsPx.insert(to.errorsPx.end(), from.errorsPx.begin(), from.errorsPx.end());
  for (int bin = 0; bin < 10; ++bin) {
    to.lines[bin] += from.lines[bin];
    to.right[bin] += from.right[bin];
    to.confidence[bin] += from.confidence[bin];
  }
}

// One plate in all the cells that it belongs to, so that it is drawn once.
void measurePlate(TPlateSeam seam, TLevel level, std::uint64_t seed, TContrastFinder& finder,
                  std::vector<TContrastFigures>& figures) {
  const TPlateScene scene = renderPlate(randomPlate(seam, level, seed));
  for (std::size_t c = 0; c < contrastCells().size(); ++c) {
    const TContrastCell& cell = contrastCells()[c];
    if (cell.level != level || std::find(cell.seams.begin(), cell.seams.end(), seam) == cell.seams.end()) continue;
    // Mixed cells take every kind's share of the plates.
    if (cell.seams.size() > 1 && seed % cell.seams.size() != static_cast<std::size_t>(seam) - 1) continue;
    TContrastSearch search;
    search.minConfidence = 0.0F;
    search.polarity = cell.asked == TAskedSeam::automatic ? TSeamPolarity::automatic
                      : seam == TPlateSeam::none          ? cell.polarity
                                                          : polarityOf(seam);
    if (cell.asked == TAskedSeam::near) askNear(scene, seed, search);
    score(finder.find(scene.image, search), search, scene.truth, figures[c]);
  }
}

}  // namespace

const std::vector<TContrastCell>& contrastCells() {
  static const std::vector<TContrastCell> cells = [] {
    const TLevel levels[] = {TLevel::clean, TLevel::noisy, TLevel::harsh};
    std::vector<TContrastCell> all;
    const auto addRow = [&](TContrastCell cell, const TWantedShare(&found)[3], const TWantedShare(&wrong)[3],
                            const double(&px)[3]) {
      for (int i = 0; i < 3; ++i) {
        cell.level = levels[i];
        cell.found = found[i];
        cell.wrong = wrong[i];
        cell.medianPx = px[i];
        all.push_back(cell);
      }
    };
    const auto same = [](double percent) { return TWantedShare{percent, percent}; };
    const TWantedShare any[3] = {};
    const double edgePx[3] = {0.15, 0.2, 0.35};
    const double linePx[3] = {0.1, 0.2, 0.35};
    addRow({"gap 3 to 20 px", {TPlateSeam::gap}}, {same(100), same(100), same(98)}, {same(0), same(0.3), same(1)},
           {0.1, 0.15, 0.25});
    addRow({"tight 1 to 3 px", {TPlateSeam::tight}}, {same(99), same(97), same(85)}, {same(0.3), same(1), same(3)},
           linePx);
    addRow({"step (edge)", {TPlateSeam::step}}, {same(98), same(97), {92, 91.6}}, {same(1), same(1), same(3)},
           edgePx);
    addRow({"bright scribe", {TPlateSeam::scribe}}, {same(98), same(97), same(88)}, {same(1), same(1), same(3)},
           linePx);
    addRow({"automatic", kSeams, TAskedSeam::automatic}, {same(98), same(96), same(86)},
           {same(1), same(1), same(4)}, edgePx);
    addRow({"near a rough position", kSeams, TAskedSeam::near}, {{100, 99.6}, same(98), same(90)},
           {same(0.3), same(1), same(3)}, edgePx);
    addRow({"no seam, dark", {TPlateSeam::none}}, any, {same(0.5), same(0.5), same(1)}, {0, 0, 0});
    addRow({"no seam, automatic", {TPlateSeam::none}, TAskedSeam::automatic}, any, {same(0.5), same(1), same(1.5)},
           {0, 0, 0});
    addRow({"no seam, near anywhere", {TPlateSeam::none}, TAskedSeam::near}, any, {same(1), same(1), same(2)},
           {0, 0, 0});
    return all;
  }();
  return cells;
}

std::vector<TContrastFigures> measureContrast(int plates, std::uint64_t seed, int threads) {
  constexpr int kKinds = 5;
  constexpr int kLevels = 3;
  std::vector<TContrastFigures> sum(contrastCells().size());
  std::mutex guard;
  std::atomic<int> next{0};
  const auto work = [&] {
    TContrastFinder finder;
    std::vector<TContrastFigures> own(sum.size());
    for (int n = next++; n < plates * kKinds * kLevels; n = next++) {
      measurePlate(static_cast<TPlateSeam>(n % kKinds), static_cast<TLevel>(n / kKinds % kLevels),
                   seed + static_cast<std::uint64_t>(n / (kKinds * kLevels)), finder, own);
    }
    const std::lock_guard<std::mutex> lock(guard);
    for (std::size_t c = 0; c < sum.size(); ++c) add(own[c], sum[c]);
  };
  std::vector<std::thread> pool;
  for (int t = 0; t < threads; ++t) pool.emplace_back(work);
  for (std::thread& thread : pool) thread.join();
  return sum;
}

}  // namespace accuracy
