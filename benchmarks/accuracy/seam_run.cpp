#include "seam_run.h"

#include <algorithm>
#include <atomic>
#include <thread>

namespace accuracy {

namespace {

constexpr std::uint64_t kSequenceSeeds = 100000;  // above those of the scenes

bool isWanted(const std::vector<std::string>& names, const std::string& name) {
  return names.empty() || std::find(names.begin(), names.end(), name) != names.end();
}

}  // namespace

const char* nameOf(scenes::TLevel level) {
  const auto* const row = std::find_if(std::begin(kLevels), std::end(kLevels),
                                       [level](const TLevelName& l) { return l.level == level; });
  return row->name;
}

std::vector<TSubject> allSubjects() {
  std::vector<TSubject> subjects;
  for (const scenes::TDrawnJoint& row : scenes::seamJoints()) subjects.push_back({row.joint, std::nullopt});
  for (const scenes::TDecoy decoy : scenes::allDecoys()) subjects.push_back({scenes::TJoint::blank, decoy});
  return subjects;
}

// Sequences first: a long one at the end would keep one thread busy while the others wait.
std::vector<TReel> reelsOf(const TSample& sample) {
  std::vector<TReel> sequences;
  std::vector<TReel> scenes;
  for (const TSubject& subject : allSubjects()) {
    if (!isWanted(sample.subjects, nameOf(subject))) continue;
    const int frames = subject.decoy ? (sample.frames + 2) / 3 : sample.frames;
    for (const TLevelName& level : kLevels) {
      if (!isWanted(sample.levels, level.name)) continue;
      for (int i = 0; i < sample.sequences; ++i) {
        const std::uint64_t seed = sample.seed + kSequenceSeeds + i;
        sequences.push_back({subject, level.level, seed, TShow::sequence, frames});
        if (!subject.decoy) sequences.push_back({subject, level.level, seed, TShow::flash, kFramesOfFlash});
      }
      for (int i = 0; i < sample.scenes; ++i)
        scenes.push_back({subject, level.level, sample.seed + i, TShow::scene, 1});
    }
  }
  sequences.insert(sequences.end(), scenes.begin(), scenes.end());
  return sequences;
}

TRun play(std::vector<TReel> reels, int threads, const std::function<void(int)>& onProgress) {
  TRun run;
  run.answers.resize(reels.size());
  run.reels = std::move(reels);
  std::atomic<std::size_t> next{0};
  std::atomic<int> done{0};
  const auto work = [&](bool reports) {
    for (std::size_t i = next++; i < run.reels.size(); i = next++) {
      run.answers[i] = playReel(run.reels[i]);
      ++done;
      if (reports) onProgress(done);
    }
  };
  std::vector<std::thread> others;
  for (int t = 1; t < threads; ++t) others.emplace_back(work, false);
  work(true);
  for (std::thread& other : others) other.join();
  return run;
}

}  // namespace accuracy
