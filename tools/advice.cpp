#include "tools/advice.h"

#include "tools/cli_error.h"
#include "tools/names.h"

#include <algorithm>
#include <map>

namespace tool {
namespace {

constexpr std::size_t kRecognised = 12;   // lost frames that are asked which joint they show
constexpr double kMayStandUpright = 0.5;  // share of frames lost

TStretch wholeOf(const TTrial& given) {
  return {0, static_cast<int>(given.seams.size()) - 1};
}

// The joint that most of the lost frames look like; none where it is the one that is looked for.
TWeldType lookalikeOf(const TTrial& given, const TPictures& pictures) {
  std::vector<std::size_t> lost;
  for (std::size_t i = 0; i < given.seams.size(); ++i) {
    if (!given.seams[i]) {
      lost.push_back(i);
    }
  }
  const std::size_t asked = std::min(kRecognised, lost.size());
  std::map<TWeldType, std::size_t> votes;
  for (std::size_t n = 0; n < asked; ++n) {
    const auto candidates = recogniseJoint(pictures(static_cast<int>(lost[n * lost.size() / asked])));
    if (!candidates.empty()) {
      ++votes[candidates.front().weldType];
    }
  }
  for (const auto& [type, count] : votes) {
    if (2 * count > asked && type != given.setting.params.weldType) {
      return type;
    }
  }
  return TWeldType::none;
}

// Tries everything on a few stretches around losses: other ways first, then what each of them needs.
TSifting sift(const TScene& scene, const TTrial& given, const TTryAll& tryAll, const TPictures& pictures) {
  const std::vector<TStretch> stretches = stretchesAround(given);
  const bool mayStandUpright =
      static_cast<double>(given.figures.found()) < (1.0 - kMayStandUpright) * given.figures.frames();
  std::vector<TSetting> ways = otherWays(given.setting, lookalikeOf(given, pictures),
                                         mayStandUpright ? std::make_optional(scene.preparation) : std::nullopt);
  ways.insert(ways.begin(), given.setting);
  for (TSetting& way : ways) {
    way.tracker.giveAdvice = true;
  }
  std::vector<TTrial> trials = tryAll(stretches, ways);
  std::vector<TSetting> refined;
  for (const TTrial& trial : trials) {
    const std::vector<TSetting> settings = settingsFor(trial);
    refined.insert(refined.end(), settings.begin(), settings.end());
  }
  for (TSetting& setting : refined) {
    setting.tracker.giveAdvice = false;
  }
  for (TTrial& trial : tryAll(stretches, refined)) {
    trials.push_back(std::move(trial));
  }
  TSifting sifting;
  sifting.reasons = trials.front().figures.reasons().rows();
  sifting.tried = static_cast<int>(trials.size()) - 1;
  sifting.frames = static_cast<int>(trials.front().seams.size());
  int mostGained = 0;
  for (std::size_t i = 1; i < trials.size(); ++i) {
    const TChange change = changeBetween(trials.front(), trials[i]);
    if (change.objection.empty()) {
      sifting.best.push_back(trials[i]);
    } else if (change.gained > mostGained) {
      mostGained = change.gained;
      sifting.next = trials[i];
      sifting.objection = change.objection;
    }
  }
  std::stable_sort(sifting.best.begin(), sifting.best.end(),
                   [&](const TTrial& a, const TTrial& b) { return isBetterAdvice(a, b, trials.front()); });
  return sifting;
}

// The best of the finalists on all frames; an objection to the first of them where none holds.
std::optional<TTrial> bestOnAll(const TTrial& given, const TTryAll& tryAll, TSifting& sifting) {
  std::vector<TSetting> settings;
  for (std::size_t i = 0; i < std::min(kFinalists, sifting.best.size()); ++i) {
    settings.push_back(sifting.best[i].setting);
    settings.back().tracker.giveAdvice = false;
  }
  std::optional<TTrial> best;
  for (TTrial& trial : tryAll({wholeOf(given)}, settings)) {
    const std::string objection = changeBetween(given, trial).objection;
    if (objection.empty() && (!best || isBetterAdvice(trial, *best, given))) {
      best = std::move(trial);
    } else if (!objection.empty()) {
      sifting.next = std::move(trial);
      sifting.objection = objection;
    }
  }
  return best;
}

}  // namespace

void requireAdvisable(const TWeldJob& job) {
  const TWeldJoint* const joint = findWeldJoint(job.params.weldType);
  if (joint == nullptr || joint->features.empty()) {
    throw usageError("advise: " + nameOf(job) + " has no parameters or no seam point; choose a joint");
  }
}

TAdvice advise(const TScene& scene, const TSetting& given, const TTryAll& tryAll, const TPictures& pictures) {
  TAdvice advice{tryAll({{0, static_cast<int>(scene.frames.size()) - 1}}, {given}).front()};
  if (!scene.truth.isEmpty() && advice.given.truth.judged == 0) {
    throw inputError("--truth: labels none of the frames");
  }
  const auto& seams = advice.given.seams;
  advice.findsAll = std::all_of(seams.begin(), seams.end(), [](const auto& seam) { return seam.has_value(); });
  if (!advice.findsAll) {
    advice.sifting = sift(scene, advice.given, tryAll, pictures);
    advice.best = bestOnAll(advice.given, tryAll, advice.sifting);
  }
  return advice;
}

}  // namespace tool
