// zelweld advise: the smallest change of setting that finds the lost frames, each one tried on the frames
// themselves.
#include "tools/advise.h"
#include "tools/cli_error.h"
#include "tools/commands.h"
#include "tools/kept_frames.h"
#include "tools/names.h"
#include "tools/output.h"
#include "tools/progress.h"
#include "tools/stop_signal.h"
#include "tools/text.h"

#include <algorithm>
#include <map>
#include <memory>

namespace tool {
namespace {

constexpr std::size_t kFinalists = 3;     // that are tried on all frames
constexpr std::size_t kRecognised = 12;   // lost frames that are asked which joint they show
constexpr double kMayStandUpright = 0.5;  // share of frames lost

// As typed.
struct TOptions {
  TSeamRunOptions run;
};

struct TSifting {
  std::vector<TTrial> best;                 // without objection, the best first
  std::optional<TTrial> next;               // else the one that found most
  std::string objection;                    // to that one
  std::vector<TReasonTally::TRow> reasons;  // for losses, as set
  int tried = 0;
  int frames = 0;
};

// The joint that most of the lost frames look like; none where it is the one that is looked for.
TWeldType lookalikeOf(const TScene& scene, const TTrial& given) {
  std::vector<std::size_t> lost;
  for (std::size_t i = 0; i < given.seams.size(); ++i) {
    if (!given.seams[i]) {
      lost.push_back(i);
    }
  }
  const std::size_t asked = std::min(kRecognised, lost.size());
  std::map<TWeldType, std::size_t> votes;
  for (std::size_t n = 0; n < asked; ++n) {
    const auto candidates = recogniseJoint(scene.frames[lost[n * lost.size() / asked]].image);
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

std::vector<TTrial> tryWithProgress(const TScene& scene, const std::vector<TStretch>& stretches,
                                    const std::vector<TSetting>& settings) {
  TProgress progress(static_cast<int>(settings.size()));
  progress.draw(0);
  return tryAll(scene, stretches, settings, [&](int done) { progress.draw(done); });
}

// Tries everything on a few stretches around losses: other ways first, then what each of them needs.
TSifting sift(const TScene& scene, const TTrial& given) {
  const std::vector<TStretch> stretches = stretchesAround(given);
  const bool mayStandUpright =
      static_cast<double>(given.run->found()) < (1.0 - kMayStandUpright) * given.run->frames();
  std::vector<TSetting> ways = otherWays(given.setting, lookalikeOf(scene, given),
                                         mayStandUpright ? std::make_optional(scene.preparation) : std::nullopt);
  ways.insert(ways.begin(), given.setting);
  for (TSetting& way : ways) {
    way.tracker.giveAdvice = true;
  }
  std::vector<TTrial> trials = tryWithProgress(scene, stretches, ways);
  std::vector<TSetting> refined;
  for (const TTrial& trial : trials) {
    const std::vector<TSetting> settings = settingsFor(trial);
    refined.insert(refined.end(), settings.begin(), settings.end());
  }
  for (TSetting& setting : refined) {
    setting.tracker.giveAdvice = false;
  }
  for (TTrial& trial : tryWithProgress(scene, stretches, refined)) {
    trials.push_back(std::move(trial));
  }
  TSifting sifting;
  sifting.reasons = trials.front().run->reasons().rows();
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
std::optional<TTrial> bestOnAll(const TScene& scene, const TTrial& given, TSifting& sifting) {
  std::vector<TSetting> settings;
  for (std::size_t i = 0; i < std::min(kFinalists, sifting.best.size()); ++i) {
    settings.push_back(sifting.best[i].setting);
    settings.back().tracker.giveAdvice = false;
  }
  std::optional<TTrial> best;
  for (TTrial& trial : tryWithProgress(scene, {{0, static_cast<int>(scene.frames.size()) - 1}}, settings)) {
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

std::string wordsOf(const TSetting& setting) {
  return join(setting.changes, " ");
}

std::string foundText(const TSeamRun& run) {
  return std::to_string(run.found()) + " of " + std::to_string(run.frames()) + " (" +
         fixed(100.0 * run.foundShare(), 1) + " %)";
}

std::string row(const std::string& name, const std::string& before, const std::string& after) {
  return "  " + padded(name, 16) + padded(before, 22) + after;
}

std::string pxOrDash(const std::optional<double>& px) {
  return px ? fixed(*px, 2) + " px" : "-";
}

void printAdvice(const TTrial& given, const TTrial& best) {
  const TChange change = changeBetween(given, best);
  printLine("\nAdvice: " + wordsOf(best.setting) + "\n\n" + row("", "before", "after"));
  printLine(row("found", foundText(*given.run), foundText(*best.run)));
  if (given.truth.judged > 0) {
    printLine(row("wrong", std::to_string(given.truth.wrong), std::to_string(best.truth.wrong)));
    printLine(row("median error", pxOrDash(given.truth.medianErrorPx()), pxOrDash(best.truth.medianErrorPx())));
  }
  printLine(row("jitter", pxOrDash(given.run->jitter().medianPx()), pxOrDash(best.run->jitter().medianPx())));
  printLine(row("median shift", "", pxOrDash(change.medianShiftPx) + " of the frames found before"));
}

void printRefusal(const TSifting& sifting) {
  std::string text = "\nNo setting does";
  if (sifting.next) {
    text += ", because the best, " + wordsOf(sifting.next->setting) + ", " + sifting.objection + ".";
  } else {
    text += ", because none finds any of the lost frames.";
  }
  if (!sifting.reasons.empty()) {
    const TReasonTally::TRow& most = sifting.reasons.front();
    text += "\nMost frames are lost with \"" + most.reason + "\", as frame " + std::to_string(most.firstFrame) +
            ": " + most.sentence;
  }
  printLine(text);
}

void run(const TOptions& options) {
  const TTracking tracking = trackingOf(options.run.tracking);
  const TWeldJoint* const joint = findWeldJoint(tracking.params.weldType);
  if (joint == nullptr || joint->features.empty()) {
    throw usageError("advise: " + nameOf(tracking) + " has no parameters or no seam point; choose a joint");
  }
  TKeptFrames kept = keepFrames(options.run.tracking.frames, tracking.preparation);
  const TSetting setting{tracking.params, tracking.tracker, 0, {}, false};
  const TScene scene{std::move(kept.frames), tracking.preparation, truthOf(options.run)};
  const std::vector<TStretch> all = {{0, static_cast<int>(scene.frames.size()) - 1}};
  const TTrial given = tryOn(scene, all, setting);
  throwIfStopRequested();
  if (!scene.truth.isEmpty() && given.truth.judged == 0) {
    throw inputError("--truth: " + options.run.truthFile + " labels none of the frames");
  }
  printLine("found " + foundText(*given.run) + ", " + std::to_string(given.run->losses()) + " losses");
  if (std::all_of(given.seams.begin(), given.seams.end(), [](const auto& seam) { return seam.has_value(); })) {
    printLine("Every frame is found: nothing to advise.");
    return kept.reading.check();
  }
  TSifting sifting = sift(scene, given);
  const std::optional<TTrial> best = bestOnAll(scene, given, sifting);
  printLine("tried " + std::to_string(sifting.tried) + " settings on " + std::to_string(sifting.frames) +
            " frames around losses, the best " + std::to_string(std::min(kFinalists, sifting.best.size())) +
            " of them on all");
  if (best) {
    printAdvice(given, *best);
  } else {
    printRefusal(sifting);
  }
  kept.reading.check();
}

}  // namespace

void addAdviseCommand(CLI::App& program) {
  CLI::App* const command = program.add_subcommand("advise", "Try which change of setting finds the lost frames");
  const auto options = std::make_shared<TOptions>();
  addSeamRunOptions(*command, options->run);
  command->footer(
      "Tries extraction, longer jumps, joint, orientation and what the sentences of lost frames ask for, alone\n"
      "and together, and advises the smallest change that finds at least half of the lost frames. None is\n"
      "advised that loses or moves good seams (median 2 px, 95 % 5 px), finds the end of the stripe, jumps, or\n"
      "lets a test pass everything; with --truth, none that gives a wrong seam more. All frames stay in memory.\n"
      "Examples:\n"
      "  zelweld advise frames/ --type lap\n"
      "  zelweld advise frames/ --params gap.json --frames 780:840 --truth labels.csv");
  command->callback([options] { run(*options); });
}

}  // namespace tool
