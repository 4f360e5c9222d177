// Which change of setting finds frames that are lost, and whether it may be trusted.
#pragma once

#include "tools/trial.h"

#include <optional>
#include <string>
#include <vector>

namespace tool {

// Other ways to look at the same frames: extraction, longer jumps, a corner's presets, another joint, a quarter
// turn.
//   lookalike  the joint that the lost frames look like; none: no other
//   turns      the frames may stand upright
std::vector<TSetting> otherWays(const TSetting& given, TWeldType lookalike,
                                const std::optional<TPreparation>& turns);

// What the lost frames of a trial need: of the two combinations of parameters that most of them need, what is
// enough for all, for four in five, and half way to what was given.
std::vector<TSetting> settingsFor(const TTrial& trial);

// A few stretches of frames around losses, by which settings are sifted before they are tried on all.
std::vector<TStretch> stretchesAround(const TTrial& given);

// What a setting changes. Wrong seams count as lost where labels tell.
struct TChange {
  int gained = 0;                       // frames that were lost
  int lost = 0;                         // frames that were found
  std::optional<double> medianShiftPx;  // of the frames found before and after
  std::string objection;                // why it is no advice; empty: it is
};

// Both trials on the same frames.
TChange changeBetween(const TTrial& given, const TTrial& tried);

// Whether a trial without objection is better advice than another: more frames, fewer changes, smaller shift.
bool isBetterAdvice(const TTrial& a, const TTrial& b, const TTrial& given);

}  // namespace tool
