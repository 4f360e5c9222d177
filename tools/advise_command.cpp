// zelweld advise: the smallest change of setting that finds the lost frames, each one tried on the frames
// themselves.
#include "tools/advice.h"
#include "tools/commands.h"
#include "tools/kept_frames.h"
#include "tools/output.h"
#include "tools/progress.h"
#include "tools/text.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <memory>

namespace tool {
namespace {

// As typed.
struct TOptions {
  TSeamRunOptions run;
};

std::string wordsOf(const TSetting& setting) {
  return join(setting.changes, " ");
}

std::string foundText(const TSeamFigures& run) {
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
  printLine(row("found", foundText(given.figures), foundText(best.figures)));
  if (given.truth.judged > 0) {
    printLine(row("wrong", std::to_string(given.truth.wrong), std::to_string(best.truth.wrong)));
    printLine(row("median error", pxOrDash(given.truth.medianErrorPx()), pxOrDash(best.truth.medianErrorPx())));
  }
  printLine(
      row("jitter", pxOrDash(given.figures.jitter().medianPx()), pxOrDash(best.figures.jitter().medianPx())));
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

// With a progress bar.
TTryAll triesOn(const TScene& scene) {
  return [&scene](const std::vector<TStretch>& stretches, const std::vector<TSetting>& settings) {
    TProgress progress(static_cast<int>(settings.size()));
    progress.draw(0);
    return tryAll(scene, stretches, settings, [&](int done) { progress.draw(done); });
  };
}

void run(const TOptions& options) {
  const TTracking tracking = trackingOf(options.run.tracking);
  requireAdvisable(tracking);
  TKeptFrames kept = keepFrames(options.run.tracking.frames, tracking.preparation);
  const TScene scene{std::move(kept.frames), tracking.preparation, truthOf(options.run)};
  const TAdvice advice = advise(scene, {tracking.params, tracking.tracker, 0, {}, false}, triesOn(scene),
                                [&](int place) { return scene.frames[static_cast<std::size_t>(place)].image; });
  const TSeamFigures& found = advice.given.figures;
  printLine("found " + foundText(found) + ", " + std::to_string(found.losses()) + " losses");
  if (advice.findsAll) {
    printLine("Every frame is found: nothing to advise.");
    return kept.reading.check();
  }
  const TSifting& sifting = advice.sifting;
  printLine("tried " + std::to_string(sifting.tried) + " settings on " + std::to_string(sifting.frames) +
            " frames around losses, the best " + std::to_string(std::min(kFinalists, sifting.best.size())) +
            " of them on all");
  if (advice.best) {
    printAdvice(advice.given, *advice.best);
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
