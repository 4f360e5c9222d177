// How sure it is that a line is a seam.
#pragma once

#include "contrast/refinement.h"

#include <array>

namespace weld {

// What the confidence is made of, each with what it says of a line.
enum class TFeatureOfLine {
  standsOut,    // ln of the contrast against that of parallel copies
  parallel,     // the best parallel copy's contrast, share of the line's
  measured,     // share of the stations that show the line
  length,       // ln of the chord against 1000 px, or what there is room for
  span,         // chord, share of the longest possible one
  second,       // score of the second best path, share of the best one's
  turns,        // per strip
  contrast,     // ln of the magnitude
  strength,     // evidence per strip, in units of the noise
  rise,         // ln of the px over which an edge rises, against a sharp one; 0 of a line or sharp
  rough,        // 1: near a rough position
  narrow,       // ln of 90 degrees against the tolerance of the direction
  unaskedRise,  // rise once more where anything was asked for: shadows have edges too
  count
};
inline constexpr int kLineFeatures = static_cast<int>(TFeatureOfLine::count);
using TLineFeatures = std::array<double, kLineFeatures>;

// What is known of the search beside the line itself.
struct TLineContext {
  TTrait trait = TTrait::dark;
  int score = 0;
  int strips = 0;
  int turns = 0;
  double longestPx = 0.0;  // chord in the line's place that the searched part has room for
  double extentPx = 0.0;   // of the searched part in the line's direction
  bool isRough = false;
  double toleranceDeg = 90.0;
  bool isUnasked = false;
};

// Without the second path.
TLineFeatures featuresOf(const TRefinedLine& line, const TProfiles& profiles, const TAlignment& alignment,
                         const TLineContext& context);

// Sets the score of the second best path against the line's own.
void compareWithSecond(int secondScore, int score, TLineFeatures& features);

// Whether an edge is too soft for plates.
bool isShadow(const TLineFeatures& features);

// 0..1.
double confidenceOf(const TLineFeatures& features, TTrait trait);

// A feature for people: what it measured, and what it would have to be for the line to be as sure as this, all
// else being equal.
struct TFeatureReport {
  const char* name = "";
  bool isLeast = false;  // more is surer
  double measured = 0.0;
  double limit = 0.0;  // not a number where the feature does not count
};
TFeatureReport reportFeature(const TLineFeatures& features, TTrait trait, TFeatureOfLine which, double confidence);

}  // namespace weld
