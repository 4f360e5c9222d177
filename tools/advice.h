// From lost frames to the setting that finds them: what is tried, in which order, and what comes of it.
#pragma once

#include "tools/advise.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace tool {

inline constexpr std::size_t kFinalists = 3;  // that are tried on all frames

struct TSifting {
  std::vector<TTrial> best;                 // without objection, the best first
  std::optional<TTrial> next;               // else the one that found most
  std::string objection;                    // to that one
  std::vector<TReasonTally::TRow> reasons;  // for losses, as set
  int tried = 0;
  int frames = 0;
};

struct TAdvice {
  TTrial given;
  bool findsAll = false;  // nothing to advise, and nothing tried
  TSifting sifting = {};
  std::optional<TTrial> best = {};  // none: no setting does
};

// A frame of the scene as prepared; empty where it cannot be read.
using TPictures = std::function<cv::Mat(int place)>;

// Throws a usage error for a joint without a seam point or parameters.
void requireAdvisable(const TWeldJob& job);

// The scene's frames are not looked at, but for what `tryAll` and `pictures` do. Throws an input error where
// labels know none of them.
TAdvice advise(const TScene& scene, const TSetting& given, const TTryAll& tryAll, const TPictures& pictures);

}  // namespace tool
