#include "tools/trial.h"

#include "tools/stop_signal.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <thread>

namespace tool {
namespace {

constexpr unsigned kMostThreads = 8;

void addFrame(TTrial& trial, TSeamRun& run, const TScene& scene, int place, bool startsStretch) {
  TFrame frame = scene.frames[static_cast<std::size_t>(place)];
  frame.startsSequence = frame.startsSequence || startsStretch;
  if (trial.setting.turnDeg == 90 && !frame.image.empty()) {
    frame.image = cv::Mat();  // of its own: the scene keeps its image
    cv::rotate(scene.frames[static_cast<std::size_t>(place)].image, frame.image, cv::ROTATE_90_CLOCKWISE);
  }
  addSeen(trial, scene, place, startsStretch, run.next(frame));
}

}  // namespace

TPreparation preparationOf(const TScene& scene, const TSetting& setting) {
  TPreparation preparation = scene.preparation;
  preparation.rotationDeg = (preparation.rotationDeg + setting.turnDeg) % 360;
  return preparation;
}

void addSeen(TTrial& trial, const TScene& scene, int place, bool startsStretch, const TSeamFrame& seen) {
  const TFrame& frame = scene.frames[static_cast<std::size_t>(place)];
  trial.figures.add(frame.index, frame.startsSequence || startsStretch, seen);
  trial.frames.push_back(place);
  const int wrongBefore = trial.truth.wrong;
  scene.truth.judge(frame.name, seen.storedSeam, trial.truth);
  trial.seams.push_back(trial.truth.wrong == wrongBefore ? seen.storedSeam : std::nullopt);
  if (!seen.needs.empty()) {
    trial.needs.push_back(seen.needs);
  }
}

TTrial tryOn(const TScene& scene, const std::vector<TStretch>& stretches, const TSetting& setting) {
  TTracking tracking;
  tracking.params = setting.params;
  tracking.tracker = setting.tracker;
  tracking.preparation = preparationOf(scene, setting);
  TSeamRun run(tracking);
  TTrial trial{setting, {}, {}, {}, {}, {}};
  for (const TStretch& stretch : stretches) {
    for (int place = stretch.first; place <= stretch.last && !isStopRequested(); ++place) {
      addFrame(trial, run, scene, place, place == stretch.first);
    }
  }
  return trial;
}

std::vector<TTrial> tryAll(const TScene& scene, const std::vector<TStretch>& stretches,
                           const std::vector<TSetting>& settings, const std::function<void(int)>& done) {
  std::vector<TTrial> trials(settings.size());
  std::atomic<std::size_t> next = 0;
  std::atomic<int> through = 0;
  std::exception_ptr failure;
  std::atomic<bool> hasFailed = false;
  const auto work = [&](bool isCaller) {
    for (std::size_t i = next++; i < settings.size() && !hasFailed; i = next++) {
      try {
        trials[i] = tryOn(scene, stretches, settings[i]);
      } catch (...) {
        if (!hasFailed.exchange(true)) {
          failure = std::current_exception();
        }
      }
      ++through;
      if (isCaller) {
        done(through);
      }
    }
  };
  std::vector<std::thread> helpers;
  const unsigned threads = std::clamp(std::thread::hardware_concurrency(), 1U, kMostThreads);
  for (unsigned i = 1; i < threads && i < settings.size(); ++i) {
    helpers.emplace_back(work, false);
  }
  work(true);
  for (std::thread& helper : helpers) {
    helper.join();
  }
  if (failure) {
    std::rethrow_exception(failure);
  }
  throwIfStopRequested();
  return trials;
}

}  // namespace tool
