#include "tools/advise.h"

#include "tools/image_prep.h"
#include "tools/parameter.h"
#include "tools/stats.h"
#include "tools/text.h"
#include "tools/tracker_options.h"

#include <algorithm>
#include <cmath>
#include <map>

namespace tool {
namespace {

constexpr std::size_t kMostGroups = 2;  // combinations of parameters that are tried
constexpr double kMostOfFrames = 0.8;   // that a tighter value is enough for
constexpr double kLongerJump = 2.0;     // of the longest jump that was given
constexpr int kStretches = 4;           // of the frames that settings are sifted by
constexpr int kLeadIn = 4;              // frames before a loss
constexpr int kStretchFrames = 14;
constexpr double kLeastGain = 0.5;  // of the lost frames
constexpr double kMostLost = 0.01;  // of the frames found before
constexpr double kMostShiftPx = 2.0;
constexpr double kMostP95ShiftPx = 5.0;
constexpr double kMostJitterPx = 5.0;
constexpr double kSureShare = 0.5;   // of the confidence before
constexpr double kLeastFound = 0.9;  // where hardly anything was found before
constexpr double kHardlyFound = 0.1;

// The values of one parameter that lost frames need.
struct TDemand {
  TLimitKind kind = TLimitKind::atLeast;
  std::vector<double> enough;

  // Enough for that share of the frames.
  double forShare(double share) const {
    std::vector<double> sorted = enough;
    std::sort(sorted.begin(), sorted.end());
    if (isLowerLimit(kind)) {
      std::reverse(sorted.begin(), sorted.end());
    }
    return sorted[static_cast<std::size_t>(share * static_cast<double>(sorted.size() - 1))];
  }
};

using TDemands = std::map<std::string, TDemand>;  // by parameter

// The combinations of parameters that lost frames need, the most frequent first.
std::vector<TDemands> demandsOf(const TTrial& trial) {
  std::map<std::string, TDemands> groups;
  for (const std::vector<TTraceNeed>& needs : trial.needs) {
    std::string key;
    for (const TTraceNeed& need : needs) {
      key += need.parameter + " ";
    }
    for (const TTraceNeed& need : needs) {
      TDemand& demand = groups[key][need.parameter];
      demand.kind = need.kind;
      demand.enough.push_back(need.enough);
    }
  }
  std::vector<TDemands> sorted;
  for (auto& [key, demands] : groups) {
    sorted.push_back(std::move(demands));
  }
  std::stable_sort(sorted.begin(), sorted.end(), [](const TDemands& a, const TDemands& b) {
    return a.begin()->second.enough.size() > b.begin()->second.enough.size();
  });
  sorted.resize(std::min(sorted.size(), kMostGroups));
  return sorted;
}

void setParameter(TSetting& setting, const TWeldParameter& parameter, double value, TLimitKind kind) {
  const TParameterLimits& limits = parameter.limits;
  parameter.value.set(setting.params, value);
  setting.isLoosest = setting.isLoosest || (isLowerLimit(kind) ? value <= limits.min : value >= limits.max);
  setting.changes.push_back(std::string("--set ") + parameter.name + "=" + plain(value));
}

// Between two limits, in whole units where both are far from zero.
double halfWay(double a, double b) {
  const double middle = a > 0.0 && b > 0.0 ? std::sqrt(a * b) : 0.5 * (a + b);
  return std::abs(middle) >= 2.0 ? std::floor(middle) : middle;
}

TSetting changedWay(const TSetting& given, const std::string& change) {
  TSetting setting = given;
  setting.changes.push_back(change);
  return setting;
}

std::vector<TSetting> presetsOf(const TSetting& given) {
  std::vector<TSetting> settings;
  for (const TCornerPreset& preset : cornerPresets()) {
    settings.push_back(changedWay(given, std::string("--preset ") + preset.name));
    settings.back().params = preset.applyTo(given.params);
  }
  return settings;
}

int countFound(const TTrial& trial) {
  return static_cast<int>(
      std::count_if(trial.seams.begin(), trial.seams.end(), [](const auto& s) { return s.has_value(); }));
}

// Why a setting is not to be trusted, whatever it finds; without labels, by what is plausible.
std::string doubtAbout(const TTrial& given, const TTrial& tried) {
  if (tried.truth.judged > 0) {
    return tried.truth.wrong > given.truth.wrong
               ? "gives " + std::to_string(tried.truth.wrong) + " wrong seams, by the labels"
               : "";
  }
  if (tried.setting.isLoosest) {
    return "lets a test pass everything";
  }
  const double jitterPx = tried.figures.jitter().medianPx().value_or(0.0);
  if (jitterPx > std::max(kMostJitterPx, given.figures.jitter().medianPx().value_or(0.0))) {
    return "gives seams that jump by " + fixed(jitterPx, 1) + " px";
  }
  if (tried.figures.stripeEndShare() > 0.5) {
    return "finds the end of the stripe";
  }
  const auto frames = static_cast<double>(tried.seams.size());
  const bool wasHardlyFound = countFound(given) < kHardlyFound * frames;
  if (wasHardlyFound ? countFound(tried) < kLeastFound * frames
                     : tried.figures.confidence() < kSureShare * given.figures.confidence()) {
    return wasHardlyFound ? "finds too few frames to be sure" : "finds seams that are less sure";
  }
  return "";
}

std::string objectionTo(const TTrial& given, const TTrial& tried, const TChange& change, double p95ShiftPx) {
  const int found = countFound(given);
  const int lost = static_cast<int>(given.seams.size()) - found;
  if (change.gained < kLeastGain * lost || change.gained == 0) {
    return "finds " + std::to_string(change.gained) + " of " + std::to_string(lost) + " lost frames";
  }
  if (change.lost > kMostLost * found) {
    return "loses " + std::to_string(change.lost) + " frames that were found";
  }
  if (change.medianShiftPx.value_or(0.0) > kMostShiftPx || p95ShiftPx > kMostP95ShiftPx) {
    return "moves good seams by " + fixed(*change.medianShiftPx, 1) + " px, 5 % of them by more than " +
           fixed(p95ShiftPx, 1) + " px";
  }
  return doubtAbout(given, tried);
}

}  // namespace

std::vector<TSetting> otherWays(const TSetting& given, TWeldType lookalike,
                                const std::optional<TPreparation>& turns) {
  std::vector<TSetting> settings;
  for (const TStripeExtraction extraction : {TStripeExtraction::edgePairs, TStripeExtraction::ridge}) {
    settings.push_back(changedWay(given, std::string("--extraction ") + extractionText(extraction)));
    settings.back().tracker.extraction = extraction;
  }
  if (std::isfinite(given.tracker.maxJumpPx)) {
    const double longerPx = kLongerJump * given.tracker.maxJumpPx;
    settings.push_back(changedWay(given, "--max-jump " + plain(longerPx)));
    settings.back().tracker.maxJumpPx = longerPx;
  }
  if (given.params.weldType == TWeldType::corner) {
    const std::vector<TSetting> presets = presetsOf(given);
    settings.insert(settings.end(), presets.begin(), presets.end());
  }
  if (lookalike != TWeldType::none) {
    settings.push_back(changedWay(given, std::string("--type ") + findWeldJoint(lookalike)->name));
    settings.back().params = TWeldParams();
    initWeldParameters(lookalike, settings.back().params, TWeldPosType::centre);
  }
  if (turns) {
    settings.push_back(changedWay(given, "--rotate " + std::to_string((turns->rotationDeg + 90) % 360)));
    settings.back().turnDeg = 90;
  }
  return settings;
}

std::vector<TSetting> settingsFor(const TTrial& trial) {
  std::vector<TSetting> settings;
  for (const TDemands& demands : demandsOf(trial)) {
    TSetting forAll = trial.setting;
    TSetting forMost = trial.setting;
    TSetting halfWaySetting = trial.setting;
    for (const auto& [name, demand] : demands) {
      const TWeldParameter& parameter = findParameter(trial.setting.params.weldType, name);
      const double loosest = demand.forShare(1.0);
      setParameter(forAll, parameter, loosest, demand.kind);
      setParameter(forMost, parameter, demand.forShare(kMostOfFrames), demand.kind);
      setParameter(halfWaySetting, parameter, halfWay(loosest, parameter.value.get(trial.setting.params)),
                   demand.kind);
    }
    for (const TSetting& setting : {halfWaySetting, forMost, forAll}) {
      const bool isNew = std::none_of(settings.begin(), settings.end(),
                                      [&](const TSetting& other) { return other.changes == setting.changes; });
      if (isNew) {
        settings.push_back(setting);
      }
    }
  }
  return settings;
}

std::vector<TStretch> stretchesAround(const TTrial& given) {
  std::vector<int> losses;  // first frames of stretches that are lost, or of pieces of them
  const int frames = static_cast<int>(given.seams.size());
  for (int i = 0; i < frames; ++i) {
    const bool isLost = !given.seams[static_cast<std::size_t>(i)];
    if (isLost && (losses.empty() || i - losses.back() >= kStretchFrames)) {
      losses.push_back(i);
    }
  }
  std::vector<TStretch> stretches;
  for (int n = 0; n < kStretches && !losses.empty(); ++n) {
    const int loss = losses[losses.size() * static_cast<std::size_t>(n) / kStretches];
    const TStretch stretch{std::max(0, loss - kLeadIn), std::min(frames - 1, loss - kLeadIn + kStretchFrames)};
    if (stretches.empty() || stretch.first > stretches.back().last) {
      stretches.push_back(stretch);
    }
  }
  return stretches;
}

TChange changeBetween(const TTrial& given, const TTrial& tried) {
  TChange change;
  std::vector<double> shiftsPx;
  for (std::size_t i = 0; i < given.seams.size(); ++i) {
    const auto& before = given.seams[i];
    const auto& after = tried.seams[i];
    change.gained += !before && after ? 1 : 0;
    change.lost += before && !after ? 1 : 0;
    if (before && after) {
      shiftsPx.push_back(cv::norm(*before - *after));
    }
  }
  if (!shiftsPx.empty()) {
    change.medianShiftPx = percentile(shiftsPx, 0.5);
  }
  change.objection = objectionTo(given, tried, change, percentile(shiftsPx, 0.95));
  return change;
}

bool isBetterAdvice(const TTrial& a, const TTrial& b, const TTrial& given) {
  const int more = countFound(a) - countFound(b);
  if (std::abs(more) > kMostLost * static_cast<double>(a.seams.size())) {
    return more > 0;
  }
  if (a.setting.changes.size() != b.setting.changes.size()) {
    return a.setting.changes.size() < b.setting.changes.size();
  }
  return changeBetween(given, a).medianShiftPx.value_or(0.0) < changeBetween(given, b).medianShiftPx.value_or(0.0);
}

}  // namespace tool
