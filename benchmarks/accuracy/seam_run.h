// All reels of a run, played on several threads.
#pragma once

#include "seam_reel.h"

#include <functional>
#include <string>
#include <vector>

namespace accuracy {

struct TLevelName {
  const char* name;
  scenes::TLevel level;
};
inline constexpr TLevelName kLevels[] = {{"clean", scenes::TLevel::clean},
                                         {"noisy", scenes::TLevel::noisy},
                                         {"harsh", scenes::TLevel::harsh},
                                         {"real", scenes::TLevel::real}};
const char* nameOf(scenes::TLevel level);

struct TSample {
  int scenes = 300;                   // of each subject and level, seen once
  int sequences = 20;                 // of each subject and level
  int frames = 60;                    // of each sequence of a joint; those without one have a third
  std::uint64_t seed = 20000;         // of the first scene
  std::vector<std::string> subjects;  // their names; none: all
  std::vector<std::string> levels;    // their names; none: all

  bool isWhole() const { return subjects.empty() && levels.empty(); }
};

// Every joint with a seam point, then every kind of frame without one.
std::vector<TSubject> allSubjects();

struct TRun {
  std::vector<TReel> reels;
  std::vector<TReelAnswers> answers;  // one each
};

std::vector<TReel> reelsOf(const TSample& sample);

// The same answers whatever the number of threads. Calls back on the calling thread, now and then.
TRun play(std::vector<TReel> reels, int threads, const std::function<void(int done)>& onProgress);

}  // namespace accuracy
