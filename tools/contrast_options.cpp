#include "tools/contrast_options.h"

#include "tools/cli_error.h"

namespace tool {

const char* nameOf(TSeamPolarity polarity) {
  switch (polarity) {
    case TSeamPolarity::dark:
      return "dark";
    case TSeamPolarity::bright:
      return "bright";
    case TSeamPolarity::edge:
      return "edge";
    case TSeamPolarity::automatic:
      break;
  }
  return "automatic";
}

void addContrastOptions(CLI::App& command, TContrastChoice& choice) {
  TContrastSearch& search = choice.search;
  command.add_option("--polarity", choice.polarity, "The seam is dark, bright, an edge, or automatic")
      ->capture_default_str();
  command.add_option("--direction", search.directionDeg, "Direction of the seam, degrees, y down: 90 is upright")
      ->check(CLI::Range(-180.0, 180.0))
      ->capture_default_str();
  command.add_option("--tolerance", search.directionTolDeg, "Farthest from that direction, degrees")
      ->check(CLI::Range(0.0, 90.0))
      ->capture_default_str();
  command.add_option("--min-confidence", search.minConfidence, "Less counts as not found")
      ->check(CLI::Range(0.0, 1.0))
      ->capture_default_str();
}

TContrastSearch contrastOf(const TContrastChoice& choice) {
  TContrastSearch search = choice.search;
  for (const TSeamPolarity polarity :
       {TSeamPolarity::dark, TSeamPolarity::bright, TSeamPolarity::edge, TSeamPolarity::automatic}) {
    if (choice.polarity != nameOf(polarity)) continue;
    search.polarity = polarity;
    return search;
  }
  throw usageError("--polarity: unknown polarity '" + choice.polarity + "': use dark, bright, edge, automatic");
}

}  // namespace tool
