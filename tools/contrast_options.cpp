#include "tools/contrast_options.h"

#include "tools/cli_error.h"

#include <CLI/CLI.hpp>

namespace tool {

const char* nameOf(TSeamPolarity polarity) {
  return polarityText(polarity);
}

void addContrastOptions(CLI::App& command, TContrastChoice& choice) {
  command.add_option("--polarity", choice.polarity, "The seam is: dark, bright, edge, automatic");
  command.add_option("--direction", choice.directionDeg, "Direction of the seam, degrees, y down: 90 is upright")
      ->check(CLI::Range(-180.0, 180.0));
  command.add_option("--tolerance", choice.directionTolDeg, "Farthest from that direction, degrees; usually 90")
      ->check(CLI::Range(0.0, 90.0));
  command.add_option("--min-confidence", choice.minConfidence, "Less counts as not found; usually 0.5")
      ->check(CLI::Range(0.0, 1.0));
}

TContrastSearch contrastOf(const TContrastChoice& choice, const TContrastSearch& base) {
  TContrastSearch search = base;
  search.directionDeg = choice.directionDeg.value_or(base.directionDeg);
  search.directionTolDeg = choice.directionTolDeg.value_or(base.directionTolDeg);
  search.minConfidence = choice.minConfidence.value_or(base.minConfidence);
  for (const TSeamPolarity polarity :
       {TSeamPolarity::dark, TSeamPolarity::bright, TSeamPolarity::edge, TSeamPolarity::automatic}) {
    if (choice.polarity != nameOf(polarity)) continue;
    search.polarity = polarity;
    return search;
  }
  if (choice.polarity.empty()) return search;
  throw usageError("--polarity: unknown polarity '" + choice.polarity + "': use dark, bright, edge, automatic");
}

}  // namespace tool
