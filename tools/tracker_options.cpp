#include "tools/tracker_options.h"

#include "tools/cli_error.h"

#include <cmath>
#include <limits>

namespace tool {
namespace {

using nlohmann::ordered_json;

constexpr double kNever = std::numeric_limits<double>::infinity();

TStripeExtraction parseExtraction(const std::string& text) {
  for (const TStripeExtraction extraction :
       {TStripeExtraction::edgePairs, TStripeExtraction::ridge, TStripeExtraction::automatic}) {
    if (text == nameOf(extraction)) {
      return extraction;
    }
  }
  throw usageError("--extraction: unknown extraction '" + text + "': use edgePairs, ridge, automatic");
}

TSeamSource parseSource(const std::string& text) {
  if (text == "stripe") return TSeamSource::stripe;
  if (text == "contrast") return TSeamSource::contrast;
  if (text == "both") return TSeamSource::both;
  throw usageError("--source: unknown source '" + text + "': use stripe, contrast, both");
}

ordered_json numberOf(double value) {
  return std::isfinite(value) ? ordered_json(value) : ordered_json("never");
}

}  // namespace

const char* nameOf(TStripeExtraction extraction) {
  switch (extraction) {
    case TStripeExtraction::edgePairs:
      return "edgePairs";
    case TStripeExtraction::ridge:
      return "ridge";
    case TStripeExtraction::none:
      return "none";
    case TStripeExtraction::automatic:
      break;
  }
  return "automatic";
}

void addTrackerOptions(CLI::App& command, TTrackerChoice& choice) {
  command.add_flag("--first-only", choice.isFirstOnly, "Search every frame anew instead of tracking");
  CLI::Option* const exact =
      command.add_flag("--exact", choice.isExact, "The plain rules of the detectors, without the tracker's help");
  CLI::Option* const extraction =
      command.add_option("--extraction", choice.extraction, "Stripe from edgePairs, ridge or automatic");
  CLI::Option* const margin = command
                                  .add_option("--margin", choice.settings.guideMarginPx,
                                              "Search so far beyond the ends of the last stripe, px")
                                  ->check(CLI::NonNegativeNumber)
                                  ->capture_default_str();
  CLI::Option* const jump = command
                                .add_option("--max-jump", choice.settings.maxJumpPx,
                                            "Hold back a seam that jumps farther, px; inf: never")
                                ->check(CLI::Range(std::numeric_limits<double>::min(), kNever, "POSITIVE"))
                                ->capture_default_str();
  CLI::Option* const hold =
      command.add_option("--hold", choice.settings.holdFrames, "Repeat the last seam for so many lost frames")
          ->check(CLI::NonNegativeNumber)
          ->capture_default_str();
  CLI::Option* const source =
      command.add_option("--source", choice.source, "Find the seam by its stripe, its contrast or both")
          ->capture_default_str();
  command.add_option("--look-at", choice.settings.lookAtPx,
                     "By contrast: the row, of a flat seam the column, of the seam point, px; else the middle");
  addContrastOptions(command, choice.contrast);
  for (CLI::Option* const option : {extraction, margin, jump, hold, source}) {
    exact->excludes(option);
  }
}

TTrackerOptions trackerOptionsOf(const TTrackerChoice& choice) {
  if (choice.isExact) {
    return TTrackerOptions::exact();
  }
  TTrackerOptions options = choice.settings;
  options.source = parseSource(choice.source);
  options.contrast = contrastOf(choice.contrast);
  if (!choice.extraction.empty()) {
    options.extraction = parseExtraction(choice.extraction);
  }
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
       row("extraction", nameOf(options.extraction), nameOf(plain.extraction), "", "edgePairs, ridge, automatic",
           "how the stripe is extracted from the image"),
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
