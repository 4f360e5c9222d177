#include "tools/tracker_options.h"

#include "tools/cli_error.h"
#include "tools/number_checks.h"
#include "tools/text.h"

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <cmath>

namespace tool {
namespace {

using nlohmann::ordered_json;

TStripeExtraction parseExtraction(const std::string& text) {
  std::vector<std::string> names;
  for (const TStripeExtraction extraction :
       {TStripeExtraction::edgePairs, TStripeExtraction::ridge, TStripeExtraction::automatic}) {
    names.emplace_back(extractionText(extraction));
    if (text == names.back()) {
      return extraction;
    }
  }
  throw usageError("--extraction: unknown extraction '" + text + "': use " + join(names, ", "));
}

TSeamSource parseSource(const std::string& text) {
  for (const TSeamSource source : {TSeamSource::stripe, TSeamSource::contrast, TSeamSource::both}) {
    if (text == sourceText(source)) {
      return source;
    }
  }
  throw usageError("--source: unknown source '" + text + "': use stripe, contrast, both");
}

ordered_json numberOf(double value) {
  return std::isfinite(value) ? ordered_json(value) : ordered_json("never");
}

}  // namespace

void addTrackerOptions(CLI::App& command, TTrackerChoice& choice) {
  command.add_flag("--first-only", choice.isFirstOnly, "Search every frame anew instead of tracking");
  CLI::Option* const exact =
      command.add_flag("--exact", choice.isExact, "The plain rules of the detectors, without the tracker's help");
  CLI::Option* const extraction =
      command.add_option("--extraction", choice.extraction, "Stripe from: edgePairs, ridge, automatic");
  CLI::Option* const margin = command
                                  .add_option("--margin", choice.guideMarginPx,
                                              "Search so far beyond the ends of the last stripe, px; usually 40")
                                  ->check(atLeast(0.0));
  CLI::Option* const jump = command
                                .add_option("--max-jump", choice.maxJumpPx,
                                            "Hold back a seam that jumps farther, px; usually 40, inf: never")
                                ->check(aboveZero());
  CLI::Option* const hold =
      command.add_option("--hold", choice.holdFrames, "Repeat the last seam for so many lost frames; usually 3")
          ->check(atLeast(0.0));
  CLI::Option* const source = command.add_option(
      "--source", choice.source, "Find the seam by its stripe, its contrast or both: stripe, contrast, both");
  command.add_option("--look-at", choice.lookAtPx,
                     "By contrast: the row, of a flat seam the column, of the seam point, px; else the middle");
  addContrastOptions(command, choice.contrast);
  for (CLI::Option* const option : {extraction, margin, jump, hold, source}) {
    exact->excludes(option);
  }
}

TTrackerOptions trackerOptionsOf(const TTrackerChoice& choice, const TTrackerOptions& base) {
  if (choice.isExact) {
    return TTrackerOptions::exact();
  }
  TTrackerOptions options = base;
  options.source = choice.source.empty() ? base.source : parseSource(choice.source);
  options.lookAtPx = choice.lookAtPx.value_or(base.lookAtPx);
  options.contrast = contrastOf(choice.contrast, base.contrast);
  if (!choice.extraction.empty()) {
    options.extraction = parseExtraction(choice.extraction);
  }
  options.guideMarginPx = choice.guideMarginPx.value_or(base.guideMarginPx);
  options.maxJumpPx = choice.maxJumpPx.value_or(base.maxJumpPx);
  options.holdFrames = choice.holdFrames.value_or(base.holdFrames);
  return options;
}

ordered_json describeTracker(const TTrackerOptions& options) {
  const TTrackerOptions plain;
  const auto row = [](const char* name, const ordered_json& value, const ordered_json& usual, const char* unit,
                      const char* range, const char* meaning) {
    return ordered_json{{"name", name}, {"value", value}, {"default", usual},
                        {"unit", unit}, {"range", range}, {"meaning", meaning}};
  };
  return ordered_json::array(
      {row("guideMarginPx", options.guideMarginPx, plain.guideMarginPx, "px", "from 0",
           "the search reaches so far beyond the ends of the previous stripe"),
       row("extraction", extractionText(options.extraction), extractionText(plain.extraction), "",
           "edgePairs, ridge, automatic", "how the stripe is extracted from the image"),
       row("rejectImpossiblePoints", options.rejectImpossiblePoints, plain.rejectImpossiblePoints, "",
           "true or false", "seam points that no image can show count as not found"),
       row("maxJumpPx", numberOf(options.maxJumpPx), numberOf(plain.maxJumpPx), "px", "above 0",
           "a seam farther than this from the last one waits until it repeats"),
       row("acceptAfterFrames", options.acceptAfterFrames, plain.acceptAfterFrames, "frames", "from 1",
           "so many frames in a row must show the seam at its new place"),
       row("holdFrames", options.holdFrames, plain.holdFrames, "frames", "from 0",
           "lost frames in a row for which the last good seam is repeated"),
       row("searchWholeOnLoss", options.searchWholeOnLoss, plain.searchWholeOnLoss, "", "true or false",
           "a frame in which tracking fails is searched as a whole at once")});
}

}  // namespace tool
