#include "seam_tables.h"

#include "scenes/score.h"
#include "seam_targets.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace accuracy {

namespace {

constexpr std::size_t kBins = 10;
constexpr int kFewestOfBin = 30;  // a share of fewer frames says little
constexpr double kLeastSigmaPx = 0.01;

struct TBin {
  int frames = 0;
  int right = 0;
  double confidence = 0.0;  // sum
};

// Answers of the default tracker to scenes of its own joint, seen once.
template <typename TUse>
void forEachClaim(const TRun& run, const TUse& use) {
  for (std::size_t i = 0; i < run.reels.size(); ++i) {
    const TReel& reel = run.reels[i];
    if (reel.show != TShow::scene || reel.subject.decoy) continue;
    const TAnswer& answer = run.answers[i].asked.front().frames.front();
    if (answer.isFound && !std::isnan(answer.confidence)) use(reel, answer);
  }
}

TRow binRow(const char* group, std::size_t index, const TBin& bin) {
  const double mean = bin.confidence / bin.frames;
  const double right = static_cast<double>(bin.right) / bin.frames;
  const auto ratio = [](double value) { return roundedFor(TUnit::ratio, value); };
  const bool isHeld = bin.frames >= kFewestOfBin;
  TRow row{{group, textOf(TUnit::percent, static_cast<double>(index) / kBins)}, {}, std::to_string(bin.frames)};
  row.figures = {{"mean confidence", TUnit::ratio, ratio(mean), {}},
                 {"share right", TUnit::ratio, ratio(right), {}},
                 {"difference", TUnit::ratio, ratio(right - mean), isHeld ? confidenceTarget() : TWanted()}};
  return row;
}

// Root mean square.
double deviationOf(const std::vector<double>& ratios) {
  double sum = 0.0;
  for (const double ratio : ratios) sum += ratio * ratio;
  return ratios.empty() ? std::numeric_limits<double>::quiet_NaN()
                        : std::sqrt(sum / static_cast<double>(ratios.size()));
}

}  // namespace

TTable confidenceTable(const TRun& run) {
  TTable table{"confidence",
               "Confidence of first detections against the share that is right",
               {"joints", "bin from"},
               "frames",
               true,
               {}};
  std::array<std::array<TBin, kBins>, 2> bins;  // plain joints, grooves
  forEachClaim(run, [&](const TReel& reel, const TAnswer& answer) {
    const auto index = static_cast<std::size_t>(std::clamp(answer.confidence, 0.0, 0.999) * kBins);
    TBin& bin = bins[isGroove(reel.subject.joint) ? 1 : 0][index];
    ++bin.frames;
    bin.right += answer.errorPx < kRightPx ? 1 : 0;
    bin.confidence += answer.confidence;
  });
  for (const bool areGrooves : {true, false}) {
    for (std::size_t b = 0; b < kBins; ++b) {
      const TBin& bin = bins[areGrooves ? 1 : 0][b];
      if (bin.frames > 0) table.rows.push_back(binRow(areGrooves ? "grooves" : "others", b, bin));
    }
  }
  return table;
}

TTable sigmaTable(const TRun& run) {
  TTable table{
      "sigma", "Error over sigma of the named points, first detections", {"joint", "level"}, "points", false, {}};
  for (const scenes::TDrawnJoint& drawn : scenes::seamJoints()) {
    for (const TLevelName& level : kLevels) {
      std::vector<double> ratios;
      forEachClaim(run, [&](const TReel& reel, const TAnswer& answer) {
        if (reel.subject.joint != drawn.joint || reel.level != level.level) return;
        for (const TPointAnswer& point : answer.points)
          ratios.push_back(point.errorPx / std::max(kLeastSigmaPx, point.sigmaPx));
      });
      if (ratios.empty()) continue;
      TRow row{{scenes::shortNameOf(drawn.joint), level.name}, {}, std::to_string(ratios.size())};
      row.figures = {{"rms", TUnit::ratio, roundedFor(TUnit::ratio, deviationOf(ratios)), sigmaTarget()},
                     {"median", TUnit::ratio, roundedFor(TUnit::ratio, scenes::quantile(ratios, 0.5)), {}}};
      table.rows.push_back(row);
    }
  }
  return table;
}

}  // namespace accuracy
